#include "net/ftp.h"

#include <windows.h>
#include <wininet.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "base/files.h"
#include "base/ui.h"
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

}  // namespace

long FtpAction(const char* remote, const char* user, const char* password, const char* localFile, char* outBuffer,
               long outSize, int mode) {
    const std::string all = remote ? remote : "";
    const size_t slash = all.find('/');
    const std::string server = all.substr(0, slash);
    const std::string path = slash == std::string::npos ? "" : all.substr(slash);
    AutoInternet session(InternetOpenA("ZantoRunner", 0, nullptr, nullptr, 0));
    if (!session.h) return FailStep("InternetOpen %d\r\n", (int)GetLastError());
    InternetSetOptionA(session.h, INTERNET_OPTION_CONNECT_TIMEOUT, (void*)"10000", 5);
    InternetSetOptionA(session.h, INTERNET_OPTION_RECEIVE_TIMEOUT, (void*)"10000", 5);
    InternetSetOptionA(session.h, INTERNET_OPTION_CONNECT_RETRIES, (void*)"10", 2);
    AutoInternet connection(InternetConnectA(session.h, server.c_str(), 21, user, password, INTERNET_SERVICE_FTP,
                                             INTERNET_FLAG_PASSIVE, 0));
    if (!connection.h) return FailStep("InternetConnect %d\r\n", (int)GetLastError());
    switch (mode) {
    case FTP_DELETE_FILE:
        return FtpDeleteFileA(connection.h, path.c_str()) ? 1 : FailStep("Delete File %d\r\n", (int)GetLastError());
    case FTP_CREATE_FOLDER:
        return FtpCreateDirectoryA(connection.h, path.c_str()) ? 1 : FailStep("Create Directory %d\r\n", (int)GetLastError());
    case FTP_DELETE_FOLDER:
        return FtpRemoveDirectoryA(connection.h, path.c_str()) ? 1 : FailStep("Remove Directory %d\r\n", (int)GetLastError());
    case FTP_DOWNLOAD: {
        AutoInternet file(FtpOpenFileA(connection.h, path.c_str(), GENERIC_READ, FTP_TRANSFER_TYPE_BINARY, 0));
        if (!file.h) return FailStep("FTP Open File %d\r\n", (int)GetLastError());
        std::vector<char> chunk(2048);
        long total = 0;
        for (;;) {
            DWORD got = 0;
            if (!InternetReadFile(file.h, chunk.data(), 2047, &got) || !got) break;
            if (outBuffer && total + (long)got < outSize) memcpy(outBuffer + total, chunk.data(), got);
            total += (long)got;
        }
        return total;
    }
    case FTP_UPLOAD: {
        // The local file first: a missing one leaves the server untouched.
        AutoCloseHandle local(CreateFileA(localFile ? localFile : "", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                          nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!local.ok()) return FailStep("Create File %d\r\n", (int)GetLastError());
        AutoInternet file(FtpOpenFileA(connection.h, path.c_str(), GENERIC_WRITE, FTP_TRANSFER_TYPE_BINARY, 0));
        if (!file.h) return FailStep("FTP Open File %d\r\n", (int)GetLastError());
        std::vector<char> chunk(2048);
        long total = 0;
        for (;;) {
            DWORD got = 0, put = 0;
            SetFilePointer(local.h, total, nullptr, FILE_BEGIN);
            if (!ReadFile(local.h, chunk.data(), 2047, &got, nullptr) || !got) break;
            if (!InternetWriteFile(file.h, chunk.data(), got, &put) || put != got) return FailStep("FTP Write File %d\r\n", (int)GetLastError());
            total += (long)got;
        }
        return total > 0 ? total : 1;
    }
    }
    return 0;
}

int FtpStep(int tab, int step, const char* text) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    const std::string remote = text;
    std::string password = s.value[1];
    ShiftLetters(password, -3);
    const std::string user = s.value[2];
    const char* action = s.action;
    if (ContainsNoCase(action, "Download")) {
        std::vector<char> buffer(FTP_BUFFER, 0);
        long count = FtpAction(remote.c_str(), user.c_str(), password.c_str(), nullptr, buffer.data(), FTP_BUFFER, FTP_DOWNLOAD);
        const long kept = count < FTP_BUFFER ? count : FTP_BUFFER - 1;
        SaveOutput(tab, step, buffer.data(), kept, nullptr);
        if (s.loops == 1) {
            char shown[961];
            lstrcpynA(shown, buffer.data(), sizeof shown);
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
