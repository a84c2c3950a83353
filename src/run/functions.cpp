// The text functions. The action is found by words tested in a fixed order on
// its whole name, so the first word that is in the name decides.
#include "run/functions.h"

#include <windows.h>
#include <stdio.h>
#include <ctype.h>
#include <string.h>

#include "run/expressions.h"
#include "run/numbers.h"
#include "run/runstate.h"
#include "run/textops.h"
#include "run/translate.h"
#include "run/variables.h"
#include "script/step.h"
#include "base/words.h"
#include "base/utf8.h"

namespace {

struct FunctionCall {
    const Step& step;
    std::string first;   // value1, translated (raw for a format)
    std::string second;  // value2, translated
    std::string text;    // the working text
};

std::string Number(long n) {
    char buffer[24];
    snprintf(buffer, sizeof buffer, "%ld", n);
    return buffer;
}

int Count(const std::string& v) { return ParseInt(v.c_str()); }

// What each function makes of the working text.
// Lengths and positions count characters, not bytes: a character outside
// the BMP (an emoji) is one. In a single-byte code page the two agree.
long Chars(const std::string& text) { return (long)CharCount(text.data(), text.size()); }
size_t BytesOf(const std::string& text, size_t chars) { return CharOffset(text.data(), text.size(), chars); }

std::string Length(FunctionCall& c) { return Number(Chars(c.text)); }

std::string Upper(FunctionCall& c) {
    for (char& ch : c.text)
        if (ch >= 'a' && ch <= 'z') ch = (char)(ch - 32);
    return c.text;
}

std::string Lower(FunctionCall& c) {
    for (char& ch : c.text)
        if (ch >= 'A' && ch <= 'Z') ch = (char)(ch + 32);
    return c.text;
}

std::string Trim(FunctionCall& c) {
    std::string marker = c.first.empty() ? " " : c.first;  // blanks when no text to trim is given
    CutText(c.text, marker.c_str(), ContainsNoCase(c.second.c_str(), "Front") ? 1 : 2);
    return c.text;
}

std::string Replace(FunctionCall& c) {
    ReplaceInString(c.text, c.first.c_str(), c.second.c_str(), ContainsNoCase(c.step.options, "First Only") ? 1 : 0,
                    ContainsNoCase(c.step.options, "Case Sensitive") ? 1 : 0);
    return c.text;
}

std::string Insert(FunctionCall& c) {
    int at = Count(c.first) - 1;
    InsertAt(c.text, at < 0 ? 0 : at, c.second.c_str());
    return c.text;
}

std::string Sub(FunctionCall& c) {
    int index = Count(c.second) - 1;
    std::string item(c.text.size() + 256, '\0');
    GetItem(c.text.c_str(), c.first.c_str(), index < 0 ? 0 : index, &item[0], (int)item.size(),
            ContainsNoCase(c.step.options, "Sensi") ? 1 : 0, ContainsNoCase(c.step.options, "Quote") ? 1 : 0);
    return item.c_str();
}

std::string CountItems(FunctionCall& c) { return Number(CountText(c.text.c_str(), c.first.c_str())); }

std::string Find(FunctionCall& c) {
    if (c.first.empty()) return c.text;
    const char* at = ContainsNoCase(c.step.options, "Sensi") ? strstr(c.text.c_str(), c.first.c_str())
                                                              : FindNoCase(c.text.c_str(), c.first.c_str());
    return at ? std::string(at) : c.text;
}

std::string Pad(FunctionCall& c) {
    size_t length = (size_t)(Count(c.first) < 0 ? 0 : Count(c.first));
    size_t have = (size_t)Chars(c.text);
    if (length > TEXT_CEILING && !c.second.empty() && have < length) {
        TextCeilingHit = true;
        return c.text;
    }
    const size_t piece = (size_t)Chars(c.second);
    while (piece && have < length) {
        const size_t take = length - have < piece ? length - have : piece;
        c.text += c.second.substr(0, BytesOf(c.second, take));
        have += take;
    }
    return c.text;
}

std::string Mid(FunctionCall& c) {
    int length = Count(c.first), start = Count(c.second);
    if (start < 1) start = 1;
    if (length < 0) length = 0;
    const size_t from = BytesOf(c.text, (size_t)start - 1);
    const std::string rest = c.text.substr(from);
    return rest.substr(0, BytesOf(rest, (size_t)length));
}

std::string Left(FunctionCall& c) {
    int n = Count(c.first);
    return c.text.substr(0, BytesOf(c.text, n < 0 ? 0 : (size_t)n));
}

std::string Right(FunctionCall& c) {
    int n = Count(c.first);
    size_t keep = n < 0 ? 0 : (size_t)n;
    const size_t count = (size_t)Chars(c.text);
    return keep >= count ? c.text : c.text.substr(BytesOf(c.text, count - keep));
}

std::string Crypt(FunctionCall& c) {
    XorText(c.text, c.first);
    return c.text;
}

// The digits and the point's followers, without the sign: '-3.7' gives 37.
std::string Absolute(FunctionCall& c) {
    std::string unsigned_;
    for (char ch : c.text)
        if (ch != '-') unsigned_ += ch;
    return Number(ParseInt(unsigned_.c_str()));
}

std::string Format(FunctionCall& c) { return FormatPicture(ParseFloat(c.text.c_str()), c.first.c_str()); }

std::string Words(FunctionCall& c) { return NumberToWords(c.text.c_str(), ContainsNoCase(c.step.options, "Check")); }

std::string Calc(FunctionCall& c) {
    char result[128];
    CalcFormula(&c.text[0], result);
    return result;
}

std::string RandomNumber(FunctionCall& c) {
    int low = Count(c.first), high = Count(c.second);
    return Number(Random(low < 0 ? 0 : low, high < 0 ? 0 : high));
}

// The words tested, in this order.
const struct {
    const char* word;
    std::string (*run)(FunctionCall&);
} kFunctions[] = {
    {"LENGTH", Length}, {"UPPER", Upper}, {"LOWER", Lower},   {"TRIM", Trim},     {"REPLACE", Replace},
    {"INSERT", Insert}, {"SUB", Sub},     {"COUNT", CountItems}, {"FIND", Find},  {"PAD", Pad},
    {"MID", Mid},       {"LEFT", Left},   {"RIGHT", Right},   {"CRYPT", Crypt},   {"abs", Absolute},
    {"FORMAT", Format}, {"Word", Words},  {"CALC", Calc},     {"RANDOM", RandomNumber},
};

std::string Translated(const char* text, int tab, int step) {
    TranslateText(text, tab, step);
    return TranslatedText;
}

}  // namespace

int RunFunction(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    // A format keeps its "%" signs: it is not translated.
    FunctionCall call{s, ContainsNoCase(s.action, "FORMAT") ? std::string(s.value[0]) : Translated(s.value[0], tab, step),
                      Translated(s.value[1], tab, step), Translated(s.text, tab, step)};
    for (const auto& f : kFunctions) {
        if (!ContainsNoCase(s.action, f.word)) continue;
        std::string result = f.run(call);
        if (TextCeilingHit) return 0;  // the run core says why; nothing is saved
        SaveOutput(tab, step, result.c_str(), (long)result.size(), nullptr);
        return 1;
    }
    snprintf(StepFailureText, STEP_FAILURE_TEXT_SIZE, "Unknown function: \"%s\"", s.action);
    return 0;
}

void XorText(std::string& text, const std::string& key) {
    if (text.empty() || key.empty()) return;
    for (size_t i = 0; i < text.size(); i++) {
        char k = key[i % key.size()], c = text[i];
        if (k == c)
            text[i] = 0x7F;
        else if (c == 0x7F)
            text[i] = k;
        else
            text[i] = (char)(c ^ k);
    }
}

void InsertThousands(std::string& text) {
    size_t point = text.find('.');
    size_t i = point == std::string::npos ? text.size() : point;
    int count = 0;
    while (i > 1) {
        i--;
        if (text[i] < '0' || text[i] > '9') break;
        if (++count >= 3 && text[i - 1] >= '1' && text[i - 1] <= '9') {
            text.insert(i, 1, ',');
            count = 0;
        }
    }
}

std::string FormatPicture(double value, const char* format) {
    std::string f = format ? format : "";
    char out[260] = "";
    if (f.find_first_of("cdiouxefgsCDIOUXEFGS") != std::string::npos) {
        // A print format: only its first conversion is used, so that a user's
        // format can never read more arguments than there are.
        std::string printed;
        bool converted = false;
        for (size_t i = 0; i < f.size(); i++) {
            if (f[i] != '%') {
                printed += f[i];
                continue;
            }
            size_t j = i + 1;
            while (j < f.size() && strchr("-+ #0123456789.", f[j])) j++;
            // A width or precision past three digits would only pad what is
            // cut at 259 characters anyway, at the cost of a long wait.
            int digits = 0, longest = 0;
            for (size_t k = i + 1; k < j; k++) {
                digits = isdigit((unsigned char)f[k]) ? digits + 1 : 0;
                if (digits > longest) longest = digits;
            }
            if (converted || j >= f.size() || !strchr("cdiouxXeEfgGs", f[j]) || longest > 3) {
                printed += '%';
                continue;
            }
            std::string conversion = f.substr(i, j - i) + f[j];
            // The user's text is a format here, but only as one conversion of
            // vetted letters with its argument: nothing is read that is not given.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
            char piece[260];
            if (strchr("cdiouxX", f[j])) {
                snprintf(piece, sizeof piece, conversion.c_str(), (int)value);
            } else if (strchr("eEfgG", f[j])) {
                snprintf(piece, sizeof piece, conversion.c_str(), value);
            } else {
                char number[80];
                FormatNumber(value, number);
                snprintf(piece, sizeof piece, conversion.c_str(), number);
            }
#pragma GCC diagnostic pop
            printed += piece;
            converted = true;
            i = j;
        }
        return printed.substr(0, 259);
    }
    bool thousands = f.find(',') != std::string::npos;
    std::string picture;
    for (char c : f)
        if (c != ',') picture += c;
    size_t dot = picture.find('.');
    int decimals = dot == std::string::npos ? 0 : (int)(picture.size() - dot - 1);
    char print[32];
    snprintf(print, sizeof print, "%%0%d.%df", (int)picture.size(), decimals);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    snprintf(out, sizeof out, print, value);  // "%0<n>.<d>f", made just above
#pragma GCC diagnostic pop
    std::string text = out;
    if (thousands) InsertThousands(text);
    return text;
}

namespace {

const char* const kOnes[] = {"",        "One",     "Two",       "Three",    "Four",     "Five",    "Six",
                             "Seven",   "Eight",   "Nine",      "Ten",      "Eleven",   "Twelve",  "Thirteen",
                             "Fourteen", "Fifteen", "Sixteen",  "Seventeen", "Eighteen", "Nineteen"};
const char* const kTens[] = {"", "", "Twenty", "Thirty", "Forty", "Fifty", "Sixty", "Seventy", "Eighty", "Ninety"};

void Join(std::string& out, const char* word) {
    if (!*word) return;
    if (!out.empty()) out += ' ';
    out += word;
}

// One group of up to three digits: "Two Hundred Forty Five".
void GroupWords(std::string& out, int n) {
    if (n >= 100) {
        Join(out, kOnes[n / 100]);
        Join(out, "Hundred");
        n %= 100;
    }
    if (n >= 20) {
        Join(out, kTens[n / 10]);
        n %= 10;
    }
    Join(out, kOnes[n]);
}

}  // namespace

// Joining rules: every word stands apart with one blank, with no "and" and no
// hyphen ("One Hundred Twenty One"); a group is followed by its scale word.
// The fraction is "point" and its digits as words ("Three point One Four"),
// or in cheque form "and" with the cents as two digits over 100 ("and 50/100",
// "and no/100").
std::string NumberToWords(const char* text, bool cheque) {
    std::string number;
    for (const char* p = text ? text : ""; *p; p++)
        if (*p != ',') number += *p;
    double value = ParseFloat(number.c_str());
    if (value > 2000000000.0) return "(Out of Range)";
    bool negative = value < 0;
    if (negative) value = -value;
    long long whole = (long long)value;
    std::string out;
    if (negative) out = "Minus";
    if (whole == 0) Join(out, "Zero");
    static const struct {
        long long size;
        const char* name;
    } kGroups[] = {{1000000000LL, "Billion"}, {1000000, "Million"}, {1000, "Thousand"}, {1, ""}};
    for (const auto& g : kGroups) {
        int part = (int)(whole / g.size % 1000);
        if (!part) continue;
        GroupWords(out, part);
        Join(out, g.name);
    }
    size_t dot = number.find('.');
    std::string fraction;
    if (dot != std::string::npos)
        for (size_t i = dot + 1; i < number.size() && number[i] >= '0' && number[i] <= '9'; i++) fraction += number[i];
    if (cheque) {
        int cents = (int)((value - (double)whole) * 100 + 0.5);
        char tail[32];
        if (cents)
            snprintf(tail, sizeof tail, "and %02d/100", cents);
        else
            snprintf(tail, sizeof tail, "and no/100");
        Join(out, tail);
    } else if (!fraction.empty()) {
        Join(out, "point");
        for (char d : fraction) Join(out, d == '0' ? "Zero" : kOnes[d - '0']);
    }
    if (whole == 0 && value == 0 && !cheque && fraction.empty()) return "Zero";
    return out;
}
