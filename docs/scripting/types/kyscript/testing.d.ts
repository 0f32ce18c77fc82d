// What test files have beside all the rest: kyrun --test FILES.

/** The end of a test that waits for something: called without a value the test is over, with an error it has failed. */
type TestDone = (error?: any) => void;

/**
 * A test, or what runs before or behind each one. With an argument it is over when it calls that; when it gives a
 * promise, when that is settled; else when it returns.
 */
type TestBody = (done: TestDone) => any;

/** A class of errors, or the message, or a part of it. */
type ThrownError = string | RegExp | Function;

/**
 * Expectations about a value, made by `expect`. One that does not hold is an Error, and so fails the test.
 *
 * @example
 * test("texts have a length", function () {
 *     expect("abc").toHaveLength(3);
 *     expect("abc").not.toContain("d");
 * });
 */
interface Expectations {
    /** It is the same value; NaN is the same as NaN, 0 is not the same as -0. */
    toBe(other: any): void;
    /** It has the same contents: lists, plain objects, dates, regular expressions, errors, bytes, maps and sets. */
    toEqual(other: any): void;
    /** It differs from a number by the tolerance at most, which is 1e-9 by default. */
    toBeCloseTo(other: number, tolerance?: number): void;
    /** It counts as true. */
    toBeTruthy(): void;
    /** It counts as false. */
    toBeFalsy(): void;
    /** It is null. */
    toBeNull(): void;
    /** It is undefined. */
    toBeUndefined(): void;
    /** It is not undefined. */
    toBeDefined(): void;
    /** It comes behind a value of the same type. */
    toBeGreaterThan(other: any): void;
    /** It comes behind a value of the same type, or is equal. */
    toBeGreaterThanOrEqual(other: any): void;
    /** It comes before a value of the same type. */
    toBeLessThan(other: any): void;
    /** It comes before a value of the same type, or is equal. */
    toBeLessThanOrEqual(other: any): void;
    /** It is an object of that class of the language, such as Date; classes of the application have no instances. */
    toBeInstanceOf(constructor: Function): void;
    /** It has that length. */
    toHaveLength(length: number): void;
    /** It is a text with that part, or a list with an equal element. */
    toContain(part: any): void;
    /** It is a text that the regular expression finds, or with that part. */
    toMatch(pattern: RegExp | string): void;
    /**
     * It is a function that throws: anything, an error of that class, or one whose message has that part or is found.
     */
    toThrow(error?: ThrownError): void;
}

/**
 * Begins an expectation about a value.
 *
 * @example
 * test("one and one", function () { expect(1 + 1).toBe(2); });
 */
declare function expect(actual: any): Expectations & {
    /** The same, turned round. */
    not: Expectations;
};

/**
 * Defines a test. It fails when it throws, when an error in a handler comes while it runs, and when it takes longer
 * than its limit, 5000 milliseconds by default. Only in files of `kyrun --test`, and not inside of another test.
 *
 * @example
 * test("a timer ends the test", function (done) {
 *     var timer = new Timer();
 *     timer.timeout.connect(function () { timer.stop(); done(); });
 *     timer.start(10);
 * });
 */
declare const test: {
    (name: string, body: TestBody, timeout?: number): void;
    /** Leaves a test out, and says so in the results. */
    skip(name: string, body?: TestBody): void;
    /** Names a test that is still to be written. */
    todo(name: string): void;
};

/**
 * Runs before each test of the file.
 *
 * @example
 * beforeEach(function () { Global.count = 0; });
 */
declare function beforeEach(body: TestBody): void;

/**
 * Runs behind each test of the file, also behind one that has failed.
 *
 * @example
 * afterEach(function () { Global.count = undefined; });
 */
declare function afterEach(body: TestBody): void;
