// Messages and dialogs.

/**
 * Message boxes, and lines of the log.
 *
 * @example
 * var answer = Message.question("Overwrite the report?", ["Overwrite", "Cancel"], "Cancel");
 * if (answer === "Overwrite")
 *     Message.show("The report is overwritten.");
 */
interface Message extends HostObject {
    /**
     * Shows a box with an OK button and waits until it is closed; the application goes on meanwhile, and other scripts
     * may run. Without windows: nothing happens.
     */
    show(inMessage: string): void;
    /** Closes the box that `show` opened last. Neutral: nothing happens. */
    hide(): void;
    /**
     * Asks the user to choose a button and waits for that. Gives the text of the button. Enter chooses the default
     * button, if there is one.
     * Neutral, when the box is closed without a choice, and without windows: empty. Errors: a TypeError without a list.
     */
    question(inMessage: string, inButtons: TextLike[], inDefaultButton?: string): string;
    /**
     * A line in the session log of the server, under a context, "Script Interface" by default. Neutral, without a
     * server: lost.
     */
    trace(inMessage: string, inContext?: string): void;
    /** A line of level 2, something unexpected, in the log. */
    warn(inMessage: string, inContext?: string): void;
    /** A line of level 3, a failure, in the log. */
    error(inMessage: string, inContext?: string): void;
}

/** Message boxes, and lines of the log. */
declare const Message: Message;

/** An item of the menu of a button. */
interface DialogMenuItem {
    /** The text; "&" marks the letter for the keyboard. */
    text: string;
    /** The tool tip; none when empty. */
    toolTip?: string;
    /** Anything of your own; the dialog does not look at it. */
    [key: string]: any;
}

/** A button of a dialog. */
interface DialogButton {
    /** The text; "&" marks the letter for the keyboard. */
    text: string;
    /** The tool tip; none when empty. */
    toolTip?: string;
    /** With items, the button opens a menu of them. */
    menuItems?: DialogMenuItem[];
}

/** What `new Dialog` takes. Every key may be left out. A value of a wrong kind counts as if the key was not there. */
interface DialogConfig {
    /** The title of the window. */
    title?: string;
    /** The message above the text field. HTML works, and is found by itself. */
    message?: string;
    /** The text of the text field. With this key, be it empty, the field is shown. HTML is found by itself. */
    fieldText?: string;
    /** The text field is one with links, which can't be edited. Default: false. */
    useTextBrowser?: boolean;
    /** The user may change the text field. Default: false. */
    editable?: boolean;
    /** Shows a line to write into. The key alone counts: it is shown with false, too. */
    showLineEdit?: boolean;
    /** The user may write into the line. Default: false. */
    lineEditEnabled?: boolean;
    /** What the empty line shows. */
    lineEditPlaceholder?: string;
    /** The buttons. The first one accepts, all others reject. Default: one button "OK". */
    buttons?: (string | DialogButton)[];
    /** Tool tips of the buttons, by position. */
    buttonToolTips?: string[];
    /** Answers leave the dialog open; the script closes it. Default: false. */
    manuallyCloseDialog?: boolean;
    /** The dialog closes with the studies, and when the session goes on to another patient. Default: false. */
    autoClose?: boolean;
    /** Width and height of the first time, in pixels. Default: what is needed. */
    initialSize?: [width: number, height: number];
    /**
     * The name for the session log, under which size and place are kept as well; white space in it is left out.
     * Default: "KyScriptDialog".
     */
    context?: string;
}

/** The index of a button, or of a button and an item of its menu, from 0. */
type DialogButtonIndex = number | [button: number, item: number];

/** The kinds of text that a text field takes; "auto" finds HTML by itself. Letter case does not matter. */
type DialogTextType = "auto" | "html" | "markdown" | "plaintext" | (string & {});

/**
 * A window that asks or tells something: message box, text viewer, editor, prompt or busy indicator, as its keys say.
 * It never blocks: `show` returns at once, and the answer comes with `processed`.
 *
 * Keep it in a variable as long as it is to stay: a dialog that nothing refers to goes at a garbage collection, on show
 * or not. All operations work before `show`, while the dialog is open and after it. It has further members, which are
 * those of Qt's QWidget and QDialog.
 *
 * @example
 * var saved = new Dialog({ title: "Report", message: "The report was saved.", buttons: ["OK", "Show"] });
 * saved.processed.connect(function () {
 *     if (saved.clickedButton() === 1)
 *         print("showing the report");
 * });
 * saved.show();
 */
interface Dialog extends HostObject {
    /** Opens the dialog when the script has ended, with the answer of the last time forgotten. */
    show(): void;
    /** Closes the dialog; it can be shown again. Gives true. In the manual mode `processed` comes. */
    close(): boolean;
    /** Whether the dialog is on show. */
    visible: boolean;
    /** Puts the dialog above the other windows. */
    raise(): void;
    /** Width of the inner area in pixels. */
    readonly width: number;
    /** Height of the inner area in pixels. */
    readonly height: number;
    /** Whether the user can use the dialog at all. */
    enabled: boolean;

    /** Never opens anything. Errors: always a SyntaxError; use `show`. */
    exec(): number;
    /** Answers as the first button does, without a button. */
    accept(): void;
    /** Answers as Escape does. */
    reject(): void;

    /**
     * Shows that something is under way: an animated icon with a text. With false the text stays without the icon, and
     * goes when it is empty. Work in steps meanwhile, for instance on a timer.
     *
     * @example
     * var busy = new Dialog({ message: "The images are being checked." });
     * busy.setStatus(true, "Image 3 of 20");
     * busy.setStatus(false, "All images are in order.");
     */
    setStatus(busy: boolean, status?: string): void;
    /** Sets the title of the window. */
    setTitle(title: string): void;
    /** The title of the window. */
    title(): string;
    /** Sets the message above the text field. HTML works, and is found by itself. */
    setMessage(message: string): void;

    /**
     * Sets the text of the text field. Put what comes from elsewhere into HTML only with "&" and "<" escaped.
     * Errors: an unknown type is a line of the log (level 2) and works as "auto".
     *
     * @example
     * var viewer = new Dialog({ fieldText: "" });
     * viewer.setFieldText("1 < 2", "plaintext");
     */
    setFieldText(fieldText: string, type?: DialogTextType): void;
    /**
     * The text of the text field, as "plaintext" by default. Errors: an unknown type, "auto" too, is a line of the log
     * (level 2) and works as "plaintext".
     */
    fieldText(type?: "plaintext" | "html" | "markdown" | (string & {})): string;
    /** Says whether the user may change the text field. A field with links never can be changed. */
    setEditable(editable: boolean): void;
    /** Scrolls the text field to its beginning. */
    scrollToTop(): void;
    /** Scrolls the text field to its end. */
    scrollToBottom(): void;

    /** Says whether the user may write into the line. */
    setLineEditEnabled(enabled: boolean): void;
    /** Sets the text of the line. */
    setLineEditText(text: string): void;
    /** The text of the line. Neutral: empty. */
    lineEditText(): string;

    /** Replaces all buttons; an empty list leaves none. The first button accepts, all others reject. */
    setButtons(buttons: (string | DialogButton)[]): void;
    /** Sets the tool tips of the buttons by position. An empty text removes one; surplus ones are skipped. */
    setButtonToolTips(buttonToolTips: TextLike[]): void;
    /**
     * Says whether a button with its menu can be used, or one item of a menu. Neutral, out of range: nothing happens.
     *
     * @example
     * var box = new Dialog({ buttons: ["Save", { text: "Insert", menuItems: [{ text: "Normal" }] }] });
     * box.setButtonEnabled(0, false);
     * box.setButtonEnabled([1, 0], false);
     */
    setButtonEnabled(index: DialogButtonIndex, enabled: boolean): void;
    /** The same for several; an empty list means all buttons. */
    setButtonsEnabled(indices: DialogButtonIndex[], enabled: boolean): void;

    /** Whether the last answer accepts (1) or rejects (0). */
    result(): number;
    /**
     * The index of the clicked button, or of the one whose menu was used; -1 closed in another way, -2 closed by the
     * application, -3 Enter in the line.
     */
    clickedButton(): number;
    /** The index of the chosen item of a menu. Neutral: -1. */
    clickedButtonMenuItem(): number;
    /** 1 when the application closed the dialog, else 0. */
    autoClosed(): number;

    /**
     * The user has answered, or the dialog was closed. In the manual mode the answer is there during the handler only.
     */
    readonly processed: Signal;
    /** A link of the text field was clicked. It is never followed: the script decides. */
    readonly linkClicked: Signal<[url: string]>;
    /** The mouse has come over a link; empty when it has left it. */
    readonly linkHovered: Signal<[link: string]>;
    /** The dialog was closed, with the same number as `result`. Comes behind `processed`. */
    readonly finished: Signal<[result: number]>;
}

/** Makes a {@link Dialog}, not on show. */
declare const Dialog: { new (config?: DialogConfig): Dialog };
