#!/usr/bin/python3
"""The harness's web server on loopback: serves tests/web, answers a POST
with its own body, and writes the port it took to the file named first.

    webserver.py PORTFILE FOLDER
"""
import functools
import http.server
import sys


class Handler(http.server.SimpleHTTPRequestHandler):
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
