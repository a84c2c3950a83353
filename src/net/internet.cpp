// Category 11. A connection check stands before every action, then the
// action name decides.
#include "net/internet.h"
#include "base/text.h"

#include <windows.h>
#include <wininet.h>
#include <string.h>

#include <string>
#include <vector>

#include "net/fetch.h"
#include "net/ftp.h"
#include "net/mail.h"
#include "net/ping.h"
#include "net/runningscript.h"
#include "run/runstate.h"
#include "run/translate.h"
#include "run/variables.h"
#include "script/step.h"
#include "base/fileidentity.h"
#include "base/files.h"
#include "base/log.h"
#include "base/ui.h"
#include "base/words.h"
#include "system/launch.h"
#include "system/processes.h"
#include "base/programpath.h"

namespace {

enum : long { REPLY_BUFFER = 16777216 };

bool Connected() {
    DWORD flags = 0;
    if (InternetGetConnectedState(&flags, 0)) return true;
    return InternetAutodial(INTERNET_AUTODIAL_FORCE_ONLINE, GetForegroundWindow()) &&
           InternetGetConnectedState(&flags, 0);
}

int OpenWebPage(const std::string& address) {
    char program[MAX_PATH * 2] = "";
    AssociatedProgram(".htm", program, nullptr);
    if (!program[0]) ResolveProgramPath("IEXPLORE.EXE", program, nullptr);
    std::string command = std::string(program) + " " + address;
    int32_t result = LaunchProgram(command.c_str(), 1, 0);
    return result == LAUNCH_FAILED ? 0 : result;
}

// "Download" and "HTTP Post" (a plain fetch of the whole address): the bytes
// are the step's output.
// An output to a file takes the reply whole, however large: it streams into
// a file beside the target, which then replaces it. A variable or the
// clipboard keeps the buffer's first bytes, and the log says how many came.
int FetchToOutput(int tab, int step, const std::string& address, long room) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    if (OutputGoesToFile(s)) {
        TranslateText(s.output_value, tab, step);
        std::string target = TranslatedText;
        if (!PathFits(target.c_str())) {
            PathTooLongText(target.c_str(), StepFailureText, STEP_FAILURE_TEXT_SIZE);
            return 0;
        }
        if (RefuseRunningScript(tab, target.c_str())) return 0;
        // The old file stays as it was unless the whole answer came: a
        // failed, refused or broken transfer leaves only its words.
        std::string part = TemporaryBeside(target.c_str(), true);
        if (part.empty()) {
            SystemErrorText(GetLastError(), StepFailureText, STEP_FAILURE_TEXT_SIZE);
            return 0;
        }
        long count = FetchUrl(address.c_str(), part.c_str(), nullptr, 0, nullptr);
        if (count >= 1 && ReplaceWithFile(part.c_str(), target.c_str())) return 1;
        if (count >= 1) SystemErrorText(GetLastError(), StepFailureText, STEP_FAILURE_TEXT_SIZE);
        DeleteFileA(part.c_str());
        return 0;
    }
    std::vector<char> reply(REPLY_BUFFER, 0);
    long count = FetchUrl(address.c_str(), nullptr, reply.data(), room, nullptr);
    long kept = count < REPLY_BUFFER - 1 ? count : REPLY_BUFFER - 1;
    if (kept < count) LogPrintf(OutputEdit, "\tReceived %li bytes; the first %li are kept\r\n", count, kept);
    SaveOutput(tab, step, reply.data(), kept, nullptr);
    return count >= 1 ? 1 : 0;
}

}  // namespace

int InternetAction(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    if (!Connected()) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Not connected to the internet");
        return 0;
    }
    TranslateText(s.text, tab, step);
    std::string text = TranslatedText;
    const char* action = s.action;
    if (ContainsNoCase(action, "Start ")) {
        int32_t result = LaunchProgram(text.c_str(), 1, 0);
        return result == LAUNCH_FAILED ? 0 : result;
    }
    if (ContainsNoCase(action, "Open a Web Page")) return OpenWebPage(text);
    const bool pageText = ContainsNoCase(action, "Save Web Page Text");
    if ((pageText || ContainsNoCase(action, "Save Web Page HTML")) && RefuseRunningScript(tab, s.output_value)) return 0;
    if (pageText) return SavePage(text.c_str(), s.output_value, SAVE_TEXT) ? 1 : 0;
    if (ContainsNoCase(action, "Save Web Page HTML")) return SavePage(text.c_str(), s.output_value, SAVE_HTML) ? 1 : 0;
    if (lstrcmpiA(action, "Download") == 0) return FetchToOutput(tab, step, text, REPLY_BUFFER - 1024);
    if (ContainsNoCase(action, "Post")) return FetchToOutput(tab, step, text, REPLY_BUFFER);
    if (ContainsNoCase(action, "Ping IP Address")) return PingStep(tab, step, text.c_str());
    if (ContainsNoCase(action, "POP3") || ContainsNoCase(action, "Send Email") || ContainsNoCase(action, "mailto"))
        return MailStep(tab, step, text.c_str());
    if (ContainsNoCase(action, "FTP ")) return FtpStep(tab, step, text.c_str());
    return 0;
}
