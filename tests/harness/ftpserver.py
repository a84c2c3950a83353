#!/usr/bin/python3
"""The harness's FTP server on loopback port 21 (pyftpdlib), for user
"zanto" with password "secret", over the folder named first. Any file whose
name begins with "silent" is never answered when it is asked for: the
server keeps the connection open and says nothing, as a hung server does, so
that a test can see a transfer end on a stop rather than wait for ever.

    ftpserver.py FOLDER
"""
import os
import sys

from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import FTPHandler
from pyftpdlib.servers import FTPServer


class Handler(FTPHandler):
    def ftp_RETR(self, file):
        if os.path.basename(file).startswith("silent"):
            return None
        return super().ftp_RETR(file)


def main():
    authorizer = DummyAuthorizer()
    authorizer.add_user("zanto", "secret", sys.argv[1], perm="elradfmwMT")
    Handler.authorizer = authorizer
    FTPServer(("127.0.0.1", 21), Handler).serve_forever()


if __name__ == "__main__":
    main()
