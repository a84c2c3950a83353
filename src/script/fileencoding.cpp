#include "script/fileencoding.h"

#include <windows.h>
#include <string.h>

#include "base/utf8.h"

namespace {

const char kMark[] = "\xEF\xBB\xBF";

bool StartsWithMark(const char* text, size_t length) { return length >= 3 && memcmp(text, kMark, 3) == 0; }

// The code page of a file in `encoding`.
unsigned PageOf(int encoding) {
    return encoding == SCRIPT_UTF8 || encoding == SCRIPT_UTF8_MARK ? CP_UTF8 : (unsigned)encoding;
}

}  // namespace

int DetectScriptEncoding(const char* file, size_t fileLength, const char* script) {
    if (!file) return SCRIPT_UTF8;
    if (StartsWithMark(file, fileLength)) return SCRIPT_UTF8_MARK;
    const size_t offset = script && script >= file && script <= file + fileLength ? (size_t)(script - file) : 0;
    if (IsUtf8(file + offset, fileLength - offset)) return SCRIPT_UTF8;
    const unsigned legacy = LegacyCodePage();
    // A machine whose legacy page is UTF-8 itself has nothing older to read:
    // the bytes stay as they are.
    return legacy == CP_UTF8 || legacy < 2 ? SCRIPT_UTF8 : (int)legacy;
}

bool ScriptTextToProgramNeeded(int encoding) { return PageOf(encoding) != ProgramCodePage(); }

std::string ScriptTextToProgram(const char* text, size_t length, int encoding) {
    if (encoding == SCRIPT_UTF8_MARK && StartsWithMark(text, length)) {
        text += 3;
        length -= 3;
    }
    return ConvertText(text, length, PageOf(encoding), ProgramCodePage(), nullptr);
}

std::string ProgramTextToScript(const char* text, size_t length, int* encoding, bool* switched) {
    if (switched) *switched = false;
    bool lost = false;
    std::string file = ConvertText(text, length, ProgramCodePage(), PageOf(*encoding), &lost);
    if (lost) {
        // Never a silent "?": the file becomes UTF-8, which holds everything.
        file = ConvertText(text, length, ProgramCodePage(), CP_UTF8, nullptr);
        *encoding = SCRIPT_UTF8;
        if (switched) *switched = true;
    }
    if (*encoding == SCRIPT_UTF8_MARK) file.insert(0, kMark, 3);
    return file;
}

std::string ScriptFileAsProgramText(const std::string& file) {
    // The last root tag, as the reader takes it.
    const size_t root = file.size() > 3 ? file.rfind("<Zanto") : std::string::npos;
    const char* script = root != std::string::npos && root >= 3 ? file.c_str() + root : file.c_str();
    const int encoding = DetectScriptEncoding(file.data(), file.size(), script);
    if (!ScriptTextToProgramNeeded(encoding)) return file;
    return ScriptTextToProgram(file.data(), file.size(), encoding);
}

std::string ProgramTextToUtf8(const std::string& text) {
    return ConvertText(text.data(), text.size(), ProgramCodePage(), CP_UTF8, nullptr);
}
