#!/usr/bin/python3
"""The harness's mail servers on loopback: SMTP on port 25 (aiosmtpd) keeps
each message as a file in the mailbox folder; POP3 on port 110 serves and
deletes those files, for user "zanto" with password "secret". The folder's
path is written to the file named first once both listen.

Either server can play a hung one, which keeps the connection open and never
answers again: SMTP after "MAIL FROM" with a sender whose name begins with
"silent", POP3 after "user silent".

Each message received is also kept, as it came, in the folder "received"
of the mailbox, which POP3 never serves nor deletes: the scenario runner
reads what the program sent there (mail-sent:).

    mailserver.py READYFILE MAILBOX
"""
import asyncio
import os
import sys
import time

from aiosmtpd.controller import Controller

MAILBOX = sys.argv[2]


class Keeper:
    async def handle_MAIL(self, server, session, envelope, address, mail_options):
        if address.lower().startswith("silent"):
            await asyncio.Event().wait()  # never set: no answer, ever
        envelope.mail_from = address
        envelope.mail_options.extend(mail_options)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        stamp = "%.6f.eml" % time.time()
        data = envelope.original_content or envelope.content
        for folder in (os.path.join(MAILBOX, "received"), MAILBOX):
            os.makedirs(folder, exist_ok=True)
            with open(os.path.join(folder, stamp), "wb") as f:
                f.write(data)
        return "250 OK"


def messages():
    return sorted(os.path.join(MAILBOX, n) for n in os.listdir(MAILBOX) if n.endswith(".eml"))


async def pop3(reader, writer):
    def say(text):
        writer.write(text.encode("latin-1") + b"\r\n")

    say("+OK ready")
    user = None
    deleted = set()
    while True:
        line = await reader.readline()
        if not line:
            break
        words = line.decode("latin-1").strip().split(" ", 1)
        verb = words[0].lower()
        arg = words[1] if len(words) > 1 else ""
        mails = messages()
        if verb == "user" and arg == "silent":
            while await reader.readline():
                pass  # read on, answer nothing
            break
        if verb == "user":
            user = arg
            say("+OK")
        elif verb == "pass":
            say("+OK" if user == "zanto" and arg == "secret" else "-ERR wrong password")
        elif verb == "stat":
            say("+OK %d %d" % (len(mails), sum(os.path.getsize(m) for m in mails)))
        elif verb == "list":
            say("+OK %d messages" % len(mails))
        elif verb == "retr":
            n = int(arg or 0)
            if 1 <= n <= len(mails):
                body = open(mails[n - 1], "rb").read().decode("latin-1").replace("\r\n", "\n").replace("\n", "\r\n")
                writer.write(("+OK\r\n" + body + "\r\n.\r\n").encode("latin-1"))
            else:
                say("-ERR no such message")
        elif verb == "dele":
            n = int(arg or 0)
            if 1 <= n <= len(mails):
                deleted.add(mails[n - 1])
                say("+OK deleted")
            else:
                say("-ERR no such message")
        elif verb == "quit":
            for m in deleted:
                os.remove(m)
            say("+OK bye")
            await writer.drain()
            break
        else:
            say("-ERR unknown")
        await writer.drain()
    writer.close()


async def main():
    Controller(Keeper(), hostname="127.0.0.1", port=25).start()
    server = await asyncio.start_server(pop3, "127.0.0.1", 110)
    with open(sys.argv[1], "w") as f:
        f.write(MAILBOX)
    async with server:
        await server.serve_forever()


asyncio.run(main())
