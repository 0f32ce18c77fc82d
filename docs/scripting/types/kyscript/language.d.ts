// What the language of scripts has beside the library of ES2017.

interface Error {
    /** The script in which the error was made, as a URL (`"file:first.js"`). Neutral, for one without a file: empty. */
    fileName: string;
    /** The line in which the error was made, from 1. */
    lineNumber: number;
}

interface JSON {
    /**
     * Reads bytes as UTF-8 and parses them, as in `JSON.parse(message)` with the body of an answer.
     * Errors: a SyntaxError of the script for what is not JSON.
     */
    parse(text: ArrayBuffer, reviver?: (this: any, key: string, value: any) => any): any;
}

/**
 * The parts of an address, as WHATWG's URL standard has them. Not to be mixed up with {@link Url}, which opens one.
 *
 * @example
 * var address = new URL("http://127.0.0.1:8080/reports?patient=4711");
 * print(address.hostname, address.searchParams.get("patient"));
 */
interface URL {
    /** The part behind "#", with it. Neutral: empty. */
    hash: string;
    /** Host and port, as in `"127.0.0.1:8080"`. */
    host: string;
    /** The host without its port. */
    hostname: string;
    /** The whole address. */
    href: string;
    /** Scheme, host and port. */
    readonly origin: string;
    /** The password in the address. Neutral: empty. */
    password: string;
    /** The path, with its first "/". */
    pathname: string;
    /** The port as a text. Neutral: empty. */
    port: string;
    /** The scheme with its ":", as in `"http:"`. */
    protocol: string;
    /** The part behind "?", with it. Neutral: empty. */
    search: string;
    /** The parameters in `search`, decoded. A copy: a change of them does not change the address. */
    readonly searchParams: URLSearchParams;
    /** The user in the address. Neutral: empty. */
    username: string;
    /** The same as `href`. */
    toString(): string;
    /** The same as `href`. */
    toJSON(): string;
}

/** Makes a {@link URL}. Errors: a TypeError of the script for what is no address. */
declare const URL: { new (url: string, base?: string): URL };

/**
 * The parameters of an address: names and values in their order; a name may be there more than once.
 *
 * @example
 * var parameters = new URLSearchParams("a=1&b=two%20words");
 * print(parameters.get("b"));
 */
interface URLSearchParams {
    /** Adds a parameter at the end. */
    append(name: string, value: string): void;
    /** Removes all of this name. */
    delete(name: string): void;
    /** The first value of this name. Neutral: null. */
    get(name: string): string | null;
    /** All values of this name. Neutral: an empty array. */
    getAll(name: string): string[];
    /** Whether there is one of this name. */
    has(name: string): boolean;
    /** Sets the value of this name and removes further ones. */
    set(name: string, value: string): void;
    /** Sorts by name. */
    sort(): void;
    /** Calls a function for each parameter. */
    forEach(callback: (value: string, name: string) => void): void;
    /** Names and values. Depends on the version of Qt (6.4 gives an index with each): use `forEach`. */
    entries(): IterableIterator<any>;
    /** The names. Depends on the version of Qt likewise. */
    keys(): IterableIterator<any>;
    /** The values. Depends on the version of Qt likewise. */
    values(): IterableIterator<any>;
    /** The parameters as they stand in an address. */
    toString(): string;
}

/** Makes {@link URLSearchParams} from what stands behind "?" in an address, an object, or pairs of name and value. */
declare const URLSearchParams: {
    new (parameters?: string | { [name: string]: string } | [name: string, value: string][]): URLSearchParams;
};
