// A browser that a script commands.

/**
 * A named browser: a window of the application, or a program of its own, as the setting "Orvane Browser" and the
 * machine have it. Both follow the same commands. Its place on the screen, and the cookies of its pages, are kept under
 * its name.
 *
 * @example
 * var help = new BrowserCtrl("help");
 * help.setInstallationDirectory("/opt/browser");
 * if (help.isInstalled())
 *     help.sendCommand("URL http://127.0.0.1:8080/help.html;SHOW");
 */
interface BrowserCtrl extends HostObject {
    /** The arguments of the next start of a program. Neutral, for a window: a line of the log. */
    setBrowserCmdArgs(inBrowserArgs: string[] | string): void;
    /** Its size in pixels. Neutral, for a window that is not there yet: nothing. */
    setSize(inWidth: number, inHeight: number): void;
    /** The folder of the program. Neutral, for a window: a line of the log. */
    setInstallationDirectory(inPath: string): void;
    /**
     * Starts the browser if it isn't running, which may take 6 seconds at most, and sends it a command, or several with
     * ";" between them: `SHOW`, `HIDE`, `URL address`, `BACK`, `FORWARD`, `RELOAD`, `STOP`, `ZOOM percent`, `TITLE
     * text`, `GEOMETRY top left bottom right`. Errors: a line of the log, and a message box where `SHOW` can't start
     * it.
     */
    sendCommand(inCMD: string): void;
    /** Whether it is hidden. A program is asked, and has a second to answer. Neutral: true. */
    isHidden(): boolean;
    /** Whether there is a window, or the program runs. */
    isRunning(): boolean;
    /** Whether there is an engine for web pages, or a file in the place of the program. */
    isInstalled(): boolean;
}

/** Makes a {@link BrowserCtrl}, "Default" without a name. Nothing is started before the first command. */
declare const BrowserCtrl: { new (inName?: string): BrowserCtrl };
