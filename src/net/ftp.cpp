#include "net/ftp.h"

#include <windows.h>
#include <wininet.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "base/files.h"
#include "base/text.h"
#include "base/ui.h"
#include "net/runningscript.h"
#include "net/internethandle.h"
#include "base/log.h"
#include "run/failure.h"
#include "run/runstate.h"
#include "run/textops.h"
#include "run/translate.h"
#include "run/variables.h"
#include "base/handles.h"
#include "script/step.h"
#include "base/words.h"

namespace {

enum : long { FTP_BUFFER = 67108864 };

// 10 seconds for connecting and for each wait on the server.
const DWORD kFtpLimit = 10000;

}  // namespace

namespace {

// The calls that wait on the server, made on the transfer's worker.
void ConnectCall(InternetCall& c) {
    c.made = InternetConnectA(c.handle, c.text[0].c_str(), 21, (c.number & 1) ? nullptr : c.text[1].c_str(),
                              (c.number & 2) ? nullptr : c.text[2].c_str(), INTERNET_SERVICE_FTP, INTERNET_FLAG_PASSIVE, 0);
}
void OpenFileCall(InternetCall& c) { c.made = FtpOpenFileA(c.handle, c.text[0].c_str(), c.number, FTP_TRANSFER_TYPE_BINARY, 0); }
void DeleteFileCall(InternetCall& c) { c.ok = FtpDeleteFileA(c.handle, c.text[0].c_str()); }
void CreateFolderCall(InternetCall& c) { c.ok = FtpCreateDirectoryA(c.handle, c.text[0].c_str()); }
void RemoveFolderCall(InternetCall& c) { c.ok = FtpRemoveDirectoryA(c.handle, c.text[0].c_str()); }
void ReadCall(InternetCall& c) { c.ok = InternetReadFile(c.handle, c.data, 2047, &c.count); }
void WriteCall(InternetCall& c) { c.ok = InternetWriteFile(c.handle, c.data, c.number, &c.count); }

}  // namespace

long FtpAction(const char* remote, const char* user, const char* password, const char* localFile, char* outBuffer,
               long outSize, int mode) {
    const std::string all = remote ? remote : "";
    const size_t slash = all.find('/');
    const std::string server = all.substr(0, slash);
    const std::string path = slash == std::string::npos ? "" : all.substr(slash);
    AutoInternet session(InternetOpenA("ZantoRunner", 0, nullptr, nullptr, 0));
    if (!session.h) return FailStep("InternetOpen %d\r\n", (int)GetLastError());
    SetSessionLimits(session.h, kFtpLimit, 10);
    // Every call that waits on the server runs on the worker, and is given up
    // on a stop or after the limit without an answer.
    InternetWorker worker;
    InternetCall& call = worker.Call();
    call.handle = session.h;
    call.text[0] = server;
    call.text[1] = user ? user : "";
    call.text[2] = password ? password : "";
    call.number = (user ? 0 : 1) | (password ? 0 : 2);
    if (worker.Run(ConnectCall, kFtpLimit) != CALL_DONE) return 0;
    AutoInternet connection(call.made);
    if (!connection.h) return FailStep("InternetConnect %d\r\n", (int)GetLastError());
    call.handle = connection.h;
    call.text[0] = path;
    switch (mode) {
    case FTP_DELETE_FILE:
        if (worker.Run(DeleteFileCall, kFtpLimit) != CALL_DONE) return 0;
        return call.ok ? 1 : FailStep("Delete File %d\r\n", (int)GetLastError());
    case FTP_CREATE_FOLDER:
        if (worker.Run(CreateFolderCall, kFtpLimit) != CALL_DONE) return 0;
        return call.ok ? 1 : FailStep("Create Directory %d\r\n", (int)GetLastError());
    case FTP_DELETE_FOLDER:
        if (worker.Run(RemoveFolderCall, kFtpLimit) != CALL_DONE) return 0;
        return call.ok ? 1 : FailStep("Remove Directory %d\r\n", (int)GetLastError());
    case FTP_DOWNLOAD: {
        // With a local file the bytes stream into it (a temporary that takes
        // the target's place only when the download is whole).
        AutoCloseHandle local;
        if (localFile) {
            local.h = CreateFileA(localFile, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
            if (!local.ok()) return FailStep("Create File %d\r\n", (int)GetLastError());
        }
        call.number = GENERIC_READ;
        if (worker.Run(OpenFileCall, kFtpLimit) != CALL_DONE) return 0;
        AutoInternet file(call.made);
        if (!file.h) return FailStep("FTP Open File %d\r\n", (int)GetLastError());
        long total = 0;
        for (;;) {
            if (StopRequested) {
                CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Transfer stopped");
                return 0;
            }
            call.handle = file.h;
            if (worker.Run(ReadCall, kFtpLimit) != CALL_DONE) return 0;
            // A transfer that breaks off is no download.
            if (!call.ok) return FailStep("FTP Read File %d after %ld bytes\r\n", (int)call.error, total);
            const DWORD got = call.count;
            if (!got) break;
            if (local.ok() && !WriteAll(local.h, call.data, got)) return FailStep("Write File %d\r\n", (int)GetLastError());
            if (outBuffer && total + (long)got < outSize) memcpy(outBuffer + total, call.data, got);
            total += (long)got;
        }
        if (local.ok() && !FlushFileBuffers(local.h)) return FailStep("Write File %d\r\n", (int)GetLastError());
        return total;
    }
    case FTP_UPLOAD: {
        // The local file first: a missing one leaves the server untouched.
        AutoCloseHandle local(CreateFileA(localFile ? localFile : "", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                          nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!local.ok()) return FailStep("Create File %d\r\n", (int)GetLastError());
        call.number = GENERIC_WRITE;
        if (worker.Run(OpenFileCall, kFtpLimit) != CALL_DONE) return 0;
        AutoInternet file(call.made);
        if (!file.h) return FailStep("FTP Open File %d\r\n", (int)GetLastError());
        long total = 0;
        for (;;) {
            if (StopRequested) {
                CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Transfer stopped");
                return 0;
            }
            DWORD got = 0;
            SetFilePointer(local.h, total, nullptr, FILE_BEGIN);
            if (!ReadFile(local.h, call.data, 2047, &got, nullptr) || !got) break;
            call.handle = file.h;
            call.number = got;
            if (worker.Run(WriteCall, kFtpLimit) != CALL_DONE) return 0;
            if (!call.ok || call.count != got) return FailStep("FTP Write File %d\r\n", (int)call.error);
            total += (long)got;
        }
        return total > 0 ? total : 1;
    }
    }
    return 0;
}

namespace {

// "FTP Download" with its output to a file: the bytes go to a temporary
// beside the target, which takes its place only when the download is whole;
// on any failure the old file stays as it was.
int DownloadToFile(int tab, int step, const std::string& remote, const std::string& user, const std::string& password) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    TranslateText(s.output_value, tab, step);
    const std::string target = TranslatedText;
    if (!PathFits(target.c_str())) {
        PathTooLongText(target.c_str(), StepFailureText, STEP_FAILURE_TEXT_SIZE);
        return 0;
    }
    if (RefuseRunningScript(tab, target.c_str())) return 0;
    const std::string part = TemporaryBeside(target.c_str(), true);
    if (part.empty()) return FailStep("Create File %d\r\n", (int)GetLastError());
    long count = FtpAction(remote.c_str(), user.c_str(), password.c_str(), part.c_str(), nullptr, 0, FTP_DOWNLOAD);
    if (count >= 1 && s.loops == 1) {
        // The log shows the first 960 characters, as it does for a variable.
        char head[961] = "";
        AutoCloseHandle file(CreateFileA(part.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
        DWORD got = 0;
        if (file.ok() && ReadFile(file.h, head, 960, &got, nullptr)) head[got] = 0;
        LogPrintf(OutputEdit, "\t%s\r\n", head);
    }
    if (count >= 1 && ReplaceWithFile(part.c_str(), target.c_str())) return 1;
    if (count >= 1) FailStep("Replace File %d\r\n", (int)GetLastError());
    DeleteFileA(part.c_str());
    return 0;
}

}  // namespace

int FtpStep(int tab, int step, const char* text) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    const std::string remote = text;
    std::string password = s.value[1];
    ShiftLetters(password, -3);
    const std::string user = s.value[2];
    const char* action = s.action;
    if (ContainsNoCase(action, "Download")) {
        if (OutputGoesToFile(s)) return DownloadToFile(tab, step, remote, user, password);
        std::vector<char> buffer(FTP_BUFFER, 0);
        long count = FtpAction(remote.c_str(), user.c_str(), password.c_str(), nullptr, buffer.data(), FTP_BUFFER, FTP_DOWNLOAD);
        const long kept = count < FTP_BUFFER ? count : FTP_BUFFER - 1;
        SaveOutput(tab, step, buffer.data(), kept, nullptr);
        if (s.loops == 1) {
            char shown[961];
            CopyIntoN(shown, sizeof shown, buffer.data());
            LogPrintf(OutputEdit, "\t%s\r\n", shown);
        }
        return count >= 1 ? 1 : 0;
    }
    if (ContainsNoCase(action, "Upload")) {
        TranslateText(s.value[0], tab, step);
        std::string local = TranslatedText;
        return FtpAction(remote.c_str(), user.c_str(), password.c_str(), local.c_str(), nullptr, 0, FTP_UPLOAD) >= 1;
    }
    int mode = ContainsNoCase(action, "Delete File")     ? FTP_DELETE_FILE
               : ContainsNoCase(action, "Create Folder") ? FTP_CREATE_FOLDER
               : ContainsNoCase(action, "Delete Folder") ? FTP_DELETE_FOLDER
                                                         : 0;
    if (!mode) return 0;
    return FtpAction(remote.c_str(), user.c_str(), password.c_str(), nullptr, nullptr, 0, mode) >= 1;
}
