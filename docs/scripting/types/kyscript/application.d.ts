// The application: tools, editors, viewers, session, properties, settings.

/** The keys of tools that the workstation and kyrun have by themselves. Others come from tool files. */
type ToolKey =
    | "Report.Editor"
    | "Viewers.Layout1x1"
    | "Viewers.Layout1x2"
    | "Viewers.Layout2x2"
    | (string & {});

/** The ids of properties that are always there. Others come from the application and from scripts. */
type PropertyId = "Scripting.LogNumLines" | "Viewers.Layout" | (string & {});

/** The value of a property: truth value, whole number, number with a fraction, text, or list of texts. */
type PropertyValue = boolean | number | string | string[];

/**
 * A tool as scripts drive it, made by `Orvane.tool`. It follows the tool: its texts, whether the tool is on, and
 * whether the active viewer supports it. When the tool has gone, it is disabled for good.
 *
 * It has further members, which are those of Qt's QAction.
 *
 * @example
 * var editor = Orvane.tool("Report.Editor");
 * if (editor && editor.enabled)
 *     editor.trigger();
 */
interface ToolAction extends HostObject {
    /** Whether the tool is one that can be on or off. */
    checkable: boolean;
    /**
     * Whether the tool is on. Setting it turns the tool on or off as a click does; nothing for one that isn't
     * checkable.
     */
    checked: boolean;
    /** Whether the tool can be used with the active viewer. */
    enabled: boolean;
    /** The text of the button. */
    text: string;
    /** The tool tip. */
    toolTip: string;
    /** Whether buttons that show this action are to be seen. */
    visible: boolean;

    /**
     * Triggers the tool on the active viewer, as a click does. Neutral, for one that isn't enabled: nothing happens.
     */
    trigger(): void;
    /** Turns a checkable tool over. */
    toggle(): void;
    /** The same as setting `checked`. */
    setChecked(checked: boolean): void;

    /** The action was triggered by the user or by `trigger`. */
    readonly triggered: Signal<[checked: boolean]>;
    /** The tool was turned on or off. */
    readonly toggled: Signal<[checked: boolean]>;
    /** Something about the action has changed. */
    readonly changed: Signal;
}

/**
 * The report editor, `Orvane.editor("Report")`. Without an editor, as at the end of the application, the text is empty
 * and stays so.
 *
 * @example
 * var report = Orvane.editor("Report");
 * if (report) {
 *     report.html = "<b>Patient:</b> [NAME]";
 *     report.replace("[NAME]", "Doe, Jane");
 * }
 */
interface ReportEditor extends HostObject {
    /**
     * The report as plain text, with "\n" between paragraphs. Setting it replaces the whole report; the user can undo.
     */
    text: string;
    /** The report with its formatting, as HTML. A fragment will do when it is set. */
    html: string;
    /** The text or its formatting has changed. */
    readonly textChanged: Signal;

    /** Adds plain text at the end. */
    append(inText: string): void;
    /**
     * Puts plain text in the place of each occurrence of a placeholder, in its format. Gives how many there were.
     * Neutral, also for an empty placeholder: 0.
     */
    replace(inPlaceholder: string, inText: string): number;
    /** Brings the editor in front of the user. Neutral, in kyrun: nothing happens. */
    open(): void;
}

/**
 * The running application: its tools, viewers, session, properties and settings. A key or an id that is unknown is no
 * error; each operation has a result for that.
 *
 * @example
 * var viewer = Orvane.activeViewer();
 * if (viewer)
 *     Orvane.setDisplayHint("Slice " + viewer.sliceNumber());
 */
interface Orvane extends HostObject {
    /**
     * The accession numbers that another program has called up; one list for all engines. Assign a whole list: a change
     * inside (`push`) is lost. Errors: a TypeError for what is no list of texts.
     *
     * @example
     * Orvane.extAcc = ["A1", "A2"];
     */
    extAcc: string[];
    /** The list was changed through this engine. */
    readonly extAccChanged: Signal;

    /**
     * An action that shows a tool. Each call makes a new one, which lives as long as the engine: keep it.
     * Neutral, for an unknown key: null.
     *
     * @example
     * var layout = Orvane.tool("Viewers.Layout2x2");
     * if (layout)
     *     layout.trigger();
     */
    tool(inKey: ToolKey): ToolAction | null;
    /**
     * Gives a tool an icon: a file (PNG, SVG), or an icon of the application by its name. A name that is neither stands
     * for the application's mark; an empty one takes the icon away. It is kept for a tool that comes later, too.
     *
     * @example
     * Orvane.setToolIcon("Site.FindPrior", "/opt/site/prior.svg");
     */
    setToolIcon(inKey: ToolKey, inIcon: string): void;
    /**
     * Gives a tool a tool tip and a label, also while it is on. Kept likewise.
     *
     * @example
     * Orvane.setToolText("Site.FindPrior", "No earlier study", "No Prior");
     */
    setToolText(inKey: ToolKey, inTooltip: string, inMenuText: string): void;
    /**
     * What an editor of the application offers scripts.
     * Neutral, for an unknown key, and when there is no editor: null.
     *
     * @example
     * var report = Orvane.editor("Report");
     * if (report)
     *     print(report.text.length);
     */
    editor(inKey: "Report" | (string & {})): ReportEditor | null;

    /**
     * Makes the viewer of a display set the active one and repaints it. Gives whether there is one. An empty id finds a
     * viewer that has none. In the workstation and in kyrun the ids are the places of the layout, `"1"` to `"4"`.
     * Neutral: false.
     *
     * @example
     * if (!Orvane.activateViewer("2"))
     *     print("there is one viewer only");
     */
    activateViewer(inProtocolDisplaySetId: string): boolean;
    /** The active viewer; the same object for the same viewer each time. Neutral: null. */
    activeViewer(): Viewer | null;
    /** The first viewer of a display set; see `activateViewer` for the ids. Neutral: null. */
    viewer(inProtocolDisplaySetId: string): Viewer | null;
    /**
     * Shows a short text in the tool bar of the active viewer; an empty one takes it away. Neutral: nothing happens.
     */
    setDisplayHint(text: string): void;

    /** The number of the session. Neutral: 0. */
    getSessionContextID(): number;
    /** Runs a command on the render server, in Latin-1. Neutral, without a server: nothing happens. */
    exec(inCommand: string, inArguments: string): void;
    /** Runs a command on the render server and gives its answer, in Latin-1. Neutral, without a server: empty. */
    eval(inCommand: string, inArguments: string): string;
    /**
     * Tells the user, in a box, when other studies are open than `extAcc` names. Gives the button of the box, and 0 at
     * once when they agree.
     */
    showOutOfSyncWarning(): number;
    /** Whether other studies are open than `extAcc` names. Neutral: false. */
    isOutOfSync(): boolean;

    /**
     * The text of a property's value.
     * Neutral, for an unknown property: empty.
     *
     * @example
     * print(Orvane.propertyValue("Scripting.LogNumLines"));
     */
    propertyValue(inPropertyId: PropertyId): string;
    /**
     * Sets a property from a text, for this and later starts, above what the user has chosen. Gives whether there is
     * such a property. Errors: a text that doesn't fit is a line of the log (level 3) and changes nothing; the result
     * is true all the same.
     *
     * @example
     * Orvane.setPropertyValue("Scripting.LogNumLines", "5");
     */
    setPropertyValue(inPropertyId: PropertyId, inValue: string): boolean;
    /** The value of a property in its own type. Neutral, for an unknown property: undefined. */
    propertyVariant(inPropertyId: PropertyId): PropertyValue | undefined;
    /**
     * Sets a property to a value of its own type; a number with a fraction fits no whole number, and the other way
     * round. Result and errors as with `setPropertyValue`.
     *
     * @example
     * Orvane.setPropertyVariant("Scripting.LogNumLines", 5);
     */
    setPropertyVariant(inPropertyId: PropertyId, inValue: PropertyValue): boolean;
    /**
     * Takes back what scripts have set: the user's choice, or the default, is in effect again. Gives whether there is
     * such a property.
     */
    removePropertyValue(inPropertyId: PropertyId): boolean;
    /**
     * Makes a property of the default's type, until the application ends. Its value is kept and is there again when it
     * is registered again. The id has 1 to 1024 characters of Latin-1 without "?"; the label has as many parts as the
     * id, and the user finds the property under it in the settings. One that is there keeps its value.
     * Errors: a line of the log.
     *
     * @example
     * Orvane.registerProperty("MyTool.Report.AutoSign", "My Tool.Reports.Sign automatically", true);
     */
    registerProperty(inPropertyId: string, inPropertyLabel: string, inDefault: PropertyValue): void;
    /**
     * The same for a floating point number, also when the default is a whole one.
     *
     * @example
     * Orvane.registerPropertyFloatingPoint("MyTool.Zoom", "My Tool.Zoom factor", 2);
     */
    registerPropertyFloatingPoint(inPropertyId: string, inPropertyLabel: string, inDefault: number): void;

    /**
     * Stores a value under a key of the application's own settings, with "/" between groups. A key that begins with
     * "\", "/" or "HKEY" names a place in the system's own store and a value there. Numbers and truth values may come
     * back as texts after a new start of the application. Of functions, symbols and objects of the application
     * undefined is stored. Always true, also when it could not be stored.
     *
     * @example
     * Orvane.setRegistryValue("MyTool/LastFolder", "/data/in");
     */
    setRegistryValue(inKey: string, inValue: any): boolean;
    /**
     * The stored value, or the default without one.
     * Neutral, without a default: undefined.
     *
     * @example
     * var folder = String(Orvane.getRegistryValue("MyTool/LastFolder", "/data"));
     * print(folder);
     */
    getRegistryValue(inKey: string, inDefaultValue?: any): any;
    /** Removes a value, and all below its key. Always true. */
    removeRegistryValue(inKey: string): boolean;
    /**
     * The keys of all values below a path, relative to it; without a path those of all the application's settings.
     * Neutral: an empty array.
     *
     * @example
     * print(Orvane.registryKeys("MyTool"));
     */
    registryKeys(inPath?: string): string[];
}

/** The running application. */
declare const Orvane: Orvane;
