// The mail actions of the "Internet" category: SMTP and POP3 spoken over
// sockets, MAPI through the platform's mail library, and "mailto" handed to
// the shell.
#pragma once

// The step: "Check Email: POP3", "Delete Email: POP3", "Send Email: SMTP",
// "Send Email: MAPI" and "Send Email: \"mailto\"".
int MailStep(int tab, int step, const char* text);

int SmtpConnect(const char* server, int port);
int SmtpSend(const char* subject, const char* message, const char* toList, const char* from);
int SmtpQuit();
// Mode 1 the mailbox count, 2 a message into `out` ("Subject: ...\r\nMessage:
// body"), 3 deletes one. A count (bytes for mode 2), or -1.
long Pop3Session(const char* server, const char* user, const char* password, int messageNumber, char* out,
                 long outSize, int mode, bool log);
// The platform's mail library: logon, send (resolving each address), logoff.
int MapiOpen(const char* profile, const char* password, int showLogon);
int MapiSend(const char* subject, const char* message, const char* toList, const char* attachment, int showDialog);
int MapiClose();
