#include "base/settingswatch.h"

#include <windows.h>

namespace {

HANDLE Changed;         // signalled by the registry on any change below the root
HKEY Watched;
unsigned long Generation = 1;

// Arms the watch again; the root is created if it is missing, since only an
// existing key can be watched. On failure the watch stays unarmed, and every
// look then counts as a change.
bool Arm() {
    if (Watched) RegCloseKey(Watched);
    Watched = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, "SOFTWARE\\ZantoRunner", 0, nullptr, 0, KEY_NOTIFY | KEY_READ, nullptr,
                        &Watched, nullptr) != ERROR_SUCCESS)
        return false;
    ResetEvent(Changed);
    return RegNotifyChangeKeyValue(Watched, TRUE,
                                   REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_LAST_SET, Changed,
                                   TRUE) == ERROR_SUCCESS;
}

bool Armed;
DWORD ArmedBy;  // a watch belongs to the thread that armed it and ends with it

}  // namespace

unsigned long SettingsGeneration() {
    if (!Changed) Changed = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    if (!Changed) return ++Generation;
    if (Armed && ArmedBy == GetCurrentThreadId() && WaitForSingleObject(Changed, 0) == WAIT_TIMEOUT) return Generation;
    // Re-arm first, then let the caller read afresh: a change that comes in
    // between signals the new watch. Another thread arms its own watch, since
    // the one of a thread that has ended may be gone without a signal.
    Armed = Arm();
    ArmedBy = GetCurrentThreadId();
    return ++Generation;
}
