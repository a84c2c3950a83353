#include "run/textops.h"

#include <stdlib.h>
#include <string.h>

#include "base/words.h"
#include "base/utf8.h"

namespace {

// Position of `find` in `text` from `from`, in any case or exact; npos if none.
size_t Find(const std::string& text, const char* find, size_t from, bool exactCase) {
    size_t n = strlen(find);
    if (!n || text.size() < n) return std::string::npos;
    if (exactCase) return text.find(find, from);
    char first = AsciiLower(find[0]);
    for (size_t i = from; i + n <= text.size(); i++) {
        if (AsciiLower(text[i]) != first) continue;
        size_t k = 1;
        while (k < n && AsciiLower(text[i + k]) == AsciiLower(find[k])) k++;
        if (k == n) return i;
    }
    return std::string::npos;
}

}  // namespace

int ReplaceInString(std::string& text, const char* find, const char* replacement, int nth, int exactCase) {
    if (!find || !*find) return 0;
    size_t findLen = strlen(find), repLen = strlen(replacement ? replacement : "");
    if (nth == 0) {
        int count = 0;
        for (size_t at = Find(text, find, 0, exactCase); at != std::string::npos;
             at = Find(text, find, at + repLen, exactCase)) {
            text.replace(at, findLen, replacement ? replacement : "");
            count++;
        }
        return count;
    }
    size_t chosen = std::string::npos;
    int seen = 0;
    for (size_t at = Find(text, find, 0, exactCase); at != std::string::npos; at = Find(text, find, at + findLen, exactCase)) {
        seen++;
        chosen = at;
        if (nth > 0 && seen == nth) break;
    }
    if (chosen == std::string::npos || (nth > 0 && seen != nth)) return 0;
    text.replace(chosen, findLen, replacement ? replacement : "");
    return 1;
}

int ReplaceText(char* text, const char* find, const char* replacement, int nth, int exactCase) {
    if (!text) return 0;
    std::string s(text);
    int n = ReplaceInString(s, find, replacement, nth, exactCase);
    memcpy(text, s.c_str(), s.size() + 1);
    return n;
}

int CountText(const char* text, const char* find) {
    if (!text || !find || !*find) return 0;
    std::string s(text);
    int count = 0;
    size_t n = strlen(find);
    for (size_t at = Find(s, find, 0, false); at != std::string::npos; at = Find(s, find, at + n, false)) count++;
    return count;
}

volatile bool TextCeilingHit;
volatile bool TranslationCut;
const char* const TextCeilingText = "A text of this step would be longer than 64 MiB (67108864 bytes), the most a text may hold";

void InsertAt(std::string& text, int position, const char* insertion) {
    if (position < 0) position = 0;
    // The position counts characters; past the end, blanks fill up to it.
    const size_t chars = CharCount(text.data(), text.size());
    const size_t blanks = (size_t)position > chars ? (size_t)position - chars : 0;
    const size_t grown = text.size() + blanks + strlen(insertion ? insertion : "");
    if (grown > TEXT_CEILING) {
        TextCeilingHit = true;
        return;
    }
    if (blanks) text.append(blanks, ' ');
    text.insert(CharOffset(text.data(), text.size(), (size_t)position), insertion ? insertion : "");
}

void CutText(std::string& text, const char* marker, int mode) {
    size_t n = marker ? strlen(marker) : 0;
    switch (mode) {
    case 0: {
        size_t at = n ? Find(text, marker, 0, false) : std::string::npos;
        if (at != std::string::npos) text.resize(at);
        break;
    }
    case 1:
        while (n && text.size() >= n && text.compare(0, n, marker) == 0) text.erase(0, n);
        break;
    case 2:
        while (n && text.size() >= n && text.compare(text.size() - n, n, marker) == 0) text.resize(text.size() - n);
        break;
    case 4:  // the first character
        if (!text.empty()) text.erase(0, CharBytes(text.data(), text.size()));
        break;
    case 5:  // the last character
        if (!text.empty()) text.resize(CharOffset(text.data(), text.size(), CharCount(text.data(), text.size()) - 1));
        break;
    }
}

namespace {

// The next separator from `from`; with `quoted`, separators inside double
// quotes do not count.
size_t FindSeparator(const std::string& s, const char* separator, size_t from, bool exactCase, bool quoted) {
    if (!quoted) return Find(s, separator, from, exactCase);
    size_t n = strlen(separator);
    bool inQuotes = false;
    for (size_t k = from; k + n <= s.size(); k++) {
        if (s[k] == '"') inQuotes = !inQuotes;
        if (inQuotes) continue;
        size_t m = 0;
        while (m < n && (exactCase ? s[k + m] == separator[m] : AsciiLower(s[k + m]) == AsciiLower(separator[m]))) m++;
        if (m == n) return k;
    }
    return std::string::npos;
}

}  // namespace

int GetItem(const char* text, const char* separator, int index, char* dest, int destSize, int exactCase, int quoted) {
    if (dest && destSize > 0) dest[0] = 0;
    if (!text || !separator || !*separator || index < 0 || !dest || destSize <= 0) return 0;
    std::string s(text);
    // Doubled quotes stand for themselves: hide them during the split.
    if (quoted) ReplaceInString(s, "\"\"", "\x01", 0, 1);
    size_t start = 0, n = strlen(separator);
    for (int i = 0; i < index; i++) {
        size_t at = FindSeparator(s, separator, start, exactCase, quoted);
        if (at == std::string::npos) return 0;
        start = at + n;
    }
    size_t end = FindSeparator(s, separator, start, exactCase, quoted);
    std::string item = s.substr(start, end == std::string::npos ? std::string::npos : end - start);
    if (quoted) ReplaceInString(item, "\x01", "\"\"", 0, 1);
    size_t copy = item.size() < (size_t)destSize - 1 ? item.size() : (size_t)destSize - 1;
    memcpy(dest, item.data(), copy);
    dest[copy] = 0;
    return 1;
}

int GetCallArgument(const char* call, int index, char* dest, int destSize) {
    if (!call || !*call || index < 0 || !dest || destSize <= 0) return 0;
    dest[0] = 0;
    const char* p = call;
    if (strchr(call, '(') && strchr(call, ')')) p = strchr(call, '(') + 1;
    while (*p == ' ' || *p == '\t') p++;
    int depth = 0, counter = 1, length = 0;
    bool inQuotes = false;
    for (; *p && counter <= index && length < destSize - 1; p++) {
        char c = *p;
        bool wanted = counter == index;
        if (c == '"' || c == '\'') {
            if (wanted && length == 0 && !inQuotes) {
                inQuotes = true;
                continue;
            }
            if (inQuotes) {
                inQuotes = false;
                if (wanted) break;  // the quoted argument ends here
                continue;
            }
            if (!wanted && length == 0) {
                inQuotes = true;  // opening quotes of another argument
                continue;
            }
            if (wanted) dest[length++] = c;  // a quote inside an unquoted word
            continue;
        }
        if (!inQuotes) {
            if (c == ')' && depth == 0) {
                while (length > 0 && (dest[length - 1] == ' ' || dest[length - 1] == '\t')) length--;
                break;
            }
            if (c == ',' && depth == 0) {
                counter++;
                while (p[1] == ' ' || p[1] == '\t') p++;
                continue;
            }
            if (c == '(') depth++;
            if (c == ')') depth--;
        }
        if (wanted) dest[length++] = c;
    }
    dest[length] = 0;
    return ParseInt(dest);
}

void ShiftLetters(std::string& text, int by) {
    for (char& c : text) c = (char)(c + by);
}
