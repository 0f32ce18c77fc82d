// The functions of a test file: test, expect, beforeEach, afterEach. Evaluated once per engine, before the file;
// gives the object through which kyrun runs the tests.
(function () {
    "use strict";

    var Own = "kyrun:test";
    var tests = [], before = [], after = [];
    var current = null;

    function isThenable(value) {
        return value !== null && typeof value === "object" && typeof value.then === "function";
    }

    // ---- Values as text ----

    function quoted(text) {
        return JSON.stringify(text.length > 200 ? text.slice(0, 200) + "…" : text);
    }

    function listed(open, parts, close) {
        var shown = parts.slice(0, 20);
        if (parts.length > shown.length)
            shown.push("… " + (parts.length - shown.length) + " more");
        return open + shown.join(", ") + close;
    }

    function isList(value) {
        return Array.isArray(value) || ArrayBuffer.isView(value);
    }

    function show(value, depth) {
        if (typeof value === "string")
            return quoted(value);
        if (Object.is(value, -0))
            return "-0";
        if (typeof value === "function")
            return "function " + (value.name || "(anonymous)");
        if (value === null || typeof value !== "object")
            return String(value);
        if (value instanceof Error || value instanceof RegExp)
            return String(value);
        if (value instanceof Date)
            return isNaN(value) ? "Invalid Date" : value.toISOString();
        if (depth > 3)
            return isList(value) ? "[…]" : "{…}";
        if (isList(value))
            return listed("[", Array.prototype.map.call(value, function (each) { return show(each, depth + 1); }), "]");
        if (value instanceof Map || value instanceof Set)
            return (value instanceof Map ? "Map" : "Set") + show(Array.from(value), depth + 1);
        if (!isPlain(value))
            return String(value);
        return listed("{", Object.keys(value).map(function (key) {
            return (/^[A-Za-z_$][\w$]*$/.test(key) ? key : quoted(key)) + ": " + show(value[key], depth + 1);
        }), "}");
    }

    function textOf(value) {
        try {
            return show(value, 0);
        } catch (error) {
            return "(a value without a text)";
        }
    }

    // ---- Equality of contents ----

    function isPlain(value) {
        var prototype = Object.getPrototypeOf(value);
        return prototype === null || prototype === Object.prototype || Object.prototype.toString.call(value) === "[object Object]" &&
               typeof value.constructor === "function" && value.constructor.prototype === prototype;
    }

    function bytesOf(value) {
        return value instanceof ArrayBuffer ? new Uint8Array(value) : value;
    }

    function sameKeys(a, b, pairs) {
        var keys = Object.keys(a);
        return keys.length === Object.keys(b).length && keys.every(function (key) {
            return Object.prototype.hasOwnProperty.call(b, key) && same(a[key], b[key], pairs);
        });
    }

    function sameMembers(a, b, pairs) {
        var left = Array.from(a), right = Array.from(b);
        return left.length === right.length && left.every(function (each) {
            var found = right.findIndex(function (other) { return same(each, other, pairs); });
            return found >= 0 && right.splice(found, 1).length === 1;
        });
    }

    function same(a, b, pairs) {
        if (Object.is(a, b))
            return true;
        if (a === null || b === null || typeof a !== "object" || typeof b !== "object")
            return false;
        // A pair that is being compared further up is equal as far as the rest is.
        if (pairs.some(function (pair) { return pair[0] === a && pair[1] === b; }))
            return true;
        var seen = pairs.concat([[a, b]]);
        if (Object.prototype.toString.call(a) !== Object.prototype.toString.call(b))
            return false;
        if (a instanceof Date)
            return Object.is(a.getTime(), b.getTime());
        if (a instanceof RegExp)
            return String(a) === String(b);
        if (a instanceof Error)
            return a.name === b.name && a.message === b.message;
        if (a instanceof ArrayBuffer || ArrayBuffer.isView(a)) {
            var left = bytesOf(a), right = bytesOf(b);
            return left.length === right.length && Array.prototype.every.call(left, function (each, index) {
                return Object.is(each, right[index]);
            });
        }
        if (a instanceof Map || a instanceof Set)
            return sameMembers(a, b, seen);
        if (Array.isArray(a) && a.length !== b.length)
            return false;
        if (!Array.isArray(a) && (!isPlain(a) || !isPlain(b)))
            return false;
        return sameKeys(a, b, seen);
    }

    // ---- Expectations ----

    function placeOf(stack) {
        var frames = String(stack).split("\n").filter(function (frame) { return frame.indexOf(Own) < 0; });
        var found = /@(.*)$/.exec(frames[0] || "");
        return found ? found[1].replace(/^file:(?=[^\/])/, "") : "";
    }

    // The latest. Of one that a handler throws only its text comes back, by way of the log.
    var lastFailure = {text: "", at: ""};

    function Failure(text) {
        var error = new Error(text);
        error.isExpectation = true;
        lastFailure = {text: "Error: " + text, at: placeOf(error.stack)};
        return error;
    }

    function reported(message) {
        var isOwn = message.indexOf("file:" + Own) === 0 && lastFailure.text !== "" &&
                    message.slice(-lastFailure.text.length) === lastFailure.text;
        return isOwn ? {message: lastFailure.text.slice("Error: ".length), at: lastFailure.at} : {message: message, at: ""};
    }

    function thrown(body) {
        if (typeof body !== "function")
            throw Failure("toThrow() needs a function, got " + textOf(body));
        try {
            body();
        } catch (error) {
            return {error: error};
        }
        return null;
    }

    function isWanted(error, wanted) {
        var text = error instanceof Error ? error.message : String(error);
        if (wanted === undefined)
            return true;
        if (typeof wanted === "function")
            return error instanceof wanted;
        return wanted instanceof RegExp ? wanted.test(text) : text.indexOf(String(wanted)) >= 0;
    }

    function ordered(test) {
        return function (actual, wanted) {
            return typeof actual === typeof wanted && test(actual, wanted);
        };
    }

    // Name: [whether it holds, words between both values]
    var matchers = {
        toBe: [Object.is, "to be"],
        toEqual: [function (actual, wanted) { return same(actual, wanted, []); }, "to equal"],
        toBeCloseTo: [function (actual, wanted, tolerance) {
            return Math.abs(actual - wanted) <= (tolerance === undefined ? 1e-9 : tolerance);
        }, "to be close to"],
        toBeTruthy: [function (actual) { return !!actual; }, "to be truthy"],
        toBeFalsy: [function (actual) { return !actual; }, "to be falsy"],
        toBeNull: [function (actual) { return actual === null; }, "to be null"],
        toBeUndefined: [function (actual) { return actual === undefined; }, "to be undefined"],
        toBeDefined: [function (actual) { return actual !== undefined; }, "to be defined"],
        toBeGreaterThan: [ordered(function (a, b) { return a > b; }), "to be greater than"],
        toBeGreaterThanOrEqual: [ordered(function (a, b) { return a >= b; }), "to be greater than or equal to"],
        toBeLessThan: [ordered(function (a, b) { return a < b; }), "to be less than"],
        toBeLessThanOrEqual: [ordered(function (a, b) { return a <= b; }), "to be less than or equal to"],
        toBeInstanceOf: [function (actual, wanted) { return actual instanceof wanted; }, "to be an instance of"],
        toHaveLength: [function (actual, wanted) {
            return actual !== null && actual !== undefined && actual.length === wanted;
        }, "to have the length"],
        toContain: [function (actual, wanted) {
            return typeof actual === "string" ? actual.indexOf(wanted) >= 0
                                              : Array.from(actual).some(function (each) { return same(each, wanted, []); });
        }, "to contain"],
        toMatch: [function (actual, wanted) {
            return wanted instanceof RegExp ? wanted.test(actual) : String(actual).indexOf(wanted) >= 0;
        }, "to match"]
    };

    function matcher(actual, name, isNot) {
        return function () {
            var wanted = Array.prototype.slice.call(arguments);
            if (!!matchers[name][0].apply(null, [actual].concat(wanted)) !== isNot)
                return;
            throw Failure("expected " + textOf(actual) + (isNot ? " not " : " ") + matchers[name][1] +
                          wanted.map(function (each) { return " " + textOf(each); }).join(" within"));
        };
    }

    function throwMatcher(body, isNot) {
        return function (wanted) {
            var found = thrown(body);
            if ((found !== null && isWanted(found.error, wanted)) !== isNot)
                return;
            throw Failure("expected the function " + (isNot ? "not " : "") + "to throw" +
                          (wanted === undefined ? "" : " " + textOf(wanted)) +
                          (found ? ", it threw " + textOf(found.error) : ", it threw nothing"));
        };
    }

    function expectations(actual, isNot) {
        var all = {toThrow: throwMatcher(actual, isNot)};
        Object.keys(matchers).forEach(function (name) { all[name] = matcher(actual, name, isNot); });
        return all;
    }

    function expect(actual) {
        var all = expectations(actual, false);
        all.not = expectations(actual, true);
        return all;
    }

    // ---- Definitions ----

    function define(name, body, timeout, skip) {
        if (current)
            throw new Error("test() is called within the test \"" + current.name + "\"; define tests beside each other");
        tests.push({name: String(name), body: body, timeout: timeout, skip: skip, isOver: false, failures: []});
    }

    function test(name, body, timeout) {
        if (typeof body !== "function")
            throw new TypeError("test(" + textOf(name) + ") needs a function");
        define(name, body, timeout === undefined ? 5000 : Number(timeout), "");
    }
    test.skip = function (name) { define(name, null, 0, "SKIP"); };
    test.todo = function (name) { define(name, null, 0, "TODO"); };

    function collect(list) {
        return function (body) {
            if (typeof body !== "function")
                throw new TypeError("beforeEach() and afterEach() need a function");
            list.push(body);
        };
    }

    // ---- Runs ----

    function fail(record, error) {
        var isError = error instanceof Error;
        var isExpectation = isError && error.isExpectation === true;
        record.failures.push({
            message: isExpectation ? error.message : isError ? String(error) : "thrown: " + textOf(error),
            at: isError ? placeOf(error.stack) || String(error.fileName || "") + ":" + error.lineNumber : ""
        });
    }

    // Calls the function, and then next(), at once or when its promise or done() says so.
    function call(record, body, next) {
        var isCalled = false;
        function settle(error, isFailed) {
            if (isCalled)
                return;
            isCalled = true;
            if (isFailed)
                fail(record, error);
            next();
        }
        function done(error) {
            settle(error, error !== undefined && error !== null);
        }
        try {
            var result = body.length > 0 ? body(done) : body();
            if (isThenable(result))
                result.then(function () { settle(); }, function (error) { settle(error, true); });
            else if (body.length === 0)
                settle();
        } catch (error) {
            settle(error, true);
        }
    }

    function inTurn(record, bodies, next) {
        var index = 0;
        (function step() {
            if (record.isOver)
                return;
            if (index >= bodies.length)
                return next();
            call(record, bodies[index++], step);
        })();
    }

    function finish(record) {
        record.isOver = true;
        current = null;
    }

    function start(index) {
        var record = tests[index];
        current = record;
        inTurn(record, before, function () {
            var steps = record.failures.length === 0 ? [record.body] : [];
            inTurn(record, steps, function () {
                inTurn(record, after, function () { finish(record); });
            });
        });
    }

    [["test", test], ["expect", expect], ["beforeEach", collect(before)], ["afterEach", collect(after)]].forEach(
        function (pair) {
            Object.defineProperty(this, pair[0], {value: pair[1], configurable: true, writable: true});
        }, Function("return this")());

    Object.defineProperty(test, "run", {value: start});
    return {
        count: function () { return tests.length; },
        name: function (index) { return tests[index].name; },
        directive: function (index) { return tests[index].skip; },
        timeout: function (index) { return tests[index].timeout; },
        isOver: function (index) { return tests[index].isOver; },
        failures: function (index) { return tests[index].failures; },
        // A test that is given up, or failed for a reason outside of it.
        failed: function (index, message, isEnd) {
            tests[index].failures.push(reported(message));
            if (isEnd)
                finish(tests[index]);
        }
    };
})
