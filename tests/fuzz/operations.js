// Reads bytes as a script: which object to make, which operation to call with which values, what to connect, keep and
// destroy. Gives the function that plays one.
(function (global) {
    "use strict";

    // What would wait for ever, end the process, or leave this folder.
    var Left = {exit: true, destroy: true, toString: true, print: true, vprint: true, deleteLater: true, destroyed: true};
    var Waits = /sleep|wait|open|exec|processCmd|timeout|delay/i;

    var globals = ["StudyList", "Orvane", "System", "Server", "Message", "Global", "IdGenerator", "Url"].filter(function (name) {
        return typeof global[name] === "object";
    }).map(function (name) { return global[name]; });

    // BrowserCtrl starts programs, and waits for them.
    var classes = Object.getOwnPropertyNames(global).filter(function (name) {
        if (!/^[A-Z]/.test(name) || typeof global[name] !== "object" && typeof global[name] !== "function")
            return false;
        return !/^(Object|Function|Array|String|Number|Boolean|Symbol|Date|RegExp|Promise|Proxy|Map|Set|WeakMap|WeakSet|DataView|BrowserCtrl|ArrayBuffer|SharedArrayBuffer|URL|URLSearchParams)$|Error$|Array$/
            .test(name) && globals.indexOf(global[name]) < 0;
    });

    var texts = ["", "a", "PRIMARY_STUDIES", "ALL_STUDIES_OF_PATIENT", "DICOM.PatientName", "Test.number", "[1.0.0]", "%1 %2 %s %n", "ä€\u{1F600}",
        "\u0000\ud800", "<b>x</b><script>", "http://127.0.0.1:1/a?b#c", "ws://127.0.0.1:1", "nosuch/dir/file.txt", "out.txt",
        "../..", "; drop", "HKEY_CURRENT_USER\\Software\\Ky", "GET", "{\"a\":[1]}", "x".repeat(3000), "\r\n\r\n", "-1", "1e400", "true", "null"];
    var numbers = [0, 1, -1, 0.5, NaN, Infinity, -Infinity, 2147483647, -2147483649, 4294967296, 1e300, 5e-324];

    function values(objects) {
        return texts.concat(numbers, [
            undefined, null, true, false, Symbol("s"), [Symbol("s")], [], [1, "a", null, undefined], ["a", "b"], [[1], [2]],
            {}, {a: 1, b: [1], c: {d: "e"}}, {toString: function () { throw new Error("no text"); }},
            {valueOf: function () { throw new Error("no value"); }}, {get a() { throw new Error("no a"); }},
            {message: "m", buttons: [{text: "b"}], title: "t"}, {type: "editor", text: "x"}, {length: 4294967295},
            new Date(0), new Date(NaN), /x/g, new Uint8Array([0, 255]), new ArrayBuffer(8), new Map([[1, 2]]), new Error("e"),
            function () {}, function (a) { return a; }, Object.create(null), new Proxy({}, {get: function () { throw new Error("trap"); }})
        ], objects);
    }

    function membersOf(object) {
        var names = [];
        for (var at = object, depth = 0; at !== null && at !== Object.prototype && depth < 8; at = Object.getPrototypeOf(at), ++depth)
            names = names.concat(Object.getOwnPropertyNames(at));
        return names.filter(function (name) { return !Left.hasOwnProperty(name); }).sort();
    }

    function attempt(body) {
        try {
            return body();
        } catch (error) {
            return undefined;
        }
    }

    function Play(bytes) {
        this.bytes = bytes;
        this.at = 0;
        this.depth = 0;
        this.objects = globals.slice();
    }

    Play.prototype.next = function (count) {
        return this.at < this.bytes.length ? this.bytes[this.at++] % count : 0;
    };

    Play.prototype.isOver = function () { return this.at >= this.bytes.length; };

    Play.prototype.value = function () {
        var all = values(this.objects);
        return all[this.next(all.length)];
    };

    Play.prototype.keep = function (value) {
        if (value !== null && typeof value === "object" && this.objects.length < 40 && !Array.isArray(value))
            this.objects.push(value);
        if (Array.isArray(value))
            value.slice(0, 3).forEach(this.keep, this);
    };

    Play.prototype.make = function () {
        var self = this, name = classes[this.next(classes.length)], count = this.next(4), inputs = [];
        while (inputs.length < count)
            inputs.push(this.value());
        this.keep(attempt(function () { return Reflect.construct(global[name], inputs); }));
    };

    Play.prototype.call = function () {
        var object = this.objects[this.next(this.objects.length)], names = attempt(function () { return membersOf(object); }) || [];
        if (names.length === 0)
            return;
        var name = names[this.next(names.length)], count = this.next(6), inputs = [];
        while (inputs.length < count)
            inputs.push(Waits.test(name) ? this.next(3) : this.value());
        var result = attempt(function () {
            return typeof object[name] === "function" ? object[name].apply(object, inputs) : object[name];
        });
        this.keep(result);
    };

    Play.prototype.write = function () {
        var object = this.objects[this.next(this.objects.length)], names = attempt(function () { return membersOf(object); }) || [];
        var name = names[this.next(names.length || 1)], value = this.value();
        // Qt's own text properties do not survive these.
        if (name === undefined || Array.isArray(value))
            return;
        attempt(function () {
            if (typeof object[name] !== "function")
                object[name] = value;
        });
    };

    Play.prototype.connect = function () {
        var self = this, object = this.objects[this.next(this.objects.length)];
        var names = (attempt(function () { return membersOf(object); }) || []).filter(function (name) {
            return attempt(function () { return typeof object[name].connect === "function"; });
        });
        if (names.length === 0)
            return;
        var name = names[this.next(names.length)];
        attempt(function () {
            object[name].connect(function () {
                if (self.depth < 3 && !self.isOver())
                    self.step();
            });
        });
    };

    Play.prototype.end = function () {
        var index = globals.length + this.next(this.objects.length - globals.length + 1), object = this.objects[index];
        if (object === undefined)
            return collectGarbage();
        this.objects.splice(index, 1);
        if (this.next(2) === 0 && typeof object.destroy === "function")
            attempt(function () { object.destroy(); });
    };

    Play.prototype.step = function () {
        ++this.depth;
        [this.make, this.call, this.call, this.call, this.write, this.connect, this.end][this.next(7)].call(this);
        --this.depth;
    };

    return function (buffer) {
        var play = new Play(new Uint8Array(buffer));
        for (var steps = 0; steps < 100 && !play.isOver(); ++steps)
            play.step();
        return play.objects.length;
    };
})(this)
