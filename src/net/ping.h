// "Ping IP Address": one ICMP echo over a raw socket, then the system's ping.
#pragma once

// Nonzero if a matching echo reply came within `timeout` milliseconds (0 or
// less: the default of 4), or 0 at once when the run is asked to stop; the
// reason of a failure is in StepFailureText.
int PingHost(const char* host, int timeout);
// The action: PingHost, else "ping.exe" with the timeout in seconds (0 or
// less, or none: 4 seconds, the system ping's own default).
int PingStep(int tab, int step, const char* host);
