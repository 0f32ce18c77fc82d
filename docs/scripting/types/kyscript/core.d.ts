// What every object of the application has, and the global functions.

/**
 * A signal of an object of the application. Connect functions to it; they are called one after the other, in the order
 * in which they were connected.
 *
 * A handler runs when the event comes, between scripts or while a script waits in a call such as `System.sleep`. An
 * error in it becomes a line of the log with file and line; it reaches neither the script that connected the handler
 * nor the other handlers. A connection does not keep the object alive: keep that in a variable.
 *
 * @example
 * var timer = new Timer();
 * function tick() { print("tick"); }
 * timer.timeout.connect(tick);
 * timer.timeout.disconnect(tick);
 */
interface Signal<Arguments extends any[] = []> {
    /** Sends the signal to its handlers, as the application does. Errors: an Error for too few arguments. */
    (...args: Arguments): void;

    /**
     * Calls `handler` each time that the signal comes. Connected twice, it is called twice.
     * Errors: an Error when `handler` is no function, or the object has gone.
     */
    connect(handler: (...args: Arguments) => void): void;
    /** The same with `receiver` as the handler's `this`. */
    connect<Receiver>(receiver: Receiver, handler: (this: Receiver, ...args: Arguments) => void): void;

    /** Takes a connection back; the function must be the very one that was connected. Neutral: nothing happens. */
    disconnect(handler: (...args: Arguments) => void): void;
    /** The same for a handler that was connected with a receiver. */
    disconnect<Receiver>(receiver: Receiver, handler: (this: Receiver, ...args: Arguments) => void): void;
}

/**
 * What all objects of the application have in common.
 *
 * Objects that the application hands out are its own. Those that a script makes with `new` live as long as something
 * refers to them. Reading from an object that has gone gives undefined, and calling it is a TypeError. Classes of the
 * application work with `new` only: `instanceof` and `extends` are TypeErrors with them.
 *
 * @example
 * var timer = new Timer();
 * timer.objectName = "clock";
 * print(timer.objectName);
 */
interface HostObject {
    /** A name for the script's own use. Empty at first. */
    objectName: string;
    /** The name was changed. */
    readonly objectNameChanged: Signal<[objectName: string]>;

    /**
     * Ends an object that the script has made, at the next turn of the event loop or `delay` milliseconds later. It is
     * rarely needed, since objects go by themselves.
     * Errors: an Error for an object of the application.
     */
    destroy(delay?: number): void;
    /** A text for debugging, with the name of the class. */
    toString(): string;
}

/**
 * A time of day without a date, as `getTag` gives it. It prints as "hh:mm:ss.zzz".
 *
 * @example
 * var study = StudyList.get("PRIMARY_STUDIES")[0];
 * if (study) {
 *     var time = study.getTag("DICOM.StudyTime");
 *     print(guiTime(time), String(time));
 * }
 */
interface TimeOfDay {
    /** The time as "hh:mm:ss.zzz". */
    toString(): string;
}

/**
 * Bytes that a script passes. Of a typed array or a DataView only its own part of the buffer counts; the numbers of an
 * array are taken modulo 256; a text, number or boolean stands for its text in UTF-8, and null for no bytes.
 */
type Bytes = ArrayBuffer | ArrayBufferView | number[] | string | number | boolean | null;

/** A text that a script passes in a list: numbers and booleans become their texts, null and undefined empty ones. */
type TextLike = string | number | boolean | null | undefined;

/**
 * The values that scripts keep in {@link Global}. To have names of your own completed, declare them in a file of your
 * project: `interface GlobalValues { count: number }`.
 */
interface GlobalValues {
    [name: string]: any;
}

/**
 * Values that outlive a run: what a script puts here is there in the next run, on every engine, until the application
 * ends. Kept are plain values, dates, regular expressions, ArrayBuffers, and arrays and objects of these; functions and
 * symbols are not. Each run sees new objects.
 *
 * Assign undefined to remove a value; one that is removed with `delete` is back in the next run. What a handler puts
 * here between runs is lost.
 *
 * @example
 * Global.count = (Global.count || 0) + 1;
 */
declare var Global: GlobalValues;

/**
 * Writes one line: the texts of the values, joined by blanks. It goes to standard output in kyrun, and to the output
 * pane in a console of the workstation. Scripts of tools have no such function.
 *
 * @example
 * print("studies:", StudyList.get("PRIMARY_STUDIES").length);
 */
declare function print(...values: any[]): void;

/**
 * Frees what no script refers to any more, such as dialogs and timers that nobody keeps. The engine does so by itself
 * now and then.
 *
 * @example
 * collectGarbage();
 */
declare function collectGarbage(): void;

/**
 * The bytes of a text in UTF-8 as Base64 (RFC 4648, with padding).
 *
 * @example
 * print(btoa("ä")); // w6Q=
 */
declare function btoa(inText: string): string;

/**
 * A date as the user wants to see dates. Only the day counts, in local time.
 * Neutral, for an invalid date: an empty text. Errors: undefined and null are TypeErrors.
 *
 * @example
 * print(guiDate(new Date()));
 */
declare function guiDate(inDate: Date): string;

/**
 * A time as the user wants to see times: that of a Date, of what `getTag` gives, or of a text such as "14:05:09.120".
 * Neutral, for anything that is no time: an empty text.
 *
 * @example
 * print(guiTime(new Date()), guiTime("14:05:09.120"));
 */
declare function guiTime(inTime: Date | TimeOfDay | string): string;
