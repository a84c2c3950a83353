#include "system/services.h"
#include "base/text.h"

#include <vector>

#include "run/runstate.h"
#include "script/step.h"
#include "base/words.h"
#include "system/processes.h"

namespace {

int FailWithSystemText(SC_HANDLE manager) {
    SystemErrorText(GetLastError(), StepFailureText, STEP_FAILURE_TEXT_SIZE);
    if (manager) CloseServiceHandle(manager);
    return 0;
}

}  // namespace

int ServiceStep(int tab, int step, const char* name) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    SC_HANDLE manager = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT);
    if (!manager) return FailWithSystemText(nullptr);
    const bool startup = ContainsNoCase(s.action, "Startup");
    // The service handle is not closed; only the manager's is.
    SC_HANDLE service = OpenServiceA(manager, name, startup ? SERVICE_CHANGE_CONFIG : 0x30);
    if (!service) return FailWithSystemText(manager);
    BOOL ok = FALSE;
    if (startup) {
        DWORD type = ContainsNoCase(s.value[0], "Automatic") ? 2
                     : ContainsNoCase(s.value[0], "Manual")  ? 3
                     : ContainsNoCase(s.value[0], "Disabled") ? 4
                                                               : 0;
        if (type)
            ok = ChangeServiceConfigA(service, SERVICE_NO_CHANGE, type, SERVICE_NO_CHANGE, nullptr, nullptr, nullptr,
                                      nullptr, nullptr, nullptr, nullptr);
    } else if (ContainsNoCase(s.action, "Start")) {
        ok = StartServiceA(service, 0, nullptr);
    } else if (ContainsNoCase(s.action, "Stop")) {
        SERVICE_STATUS status;
        ok = ControlService(service, SERVICE_CONTROL_STOP, &status);
    }
    if (!ok) return FailWithSystemText(manager);
    CloseServiceHandle(manager);
    return 1;
}

void GetServiceChooserList(HWND comboBox, const char* current) {
    SC_HANDLE manager = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT | SC_MANAGER_ENUMERATE_SERVICE);
    if (!manager) return;
    DWORD needed = 0, count = 0, resume = 0;
    ENUM_SERVICE_STATUSA probe;
    EnumServicesStatusA(manager, 0x30, 3, &probe, sizeof probe, &needed, &count, &resume);
    std::vector<char> buffer(needed + 72 < 256 ? 256 : needed + 72);
    resume = 0;
    if (EnumServicesStatusA(manager, 0x30, 3, (ENUM_SERVICE_STATUSA*)buffer.data(), (DWORD)buffer.size(), &needed,
                            &count, &resume)) {
        const ENUM_SERVICE_STATUSA* services = (const ENUM_SERVICE_STATUSA*)buffer.data();
        for (DWORD i = 0; i < count; i++) {
            char line[600];
            FormatInto(line, "%s%s   [%s]", services[i].lpDisplayName,
                      services[i].ServiceStatus.dwCurrentState == SERVICE_RUNNING ? "* " : " ",
                      services[i].lpServiceName);
            SendMessageA(comboBox, CB_ADDSTRING, 0, (LPARAM)line);
        }
    }
    CloseServiceHandle(manager);
    if (!current || !*current) return;
    int n = (int)SendMessageA(comboBox, CB_GETCOUNT, 0, 0);
    for (int i = 0; i < n; i++) {
        char line[600] = "";
        SendMessageA(comboBox, CB_GETLBTEXT, (WPARAM)i, (LPARAM)line);
        if (strstr(line, current)) {
            SendMessageA(comboBox, CB_SETCURSEL, (WPARAM)i, 0);
            break;
        }
    }
}
