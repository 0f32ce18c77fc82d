// What scripts have in kyrun only, beside all the rest.

/**
 * The program that runs the script.
 *
 * @example
 * var path = Runner.args[0] || "out.csv";
 * print(path);
 */
interface Runner extends HostObject {
    /** The arguments behind the script on the command line. */
    readonly args: string[];
    /** Whether the program stays in the event loop when the script is over, for timers and sockets. */
    keepRunning: boolean;
    /**
     * Ends the program with an exit status, 0 by default: at once when called in a handler, after the script when
     * called in it. Of several calls the first decides.
     */
    exit(code?: number): void;
}

/** The program that runs the script. In the workstation there is none: `typeof Runner` is "undefined" there. */
declare const Runner: Runner;
