"""An HTTP server that tells what it was asked: http_server.py [CERTIFICATE KEY]

Prints "ready PORT". Answers with the request as JSON; a few paths answer in ways of their own.
"""

import http.server
import json
import ssl
import sys
import time


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def answer(self):
        body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        path = self.path
        if path.startswith("/status/"):
            self.reply(int(path[len("/status/"):]), b"page of the status")
        elif path.startswith("/size/"):
            self.reply(200, b"x" * int(path[len("/size/"):]))
        elif path.startswith("/slow/"):
            time.sleep(float(path[len("/slow/"):]))
            self.reply(200, b"slow")
        elif path == "/chunks":
            self.send_response(200)
            self.send_header("Transfer-Encoding", "chunked")
            self.end_headers()
            for part in (b"one ", b"two ", b"three"):
                self.wfile.write(b"%x\r\n%s\r\n" % (len(part), part))
                self.wfile.flush()
            self.wfile.write(b"0\r\n\r\n")
        elif path == "/vanish":
            self.connection.close()
            self.close_connection = True
        elif path == "/redirect":
            self.send_response(307)
            self.send_header("Location", "/redirected")
            self.send_header("Content-Length", "0")
            self.end_headers()
        else:
            asked = {"method": self.command, "path": path, "body": body.decode("utf-8"),
                     "headers": {name.lower(): value for name, value in self.headers.items()}}
            self.reply(200, json.dumps(asked).encode("utf-8"), "application/json")

    do_GET = do_POST = do_PUT = do_DELETE = answer

    def reply(self, status, body, content_type="text/plain; charset=utf-8"):
        self.send_response(status)
        self.send_header("Content-Type", content_type)
        self.send_header("X-Mixed-Case", "kept")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *arguments):
        pass


class Server(http.server.ThreadingHTTPServer):
    def handle_error(self, request, client_address):
        pass  # a client that does not like the certificate


server = Server(("127.0.0.1", 0), Handler)
if len(sys.argv) == 3:
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(sys.argv[1], sys.argv[2])
    server.socket = context.wrap_socket(server.socket, server_side=True)
print("ready", server.server_address[1], flush=True)
server.serve_forever()
