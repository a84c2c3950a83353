#include "net/mimewords.h"

#include <windows.h>
#include <stdlib.h>
#include <string.h>

#include "base/base64.h"
#include "base/utf8.h"
#include "base/words.h"

namespace {

int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

std::string FromQuoted(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] == '_') {
            out += ' ';
        } else if (text[i] == '=' && i + 2 < text.size() + 0 && HexValue(text[i + 1]) >= 0 && HexValue(text[i + 2]) >= 0) {
            out += (char)(HexValue(text[i + 1]) * 16 + HexValue(text[i + 2]));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

// The code page a charset names: UTF-8, the Windows and ISO Latin pages the
// system knows by number, else the legacy page.
unsigned CharsetPage(const std::string& charset) {
    if (lstrcmpiA(charset.c_str(), "UTF-8") == 0 || lstrcmpiA(charset.c_str(), "UTF8") == 0) return CP_UTF8;
    if (lstrcmpiA(charset.c_str(), "US-ASCII") == 0) return 20127;
    if (lstrcmpiA(charset.c_str(), "ISO-8859-1") == 0) return 28591;
    if (lstrcmpiA(charset.c_str(), "ISO-8859-15") == 0) return 28605;
    if (ContainsNoCase(charset.c_str(), "windows-")) return (unsigned)strtoul(charset.c_str() + 8, nullptr, 10);
    return LegacyCodePage();
}

}  // namespace

bool IsAsciiText(const std::string& text) {
    for (char c : text)
        if ((unsigned char)c >= 0x80) return false;
    return true;
}

std::string EncodeHeaderWords(const std::string& text) {
    if (IsAsciiText(text)) return text;
    const std::string utf8 = ConvertText(text.data(), text.size(), ProgramCodePage(), CP_UTF8, nullptr);
    // 45 bytes make 60 of base64, and "=?UTF-8?B?" "?=" bring a word to 72.
    std::string out;
    size_t at = 0;
    while (at < utf8.size()) {
        size_t n = utf8.size() - at < 45 ? utf8.size() - at : 45;
        // Each word decodes on its own: a character stays in one word.
        if (at + n < utf8.size()) {
            while (n > 0 && ((unsigned char)utf8[at + n] & 0xC0) == 0x80) n--;
            if (n == 0) n = 45;
        }
        if (!out.empty()) out += "\r\n ";
        out += "=?UTF-8?B?" + Base64(utf8.substr(at, n)) + "?=";
        at += n;
    }
    return out;
}

std::string DecodeHeaderWords(const std::string& value) {
    std::string out;
    size_t at = 0;
    bool lastWasWord = false;
    while (at < value.size()) {
        const size_t start = value.find("=?", at);
        if (start == std::string::npos) {
            out += value.substr(at);
            break;
        }
        const size_t q1 = value.find('?', start + 2);
        const size_t q2 = q1 == std::string::npos ? q1 : value.find('?', q1 + 1);
        const size_t end = q2 == std::string::npos ? q2 : value.find("?=", q2 + 1);
        if (end == std::string::npos || q2 != q1 + 2) {
            out += value.substr(at, start + 2 - at);
            at = start + 2;
            lastWasWord = false;
            continue;
        }
        // Blanks and line folds between two encoded words are not text.
        std::string between = value.substr(at, start - at);
        if (!(lastWasWord && between.find_first_not_of(" \t\r\n") == std::string::npos)) out += between;
        const std::string charset = value.substr(start + 2, q1 - start - 2);
        const char kind = value[q1 + 1];
        const std::string payload = value.substr(q2 + 1, end - q2 - 1);
        const std::string bytes = kind == 'B' || kind == 'b' ? FromBase64(payload) : FromQuoted(payload);
        out += ConvertText(bytes.data(), bytes.size(), CharsetPage(charset), ProgramCodePage(), nullptr);
        at = end + 2;
        lastWasWord = true;
    }
    return out;
}

namespace {

// The list's entries, each with the separator (comma or semicolon) that
// ended it, or none for the last.
std::vector<std::pair<std::string, char>> Entries(const std::string& list, const char* separators) {
    std::vector<std::pair<std::string, char>> out;
    std::string one;
    bool quoted = false;
    for (char c : list) {
        if (c == '"') quoted = !quoted;
        if (!quoted && strchr(separators, c)) {
            out.push_back({one, c});
            one.clear();
        } else {
            one += c;
        }
    }
    out.push_back({one, 0});
    return out;
}

}  // namespace

std::string EncodeAddressHeader(const std::string& list) {
    if (IsAsciiText(list)) return list;
    std::string out;
    for (const auto& [entry, separator] : Entries(list, ",;")) {
        const size_t open = entry.find('<');
        const std::string name = open == std::string::npos ? std::string() : entry.substr(0, open);
        if (open == std::string::npos || IsAsciiText(name)) {
            out += entry;
        } else {
            // The name without its blanks around and its quotes: an encoded
            // word may not stand inside quotes.
            const size_t first = name.find_first_not_of(" \t");
            const size_t last = name.find_last_not_of(" \t");
            std::string bare = name.substr(first, last - first + 1);
            if (bare.size() >= 2 && bare.front() == '"' && bare.back() == '"') bare = bare.substr(1, bare.size() - 2);
            out += name.substr(0, first) + EncodeHeaderWords(bare) + " " + entry.substr(open);
        }
        if (separator) out += separator;
    }
    return out;
}

std::vector<std::string> EnvelopeAddresses(const std::string& list) {
    std::vector<std::string> out;
    for (const auto& [entry, separator] : Entries(list, ",;\n")) {
        const size_t open = entry.find('<');
        const size_t close = open == std::string::npos ? open : entry.find('>', open);
        if (close != std::string::npos) {
            if (close > open + 1) out.push_back(entry.substr(open + 1, close - open - 1));
            continue;
        }
        std::string one;
        for (size_t i = 0; i <= entry.size(); i++) {
            if (i == entry.size() || strchr(" \t", entry[i])) {
                if (!one.empty()) out.push_back(one);
                one.clear();
            } else {
                one += entry[i];
            }
        }
    }
    return out;
}
