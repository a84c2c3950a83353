#!/usr/bin/python3
"""The harness's web server on loopback: serves tests/web, answers a POST
with its own body, and writes the port it took to the file named first.
Made-up paths test the transfers' limits: /stall/N answers only after N
seconds (at most 60), /big/N sends N bytes (at most 64 MiB) of a pattern,
/status/N answers with status N and a page that says so, and /drop/N
promises N bytes, sends half of them and closes the connection.
/echo/... answers with the path and query as the request line carried them,
byte for byte, so a test sees what a client put on the wire.

    webserver.py PORTFILE FOLDER
"""
import functools
import http.server
import sys
import time


class Handler(http.server.SimpleHTTPRequestHandler):
    def do_GET(self):
        if self.path.startswith("/echo/"):
            # The request line as it came (http.server decodes it as latin-1).
            body = self.raw_requestline.split(b" ")[1]
            self.send_response(200)
            self.send_header("Content-Type", "application/octet-stream")
            self.send_header("Content-Length", str(len(body)))
            self.end_headers()
            self.wfile.write(body)
            return
        parts = self.path.split("/")
        if len(parts) == 3 and parts[1] in ("stall", "big", "status", "drop") and parts[2].isdigit():
            n = int(parts[2])
            if parts[1] == "status":
                body = b"<html><body>status %d</body></html>" % n
                self.send_response(n)
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)
                return
            if parts[1] == "drop":
                self.send_response(200)
                self.send_header("Content-Length", str(n))
                self.end_headers()
                self.wfile.write(b"d" * (n // 2))
                self.wfile.flush()
                self.close_connection = True
                return
            if parts[1] == "stall":
                time.sleep(min(n, 60))
                body = b"late"
                self.send_response(200)
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)
                return
            n = min(n, 64 << 20)
            self.send_response(200)
            self.send_header("Content-Length", str(n))
            self.end_headers()
            block = bytes((i % 26) + 65 for i in range(65536))
            while n > 0:
                part = block[:min(n, len(block))]
                self.wfile.write(part)
                n -= len(part)
            return
        super().do_GET()

    def do_POST(self):
        body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        self.send_response(200)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *args):
        pass


def main():
    handler = functools.partial(Handler, directory=sys.argv[2])
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler)
    with open(sys.argv[1], "w") as f:
        f.write(str(server.server_address[1]))
    server.serve_forever()


if __name__ == "__main__":
    main()
