// The script writer: the whole document is built as one text in one growing
// buffer, which the writer keeps until its next use.
#include <windows.h>
#include "base/text.h"
#include "base/utf8.h"
#include <stdio.h>
#include <string.h>

#include "base/files.h"
#include "base/settings.h"
#include "base/ui.h"
#include "base/log.h"
#include "base/handles.h"
#include "script/fileencoding.h"
#include "script/scriptfile.h"
#include "script/step.h"
#include "base/words.h"
#include "script/xmltags.h"

namespace {

char* Document;        // owned by the writer; kept until its next use
size_t DocumentLength;

void Reserve(size_t more) {
    size_t need = DocumentLength + more + 1;
    size_t size = HeapBlockSize(Document);
    if (need <= size) return;
    size_t grow = size * 2 > need ? size * 2 : need;
    Document = (char*)GrowBlock(Document, grow);
    if (!Document) DocumentLength = 0;
}

void Append(const char* text, size_t length) {
    Reserve(length);
    if (!Document) return;
    memcpy(Document + DocumentLength, text, length);
    DocumentLength += length;
    Document[DocumentLength] = 0;
}

void Append(const char* text) { Append(text, strlen(text)); }

void AppendFormat(const char* format, ...) {
    char line[2048];
    va_list args;
    va_start(args, format);
    int n = vsnprintf(line, sizeof line, format, args);
    va_end(args);
    if (n > 0) Append(line, (size_t)n < sizeof line ? (size_t)n : sizeof line - 1);
}

// Encodes a step's own buffer in place, appends it, and decodes it again at
// once. A text that cannot be encoded within its buffer goes out raw.
void AppendEncoded(char* text, int bufferSize, bool encode) {
    if (encode) EncodeEntities(text, bufferSize, 255);
    Append(text);
    DecodeEntities(text);
}

// Appends a text or comment: encoded in place, or as a cut copy when a
// length limit is in force.
void AppendLongText(const char* tag, char* text, int maxLength, bool encode) {
    if (!text || !text[0]) return;
    Reserve(strlen(text) + 256);
    AppendFormat("\t<%s>", tag);
    if (maxLength > 0) {
        size_t cut = maxLength > 4 ? (size_t)maxLength - 4 : 0;
        size_t length = strlen(text);
        size_t keep = length < cut ? length : CharBoundary(text, cut);
        size_t size = (keep + 3) * 5 + 16;
        AutoHeapBlock copy(HeapAllocZero(size));
        if (copy.p) {
            memcpy(copy.p, text, keep);
            if (length >= (size_t)maxLength) AppendIntoN(copy.p, HeapBlockSize(copy.p), "...");
            AppendEncoded(copy.p, (int)size, encode);
        }
    } else {
        AppendEncoded(text, (int)HeapBlockSize(text), encode);
    }
    AppendFormat("</%s>\r\n", tag);
}

void AppendRecording(const Step& s) {
    Append("\t<recording>\r\n");
    int count = ParseInt(s.value[0]);
    int slot = ParseInt(s.value[1]);
    const RecordedEvent* events =
        slot >= 0 && slot < MAX_RECORDINGS ? RecordingTable.slot[slot] : nullptr;
    int capacity = (int)(HeapBlockSize(events) / sizeof(RecordedEvent));
    for (int i = 0; events && i < count && i < capacity; i++) {
        const RecordedEvent& e = events[i];
        AppendFormat("\t[%04d-%04d-%04d-%08li]\t\r\n", (int)e.message, (int)e.paramH, (int)e.paramL,
                     (long)e.time);
    }
    Append("\t</recording>\r\n");
}

void AppendStep(Step& s, int withLastRun, int maxLength, bool encodeXml) {
    AppendFormat("<step>\r\n\t<action>%s</action>\r\n", s.action);
    AppendLongText("text", s.text, maxLength, encodeXml);
    if (s.options[0]) AppendFormat("\t<options>%s</options>\r\n", s.options);
    for (int v = 0; v < STEP_VALUES; v++) {
        if (!s.value[v][0]) continue;
        AppendFormat("\t<value%d>", v + 1);
        AppendEncoded(s.value[v], FIELD_LONG, true);
        AppendFormat("</value%d>\r\n", v + 1);
    }
    if (s.timeout[0] && strcmp(s.timeout, "0") != 0) AppendFormat("\t<timeout>%s</timeout>\r\n", s.timeout);
    if (s.status) AppendFormat("\t<status>0x%x</status>\r\n", (unsigned)s.status);
    if (s.indents > 0) AppendFormat("\t<indents>%d</indents>\r\n", s.indents);
    if (s.output[0] && !ContainsNoCase(s.output, " not ")) {
        if (s.output_value[0])
            AppendFormat("\t<output value=\"%s\">%s</output>\r\n", s.output_value, s.output);
        else
            AppendFormat("\t<output>%s</output>\r\n", s.output);
    }
    if (s.onfail[0] && (lstrcmpiA(s.onfail, "Display Error and Stop") != 0 || s.onfail_image ||
                        s.onfail_log || s.onfail_value[0])) {
        if (!s.onfail_value[0] && !s.onfail_image && !s.onfail_log)
            AppendFormat("\t<onfail>%s</onfail>\r\n", s.onfail);
        else
            AppendFormat("\t<onfail value=\"%s\" image=\"%d\" log=\"%d\">%s</onfail>\r\n", s.onfail_value,
                         s.onfail_image, s.onfail_log, s.onfail);
    }
    AppendLongText("comment", s.comment, maxLength, encodeXml);
    if (withLastRun) AppendFormat("\t<last_run>%s</last_run>\r\n", LastRunWord(s.last_run));
    if (s.category == CAT_RECORDINGS && maxLength <= 0) AppendRecording(s);
    Append("</step>\r\n");
}

}  // namespace

const char* LastRunWord(int code) {
    static const char* const kWords[] = {"(Not Run)", "Incomplete", "Pass", "Skipped",
                                         "Breakpoint", "Fail", "Fail and Continue"};
    return code >= 1 && code <= 6 ? kWords[code] : kWords[0];
}

const char* WriteSteps(int mode, int withLastRun, int maxLength) {
    TabStore& tab = CurrentTab();
    int written = 0;
    for (int i = 0; i < tab.count; i++)
        if (mode == 2 || StepRowSelected(i)) written++;
    size_t first = (size_t)written * 3872;
    HeapFreeBlock(Document);
    Document = (char*)HeapAllocZero(first < 256 ? 256 : first);
    DocumentLength = 0;
    if (!Document) {
        RunMessageBox("Out of memory", "ZantoRunner Error", MB_ICONWARNING);
        return "";
    }
    // A limit means the report, which a browser must read as XML: its
    // escaping pass applies whatever EncodeXML says.
    bool encodeXml = maxLength > 0 || SettingInt("EncodeXML") != 0;
    bool progress = written > 10;

    Append("<?xml version=\"1.0\" ?>\r\n");
    Append(tab.xmlHeader);
    Append("<ZantoRunner>\r\n");
    int done = 0;
    for (int i = 0; i < tab.count && Document; i++) {
        if (mode != 2 && !StepRowSelected(i)) continue;
        Step& s = tab.steps[i];
        if (s.category > CAT_LAST) break;  // the output stays as far as it came
        AppendStep(s, withLastRun, maxLength, encodeXml);
        done++;
        if (progress) ShowProgress(done * 100 / written);
    }
    Append("</ZantoRunner>");
    if (progress) {
        HideProgress();
        StatusPrintf(StatusBar, 1, "Loops: 0");
    }
    return Document ? Document : "";
}

std::string WriteStepRecords(int withLastRun, int maxLength) {
    const char* document = WriteSteps(2, withLastRun, maxLength);
    const size_t length = TextLength(document);
    const size_t head = strlen("<?xml version=\"1.0\" ?>\r\n") + strlen(CurrentTab().xmlHeader) +
                        strlen("<ZantoRunner>\r\n");
    const size_t tail = strlen("</ZantoRunner>");
    if (length < head + tail) return std::string();
    return std::string(document + head, length - head - tail);
}

int SaveScript(int tab, char* errorText) {
    if (tab < 0 || tab >= MAX_TABS) return 0;
    ScriptStore.currentTab = tab;
    const char* path = ScriptStore.tab[tab].path;
    char reason[512];
    // `which` numbers the palette's line, "(1) ..." or "(2) ..."; 0 writes none.
    auto fail = [&](int which) {
        reason[0] = 0;
        FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, GetLastError(),
                       0, reason, sizeof reason, nullptr);
        if (which) LogPrintf(OutputEdit, "(%d) Unable to create file '%s': %s", which, path, reason);
        if (errorText) CopyIntoN(errorText, SAVE_ERROR_SIZE, reason);
        return 0;
    };
    // A new file beside the old one takes its place only when it is whole,
    // so no attribute or stream of the old file survives and a failed write
    // (a full disk) leaves the old script as it was.
    std::string temporary = TemporaryBeside(path, false);
    if (temporary.empty()) return fail(1);
    AutoCloseHandle file(
        CreateFileA(temporary.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.ok()) {
        DeleteFileA(temporary.c_str());
        return fail(2);
    }
    // The file is written in what it was read in; a character that its old
    // code page cannot hold makes it UTF-8, and the status bar says so.
    const char* text = WriteSteps(2, 0, 0);
    int encoding = ScriptStore.tab[tab].encoding;
    bool switched = false;
    const std::string bytes = ProgramTextToScript(text, TextLength(text), &encoding, &switched);
    const bool written = WriteAll(file.h, bytes.data(), bytes.size()) && FlushFileBuffers(file.h);
    DWORD error = GetLastError();
    CloseHandle(file.h);
    file.h = INVALID_HANDLE_VALUE;
    if (written && ReplaceWithFile(temporary.c_str(), path)) {
        if (switched) {
            StatusPrintf(StatusBar, 0, "Saved as UTF-8: the script holds characters that code page %d has no place for",
                         ScriptStore.tab[tab].encoding);
            LogPrintf(OutputEdit, "Saved '%s' as UTF-8: it holds characters that code page %d has no place for",
                      path, ScriptStore.tab[tab].encoding);
            ScriptStore.tab[tab].encoding = encoding;
        }
        return 1;
    }
    if (written) error = GetLastError();
    DeleteFileA(temporary.c_str());
    SetLastError(error);
    return fail(written ? 2 : 0);
}
