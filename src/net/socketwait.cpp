#include "net/socketwait.h"

#include "run/runstate.h"

namespace {

// The slice between two looks at the stop request.
const DWORD kSlice = 100;

}  // namespace

int WaitReadable(SOCKET s, DWORD limit) {
    const DWORD start = GetTickCount();
    for (;;) {
        if (StopRequested) return SOCKET_STOPPED;
        const DWORD spent = GetTickCount() - start;
        if (spent >= limit) return SOCKET_TIMED_OUT;
        const DWORD slice = limit - spent < kSlice ? limit - spent : kSlice;
        fd_set readable;
        FD_ZERO(&readable);
        FD_SET(s, &readable);
        timeval wait = {0, (long)slice * 1000};
        const int ready = select(0, &readable, nullptr, nullptr, &wait);
        if (ready == SOCKET_ERROR) return SOCKET_FAILED;
        if (ready > 0) return SOCKET_READY;
    }
}

bool ConnectWithin(SOCKET s, const sockaddr_in& address, DWORD limit) {
    u_long on = 1, off = 0;
    if (ioctlsocket(s, FIONBIO, &on) == SOCKET_ERROR) return false;
    bool connected = connect(s, (const sockaddr*)&address, sizeof address) != SOCKET_ERROR;
    int error = connected ? 0 : WSAGetLastError();
    if (!connected && error == WSAEWOULDBLOCK) {
        error = WSAETIMEDOUT;
        const DWORD start = GetTickCount();
        for (;;) {
            if (StopRequested) {
                error = WSAEINTR;
                break;
            }
            const DWORD spent = GetTickCount() - start;
            if (spent >= limit) break;
            const DWORD slice = limit - spent < kSlice ? limit - spent : kSlice;
            fd_set writable, failed;
            FD_ZERO(&writable);
            FD_ZERO(&failed);
            FD_SET(s, &writable);
            FD_SET(s, &failed);
            timeval wait = {0, (long)slice * 1000};
            const int ready = select(0, nullptr, &writable, &failed, &wait);
            if (ready == SOCKET_ERROR) {
                error = WSAGetLastError();
                break;
            }
            if (FD_ISSET(s, &failed)) {
                int why = 0, size = sizeof why;
                getsockopt(s, SOL_SOCKET, SO_ERROR, (char*)&why, &size);
                error = why ? why : WSAECONNREFUSED;
                break;
            }
            if (FD_ISSET(s, &writable)) {
                connected = true;
                break;
            }
        }
    }
    ioctlsocket(s, FIONBIO, &off);
    if (!connected) WSASetLastError(error);
    return connected;
}
