// What of the language the engine understands. Texts that it does not understand cannot stand here as code.

function isUnderstood(text) {
    try {
        Function(text);
        return true;
    } catch (error) {
        return false;
    }
}

[
    ["let and const", "let a = 1; const b = 2;"],
    ["arrow functions", "var f = (a) => a;"],
    ["templates", "var a = `x${1}y`;"],
    ["classes", "class A { constructor() {} get b() { return 1; } static c() {} } class B extends A {}"],
    ["destructuring", "var [a, , b] = [1, 2, 3]; var {c, d = 4} = {c: 1};"],
    ["default, rest and spread arguments", "function f(a = 1, ...b) {} f(...[1, 2]);"],
    ["for-of", "for (var a of [1]) {}"],
    ["generators", "function* f() { yield 1; }"],
    ["the power operator", "var a = 2 ** 3;"],
    ["shorthands of objects", "var a = 1, o = {a, f() {}, [a + 1]: 2};"]
].forEach(function (each) {
    test(each[0] + " are understood", function () { expect(isUnderstood(each[1])).toBe(true); });
});

[
    ["async functions", "async function f() { await 1; }"],
    ["private fields", "class A { #a = 1; }"],
    ["public fields", "class A { a = 1; }"],
    ["spread in objects", "var a = {...{b: 1}};"],
    ["numbers with separators", "var a = 1_000;"],
    ["big integers", "var a = 1n;"]
].forEach(function (each) {
    test(each[0] + " are not understood", function () { expect(isUnderstood(each[1])).toBe(false); });
});

test("promises settle behind the script", function () {
    var order = [];
    var promise = Promise.resolve(1).then(function () { order.push("promise"); });
    order.push("script");
    return promise.then(function () { expect(order).toEqual(["script", "promise"]); });
});

test("maps, sets, symbols and typed arrays are there", function () {
    expect(new Map([[1, 2]]).get(1)).toBe(2);
    expect(new Set([1, 1]).size).toBe(1);
    expect(typeof Symbol("a")).toBe("symbol");
    expect(new Uint8Array([257])).toEqual(new Uint8Array([1]));
});
