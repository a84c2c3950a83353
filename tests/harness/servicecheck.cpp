// Reads a service back through the service manager, for the service
// scenarios: its exit code is its state times ten plus its start type
// (state 1 stopped, 4 running; start type 2 automatic, 3 by hand, 4
// disabled), so 43 is "running, started by hand"; 0 when the service cannot
// be read. A state still pending (starting, stopping) is waited out, for at
// most ten seconds.
//
//   servicecheck.exe NAME
#include <windows.h>

#include <vector>

int main(int argc, char** argv) {
    if (argc < 2) return 0;
    SC_HANDLE manager = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT);
    if (!manager) return 0;
    SC_HANDLE service = OpenServiceA(manager, argv[1], SERVICE_QUERY_STATUS | SERVICE_QUERY_CONFIG);
    if (!service) return 0;
    SERVICE_STATUS status = {};
    for (DWORD until = GetTickCount() + 10000;;) {
        if (!QueryServiceStatus(service, &status)) return 0;
        if (status.dwCurrentState == SERVICE_STOPPED || status.dwCurrentState == SERVICE_RUNNING ||
            GetTickCount() > until)
            break;
        Sleep(50);
    }
    DWORD needed = 0;
    QueryServiceConfigA(service, nullptr, 0, &needed);
    std::vector<char> buffer(needed ? needed : 1);
    QUERY_SERVICE_CONFIGA* config = (QUERY_SERVICE_CONFIGA*)buffer.data();
    if (!QueryServiceConfigA(service, config, needed, &needed)) return 0;
    CloseServiceHandle(service);
    CloseServiceHandle(manager);
    return (int)(status.dwCurrentState * 10 + config->dwStartType);
}
