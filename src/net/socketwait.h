// Socket waits with a time limit that also end at once when the run is asked
// to stop: a mail or ping server that accepts and never answers cannot hold
// a run past its limit.
#pragma once

#include <winsock2.h>
#include <windows.h>

enum {
    SOCKET_READY = 1,
    SOCKET_TIMED_OUT = 0,
    SOCKET_STOPPED = -1,
    SOCKET_FAILED = -2,
};

// Waits until `s` has something to read (or the other side closed it).
// SOCKET_READY, SOCKET_TIMED_OUT after `limit` milliseconds, SOCKET_STOPPED,
// or SOCKET_FAILED with WSAGetLastError set.
int WaitReadable(SOCKET s, DWORD limit);
// connect() within `limit` milliseconds, the stop looked at while it waits;
// the socket stays blocking as before. True when connected; otherwise
// WSAGetLastError says why (WSAETIMEDOUT for the limit, WSAEINTR for a stop).
bool ConnectWithin(SOCKET s, const sockaddr_in& address, DWORD limit);
