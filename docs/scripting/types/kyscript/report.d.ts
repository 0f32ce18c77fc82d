// Reports: the text of the application's own editor, and of editors in other programs.

/**
 * What to find: a regular expression, or a text in which "*" stands for anything and "?" for one character. It must fit
 * as a whole, and upper and lower case count, in both forms.
 */
type WindowPattern = string | RegExp;

/** The editor that a {@link RichEditCtrl} works on. Keys that are missing, or of a wrong kind, set no condition. */
interface RichEditConfig {
    /** File name of the other program, such as `"Editor.exe"`. */
    processName?: WindowPattern;
    /** Window class of the control, such as `"RICHEDIT*"`; "OvReportEditor" is the application's own report editor. */
    windowClassName?: "OvReportEditor" | (string & {}) | RegExp;
    /** Text of the control; at most its first 1024 characters are looked at. */
    contentPattern?: WindowPattern;
    /** Title of the outermost window. */
    topLevelWindowName?: WindowPattern;
    /** Title of the window that directly holds the control. */
    parentWindowName?: WindowPattern;
    /** Title of the control. */
    windowName?: WindowPattern;
    /** Text that is read has "\n" in place of "\r\n". Needed for rich-edit controls, so that positions fit. */
    convertCRLFToLF?: boolean;
}

/**
 * The text of a reporting editor: the application's own, or a rich-edit or edit control of another program on Windows.
 * A control of another program needs a window class, and a process or the title of its outermost window.
 *
 * The object keeps no connection: each operation finds the editor anew. Positions count UTF-16 units, from 0. Text
 * reaches other programs in the local 8-bit code page. A program that does not answer blocks the script until it does.
 *
 * @example
 * var report = new RichEditCtrl({ windowClassName: "OvReportEditor" });
 * if (report.isValid())
 *     report.replace(/\[NAME\]/, "Doe, Jane");
 */
interface RichEditCtrl extends HostObject {
    /** Whether the editor is there and can be changed. */
    isValid(): boolean;
    /** Whether the editor is there and can be read. */
    isReadable(): boolean;
    /** The plain text. Neutral: undefined. */
    getText(): string | undefined;
    /** The text of the own editor as HTML. Neutral, also for other programs: undefined. */
    getHtml(): string | undefined;
    /**
     * Replaces the whole text of the own editor; the user can't undo it. Neutral, also for other programs: nothing
     * happens.
     */
    setHtml(html: string): void;
    /** Start and end of the selection, twice the place of the cursor without one. Neutral: an empty array. */
    getSelection(): number[];
    /** Selects a part of the text, also in an editor that can only be read. Neutral: nothing happens. */
    setSelection(start: number, end: number): void;
    /**
     * Replaces the first match of a text, or of a regular expression, whose flags don't count and whose greediness is
     * turned round: `*` takes as little as it can. A text matches in any letter case in the own editor, and in its own
     * in other programs. Neutral: nothing happens.
     *
     * @example
     * new RichEditCtrl({ processName: "Editor.exe", windowClassName: "RICHEDIT*" }).replace("[ID]", "4711");
     */
    replace(pattern: string | RegExp, text: string): void;
    /**
     * Replaces what is selected. In another program the user may undo it, unless `allowUndo` is false. Neutral: nothing
     * happens.
     */
    replaceSelection(text: string, allowUndo?: boolean): void;
    /**
     * Puts HTML in the place of what is selected in the own editor. Neutral, also for other programs: nothing happens.
     */
    replaceSelectionHtml(text: string): void;
    /** Inserts a text behind the first occurrence of another one. Neutral: nothing happens. */
    insertAfter(search: string, text: string): void;
}

/** Makes a {@link RichEditCtrl}. Without a description no editor fits. */
declare const RichEditCtrl: { new (config?: RichEditConfig): RichEditCtrl };

/**
 * Text for a Microsoft Word that is running, with a document open. It is never started. What goes wrong is a line of
 * the log (level 3); so is each call on a system without COM.
 *
 * @example
 * new WordCtrl().insertString("No pathological findings.");
 */
interface WordCtrl extends HostObject {
    /** Always true, whether Word is running or not. */
    isAvailable(): boolean;
    /**
     * Puts a text in the place of what is selected, with the cursor behind it. An empty one deletes what is selected.
     */
    insertString(text: string): void;
}

/** Makes a {@link WordCtrl}. */
declare const WordCtrl: { new (): WordCtrl };
