// Ending the user's session: logoff, restart, shutdown.
#pragma once

#include <windows.h>

// Takes the shutdown privilege and calls ExitWindowsEx; true on success.
bool ExitSession(UINT flags);
