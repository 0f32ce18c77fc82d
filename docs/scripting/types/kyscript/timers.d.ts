// Timers, identifiers, hashes.

/**
 * A timer. It repeats until `setSingleShot(true)`.
 *
 * Keep it in a variable: that it runs, or that a function is connected to it, does not keep it. A timer that nothing
 * refers to falls silent at a garbage collection.
 *
 * @example
 * var reminder = new Timer();
 * reminder.setSingleShot(true);
 * reminder.timeout.connect(function () { print("ten minutes are over"); });
 * reminder.start(10 * 60 * 1000);
 */
interface Timer extends HostObject {
    /** With true, the timer stops after its first timeout. Holds for one that is running, too. */
    setSingleShot(value: boolean): void;
    /** Whether it stops after its first timeout. False at first. */
    isSingleShot(): boolean;
    /**
     * Starts the timer, or starts it anew: a timeout every `msec` milliseconds, or with 0 whenever the application has
     * nothing else to do. A negative number stops it.
     */
    start(msec: number): void;
    /** Stops the timer. */
    stop(): void;
    /** Milliseconds to the next timeout; 0 when it is overdue. Neutral, when the timer is not running: -1. */
    remainingTime(): number;
    /** The time is over. */
    readonly timeout: Signal;
}

/** Makes a {@link Timer}, not running. */
declare const Timer: { new (): Timer };

/**
 * Identifiers, and hashes of texts. It keeps no state: one object is as good as another.
 *
 * The hashes are made of SHA-1, are the same on every machine and in every version, and may be stored. They keep no
 * secrets: who knows the possible texts can try them all.
 *
 * @example
 * var ids = new IdGenerator();
 * print(ids.generateUuid(), ids.asciiHash("abc"));
 */
interface IdGenerator extends HostObject {
    /** A text that no other call gives. Its form may change. */
    generateId(): string;
    /** A random UUID (RFC 4122, version 4) of 36 characters; with false in braces. */
    generateUuid(withoutCurlyBraces?: boolean): string;
    /**
     * Capital letters and digits that stand for a text: 12 of them, or 1 to 20; any other number counts as 20.
     *
     * @example
     * print(new IdGenerator().asciiHash("abc", 4)); // ZJ0S
     */
    asciiHash(source: string, numDigits?: number): string;
    /**
     * A number from 0 up to and including 1 that stands for a text, evenly spread: for choosing a part of the cases at
     * random, but the same ones each time. Each `startIdx` from 0 to 16 gives another one; any other counts as 0.
     *
     * @example
     * var study = StudyList.get("PRIMARY_STUDIES")[0];
     * if (study && new IdGenerator().sigmoidHash(study.getTag("DICOM.StudyInstanceUID")) < 0.1)
     *     print("one of ten");
     */
    sigmoidHash(source: string, startIdx?: number): number;
}

/** Makes an {@link IdGenerator}. */
declare const IdGenerator: { new (): IdGenerator };
