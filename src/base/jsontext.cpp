#include "base/jsontext.h"

#include <stdio.h>
#include <string.h>

namespace {

void AppendCodePoint(std::string& out, unsigned c) {
    if (c < 0x80) {
        out += (char)c;
    } else if (c < 0x800) {
        out += (char)(0xC0 | (c >> 6));
        out += (char)(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += (char)(0xE0 | (c >> 12));
        out += (char)(0x80 | ((c >> 6) & 0x3F));
        out += (char)(0x80 | (c & 0x3F));
    } else {
        out += (char)(0xF0 | (c >> 18));
        out += (char)(0x80 | ((c >> 12) & 0x3F));
        out += (char)(0x80 | ((c >> 6) & 0x3F));
        out += (char)(0x80 | (c & 0x3F));
    }
}

// The length of a well-formed UTF-8 sequence at `p` (no overlong forms, no
// surrogates, nothing above U+10FFFF), or 0.
size_t Utf8SequenceLength(const unsigned char* p, size_t left) {
    const unsigned char c = p[0];
    size_t n;
    unsigned value;
    if (c < 0x80) return 1;
    if (c >= 0xC2 && c <= 0xDF) {
        n = 2;
        value = c & 0x1F;
    } else if (c >= 0xE0 && c <= 0xEF) {
        n = 3;
        value = c & 0x0F;
    } else if (c >= 0xF0 && c <= 0xF4) {
        n = 4;
        value = c & 0x07;
    } else {
        return 0;
    }
    if (left < n) return 0;
    for (size_t i = 1; i < n; i++) {
        if ((p[i] & 0xC0) != 0x80) return 0;
        value = (value << 6) | (p[i] & 0x3F);
    }
    if ((n == 3 && value < 0x800) || (n == 4 && (value < 0x10000 || value > 0x10FFFF))) return 0;
    if (value >= 0xD800 && value <= 0xDFFF) return 0;
    return n;
}

struct Reader {
    const std::string& text;
    size_t at;
    std::string& error;

    bool Fail(const char* what) {
        int line = 1, column = 1;
        for (size_t i = 0; i < at && i < text.size(); i++) {
            if (text[i] == '\n') {
                line++;
                column = 1;
            } else if (((unsigned char)text[i] & 0xC0) != 0x80) {
                column++;  // a column is a character, not a byte
            }
        }
        char head[48];
        snprintf(head, sizeof head, "line %d, column %d: ", line, column);
        error = head;
        error += what;
        return false;
    }
    void SkipBlanks() {
        while (at < text.size() && (text[at] == ' ' || text[at] == '\t' || text[at] == '\r' || text[at] == '\n')) at++;
    }
    bool Hex4(unsigned& value) {
        value = 0;
        for (int i = 0; i < 4; i++, at++) {
            if (at >= text.size()) return false;
            const char c = text[at];
            value <<= 4;
            if (c >= '0' && c <= '9') value |= (unsigned)(c - '0');
            else if (c >= 'a' && c <= 'f') value |= (unsigned)(c - 'a' + 10);
            else if (c >= 'A' && c <= 'F') value |= (unsigned)(c - 'A' + 10);
            else return false;
        }
        return true;
    }
    bool String(std::string& out) {
        at++;  // the opening quote
        for (;;) {
            if (at >= text.size()) return Fail("a text has no closing quote");
            const unsigned char c = (unsigned char)text[at];
            if (c == '"') {
                at++;
                return true;
            }
            if (c < 0x20) return Fail("a control character inside a text must be escaped");
            if (c == '\\') {
                const size_t escape = at;
                at++;
                if (at >= text.size()) return Fail("a text has no closing quote");
                const char e = text[at++];
                switch (e) {
                case '"': out += '"'; break;
                case '\\': out += '\\'; break;
                case '/': out += '/'; break;
                case 'b': out += '\b'; break;
                case 'f': out += '\f'; break;
                case 'n': out += '\n'; break;
                case 'r': out += '\r'; break;
                case 't': out += '\t'; break;
                case 'u': {
                    unsigned value;
                    if (!Hex4(value)) {
                        at = escape;
                        return Fail("\\u needs four hexadecimal digits");
                    }
                    if (value >= 0xD800 && value <= 0xDBFF && at + 1 < text.size() && text[at] == '\\' &&
                        text[at + 1] == 'u') {
                        const size_t second = at;
                        at += 2;
                        unsigned low;
                        if (Hex4(low) && low >= 0xDC00 && low <= 0xDFFF) {
                            value = 0x10000 + ((value - 0xD800) << 10) + (low - 0xDC00);
                        } else {
                            at = second;
                            return Fail("a high surrogate is not followed by a low one");
                        }
                    } else if (value >= 0xD800 && value <= 0xDFFF) {
                        at = escape;
                        return Fail("a surrogate escape stands alone");
                    }
                    AppendCodePoint(out, value);
                    break;
                }
                default:
                    at = escape;
                    return Fail("unknown escape in a text");
                }
                continue;
            }
            const size_t n = Utf8SequenceLength((const unsigned char*)text.data() + at, text.size() - at);
            if (!n) return Fail("the file is not UTF-8");
            out.append(text, at, n);
            at += n;
        }
    }
    bool Number(std::string& out) {
        const size_t start = at;
        if (text[at] == '-') at++;
        if (at >= text.size() || !(text[at] >= '0' && text[at] <= '9')) return Fail("a number has no digits");
        if (text[at] == '0') {
            at++;
        } else {
            while (at < text.size() && text[at] >= '0' && text[at] <= '9') at++;
        }
        if (at < text.size() && text[at] == '.') {
            at++;
            if (at >= text.size() || !(text[at] >= '0' && text[at] <= '9')) return Fail("a number has no digits after '.'");
            while (at < text.size() && text[at] >= '0' && text[at] <= '9') at++;
        }
        if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
            at++;
            if (at < text.size() && (text[at] == '+' || text[at] == '-')) at++;
            if (at >= text.size() || !(text[at] >= '0' && text[at] <= '9')) return Fail("a number's exponent has no digits");
            while (at < text.size() && text[at] >= '0' && text[at] <= '9') at++;
        }
        out.assign(text, start, at - start);
        return true;
    }
    bool Word(const char* word) {
        const size_t n = strlen(word);
        if (text.compare(at, n, word) != 0) return false;
        at += n;
        return true;
    }
    bool Value(JsonField& field) {
        if (at >= text.size()) return Fail("a value is missing");
        const char c = text[at];
        if (c == '"') {
            field.kind = JSON_TEXT;
            return String(field.value);
        }
        if (c == '-' || (c >= '0' && c <= '9')) {
            field.kind = JSON_NUMBER;
            return Number(field.value);
        }
        if (Word("true")) {
            field.kind = JSON_BOOLEAN;
            field.value.push_back('1');
            return true;
        }
        if (Word("false")) {
            field.kind = JSON_BOOLEAN;
            field.value.push_back('0');
            return true;
        }
        if (Word("null")) {
            field.kind = JSON_NULL;
            return true;
        }
        if (c == '{' || c == '[') {
            std::string what = "the value of \"" + field.name + "\" is nested (an object or a list); only texts, "
                               "numbers, true, false and null are taken";
            return Fail(what.c_str());
        }
        return Fail("a value must be a text, a number, true, false or null");
    }
};

}  // namespace

std::string AsUtf8(const char* text, size_t length) {
    std::string out;
    out.reserve(length);
    const unsigned char* p = (const unsigned char*)text;
    for (size_t i = 0; i < length;) {
        const size_t n = Utf8SequenceLength(p + i, length - i);
        if (n) {
            out.append(text + i, n);
            i += n;
        } else {
            AppendCodePoint(out, p[i]);
            i++;
        }
    }
    return out;
}

void AppendJsonString(std::string& out, const std::string& text) {
    const std::string utf8 = AsUtf8(text);
    out += '"';
    for (char ch : utf8) {
        const unsigned char c = (unsigned char)ch;
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        case '\b': out += "\\b"; break;
        case '\f': out += "\\f"; break;
        default:
            if (c < 0x20 || c == 0x7F) {
                char escape[8];
                snprintf(escape, sizeof escape, "\\u%04x", c);
                out += escape;
            } else {
                out += ch;
            }
        }
    }
    out += '"';
}

void AppendXmlText(std::string& out, const std::string& text) {
    const std::string utf8 = AsUtf8(text);
    for (char ch : utf8) {
        const unsigned char c = (unsigned char)ch;
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        case '\'': out += "&#39;"; break;
        default:
            if (c < 0x20 && c != '\t' && c != '\n' && c != '\r')
                out += '?';
            else
                out += ch;
        }
    }
}

bool ReadFlatJsonObject(const std::string& text, std::vector<JsonField>& fields, std::string& error) {
    fields.clear();
    error.clear();
    Reader r{text, 0, error};
    if (text.size() >= 3 && text.compare(0, 3, "\xEF\xBB\xBF") == 0) r.at = 3;  // a byte-order mark
    r.SkipBlanks();
    if (r.at >= text.size() || text[r.at] != '{') return r.Fail("the file must hold one JSON object, {...}");
    r.at++;
    r.SkipBlanks();
    if (r.at < text.size() && text[r.at] == '}') {
        r.at++;
    } else {
        for (;;) {
            r.SkipBlanks();
            if (r.at >= text.size() || text[r.at] != '"') return r.Fail("a name in double quotes was expected");
            JsonField field{std::string(), std::string(), JSON_NULL};
            if (!r.String(field.name)) return false;
            r.SkipBlanks();
            if (r.at >= text.size() || text[r.at] != ':') return r.Fail("':' was expected after a name");
            r.at++;
            r.SkipBlanks();
            if (!r.Value(field)) return false;
            fields.push_back(field);
            r.SkipBlanks();
            if (r.at < text.size() && text[r.at] == ',') {
                r.at++;
                continue;
            }
            if (r.at < text.size() && text[r.at] == '}') {
                r.at++;
                break;
            }
            return r.Fail("',' or '}' was expected");
        }
    }
    r.SkipBlanks();
    if (r.at != text.size()) return r.Fail("text after the object's end");
    return true;
}
