#include "net/mail.h"
#include "base/text.h"

#include <winsock2.h>
#include <windows.h>
#include <mapi.h>
#include <stdio.h>
#include <string.h>

#include <deque>
#include <string>
#include <vector>

#include "base/settings.h"
#include "base/ui.h"
#include "base/log.h"
#include "run/failure.h"
#include "run/runstate.h"
#include "run/textops.h"
#include "run/translate.h"
#include "run/variables.h"
#include "script/step.h"
#include "base/words.h"
#include "net/socketwait.h"
#include "system/launch.h"
#include "base/utf8.h"
#include "net/mimewords.h"

namespace {

// The one mail socket of the process.
SOCKET MailSocket;

// How long a mail server may take for each answer and for the connection.
const DWORD kSmtpLimit = 20000;
const DWORD kPop3Limit = 10000;

bool SendText(const std::string& text) { return send(MailSocket, text.data(), (int)text.size(), 0) != SOCKET_ERROR; }

// Waits for the server's answer; false with the step's words when none came
// within `limit` or the run was asked to stop.
bool AnswerCame(DWORD limit, const char* label) {
    switch (WaitReadable(MailSocket, limit)) {
    case SOCKET_READY:
        return true;
    case SOCKET_STOPPED:
        FormatIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "%s: stopped while waiting for the mail server\r\n", label);
        return false;
    case SOCKET_TIMED_OUT:
        FormatIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "%s: no answer from the mail server within %lu seconds\r\n",
                    label, (unsigned long)(limit / 1000));
        return false;
    default:
        FormatIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "%s: %d\r\n", label, WSAGetLastError());
        return false;
    }
}

// One recv into the shared reply area; its free room shrinks. The reply is
// not read, but it is waited for only so long.
bool ReceiveOnce(char* area, size_t& used, size_t size, const char* label) {
    if (!AnswerCame(kSmtpLimit, label)) return false;
    if (used + 1 >= size) {
        char skipped[512];
        recv(MailSocket, skipped, sizeof skipped, 0);
        return true;
    }
    int got = recv(MailSocket, area + used, (int)(size - used - 1), 0);
    if (got > 0) used += (size_t)got;
    return true;
}

// An SMTP session that failed half-way: the socket is closed, not left open.
void SmtpAbandon() {
    if (MailSocket) closesocket(MailSocket);
    MailSocket = 0;
    WSACleanup();
}

void SocketQuit() {
    if (MailSocket) {
        send(MailSocket, "QUIT\r\n", 6, 0);
        shutdown(MailSocket, 0);
        closesocket(MailSocket);
    }
    MailSocket = 0;
    WSACleanup();
}

// Sends a command and takes the reply; 0 with the words on failure.
int SocketExchange(const std::string& command, char* reply, int replySize, const char* label) {
    if (command.empty() || !reply) {
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Socket %s: Invalid Parameter\r\n", label);
        return 0;
    }
    reply[0] = 0;
    if (!SendText(command)) {
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Socket %s: %d\r\n", label, WSAGetLastError());
        SocketQuit();
        return 0;
    }
    // A server that takes no more than the limit to answer is waited for; a
    // silent one fails the exchange, and a stop ends the wait at once.
    if (!AnswerCame(kPop3Limit, label)) {
        SocketQuit();
        return 0;
    }
    memset(reply, 0, (size_t)replySize);
    int got = recv(MailSocket, reply, replySize - 1, 0);
    if (got <= 0 || reply[0] == '-') {
        std::string words = std::string(got > 0 ? reply : "") + "\r\n" + label + ": " + std::to_string(WSAGetLastError()) + "\r\n";
        ReplaceInString(words, "-ERR ", "", 0, 0);
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, words.c_str());
        SocketQuit();
        return 0;
    }
    return got;
}

std::string DateText() {
    SYSTEMTIME now;
    GetSystemTime(&now);
    char date[64] = "", time[64] = "";
    GetDateFormatA(0x800, 0, &now, "ddd dd MMM yyyy", date, sizeof date);
    GetTimeFormatA(0x800, 8, &now, "HH':'mm':'ss tt", time, sizeof time);
    return std::string(date) + " " + time;
}

std::vector<std::string> Addresses(const char* list) {
    std::vector<std::string> out;
    std::string one;
    for (const char* p = list;; p++) {
        if (!*p || strchr(",; \t\n", *p)) {
            if (!one.empty()) out.push_back(one);
            one.clear();
            if (!*p) break;
        } else {
            one += *p;
        }
    }
    return out;
}

void LogReply(const char* command, const char* text, bool log) {
    if (!log || !SettingInt("LogLevel")) return;
    std::string shown = TextCut(text, 255);
    for (char& c : shown)
        if (c == '\r' || c == '\n') c = ' ';
    LogPrintf(OutputEdit, "\t'%s' = %s\r\n", command, shown.c_str());
}

std::string Field(const char* text, int tab, int step) {
    TranslateText(text, tab, step);
    return TextCut(TranslatedText, 259);
}

int MailTo(const std::string& to, const std::string& subject, std::string message) {
    if (message.size() >= 1048576) message.resize(CharBoundary(message.data(), 1048574));
    std::string text = "mailto:" + to + "?subject=" + subject + "&body=" + message;
    text.resize(CharBoundary(text.c_str(), text.size() < 1024 ? text.size() : 1024));
    ReplaceInString(text, " ", "%20", 0, 0);
    ReplaceInString(text, "\r", "%0d", 0, 0);
    ReplaceInString(text, "\n", "%0a", 0, 0);
    ReplaceInString(text, ">", "&gt;", 0, 0);
    ReplaceInString(text, "<", "&lt;", 0, 0);
    // Letters beyond ASCII go as their UTF-8 bytes percent-encoded, as a
    // mailto: address carries them; the mail program decodes them whole
    // whatever page it reads its command line in.
    if (!IsAsciiText(text)) text = PercentEncodeBeyondAscii(text.data(), text.size());
    int32_t result = LaunchProgram(text.c_str(), 0, 0);
    return result == LAUNCH_FAILED ? 0 : result;
}

// The wide records of MAPISendMailW (Windows 8 and later, Wine), which the
// SDK headers here lack: the ANSI ones with UTF-16 texts.
struct MapiRecipDescW {
    ULONG ulReserved, ulRecipClass;
    PWSTR lpszName, lpszAddress;
    ULONG ulEIDSize;
    PVOID lpEntryID;
};
struct MapiFileDescW {
    ULONG ulReserved, flFlags, nPosition;
    PWSTR lpszPathName, lpszFileName;
    PVOID lpFileType;
};
struct MapiMessageW {
    ULONG ulReserved;
    PWSTR lpszSubject, lpszNoteText, lpszMessageType, lpszDateReceived, lpszConversationID;
    FLAGS flFlags;
    MapiRecipDescW* lpOriginator;
    ULONG nRecipCount;
    MapiRecipDescW* lpRecips;
    ULONG nFileCount;
    MapiFileDescW* lpFiles;
};
typedef ULONG(WINAPI* SendMailW)(LHANDLE, ULONG_PTR, MapiMessageW*, FLAGS, ULONG);

// The platform's mail library, for one action.
struct Mapi {
    HMODULE library;
    LHANDLE session;
    LPMAPILOGON logon;
    LPMAPILOGOFF logoff;
    LPMAPISENDMAIL sendMail;
    SendMailW sendMailW;  // where the library has it
    LPMAPIRESOLVENAME resolveName;
    LPMAPIFREEBUFFER freeBuffer;
} MapiState;

// A text of the program (or of the mail library's ANSI side, which runs in
// the program's page) as the wide call takes it; none stays none.
PWSTR Wide(std::deque<std::wstring>& keep, const char* text) {
    if (!text) return nullptr;
    keep.push_back(WideFromProgram(text, strlen(text)));
    return keep.back().data();
}

// The message by the wide call: what a mail program gets then does not
// depend on how it reads an ANSI text (a subject in UTF-8 taken for its
// legacy page would arrive as "GrÃ¼ÃŸe").
ULONG SendWide(const MapiMessage& note, FLAGS flags) {
    Mapi& m = MapiState;
    std::deque<std::wstring> keep;  // a deque: its texts stay where they are as it grows
    std::vector<MapiRecipDescW> recipients(note.nRecipCount);
    for (ULONG i = 0; i < note.nRecipCount; i++) {
        const MapiRecipDesc& r = note.lpRecips[i];
        recipients[i] = {r.ulReserved, r.ulRecipClass, Wide(keep, r.lpszName), Wide(keep, r.lpszAddress),
                         r.ulEIDSize, r.lpEntryID};
    }
    MapiFileDescW file = {};
    MapiMessageW wide = {};
    wide.lpszSubject = Wide(keep, note.lpszSubject);
    wide.lpszNoteText = Wide(keep, note.lpszNoteText);
    wide.nRecipCount = note.nRecipCount;
    wide.lpRecips = recipients.data();
    if (note.nFileCount) {
        file = {0, 0, note.lpFiles[0].nPosition, Wide(keep, note.lpFiles[0].lpszPathName),
                Wide(keep, note.lpFiles[0].lpszFileName), nullptr};
        wide.nFileCount = 1;
        wide.lpFiles = &file;
    }
    return m.sendMailW(m.session, 0, &wide, flags, 0);
}

}  // namespace

int MapiOpen(const char* profile, const char* password, int showLogon) {
    Mapi& m = MapiState;
    m = Mapi{};
    m.library = LoadLibraryA("MAPI32.DLL");
    if ((UINT_PTR)m.library < 32) return 0;
    m.logon = (LPMAPILOGON)(void*)GetProcAddress(m.library, "MAPILogon");
    m.logoff = (LPMAPILOGOFF)(void*)GetProcAddress(m.library, "MAPILogoff");
    m.sendMail = (LPMAPISENDMAIL)(void*)GetProcAddress(m.library, "MAPISendMail");
    m.sendMailW = (SendMailW)(void*)GetProcAddress(m.library, "MAPISendMailW");
    m.resolveName = (LPMAPIRESOLVENAME)(void*)GetProcAddress(m.library, "MAPIResolveName");
    m.freeBuffer = (LPMAPIFREEBUFFER)(void*)GetProcAddress(m.library, "MAPIFreeBuffer");
    if (!m.logon || !m.logoff || !m.sendMail || !m.resolveName || !m.freeBuffer) return 0;
    ULONG r = m.logon(0, (LPSTR)profile, (LPSTR)password, MAPI_NEW_SESSION | (showLogon ? MAPI_LOGON_UI : 0), 0,
                      &m.session);
    if (r == MAPI_USER_ABORT) return 0;
    if (r == SUCCESS_SUCCESS) return 1;
    return m.logon(0, nullptr, nullptr, 0, 0, &m.session) == SUCCESS_SUCCESS ? 1 : 0;
}

int MapiSend(const char* subject, const char* message, const char* toList, const char* attachment, int showDialog) {
    Mapi& m = MapiState;
    if (!toList || !*toList || !m.sendMail) return 0;
    std::vector<std::string> addresses = Addresses(toList);
    std::vector<MapiRecipDesc> recipients(addresses.empty() ? 1 : addresses.size());
    std::vector<lpMapiRecipDesc> resolved(recipients.size(), nullptr);
    for (size_t i = 0; i < addresses.size(); i++) {
        if (m.resolveName(m.session, 0, (LPSTR)addresses[i].c_str(), MAPI_DIALOG, 0, &resolved[i]) ==
                SUCCESS_SUCCESS &&
            resolved[i]) {
            recipients[i] = *resolved[i];
        } else {
            recipients[i].lpszName = recipients[i].lpszAddress = (LPSTR)addresses[i].c_str();
        }
        recipients[i].ulRecipClass = MAPI_TO;
    }
    MapiFileDesc file = {};
    MapiMessage note = {};
    note.lpszSubject = (LPSTR)subject;
    note.lpszNoteText = (LPSTR)message;
    note.nRecipCount = (ULONG)addresses.size();
    note.lpRecips = recipients.data();
    if (attachment && *attachment) {
        file.nPosition = (ULONG)-1;
        file.lpszPathName = file.lpszFileName = (LPSTR)attachment;
        note.nFileCount = 1;
        note.lpFiles = &file;
    }
    // Texts beyond ASCII go by the wide call where the library has it.
    bool ascii = IsAsciiText(subject ? subject : "") && IsAsciiText(message ? message : "") &&
                 IsAsciiText(attachment ? attachment : "");
    for (const MapiRecipDesc& r : recipients)
        ascii = ascii && IsAsciiText(r.lpszName ? r.lpszName : "") && IsAsciiText(r.lpszAddress ? r.lpszAddress : "");
    const FLAGS flags = showDialog ? MAPI_DIALOG : 0;
    ULONG r = m.sendMailW && !ascii ? SendWide(note, flags) : m.sendMail(m.session, 0, &note, flags, 0);
    for (lpMapiRecipDesc d : resolved)
        if (d) m.freeBuffer(d);
    return r == SUCCESS_SUCCESS ? 1 : 0;
}

int MapiClose() {
    Mapi& m = MapiState;
    if (m.logoff && m.session) m.logoff(m.session, 0, 0, 0);
    if (m.library) FreeLibrary(m.library);
    m = Mapi{};
    return 1;
}

int SmtpConnect(const char* server, int port) {
    if (!server || !*server) return 0;
    WSADATA data;
    if (WSAStartup(0x202, &data) != 0) return FailStep("WSAStartup %d\r\n", WSAGetLastError());
    if (data.wVersion != 0x202) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Can't find a useable WinSock DLL\r\n");
        WSACleanup();
        return 0;
    }
    hostent* host = gethostbyname(server);
    if (!host) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Invalid socket\r\n");
        return 0;
    }
    MailSocket = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    memcpy(&address.sin_addr, host->h_addr_list[0], sizeof address.sin_addr);
    servent* service = port ? nullptr : getservbyname("mail", nullptr);
    address.sin_port = port ? htons((u_short)port) : service ? (u_short)service->s_port : htons(25);
    if (MailSocket == INVALID_SOCKET || !ConnectWithin(MailSocket, address, kSmtpLimit)) {
        if (MailSocket == INVALID_SOCKET) MailSocket = 0;
        SmtpAbandon();
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Invalid socket\r\n");
        return 0;
    }
    // A server that stops reading cannot hold a send for ever either.
    DWORD sendLimit = kSmtpLimit;
    setsockopt(MailSocket, SOL_SOCKET, SO_SNDTIMEO, (const char*)&sendLimit, sizeof sendLimit);
    // HELO goes out before the greeting is read; no reply is looked at.
    if (!SendText(std::string("HELO ") + server + "\r\n")) {
        FailStep("Socket send error: %d\r\n", WSAGetLastError());
        SmtpAbandon();
        return 0;
    }
    char reply[4096];
    size_t used = 0;
    if (!ReceiveOnce(reply, used, sizeof reply, "HELO")) {
        SmtpAbandon();
        return 0;
    }
    return 1;
}

int SmtpSend(const char* subject, const char* message, const char* toList, const char* from) {
    std::string header = "DATE: " + DateText() + "\r\n";
    // A subject or a name in any language goes as RFC 2047 words (the
    // addresses stay plain), a body with more than ASCII as UTF-8; an ASCII
    // mail goes out as it always did.
    if (from && *from) header += "FROM: " + EncodeAddressHeader(from) + "\r\n";
    header += "To: " + EncodeAddressHeader(toList) + "\r\n";
    if (subject && *subject) header += "Subject: " + EncodeHeaderWords(subject) + "\r\n";
    const std::string body = message ? message : "";
    const bool plain = IsAsciiText(body);
    header += plain ? "MIME-Version: 1.0\r\nContent-type: text/plain; charset=US-ASCII\r\n\r\n"
                    : "MIME-Version: 1.0\r\nContent-type: text/plain; charset=UTF-8\r\n"
                      "Content-Transfer-Encoding: 8bit\r\n\r\n";
    if (header.size() > 16384) header.resize(16384);
    char replies[4096];
    size_t used = 0;
    // A sender written "Name <address>" gives the envelope its address only.
    std::string sender = from ? from : "";
    if (sender.find('<') != std::string::npos) {
        const std::vector<std::string> found = EnvelopeAddresses(sender);
        if (!found.empty()) sender = found[0];
    }
    if (!SendText("MAIL FROM: <" + sender + ">\r\n"))
        return FailStep("Socket send error: %d\r\n", WSAGetLastError());
    if (!ReceiveOnce(replies, used, sizeof replies, "MAIL FROM")) return 0;
    for (const std::string& to : EnvelopeAddresses(toList)) {
        if (!SendText("RCPT TO: <" + to + ">\r\n")) return FailStep("Socket send error: %d\r\n", WSAGetLastError());
        if (!ReceiveOnce(replies, used, sizeof replies, "RCPT TO")) return 0;
    }
    if (!SendText("DATA\r\n")) return FailStep("Socket send error: %d\r\n", WSAGetLastError());
    if (!ReceiveOnce(replies, used, sizeof replies, "DATA")) return 0;
    // The text goes as it stands: a line of one dot is not doubled.
    const std::string sent = plain ? body : ConvertText(body.data(), body.size(), ProgramCodePage(), CP_UTF8, nullptr);
    if (!SendText(header) || !SendText(sent) || !SendText("\r\n.\r\n"))
        return FailStep("Socket send error: %d\r\n", WSAGetLastError());
    return ReceiveOnce(replies, used, sizeof replies, "End of message") ? 1 : 0;
}

int SmtpQuit() {
    SendText("QUIT\r\n");
    char reply[512];
    if (WaitReadable(MailSocket, kSmtpLimit) == SOCKET_READY) recv(MailSocket, reply, sizeof reply, 0);
    MailSocket = 0;  // not closed, as it always was
    WSACleanup();
    return 1;
}

long Pop3Session(const char* server, const char* user, const char* password, int messageNumber, char* out,
                 long outSize, int mode, bool log) {
    if (!out || outSize < 1 || !user) return -1;
    if (messageNumber < 1) messageNumber = 1;
    const std::string pass = password ? password : "";
    WSADATA data;
    if (WSAStartup(0x202, &data) != 0) {
        FailStep("WSAStartup %d\r\n", WSAGetLastError());
        return -1;
    }
    // A raw socket that POP3 never uses, but whose refusal ends the session.
    SOCKET raw = WSASocketA(AF_INET, SOCK_RAW, IPPROTO_ICMP, nullptr, 0, 0);
    if (raw == INVALID_SOCKET) {
        FailStep("WSASocket %d\r\n", WSAGetLastError());
        SocketQuit();
        return -1;
    }
    MailSocket = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (MailSocket == INVALID_SOCKET) {
        MailSocket = 0;
        FailStep("failed to open socket: %d\r\n", WSAGetLastError());
        SocketQuit();
        return -1;
    }
    hostent* host = gethostbyname(server ? server : "");
    if (!host) {
        FailStep("Failed to host server: %d\r\n", WSAGetLastError());
        SocketQuit();
        return -1;
    }
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    memcpy(&address.sin_addr, host->h_addr_list[0], sizeof address.sin_addr);
    address.sin_port = htons(110);
    if (!ConnectWithin(MailSocket, address, kPop3Limit)) {
        FailStep("Connect POP3 Server Fail: %d\r\n", WSAGetLastError());
        SocketQuit();
        return -1;
    }
    char reply[2048] = "";
    int got = WaitReadable(MailSocket, kPop3Limit) == SOCKET_READY ? recv(MailSocket, reply, sizeof reply - 1, 0) : 0;
    if (got <= 0 || reply[0] == '-') {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "No result");
        SocketQuit();
        return -1;
    }
    auto Step = [&](const std::string& command, const char* label, const char* words) {
        if (SocketExchange(command, reply, sizeof reply, label)) return true;
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, words);
        return false;
    };
    if (!Step(std::string("user ") + user + "\r\n", "Username", "Username error")) return -1;
    if (!Step("pass " + pass + "\r\n", "Password", "Password error")) return -1;
    DWORD timeout = 2000;
    int buffer = 65536;
    setsockopt(MailSocket, SOL_SOCKET, SO_RCVTIMEO, (const char*)&timeout, sizeof timeout);
    setsockopt(MailSocket, SOL_SOCKET, SO_SNDTIMEO, (const char*)&timeout, sizeof timeout);
    setsockopt(MailSocket, SOL_SOCKET, SO_RCVBUF, (const char*)&buffer, sizeof buffer);
    if (!Step("stat\r\n", "Stat", "'stat' error")) return -1;
    LogReply("stat", reply, log);
    if (mode == 1) {
        std::string count = reply;
        ReplaceInString(count, "+OK ", "", 0, 0);
        int n = ParseInt(count.substr(0, count.find(' ')).c_str());
        FormatIntoN(out, (size_t)outSize, "%d", n);
        SocketQuit();
        return n;
    }
    char command[32];
    if (mode == 3) {
        FormatInto(command, "dele %d\r\n", messageNumber);
        if (!SocketExchange(command, reply, sizeof reply, "Delete Message")) {
            CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "'dele' error");
            return -1;
        }
        CopyIntoN(out, (int)outSize, reply);
        // The deletion got its positive reply: no "rset", which would undo it.
        SocketQuit();
        return 1;
    }
    if (!Step("list\r\n", "Message List", "'list' error")) return -1;
    LogReply("list", reply, log);
    std::vector<char> message((size_t)(outSize < 256 ? 256 : outSize), 0);
    FormatInto(command, "retr %d\r\n", messageNumber);
    long bytes = SocketExchange(command, message.data(), (int)(outSize - 1), "Retrieve Message");
    if (!bytes) return -1;
    if (log && SettingInt("LogLevel"))
        LogPrintf(OutputEdit, "\t'retr %d' = %d = %s\r\n", messageNumber, (int)bytes,
                  TextCut(message.data(), 255).c_str());
    SocketQuit();
    std::string all = message.data(), result;
    if (const char* subject = FindNoCase(all.c_str(), "Subject: ")) {
        std::string line = subject;
        // A long subject is folded over lines that start with a blank.
        size_t end = line.find("\r\n");
        while (end != std::string::npos && end + 2 < line.size() && (line[end + 2] == ' ' || line[end + 2] == '\t'))
            end = line.find("\r\n", end + 2);
        result = DecodeHeaderWords(line.substr(0, end)) + "\r\nMessage: ";
    }
    size_t content = all.rfind("Content-");
    size_t blank = content == std::string::npos ? std::string::npos : all.find("\r\n\r\n", content);
    result += blank == std::string::npos ? all : all.substr(blank + 4);
    size_t end = result.rfind("\r\n.\r\n");
    if (end != std::string::npos) result.resize(end);
    while (result.size() >= 2 && result.compare(result.size() - 2, 2, "\r\n") == 0) result.resize(result.size() - 2);
    CopyIntoN(out, (int)outSize, result.c_str());
    return bytes;
}

int MailStep(int tab, int step, const char* text) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    const char* action = s.action;
    if (ContainsNoCase(action, "POP3")) {
        std::string shifted = s.value[1];
        ShiftLetters(shifted, -3);
        const std::string password = Field(shifted.c_str(), tab, step);
        const std::string user = Field(s.value[2], tab, step);
        const int number = ParseInt(Field(s.value[3], tab, step).c_str());
        const bool check = ContainsNoCase(action, "Check");
        const long size = 16777216;
        std::vector<char> out((size_t)size, 0);
        long result = Pop3Session(text, user.c_str(), password.c_str(), number, out.data(), size - 1024,
                                  check ? 2 : 3, true);
        if (check && result >= 0) SaveOutput(tab, step, out.data(), (long)strlen(out.data()), nullptr);
        out[960] = 0;
        if (s.loops == 1 && result >= 0) LogPrintf(OutputEdit, "\t%s\r\n", out.data());
        return result >= 1 ? 1 : 0;
    }
    const std::string message = text;
    const std::string to = Field(s.value[2], tab, step), subject = Field(s.value[3], tab, step);
    if (ContainsNoCase(action, "SMTP")) {
        const std::string from = Field(s.value[4], tab, step), recipients = Field(s.value[5], tab, step);
        // Value 3 is the server here.
        if (!SmtpConnect(to.c_str(), 0)) return 0;
        if (!SmtpSend(subject.c_str(), message.c_str(), recipients.c_str(), from.c_str())) {
            SmtpAbandon();
            return 0;
        }
        return SmtpQuit();
    }
    if (ContainsNoCase(action, "MAPI")) {
        if (!MapiOpen("", "", 1)) return 0;
        bool sent = MapiSend(subject.c_str(), message.c_str(), to.c_str(), nullptr, 0) ||
                    MapiSend(subject.c_str(), message.c_str(), to.c_str(), nullptr, 1);
        MapiClose();
        return sent ? 1 : 0;
    }
    if (ContainsNoCase(action, "mailto")) return MailTo(to, subject, message);
    return 0;
}
