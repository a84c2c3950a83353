// A watch on HKEY_CURRENT_USER\SOFTWARE\ZantoRunner and all its subkeys.
//
// Reading a value costs a round trip to the registry. A reader that must see
// every change at once, and reads the same values over and over (the variables
// of translation), may keep what it read as long as the watch reports no
// change: any write by this or another process signals the watch before the
// next look, so a kept value is always the value the registry holds.
#pragma once

// Returns the number of the current generation of the settings: it changes
// whenever anything under the root may have changed since the last call.
unsigned long SettingsGeneration();
