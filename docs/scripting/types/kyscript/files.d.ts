// The workstation: environment, files, programs, clipboard.

/**
 * The workstation: its environment, its files and programs, the clipboard.
 *
 * @example
 * var home = System.getEnv("HOME");
 * if (System.fileExists(home))
 *     print(home);
 */
interface System extends HostObject {
    /** The value of an environment variable, each byte as one character. Neutral: empty. */
    getEnv(inName: string): string;
    /** Whether a file or a folder is there. */
    fileExists(inFile: string): boolean;
    /**
     * The whole file, each byte as one character.
     * Neutral, when it can't be read, for pipes and devices, and beyond 1 GiB: empty.
     *
     * @example
     * var bytes = System.fileReadAll("/etc/hostname");
     * print(decodeURIComponent(escape(bytes))); // a text in UTF-8
     */
    fileReadAll(inFile: string): string;
    /** Waits that many milliseconds. Timers, sockets, the user and other scripts go on. Below 1: returns at once. */
    sleep(inMsecs: number): void;
    /** Serves the events that are pending, once, or until none is left or that many milliseconds are over. */
    processEvents(inMsecs?: number): void;
    /** The folder in which programs are started from now on; an empty one is that of the client. */
    setWorkingDirectory(inWorkingDirectory: string): void;
    /**
     * The absolute path of a program. Relative names, and those that begin with "%ProgramFiles%", are looked for in the
     * folders of programs first.
     * Neutral, when there is none: empty.
     *
     * @example
     * var shell = System.findCmd("/bin/sh");
     * print(shell);
     */
    findCmd(inCmdFile: string): string;
    /**
     * Starts a program and returns without waiting for its end. One runs at a time: while the one before runs, the call
     * waits for it, at most `inMsecs` milliseconds (10000 by default; below 0 without a limit). Arguments are passed as
     * they stand, without a shell between. Its output goes nowhere.
     * Neutral, when the one before is still running: false. Errors: a program that can't be started is told to the user
     * and to the log; without a list of arguments a TypeError.
     *
     * @example
     * if (!System.processCmd("/bin/sh", ["-c", "exit 0"]))
     *     Message.error("the program before is still running");
     */
    processCmd(inCmd: string, inArgs: TextLike[], inMsecs?: number): boolean;
    /**
     * Starts a program on its own, beside any others. Gives whether it was started.
     * Errors: a TypeError without a list of arguments.
     *
     * @example
     * print(System.startDetached("/bin/sh", ["-c", "exit 0"]));
     */
    startDetached(inCmd: string, inArgs: TextLike[]): boolean;
    /** Puts a text on the clipboard. */
    setClipboardText(inText: string): void;
}

/** The workstation: its environment, its files and programs, the clipboard. */
declare const System: System;

/**
 * Asks the user for the name of a file.
 *
 * @example
 * var path = new FileDialog().getSaveFileName("studies.csv", "Tables (*.csv);;All files (*)");
 * if (path)
 *     new FileWriter().saveFile(path, "ID;Name\r\n");
 */
interface FileDialog extends HostObject {
    /**
     * Asks where to save a file, and waits for that; nothing is written. Proposed is `inFileName` in the folder of
     * downloads. `inFilter` lists kinds of files as "Text (*.txt);;All (*)"; empty shows all. Gives the absolute path.
     * Neutral, when the user cancels, and without windows: empty.
     */
    getSaveFileName(inFileName: string, inFilter: string): string;
}

/** Makes a {@link FileDialog}. */
declare const FileDialog: { new (): FileDialog };

/**
 * Writes files of text or bytes. No byte order mark is added and no line break changed. Without an open file, writing
 * does nothing. Close the file: until then a part may be in memory only.
 *
 * @example
 * var writer = new FileWriter();
 * if (writer.openFile(System.getEnv("HOME"), "report", false)) { // HOME/report.txt
 *     writer.writeUtf8("Größe: 12 mm\r\n");
 *     writer.closeFile();
 * }
 */
interface FileWriter extends HostObject {
    /**
     * Opens a file and empties it; ".txt" is always put behind its name. By default, and without a name, "-" and the
     * local time in 17 digits come before that. The file before is closed. Gives whether the file is open now; the
     * folder is not made.
     */
    openFile(inDirectory: string, inFilename?: string, appendTimestamp?: boolean): boolean;
    /**
     * Makes a text, in UTF-8, the whole content of a file; its path is taken as it stands. Gives whether the file could
     * be opened. A file that is open by `openFile` is left alone.
     */
    saveFile(inPath: string, inData: string): boolean;
    /** Closes the file. Neutral: nothing happens. */
    closeFile(): void;
    /**
     * Writes bytes as they are. Errors: a TypeError for what has no bytes, such as undefined.
     *
     * @example
     * var writer = new FileWriter();
     * if (writer.openFile(System.getEnv("HOME"), "bytes", false)) {
     *     writer.write(new Uint8Array([0x0d, 0x0a]));
     *     writer.closeFile();
     * }
     */
    write(inData: Bytes): void;
    /** Writes a text in UTF-8. */
    writeUtf8(inData: string): void;
    /** Writes a text in Latin-1; other characters become "?". */
    writeLatin1(inData: string): void;
}

/** Makes a {@link FileWriter} without an open file. */
declare const FileWriter: { new (): FileWriter };

/**
 * Writes an XML document (XML 1.0, UTF-8, without line breaks) into a file or into memory. Names are not checked, and
 * the order of calls is yours: an attribute belongs straight behind its start element. A control character in a text
 * spoils the document. Before an `open...`, writing does nothing.
 *
 * @example
 * var xml = new XmlFileWriter();
 * xml.openBuffer();
 * xml.writeStartElement("study");
 * xml.writeAttribute("uid", "1.2.3");
 * xml.writeTextElement("size", "12");
 * xml.writeEndElement();
 * print(String(xml.buffer)); // <study uid="1.2.3"><size>12</size></study>
 */
interface XmlFileWriter extends HostObject {
    /**
     * The document of `openBuffer`. Each read copies it, as an ArrayBuffer; `String(xml.buffer)` is its text. It can be
     * set to anything with bytes; else it is a TypeError.
     */
    get buffer(): ArrayBuffer;
    set buffer(value: Bytes);

    /**
     * Begins a document in a file and empties it; ".xml" is always put behind its name. By default, and without a name,
     * "-" and the local time in 17 digits come before that. A missing folder is made. Gives whether the file is open.
     */
    openFile(inDirectory: string, inFilename?: string, appendTimestamp?: boolean): boolean;
    /** Closes the file. Neutral: nothing happens. */
    closeFile(): void;
    /** Begins a document at the start of `buffer`. What is there is overwritten, not cleared: set it to "" before. */
    openBuffer(): void;
    /** Writes `<?xml version="1.0" encoding="UTF-8"?>`. */
    writeStartDocument(): void;
    /** Closes all open elements and adds a line break. */
    writeEndDocument(): void;
    /** Opens an element. */
    writeStartElement(inName: string): void;
    /** Writes an attribute of the element that was opened just before. */
    writeAttribute(inName: string, inValue: string): void;
    /** Writes an element that holds a text. */
    writeTextElement(inName: string, inText: string): void;
    /** Closes the element that was opened last. Neutral: nothing happens. */
    writeEndElement(): void;
}

/** Makes an {@link XmlFileWriter} without a document. */
declare const XmlFileWriter: { new (): XmlFileWriter };
