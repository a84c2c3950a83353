// "Ping IP Address": one ICMP echo over a raw socket, then the system's ping.
#pragma once

// Nonzero if a matching echo reply came within `timeout` milliseconds (0
// waits without limit); the reason of a failure is in StepFailureText.
int PingHost(const char* host, int timeout);
// The action: PingHost, else "ping.exe" with the timeout in seconds.
int PingStep(int tab, int step, const char* host);
