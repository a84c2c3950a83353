// FetchUrl over WinInet: the address as given, no cached copy, 20 seconds
// for connecting and for receiving; the page savers on top of it.
#include "net/fetch.h"
#include "base/text.h"

#include <wininet.h>
#include <stdio.h>
#include <string.h>

#include <vector>

#include "net/internethandle.h"
#include "base/files.h"
#include "base/log.h"
#include "run/runstate.h"
#include "run/textops.h"
#include "base/handles.h"
#include "base/utf8.h"
#include "base/words.h"
#include "system/processes.h"

namespace {

enum : long {
    PAGE_BUFFER = 4194304,
    PAGE_FILLED = 4193280,
};

void SystemText() { SystemErrorText(GetLastError(), StepFailureText, 260); }

// 20 seconds for connecting and for each wait on the server.
const DWORD kTransferLimit = 20000;

// The two calls that wait on the server, made on the transfer's worker.
void OpenUrlCall(InternetCall& c) { c.made = InternetOpenUrlA(c.handle, c.text[0].c_str(), nullptr, 0, 0x84000000, 0); }
void ReadCall(InternetCall& c) { c.ok = InternetReadFile(c.handle, c.data, 2048, &c.count); }

// The number an HTTP answer's header holds; -1 when it has none (an FTP
// address, a reply without that header).
long long HeaderNumber(HINTERNET request, DWORD header) {
    char text[32] = "";
    DWORD size = sizeof text - 1;
    if (!HttpQueryInfoA(request, header, text, &size, nullptr) || !text[0]) return -1;
    return _strtoi64(text, nullptr, 10);
}

void ShowProgress(HWND window, long total) {
    if (!window || !IsWindowVisible(window)) return;
    char text[64];
    if (total <= 1048576)
        FormatInto(text, "%liK Downloaded...", total / 1024);
    else
        FormatInto(text, "%d.%d MB Downloaded...", (int)(total / 1048576), (int)(total % 1048576 / 1024 / 100));
    SetWindowTextA(window, text);
    InvalidateRect(window, nullptr, TRUE);
    UpdateWindow(window);
}


// The files a page refers to, fetched beside the saved page.
void FetchReferredFiles(const std::string& page, const char* url, const char* outFile) {
    static const char* const tags[][2] = {{"<img ", "src="},
                                          {"<link ", "href="},
                                          {"<script ", "src="},
                                          {"<input type=\"image\"", "src="},
                                          {"<input type=image", "src="}};
    std::string folder = outFile;
    folder = folder.substr(0, folder.rfind('\\') == std::string::npos ? 0 : folder.rfind('\\'));
    std::string lastFetched;
    for (const auto& t : tags) {
        size_t pos = 0;
        while (pos < page.size() && pos < (size_t)PAGE_FILLED) {
            const char* at = FindNoCase(page.c_str() + pos, t[0]);
            if (!at) break;
            pos = (size_t)(at - page.c_str());
            const char* key = FindNoCase(at, t[1]);
            if (key) {
                std::string value(key + strlen(t[1]), strnlen(key + strlen(t[1]), 259));
                value = value.substr(0, value.find('"', value[0] == '"' ? 1 : 0));
                value = value.substr(0, value.find(' '));
                std::string clean;
                for (char c : value)
                    if (c != '"') clean += c;
                std::string remote = std::string(url) + (clean[0] == '/' ? "" : "/") + clean;
                std::string local = clean[0] == '/' ? clean.substr(1) : clean;
                for (char& c : local)
                    if (c == '/') c = '\\';
                local = folder + "\\" + local;
                if (lstrcmpiA(remote.c_str(), lastFetched.c_str()) != 0) {
                    FetchUrl(remote.c_str(), local.c_str(), nullptr, 0, nullptr);
                    lastFetched = remote;
                }
            }
            pos += strlen(t[0]) + strlen(t[1]) + 1;
        }
    }
}

bool TextIsAscii(const char* text, size_t length) {
    for (size_t i = 0; i < length; i++)
        if ((unsigned char)text[i] >= 0x80) return false;
    return true;
}

}  // namespace

std::string WireUrl(const char* url) {
    std::string out = url ? url : "";
    const bool web = _strnicmp(out.c_str(), "http://", 7) == 0 || _strnicmp(out.c_str(), "https://", 8) == 0;
    if (!web) return out;
    const size_t authority = out.find("://") + 3;
    size_t path = out.find_first_of("/?#", authority);
    if (path == std::string::npos) path = out.size();
    // The host: after any user and password, before any port.
    const size_t at = out.rfind('@', path);
    const size_t host = at != std::string::npos && at >= authority ? at + 1 : authority;
    size_t hostEnd = out.find(':', host);
    if (hostEnd == std::string::npos || hostEnd > path) hostEnd = path;
    if (!TextIsAscii(out.data() + host, hostEnd - host)) {
        // A host named beyond ASCII goes as its IDNA form ("bücher.test" is
        // "xn--bcher-kva.test"), the only form name lookups know; one the
        // system cannot convert stays as given, and its lookup fails.
        const std::wstring wide = WideFromProgram(out.data() + host, hostEnd - host);
        wchar_t ascii[256];
        const int n = IdnToAscii(0, wide.data(), (int)wide.size(), ascii, 256);
        if (n > 0) {
            const std::string converted = ProgramFromWide(ascii, (size_t)n);
            out.replace(host, hostEnd - host, converted);
            path = path - (hostEnd - host) + converted.size();
        }
    }
    if (TextIsAscii(out.data() + path, out.size() - path)) return out;
    // Where the system runs the program in its legacy page, the letters are
    // that page's bytes: the server is sent their UTF-8 all the same.
    const std::string tail = PercentEncodeBeyondAscii(out.data() + path, out.size() - path);
    out.resize(path);
    out += tail;
    return out;
}

long FetchUrl(const char* url, const char* outFile, char* outBuffer, long outBufferSize, HWND progressWindow) {
    if (!url || !*url || (!outFile && !outBuffer)) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Missing Parameters");
        return 0;
    }
    AutoInternet session(InternetOpenA("ZantoRunner", 0, nullptr, nullptr, 0));
    if (!session.h) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "InternetOpen Error\r\n");
        return 0;
    }
    SetSessionLimits(session.h, 20000, 3);
    // Each call that waits on the server is given up after the limit without
    // an answer, or at once on a stop.
    InternetWorker worker;
    InternetCall& call = worker.Call();
    call.handle = session.h;
    call.text[0] = WireUrl(url);
    if (worker.Run(OpenUrlCall, kTransferLimit) != CALL_DONE) return 0;
    AutoInternet request(call.made);
    if (!request.h) {
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "InternetOpenUrl %d: %s\r\n", (int)GetLastError(), url);
        return 0;
    }
    // An error page is no download: a status of 400 or more fails, and its
    // page is not read.
    const long long status = HeaderNumber(request.h, HTTP_QUERY_STATUS_CODE);
    if (status >= 400) {
        char reason[128] = "";
        DWORD size = sizeof reason - 1;
        HttpQueryInfoA(request.h, HTTP_QUERY_STATUS_TEXT, reason, &size, nullptr);
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "The server answered %lld %s for %s", status, reason, url);
        return 0;
    }
    const long long promised = HeaderNumber(request.h, HTTP_QUERY_CONTENT_LENGTH);
    AutoCloseHandle file;
    if (outFile) {
        file.h = OpenFileForWrite(outFile);
        if (!file.ok()) {
            SystemText();
            return 0;
        }
    }
    const char* chunk = call.data;
    long total = 0;
    DWORD broken = 0;
    for (;;) {
        if (StopRequested) break;
        call.handle = request.h;
        if (worker.Run(ReadCall, kTransferLimit) != CALL_DONE) return 0;
        if (!call.ok) {
            broken = call.error;
            break;
        }
        const DWORD got = call.count;
        if (!got) break;
        if (file.ok()) {
            SetFilePointer(file.h, 0, nullptr, FILE_END);
            DWORD put = 0;
            if (!WriteFile(file.h, chunk, got, &put, nullptr) || put != got) {
                // A disk that takes no more: the download is not whole.
                SystemText();
                return 0;
            }
        }
        if (outBuffer) {
            long room = outBufferSize - total - 1;
            long n = (long)got < room ? (long)got : room;
            // A chunk of exactly one byte is counted but not kept, as always.
            if (n > 1) {
                memcpy(outBuffer + total, chunk, (size_t)n);
                outBuffer[total + n] = 0;
            }
        }
        total += (long)got;
        ShowProgress(progressWindow, total);
    }
    // A transfer cut short is no download: stopped, silent, broken off, or
    // ended before the length the server promised.
    if (StopRequested) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Transfer stopped");
        return 0;
    }
    if (broken) {
        char why[260];
        SystemErrorText(broken, why, sizeof why);
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "The transfer broke off after %ld bytes: %s", total, why);
        return 0;
    }
    if (promised >= 0 && total < promised) {
        snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE,
                 "The connection closed after %ld of the %lld bytes the server announced", total, promised);
        return 0;
    }
    if (!total) SystemText();
    return total;
}

std::string PageText(const std::string& source, size_t* length) {
    std::string page;
    for (char c : source)
        if (c != '\r' && c != '\n') page += c;
    static const char* const replacements[][2] = {{"<br>", "\r\n"},   {"<ul>", "\r\n"},   {"</ul>", "\r\n"},
                                                  {"</tr>", "\r\n"},  {"<li>", "\r\n* "}, {"&nbsp;", " "},
                                                  {"&amp;", "&"},     {"&copy;", "(c)"}};
    for (const auto& r : replacements) ReplaceInString(page, r[0], r[1], 0, 0);
    const char* body = FindNoCase(page.c_str(), "<body");
    size_t i = body ? (size_t)(body - page.c_str()) : 0;
    std::string text;
    bool inTag = false;
    while (i < page.size() && text.size() < (size_t)PAGE_FILLED) {
        if (page.compare(i, 4, "<!--") == 0) {
            size_t end = page.find("-->", i);
            if (end == std::string::npos) break;
            i = end + 3;
            continue;
        }
        // A "<" opens a tag; the place after a ">" is out of it again, unless
        // it opens the next tag at once.
        if (page[i] == '<')
            inTag = true;
        else if (i > 0 && page[i - 1] == '>')
            inTag = false;
        if (!inTag && page[i] != '<' && !(page[i] == ' ' && text.size() >= 2 && text.back() == ' ')) text += page[i];
        i++;
    }
    // The count is taken before these last two replacements, so each leaves
    // three zero bytes at the end of the saved file, as it always did.
    *length = text.size();
    ReplaceInString(text, "&gt;", ">", 0, 0);
    ReplaceInString(text, "&lt;", "<", 0, 0);
    return text;
}

long SavePage(const char* url, const char* outFile, int mode) {
    if (!outFile || !*outFile) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Missing Parameters");
        return 0;
    }
    std::vector<char> buffer(PAGE_BUFFER, 0);
    long count = FetchUrl(url, nullptr, buffer.data(), PAGE_FILLED, nullptr);
    if (count < 1) return 0;
    std::string page(buffer.data(), (size_t)(count < PAGE_FILLED ? count : PAGE_FILLED - 1));
    page.resize(strlen(page.c_str()));
    std::string data = page;
    size_t length = (size_t)count;
    if (mode == SAVE_TEXT) {
        data = PageText(page, &length);
        data.resize(length, '\0');
    }
    if (mode == SAVE_HTML_AND_FILES) {
        ReplaceInString(data, "src=\\", "src=", 0, 0);
        ReplaceInString(data, "src=/", "src=", 0, 0);
        length = data.size();
    }
    if (length > data.size()) length = data.size();
    // The old page stays until the new one is whole beside it.
    if (!WriteFileReplacing(outFile, data.data(), length, false)) {
        SystemText();
        return 0;
    }
    if (mode == SAVE_HTML_AND_FILES) FetchReferredFiles(page, url, outFile);
    return (long)length;
}
