// Web services and sockets.

/**
 * The headers of an answer: names as the server wrote them, and their bytes. `String(header["Content-Type"])` is the
 * text of one. A header that is there twice has one value, joined by ", ".
 */
interface HttpHeaders {
    [name: string]: ArrayBuffer;
}

/**
 * Calls web services. Requests run side by side, and an answer does not tell which it belongs to: make an object for
 * each when that matters. Keep the object until the answer has come: one that is collected takes its requests with it.
 *
 * @example
 * var request = new HttpRequest();
 * request.setHeader("Content-Type", "application/json");
 * request.response.connect(function (message, header, status) {
 *     if (status === 201)
 *         print("stored as", JSON.parse(message).id);
 *     else
 *         print("not stored:", status);
 * });
 * request.post("http://127.0.0.1:8080/reports", JSON.stringify({ patient: "Doe^Jane" }));
 * request.waitForFinished(5000);
 */
interface HttpRequest extends HostObject {
    /** Sends a GET request and returns at once. Errors: an answer without a status. */
    get(request: string): void;
    /**
     * Sends a POST request with a body in UTF-8. Set the header Content-Type before: without it the body counts as a
     * form. Errors: an answer without a status.
     */
    post(request: string, data: string): void;
    /** Sends a PUT request with a body in UTF-8, as `post`. */
    put(request: string, data: string): void;
    /** Sends a DELETE request. Errors: an answer without a status. */
    del(request: string): void;
    /** Sets a header for all later requests of the object, in Latin-1. It can be set anew, but not taken back. */
    setHeader(headerName: string, headerValue: string): void;
    /** Accepts any certificate, or with false only trusted ones. Call it before the first request. */
    setSSLNoVerify(noSSLVerify?: boolean): void;
    /**
     * Waits until all requests are answered, at most that many milliseconds; the application goes on meanwhile. Below
     * 1: returns at once. When the limit passes, answers still come later.
     */
    waitForFinished(inMsecs: number): void;

    /**
     * One for each request, good or bad. `message` is the body; `String(message)` and `JSON.parse(message)` read it as
     * UTF-8. `statusCode` is undefined when no answer came: no connection, no such host, a certificate that is not
     * trusted.
     */
    readonly response: Signal<[message: ArrayBuffer, header: HttpHeaders, statusCode: number | undefined]>;
}

/** Makes an {@link HttpRequest}. */
declare const HttpRequest: { new (): HttpRequest };

/**
 * Opens addresses in the user's own programs.
 *
 * @example
 * Url.open("http://127.0.0.1:8080/help.html");
 */
interface Url extends HostObject {
    /**
     * Opens an address in the desktop's program for it. Gives whether the desktop took it, which does not say that
     * anything was opened.
     */
    open(inUrl: string): boolean;
}

/** Opens addresses in the user's own programs. */
declare const Url: Url;

/**
 * One WebSocket (RFC 6455): text messages, a heartbeat, and ten reconnections in its life. Made by `new WebSocket()`
 * for a connection to a server, or by `WebSocketServer.registerSocket` for one that waits for a client. Failures are
 * lines of the log.
 *
 * @example
 * var feed = new WebSocket();
 * feed.messageReceived.connect(function (message) { print(JSON.parse(message).kind); });
 * if (feed.open("ws://127.0.0.1:8081/feed"))
 *     feed.sendText(JSON.stringify({ subscribe: "reports" }));
 * else
 *     Message.warn("the feed cannot be reached", "MyScript");
 */
interface WebSocket extends HostObject {
    /**
     * Connects to an address and waits for that, 3 seconds at most. Gives whether it is connected. An object can be
     * opened once: later calls give false.
     */
    open(url: string): boolean;
    /** The address given to `open`, or the one under which the server waits for a client. Neutral: empty. */
    getURL(): string;
    /** Whether it is connected at this moment. */
    isConnected(): boolean;
    /** Sends one text message. Neutral, without a connection: it is lost. */
    sendText(text: string): void;
    /** Accepts any certificate at the next attempt to connect. Neutral, before `open`: nothing happens. */
    setIgnoreSslErrors(): void;
    /** Above 0, the texts of all messages are logged. */
    setLogLevel(level: number): void;
    /** Milliseconds between heartbeats, 30000 at first; below 0 there are none. */
    setHeartbeatInterval(interval: number): void;
    /** A text message has come. */
    readonly messageReceived: Signal<[message: string]>;
}

/** Makes a {@link WebSocket} that is not connected. */
declare const WebSocket: { new (): WebSocket };

/**
 * Lets local pages and programs reach a script. The server listens on all network interfaces, at a port of the system's
 * choice; the address of a socket is its only secret.
 *
 * @example
 * var remote = WebSocketServer.registerSocket("remote control");
 * remote.messageReceived.connect(function (message) { remote.sendText("got " + message); });
 * Url.open("http://127.0.0.1:8080/remote.html#" + encodeURIComponent(remote.getURL()));
 */
interface WebSocketServer extends HostObject {
    /**
     * The socket of this name, made when there is none. It lasts as long as the script keeps it; one client at a time
     * is joined to it. Errors: when the server can't listen the user is told, and the socket's address is empty.
     */
    registerSocket(socketName: string): WebSocket;
    /** The server listens no longer. */
    readonly closed: Signal;
}

/** The server without encryption, for pages and programs of this computer. */
declare const WebSocketServer: WebSocketServer;

/** The server with TLS. Its certificate is made anew at each start, and no browser trusts it unless told to. */
declare const WebSocketServerSSL: WebSocketServer;
