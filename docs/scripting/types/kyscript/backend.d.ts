// The servers: facts about them, procedures of the database, methods of the backend, tokens.

/**
 * A value of a database's column. Which kind it is depends on the type of the column: a truth value, a number, a Date,
 * or else a text; NULL is undefined.
 */
type ColumnValue = any;

interface Orvane {
    /**
     * Runs a stored procedure and gives its rows, each an array of values. The script waits. A parameter that is null
     * or undefined is NULL, any other one its text in Latin-1, a Date its local date and time. A whole number beyond 2
     * to the power of 53 is not exact. Neutral, without rows: an empty array. Errors: an Error with the database's
     * message when the procedure fails, also without a database; a TypeError when the parameters are no object.
     *
     * @example
     * try {
     *     var rows = Orvane.execStoredProcedure("ReportsOfPatient", { PatientID: "4711", Newest: null });
     *     rows.forEach(function (row) { print(row[0], row[1]); });
     * } catch (error) {
     *     Message.warn(error.message, "MyScript");
     * }
     */
    execStoredProcedure(procedureName: string, parameters: { [name: string]: TextLike | Date }): ColumnValue[][];

    /**
     * Calls a method of a class on the backend and returns. The parameters cross as JSON; what that can't say is null.
     * One of the two functions is called later, and once: the first with the result, undefined when there is none, the
     * other one with a message. What they throw is lost.
     * Neutral, for what is no function: it is not called. Errors: a TypeError when the parameters are no array.
     *
     * @example
     * Orvane.execScriptOnBackend("Reports", "count", ["4711", { final: true }], function (count) {
     *     print("reports:", count);
     * }, function (message) {
     *     Message.warn(message, "MyScript");
     * });
     */
    execScriptOnBackend(
        className: string,
        methodName: string,
        parameters: any[],
        onSuccess: ((result: any) => void) | null,
        onError: ((message: string) => void) | null
    ): void;
}

/**
 * Facts about the client, its user, and the servers that it talks to. Each read asks anew; nothing can be written.
 * Neutral, for what there isn't in this session: empty.
 *
 * @example
 * print(Server.userName, "on", Server.clientHostName, "with", Server.clientVersion);
 */
interface Server extends HostObject {
    /** The client's architecture, "Win64". */
    readonly clientArch: string;
    /** Name and version of the operating system. */
    readonly osName: string;
    /** Physical memory of this machine in bytes. Neutral: 0. */
    readonly physMemTotal: number;
    /** The name of this machine in its network. */
    readonly clientHostName: string;
    /** The language of the user interface, such as "en", which it is when none was chosen. */
    readonly clientLanguage: string;
    /** The version of the client. */
    readonly clientVersion: string;
    /** The version of the protocol between client and render server. */
    readonly protocolVersion: string;
    /** The version of the render server. Neutral: empty. */
    readonly renderServerVersion: string;
    /** Who is logged in. Neutral: empty. */
    readonly userName: string;
    /** The name of the level of what the user may do. Neutral: empty. */
    readonly userLevel: string;
    /** The number of that level, as a text. Neutral: "0". */
    readonly userLevelId: string;
    /** The names of the user's groups. Neutral: an empty array. */
    readonly orvaneLocalGroups: string[];
    /** The address of the backend. Neutral: empty. */
    readonly backendAddress: string;
    /** The address of the render server. Neutral: empty. */
    readonly renderServerAddress: string;
    /** The id of the session on the servers. Neutral: empty. */
    readonly sessionID: string;
}

/** Facts about the client, its user, and the servers. */
declare const Server: Server;

/**
 * Tokens with which a script authenticates at another service. They come later, one `finished` for each request, which
 * does not tell which one it answers. Keep the object until then: one that is collected answers nobody.
 *
 * @example
 * var tokens = new AuthToken();
 * tokens.finished.connect(function (token) {
 *     if (token === "")
 *         Message.warn("there is no token", "MyScript");
 * });
 * tokens.generateJWT("reporting");
 */
interface AuthToken extends HostObject {
    /**
     * Asks for a token, of type 2 and key 2 by default; their meaning is the site's. The user data become part of it.
     */
    generate(inType?: number, inKey?: number, userData?: string): void;
    /** Asks for a JSON Web Token (RFC 7519) of the configuration of that name. */
    generateJWT(inName: string): void;
    /** A token. Neutral, when none could be made: empty; a line of the log (level 3) says why. */
    readonly finished: Signal<[inAuthToken: string]>;
}

/** Makes an {@link AuthToken}. */
declare const AuthToken: { new (): AuthToken };
