#include "net/ping.h"
#include "base/text.h"

#include <winsock2.h>
#include <windows.h>
#include <stdio.h>
#include <string.h>

#include "run/failure.h"
#include "run/runstate.h"
#include "run/translate.h"
#include "script/step.h"
#include "base/words.h"
#include "net/socketwait.h"
#include "system/launch.h"

namespace {

unsigned short Checksum(const unsigned char* data, int length) {
    unsigned long sum = 0;
    for (int i = 0; i + 1 < length; i += 2) sum += (unsigned long)(data[i] | (data[i + 1] << 8));
    if (length & 1) sum += data[length - 1];
    sum = (sum >> 16) + (sum & 0xFFFF);
    sum += sum >> 16;
    return (unsigned short)~sum;
}

struct WinsockSession {
    bool ok;
    WinsockSession() {
        WSADATA data;
        ok = WSAStartup(0x202, &data) == 0;
    }
    ~WinsockSession() {
        if (ok) WSACleanup();
    }
};

// A step with no time limit (0, empty or negative) waits as long as the
// system's own ping does by default, 4 seconds: a wait without end is never
// what a user asks for there. A limit is at most a day.
int PingLimit(int timeout) { return timeout <= 0 ? 4 : timeout > 86400 ? 86400 : timeout; }

}  // namespace

int PingHost(const char* host, int timeout) {
    WinsockSession session;
    if (!session.ok) return FailStep("WSAStartup %d\r\n", WSAGetLastError());
    SOCKET s = WSASocketA(AF_INET, SOCK_RAW, IPPROTO_ICMP, nullptr, 0, 0);
    if (s == INVALID_SOCKET) return FailStep("WSASocket %d\r\n", WSAGetLastError());
    struct Closer {
        SOCKET s;
        ~Closer() { closesocket(s); }
    } closer{s};
    // Milliseconds here, while the fallback takes the same number as seconds.
    DWORD wait = (DWORD)PingLimit(timeout);
    if (setsockopt(s, SOL_SOCKET, SO_RCVTIMEO, (const char*)&wait, sizeof wait) == SOCKET_ERROR)
        return FailStep("failed to set recv Ping Timeout: %d\r\n", WSAGetLastError());
    if (setsockopt(s, SOL_SOCKET, SO_SNDTIMEO, (const char*)&wait, sizeof wait) == SOCKET_ERROR)
        return FailStep("failed to set send Ping Timeout: %d\r\n", WSAGetLastError());
    hostent* entry = gethostbyname(host);
    if (!entry) return FailStep("failed to gethostbyname: %d\r\n", WSAGetLastError());
    sockaddr_in to = {};
    to.sin_family = AF_INET;
    memcpy(&to.sin_addr, entry->h_addr_list[0], sizeof to.sin_addr);
    unsigned char request[40] = {8, 0, 0, 0};
    const unsigned short id = (unsigned short)GetCurrentProcessId();
    memcpy(request + 4, &id, 2);
    request[6] = 1;  // sequence 1
    memset(request + 8, 0x45, 32);
    unsigned short sum = Checksum(request, sizeof request);
    memcpy(request + 2, &sum, 2);
    if (sendto(s, (const char*)request, sizeof request, 0, (sockaddr*)&to, sizeof to) == SOCKET_ERROR)
        return FailStep("echo request failed: %d\r\n", WSAGetLastError());
    unsigned char reply[1024];
    sockaddr_in from = {};
    int fromLength = sizeof from;
    // The reply is waited for in slices that look at the stop request.
    switch (WaitReadable(s, wait)) {
    case SOCKET_READY:
        break;
    case SOCKET_STOPPED:
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Ping stopped");
        return 0;
    case SOCKET_TIMED_OUT:
        return FailStep("recvfrom failed: %d\r\n", WSAETIMEDOUT);
    default:
        return FailStep("recvfrom failed: %d\r\n", WSAGetLastError());
    }
    int got = recvfrom(s, (char*)reply, sizeof reply, 0, (sockaddr*)&from, &fromLength);
    if (got == SOCKET_ERROR) return FailStep("recvfrom failed: %d\r\n", WSAGetLastError());
    const int header = (reply[0] & 0x0F) * 4;
    if (got < header + 8) {
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Too few bytes from %s\r\n", inet_ntoa(from.sin_addr));
        return 0;
    }
    if (reply[header] != 0) return FailStep("non-echo type received: %d\r\n", reply[header]);
    unsigned short replyId;
    memcpy(&replyId, reply + header + 4, 2);
    if (replyId != id) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "someone else's packet");
        return 0;
    }
    return 1;
}

int PingStep(int tab, int step, const char* host) {
    TranslateText(ScriptStore.tab[tab].steps[step].timeout, tab, step);
    const int timeout = PingLimit(ParseInt(TranslatedText));
    if (PingHost(host, timeout)) return 1;
    if (StopRequested) return 0;
    char command[600];
    snprintf(command, sizeof command, "ping.exe -n 1 -w %d %s", timeout * 1000, host);
    return LaunchProgram(command, 0, timeout * 1000 + 500) == 0 ? 1 : 0;
}
