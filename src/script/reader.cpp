// The script reader: a search for <step> pieces in text, each copied out and
// searched for its known tags. Older files (root "<ZantoTask") are converted
// step by step as they load.
#include <windows.h>
#include "base/text.h"
#include <shellapi.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <unordered_map>

#include "base/settings.h"
#include "base/ui.h"
#include "base/log.h"
#include "script/catalogue.h"
#include "script/fileencoding.h"
#include "base/handles.h"
#include "script/scriptfile.h"
#include "script/step.h"
#include "base/words.h"
#include "script/xmltags.h"

namespace {

const char kErrorTitle[] = "ZantoRunner Error";

void LoadMessage(const char* text, const char* title) {
    RunMessageBox(text, title, MB_ICONWARNING);
}

// Old action names, mapped for every file in this order, each rule on the
// name as the earlier ones left it.
const struct {
    const char* from;
    bool contains;  // else equal
    const char* to;
} kNameMap[] = {
    {"Move to Object", false, "Move to Control"},
    {"SendMessage Command", false, "Post WM_COMMAND"},
    {"Simulate Keypress", false, "Type"},
    {"Text + System Keys", false, "Type"},
    {"Move Instantly", false, "Move"},
    {"Freeze", false, "Delay"},
    {"Crypt", true, "Encrypt/Decrypt Text"},
    {"Left Button Down & Hold", true, "Left Button Down + Hold"},
    {"Wait for File", true, "Wait for File to Exist"},
    {"Set Run Speed", true, "Set Step Delay"},
    {"Save SQL Data to File", false, "Execute SQL Query"},
    {"Exit ZantoTask", false, "Exit ZantoRunner"},
};

// Replaces a step's text with `value`, growing its block as needed.
void SetText(char*& block, const char* value) {
    block = EnsureCapacity(block, strlen(value));
    if (block) CopyIntoN(block, HeapBlockSize(block), value);
}

void CopyField(char* dest, const char* src) { CopyIntoN(dest, FIELD_LONG, src); }

// Reads a text tag of unknown length, found at `start`, into a fresh block:
// 260 bytes when the tag is missing, else its length plus 1025 with a floor
// of 256.
char* ReadTextTag(const char* start, const char* tag) {
    int length = ReadTagAt(start, tag, nullptr, -1);
    if (length <= 0) return (char*)HeapAllocZero(TEXT_BLOCK);
    size_t size = (size_t)length - 1 + 1025;
    char* block = (char*)HeapAllocZero(size < 256 ? 256 : size);
    if (block) ReadTagAt(start, tag, block, (int)HeapBlockSize(block) - 1);
    return block;
}

// The tags of a step, looked up together in one walk over its copy: a long
// script has a hundred thousand copies, and a search per tag would walk
// each a dozen times.
enum {
    TAG_ACTION,
    TAG_TEXT,
    TAG_COMMENT,
    TAG_ONFAIL,
    TAG_TIMEOUT,
    TAG_STATUS,
    TAG_INDENTS,
    TAG_VALUE1,
    TAG_OUTPUT = TAG_VALUE1 + STEP_VALUES,
    TAG_OPTIONS,
    TAG_COUNT,
};
const char* const kStepTags[TAG_COUNT] = {
    "<action>", "<text>",   "<comment>", "<onfail>", "<timeout>", "<status>", "<indents>", "<value1>",
    "<value2>", "<value3>", "<value4>",  "<value5>", "<value6>",  "<value7>", "<value8>",  "<output>",
    "<options>",
};

const int kStepDelays[] = {2000, 1000, 500, 350, 200, 100, 50, 25, 10, 1};

void ConvertLegacyStep(Step& s, const char* xml) {
    if (s.status == -1) s.status = STEP_BREAKPOINT;
    if (ContainsNoCase(s.action, "Encrypt/Decrypt Text")) {
        CopyField(s.value[0], TextOf(s.text));
        char variable[260];
        ReadTag(xml, "<variable>", variable, 259);
        SetText(s.text, variable);
        CopyInto(s.output, "Variable");
    }
    int bits = ReadTag(xml, "<options>", nullptr, 0);
    s.options[0] = 0;
    const char* const quantityTags[] = {"<qty>", "<loops>", "<bytes>"};
    for (const char* tag : quantityTags)
        if (!s.timeout[0]) ReadTag(xml, tag, s.timeout, 259);
    if (ContainsNoCase(s.action, "Ping")) CopyField(s.timeout, s.value[2]);

    const int cat = s.category;
    if (cat == CAT_RUN_PROGRAM && (bits & 1)) SetOption(s.options, "Hidden", 1);
    if (cat == CAT_RUN_PROGRAM && (bits & 2)) SetOption(s.options, "Wait For Exit", 1);
    if (cat == CAT_PROMPT && (bits & 1)) SetOption(s.options, "Topmost", 1);
    if (cat == CAT_KEYBOARD && (bits & 1)) {
        SetOption(s.options, "No Formatting", 1);
        SetOption(s.options, "Fast", 1);
    }
    if (cat == CAT_KEYBOARD && (bits & 2)) SetOption(s.options, "Slow", 1);
    if (cat == CAT_MOUSE) {
        // Old mouse steps kept x and y in two values; they are one text now.
        if (s.value[1][0] && !ContainsNoCase(s.action, "Control")) {
            char joined[FIELD_LONG * 2 + 4];
            FormatInto(joined, "%s, %s", s.value[0], s.value[1]);
            SetText(s.text, joined);
            s.value[0][0] = s.value[1][0] = 0;
        }
        if (bits & 0x20) {
            CopyInto(s.action, "Move Relative");
            s.icon = 148;
            SetOption(s.options, "Window", 1);
        }
        if (bits & 0x40) {
            CopyInto(s.action, "Move Relative");
            s.icon = 148;
            SetOption(s.options, "Current Position", 1);
        }
        if (bits & 0x80) SetOption(s.options, "Stay at Current Position", 1);
        if (!(bits & 0x10) && !ContainsNoCase(s.action, "Image"))
            SetOption(s.value[0], "Snap to Position", 1);
    }
    if (bits & 1) SetOption(s.options, "Title", 1);
    if (bits & 2) SetOption(s.options, "Class", 1);
    if (bits & 4) SetOption(s.options, "ID", 1);
    if (bits & 8) SetOption(s.options, "Userdata", 1);
    if (cat == CAT_WINDOWS && (bits & 0x10)) SetOption(s.options, "Image", 1);

    if (cat == CAT_DATABASE) {
        CopyField(s.value[3], s.timeout);
        s.timeout[0] = 0;
    }
    if (cat == CAT_INTERNET && ContainsNoCase(s.action, "FTP Upload")) {
        CopyField(s.value[0], s.value[6]);
        s.value[6][0] = 0;
    }
    if (cat == CAT_FLOW && (ContainsNoCase(s.action, "For") || ContainsNoCase(s.action, "Exit Run"))) {
        SetText(s.text, s.timeout);
        s.timeout[0] = 0;
    }
    if (cat == CAT_SYSTEM && ContainsNoCase(s.action, "Environment")) CopyField(s.output_value, s.value[0]);
    if (cat == CAT_SYSTEM && ContainsNoCase(s.action, "Variable")) CopyInto(s.output, "Variable");
    if (cat == CAT_SYSTEM && ContainsNoCase(s.action, "Step Delay")) {
        // The old speed 0..9 becomes a delay in milliseconds.
        int speed = ParseInt(s.timeout);
        if (speed >= 10) {
            SetText(s.text, "0");
        } else if (speed >= 0) {
            char delay[16];
            FormatInto(delay, "%d", kStepDelays[speed]);
            SetText(s.text, delay);
        }
        s.timeout[0] = 0;
    }
    if (cat == CAT_SYSTEM && ContainsNoCase(s.action, "Run Repeats")) {
        SetText(s.text, s.timeout);
        s.timeout[0] = 0;
    }
    if (ContainsNoCase(s.action, "Wait for Pixel") || ContainsNoCase(s.action, "Pixel is Visible")) {
        SetText(s.text, s.value[0]);
        s.value[0][0] = 0;
    }

    if (bits & 0x100000) CopyInto(s.output, "Clipboard");
    if (bits & 0x200000) CopyInto(s.output, "Variable");
    if (bits & 0x400000) {
        CopyInto(s.output, "File");
        if (cat == CAT_INTERNET) {
            CopyField(s.output_value, s.value[6]);
            s.value[6][0] = 0;
        }
        if (cat == CAT_DATABASE) {
            CopyField(s.output_value, s.value[4]);
            s.value[4][0] = 0;
        }
    }
    if (strstr(xml, "</variable>") && !s.output_value[0]) {
        ReadTag(xml, "<variable>", s.output_value, 259);
        CopyInto(s.output, "Variable");
    }
}

// A program step shows whether it runs hidden or waits, or else the icon of
// the program it starts.
void SetProgramIcon(Step& s) {
    if (!(s.category == CAT_RUN_PROGRAM || ContainsNoCase(s.action, "Start Browser") ||
          ContainsNoCase(s.action, "Start Email")))
        return;
    if (ContainsNoCase(s.options, "hidden")) {
        s.icon = 3;
        return;
    }
    if (ContainsNoCase(s.options, "wait")) {
        s.icon = ContainsNoCase(s.action, "Call Script") ? 4 : 2;
        return;
    }
    const char* exe = FindNoCase(TextOf(s.text), ".EXE");
    if (!exe || !SharedImageList) return;
    char program[MAX_PATH];
    CopyIntoN(program, (int)(exe - s.text) + 5 < MAX_PATH ? (int)(exe - s.text) + 5 : MAX_PATH, s.text);
    HICON small = nullptr;
    if (ExtractIconExA(program, 0, nullptr, &small, 1) && small) {
        int image = ImageList_AddIcon(SharedImageList, small);
        DestroyIcon(small);
        if (image >= 0) s.icon = image;
    }
}

// Parses "[message-paramH-paramL-time]" lines into a new recording slot.
void ReadRecording(Step& s, const char* xml) {
    int length = ReadTag(xml, "<recording>", nullptr, -1);
    if (length <= 1) return;
    AutoHeapBlock content(HeapAllocZero((size_t)length + 256));
    if (!content.p) return;
    ReadTag(xml, "<recording>", content.p, length);
    if (!content.p[0]) return;
    RecordedEvent* events = (RecordedEvent*)HeapAllocZero(5120);
    int count = 0;
    for (const char* p = strchr(content.p, '['); p && events; p = strchr(p + 1, '[')) {
        size_t used = (size_t)count * sizeof(RecordedEvent);
        if (HeapBlockSize(events) - used < 40)
            events = (RecordedEvent*)GrowBlock(events, HeapBlockSize(events) + 5120);
        if (!events) break;
        char line[260];
        CopyIntoN(line, sizeof line, p + 1);
        if (char* close = strchr(line, ']')) *close = 0;
        char* field[4] = {line, nullptr, nullptr, nullptr};
        for (int f = 1; f < 4; f++) {
            field[f] = field[f - 1] ? strchr(field[f - 1], '-') : nullptr;
            if (field[f]) *field[f]++ = 0;
        }
        RecordedEvent& e = events[count++];
        e.message = (uint32_t)ParseInt(field[0]);
        e.paramH = (uint32_t)ParseInt(field[1]);
        e.paramL = (uint32_t)ParseInt(field[2]);
        e.time = (uint32_t)ParseInt(field[3]);
        e.hwnd = 0;
    }
    if (!events) return;
    int slot = RecordingTable.used;
    RecordingTable.slot[slot] = events;
    FormatInto(s.value[0], "%d", count);
    FormatInto(s.value[1], "%d", slot);
    if (RecordingTable.used < MAX_RECORDINGS) RecordingTable.used++;
}

// Gives back the record taken for a step that stops the load; the steps read
// before it stay.
void DropRecord(int index, int insertAt) {
    TabStore& tab = CurrentTab();
    if (insertAt >= 0) {
        int count = tab.count;  // DeleteStep counts the record; it was never counted
        DeleteStep(index);
        tab.count = tab.steps ? count : 0;
        return;
    }
    Step& s = tab.steps[index];
    HeapFreeBlock(s.text);
    HeapFreeBlock(s.comment);
    memset(&s, 0, sizeof s);
}

}  // namespace

void MapOldActionName(char* action) {
    for (const auto& rule : kNameMap) {
        bool hit = rule.contains ? ContainsNoCase(action, rule.from) : lstrcmpiA(action, rule.from) == 0;
        if (hit) CopyIntoN(action, FIELD_SHORT, rule.to);
    }
}

int ReadSteps(char* xml, int insertAt) {
    if (!xml) return 0;
    TabStore& tab = CurrentTab();
    size_t total = TextLength(xml);
    bool showProgress = total > 4096;
    bool legacy = ContainsNoCase(xml, "<ZantoTask");
    int chunk = SettingInt("MemoryAllocationChunk");
    if (chunk < 1) chunk = 1;
    int read = 0;
    const char* cursor = xml;
    struct KnownAction {
        char action[FIELD_SHORT];
        int category, icon;
    };
    std::unordered_map<std::string, KnownAction> known;
    // One buffer holds each step's copy in turn, grown when a step needs
    // more: a long script would otherwise allocate, clear and free a block
    // per step. Nothing reads a copy past its end, so what an earlier,
    // longer step left there is never seen.
    AutoHeapBlock copy(nullptr);
    for (;;) {
        const char* open = FindExact(cursor, "<step>");
        if (!open) break;
        const char* close = FindExact(open, "</step>");
        if (!close) break;
        if (showProgress && read % 50 == 0)
            ShowProgress((int)((open - xml) * 100 / (ptrdiff_t)total));

        // Each step's tags are looked up in a copy of that step alone, so a
        // missing tag cannot be taken from the next step.
        size_t pieceLen = (size_t)(close - open) - 6;
        size_t copySize = pieceLen + 1024 < 256 ? 256 : pieceLen + 1024;
        if (HeapBlockSize(copy.p) < copySize) copy.p = (char*)GrowBlock(copy.p, copySize);
        if (!copy.p) break;
        memcpy(copy.p, open + 6, pieceLen);
        copy.p[pieceLen] = 0;
        const char* piece = copy.p;

        int index;
        if (insertAt < 0) {
            index = tab.count + read;
            if (index >= StepCapacity(ScriptStore.currentTab)) AddSteps(-1, chunk, 0);
        } else {
            index = AddSteps(insertAt + read, 1, 0);
        }
        if (!tab.steps || index >= StepCapacity(ScriptStore.currentTab)) break;
        Step& s = tab.steps[index];
        const char* at[TAG_COUNT];
        FindTags(piece, kStepTags, TAG_COUNT, at);

        ReadTagAt(at[TAG_ACTION], kStepTags[TAG_ACTION], s.action, FIELD_SHORT - 1);
        TrimSpaces(s.action);
        if (!s.action[0]) {
            char message[160];
            FormatInto(message, "Empty <action> tag in step #%d\n\nDiscontinuing file load at step #%d",
                      read + 1, read + 1);
            LoadMessage(message, kErrorTitle);
            DropRecord(index, insertAt);
            break;
        }
        // A script repeats a few action names: each is mapped and looked up
        // once a load (the old-name rules compare in the locale's way, which
        // costs more than the rest of a step's reading).
        auto knownName = known.find(s.action);
        if (knownName == known.end()) {
            KnownAction k = {};
            CopyInto(k.action, s.action);
            MapOldActionName(k.action);
            LookupAction(ActionsTree, k.action, &k.category, &k.icon);
            knownName = known.emplace(s.action, k).first;
        }
        CopyInto(s.action, knownName->second.action);
        s.category = knownName->second.category;
        s.icon = knownName->second.icon;
        s.text = ReadTextTag(at[TAG_TEXT], kStepTags[TAG_TEXT]);
        s.comment = ReadTextTag(at[TAG_COMMENT], kStepTags[TAG_COMMENT]);

        char value[260], label[260], image[260], log[260];
        const char* const names[4] = {"value", "label", "image", "log"};
        char* const dests[4] = {value, label, image, log};
        ReadTagAt(at[TAG_ONFAIL], kStepTags[TAG_ONFAIL], s.onfail, FIELD_SHORT - 1, names, dests);
        CopyField(s.onfail_value, value[0] ? value : label);
        if (!s.onfail[0]) CopyInto(s.onfail, "Display Error and Stop");
        s.onfail_image = ParseInt(image);
        s.onfail_log = ParseInt(log);

        ReadTagAt(at[TAG_TIMEOUT], kStepTags[TAG_TIMEOUT], s.timeout, 259);
        s.status = ReadTagAt(at[TAG_STATUS], kStepTags[TAG_STATUS], nullptr, 0);
        s.indents = ReadTagAt(at[TAG_INDENTS], kStepTags[TAG_INDENTS], nullptr, 0);
        for (int v = 0; v < STEP_VALUES; v++)
            ReadTagAt(at[TAG_VALUE1 + v], kStepTags[TAG_VALUE1 + v], s.value[v], 259);
        const char* const outputNames[4] = {"value", nullptr, nullptr, nullptr};
        char* const outputDests[4] = {s.output_value, nullptr, nullptr, nullptr};
        ReadTagAt(at[TAG_OUTPUT], kStepTags[TAG_OUTPUT], s.output, FIELD_SHORT - 1, outputNames, outputDests);
        if (legacy)
            ConvertLegacyStep(s, piece);
        else
            ReadTagAt(at[TAG_OPTIONS], kStepTags[TAG_OPTIONS], s.options, 259);
        SetProgramIcon(s);

        if (s.category == CAT_RECORDINGS) {
            if (RecordingTable.used + 1 >= MAX_RECORDINGS) {
                char message[200];
                FormatInto(message,
                          "The maximum of %d recordings per script has been exceeded in this file.\n\n"
                          "The file load cannot be completed.",
                          MAX_RECORDINGS);
                LoadMessage(message, kErrorTitle);
                DropRecord(index, insertAt);
                break;
            }
            ReadRecording(s, piece);
        }
        read++;
        cursor = close + 7;
    }
    if (showProgress) {
        HideProgress();
        StatusPrintf(StatusBar, 0, "%d steps", read);
    }
    StatusPrintf(StatusBar, 1, "Loops: 0");
    if (insertAt < 0) {
        // Records of the last chunk that were never filled are given back.
        int keep = tab.count + read;
        int capacity = StepCapacity(ScriptStore.currentTab);
        for (int i = keep; i < capacity; i++) tab.steps[i].action[0] = 0;
        TrimUnusedSteps();
    }
    return read;
}

int OpenScript(const char* path, int tab) {
    if (!path || !*path || tab < 0 || tab >= MAX_TABS) {
        LoadMessage("Invalid File", " ");
        return 0;
    }
    char file[MAX_PATH];
    int n = 0;
    for (const char* p = path; *p && n < MAX_PATH - 1; p++)
        if (*p != '"') file[n++] = *p;
    file[n] = 0;
    TrimSpaces(file);
    char name[MAX_PATH];
    DisplayName(file, name, sizeof name);
    char message[MAX_PATH * 2 + 200];

    WIN32_FILE_ATTRIBUTE_DATA info = {};
    long size = 0;
    if (GetFileAttributesExA(file, GetFileExInfoStandard, &info)) size = (long)info.nFileSizeLow;
    if (size == 0) {
        FormatInto(message, "Unable to open file '%s'!\n\nPlease verify that the file exists (%li).", name, size);
        LoadMessage(message, kErrorTitle);
        return 0;
    }
    AutoCloseHandle handle(CreateFileA(file, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                       FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!handle.ok()) {
        FormatInto(message, "Unable to open file '%s'!\n\nPlease verify that the file is not already open.", name);
        LoadMessage(message, kErrorTitle);
        return 0;
    }
    AutoHeapBlock buffer(HeapAllocZero((size_t)size + 256));
    if (!buffer.p) {
        LoadMessage("Out of memory", kErrorTitle);
        return 0;
    }
    DWORD got = 0;
    if (!ReadFile(handle.h, buffer.p, (DWORD)size, &got, nullptr) || got == 0) {
        LoadMessage("Unable to read file", name);
        return 0;
    }
    CloseHandle(handle.h);
    handle.h = INVALID_HANDLE_VALUE;

    // The last root tag counts: a compiled EXE starts with "MZ" and carries its
    // script at its end. Offsets 0 to 2 are not searched.
    const char root[] = "<Zanto";
    char* found = nullptr;
    for (long i = (long)got - 6; i >= 3; i--) {
        if (buffer.p[i] == '<' && memcmp(buffer.p + i, root, 6) == 0) {
            found = buffer.p + i;
            break;
        }
    }
    if (!found) {
        FormatInto(message, "\"%s\" does not appear to contain ZantoRunner actions", name);
        LoadMessage(message, name);
        return 0;
    }

    // The file's bytes may be in another code page than the program's texts
    // (an old script in the machine's legacy page, or UTF-8 on a system that
    // ignores the manifest): the script is converted, and the tab remembers
    // the encoding for its save.
    const int encoding = DetectScriptEncoding(buffer.p, got, found);
    const bool convert = ScriptTextToProgramNeeded(encoding);

    ScriptStore.currentTab = tab;
    TabStore& t = ScriptStore.tab[tab];
    FreeSteps(tab);
    FreeUndo(tab);
    t.encoding = encoding;
    t.xmlHeader[0] = 0;
    for (const char* p = FindExact(buffer.p, "<?xml"); p; p = FindExact(p + 5, "<?xml")) {
        char line[260];
        CopyIntoN(line, sizeof line, p);
        if (ContainsNoCase(line, "version")) continue;
        if (char* gt = strchr(line, '>')) gt[1] = 0;
        if (strlen(t.xmlHeader) + strlen(line) >= 259) break;
        if (strlen(t.xmlHeader) + strlen(line) + 2 < sizeof t.xmlHeader) {
            AppendInto(t.xmlHeader, line);
            AppendInto(t.xmlHeader, "\r\n");
        }
    }
    size_t rest = TextLength(found);
    if (convert) {
        const std::string header = ScriptTextToProgram(t.xmlHeader, strlen(t.xmlHeader), encoding);
        CopyInto(t.xmlHeader, header.c_str());
        const std::string text = ScriptTextToProgram(found, rest, encoding);
        if (HeapBlockSize(buffer.p) < text.size() + 1) buffer.p = (char*)GrowBlock(buffer.p, text.size() + 256);
        if (!buffer.p) {
            LoadMessage("Out of memory", kErrorTitle);
            return 0;
        }
        memcpy(buffer.p, text.c_str(), text.size() + 1);
        rest = text.size();
    } else {
        memmove(buffer.p, found, rest + 1);
    }
    CopyIntoN(t.path, MAX_PATH, file);

    StripComments(buffer.p, rest);
    t.count = ReadSteps(buffer.p, -1);
    MarkTabSaved(tab);
    UpdateTabTitle(tab);
    RefreshStepList();
    if (t.count < 1) {
        LoadMessage("No valid XML actions were found", name);
        return 0;
    }
    return t.count;
}
