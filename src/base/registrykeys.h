// Open handles of settings keys, kept per thread.
//
// Each registry call is a round trip to the registry server, and opening and
// closing a key for every read tripled the cost of a read. A handle is kept,
// never a value: every read still asks the registry, so a change by anyone
// shows at once. A handle whose key was deleted meanwhile is dropped and the
// key opened again.
#pragma once

#include <windows.h>

// A kept handle of root\path (created when `create` is set), or null when the
// key does not exist. The handle belongs to the cache: do not close it.
HKEY KeptKey(HKEY root, const char* path, bool create);
// Forgets the handle of root\path, and of every key below it.
void ForgetKeys(HKEY root, const char* path);
// Closes every handle this thread kept; a thread that ends calls it last.
void ReleaseKeptKeys();
// True for the results of a call on a handle whose key was deleted.
inline bool KeyWasDeleted(LONG result) { return result == ERROR_KEY_DELETED || result == ERROR_INVALID_HANDLE; }
