// A stand-in mail program for "Send Email: MAPI": the library a prefix's
// default mail client names (HKLM\Software\Clients\Mail, its DLLPath), which
// Wine's MAPI32 hands the message to. It sends nothing: it appends what it was
// given to mapi.txt beside itself, the wide call's texts as UTF-8 after "W",
// the ANSI call's bytes as they came after "A", so a scenario sees which call
// a message took and what its texts were.
#include <windows.h>
#include <mapi.h>

#include <string>

#define ZR_EXPORT extern "C" __declspec(dllexport)

namespace {

struct RecipW {
    ULONG reserved, recipClass;
    PWSTR name, address;
    ULONG entrySize;
    PVOID entry;
};
struct MessageW {
    ULONG reserved;
    PWSTR subject, note, type, date, conversation;
    FLAGS flags;
    RecipW* originator;
    ULONG recipCount;
    RecipW* recips;
    ULONG fileCount;
    PVOID files;
};

std::string Utf8(const wchar_t* text) {
    if (!text) return "(none)";
    int n = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string out(n > 0 ? n - 1 : 0, '\0');
    if (n > 1) WideCharToMultiByte(CP_UTF8, 0, text, -1, out.data(), n, nullptr, nullptr);
    return out;
}

std::string Bytes(const char* text) { return text ? text : "(none)"; }

void Record(const std::string& text) {
    char path[MAX_PATH];
    HMODULE self = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       (LPCSTR)&Record, &self);
    DWORD n = GetModuleFileNameA(self, path, MAX_PATH);
    if (!n || n >= MAX_PATH) return;
    std::string name(path);
    name = name.substr(0, name.rfind('\\') + 1) + "mapi.txt";
    HANDLE file = CreateFileA(name.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr, OPEN_ALWAYS, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    DWORD written = 0;
    WriteFile(file, text.data(), (DWORD)text.size(), &written, nullptr);
    CloseHandle(file);
}

}  // namespace

ZR_EXPORT ULONG WINAPI MAPILogon(ULONG_PTR, LPSTR, LPSTR, FLAGS, ULONG, LPLHANDLE session) {
    *session = 1;
    return SUCCESS_SUCCESS;
}

ZR_EXPORT ULONG WINAPI MAPILogoff(LHANDLE, ULONG_PTR, FLAGS, ULONG) { return SUCCESS_SUCCESS; }

// No address book: every name is unknown, so the sender gives the address.
ZR_EXPORT ULONG WINAPI MAPIResolveName(LHANDLE, ULONG_PTR, LPSTR, FLAGS, ULONG, lpMapiRecipDesc*) {
    return MAPI_E_UNKNOWN_RECIPIENT;
}

ZR_EXPORT ULONG WINAPI MAPIFreeBuffer(LPVOID) { return SUCCESS_SUCCESS; }

ZR_EXPORT ULONG WINAPI MAPISendMail(LHANDLE, ULONG_PTR, lpMapiMessage m, FLAGS, ULONG) {
    std::string text = "A\r\nsubject=" + Bytes(m->lpszSubject) + "\r\nnote=" + Bytes(m->lpszNoteText) + "\r\n";
    for (ULONG i = 0; i < m->nRecipCount; i++)
        text += "to=" + Bytes(m->lpRecips[i].lpszName) + " <" + Bytes(m->lpRecips[i].lpszAddress) + ">\r\n";
    Record(text);
    return SUCCESS_SUCCESS;
}

ZR_EXPORT ULONG WINAPI MAPISendMailW(LHANDLE, ULONG_PTR, MessageW* m, FLAGS, ULONG) {
    std::string text = "W\r\nsubject=" + Utf8(m->subject) + "\r\nnote=" + Utf8(m->note) + "\r\n";
    for (ULONG i = 0; i < m->recipCount; i++)
        text += "to=" + Utf8(m->recips[i].name) + " <" + Utf8(m->recips[i].address) + ">\r\n";
    Record(text);
    return SUCCESS_SUCCESS;
}
