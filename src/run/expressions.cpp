// CalcFormula: a single pass to a postfix list with a precedence stack, then
// a stack evaluation. What it cannot use it skips; only an operator with no
// meaning has words. CompareExpression: one comparison between two sides.
#include "run/expressions.h"
#include "base/text.h"

#include <windows.h>
#include <math.h>
#include <stdio.h>
#include <string.h>

#include <string>

#include "run/numbers.h"
#include "base/words.h"

namespace {

enum { LIMIT = 256, NUMBER = 1, OPERATOR = 2 };

struct FormulaItem {
    int kind;
    double value;
    char text[65];
};

// The one list and stacks of the evaluator; cleared at each call.
FormulaItem List[LIMIT];
char Operators[LIMIT];
double Values[LIMIT];

int Precedence(char op) {
    switch (op) {
    case '(': return 7;
    case ')': return 6;
    case '^': return 5;
    case '*': case '/': case '%': return 4;
    case '+': case '-': return 3;
    case '&': case '|': case '~': case '!': return 2;
    case '=': case '<': case '>': return 1;
    }
    return 0;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

double CalcFormula(char* formula, char* result) {
    if (result) result[0] = 0;
    if (!formula) return 0;
    // Blanks, line ends, tabs and the word CALC go, in the caller's text.
    char* out = formula;
    for (const char* in = formula; *in; in++)
        if (*in != ' ' && *in != '\n' && *in != '\r' && *in != '\t') *out++ = *in;
    *out = 0;
    for (char* at; (at = FindNoCase(formula, "CALC")) != nullptr;) memmove(at, at + 4, strlen(at + 4) + 1);

    int count = 0, depth = 0;
    bool signAllowed = true;
    auto toList = [&](char op) {
        if (count >= LIMIT) return;
        List[count] = FormulaItem{OPERATOR, 0, {op, 0}};
        count++;
    };
    for (const char* p = formula; *p;) {
        char c = *p;
        if (IsDigit(c) || c == '.' || (c == '-' && IsDigit(p[1]) && signAllowed)) {
            // A number: its sign, then digits and points. The sign belongs
            // to the number's start only, so "5-3" is a subtraction.
            char text[65];
            int n = 0;
            text[n++] = *p++;
            while (*p && n < 64 && (IsDigit(*p) || *p == '.')) text[n++] = *p++;
            text[n] = 0;
            if (count > 239) return 0;  // too long: the result stays empty
            List[count].kind = NUMBER;
            List[count].value = ParseFloat(text);
            CopyInto(List[count].text, text);
            count++;
            signAllowed = false;
            continue;
        }
        if (c == '(') {
            if (depth < LIMIT) Operators[depth++] = c;
            signAllowed = true;
            p++;
            continue;
        }
        if (c == ')') {
            while (depth > 0 && Operators[depth - 1] != '(') toList(Operators[--depth]);
            if (depth > 0) depth--;  // the matching "("
            p++;
            continue;
        }
        if (!strchr("^%*/+-&|~!=<>", c)) {
            p++;  // anything else is skipped without comment
            continue;
        }
        // A run of operator characters, each in turn.
        while (*p && strchr("^%*/+-&|~!=<>", *p)) {
            char op = *p;
            if (op == '-' && IsDigit(p[1]) && signAllowed) break;  // the sign of the next number
            for (;;) {
                if (depth == 0 || Operators[depth - 1] == '(' || Precedence(op) > Precedence(Operators[depth - 1])) {
                    if (depth < LIMIT) Operators[depth++] = op;
                    if (count == 0 || List[count - 1].text[0] != '+') signAllowed = true;
                    break;
                }
                toList(Operators[--depth]);
            }
            p++;
        }
    }
    while (depth > 0) toList(Operators[--depth]);

    int values = 0;
    double value = 0;
    bool done = false;
    for (int i = 0; i < count && !done; i++) {
        if (List[i].kind == NUMBER) {
            if (values < LIMIT) Values[values++] = List[i].value;
            continue;
        }
        char op = List[i].text[0];
        if (values < 2) {
            // Too few values: the result is the bottom one, with the sign of
            // each "-" that stands next, which is how '-(2+3)' is negative.
            value = values ? Values[0] : 0;
            for (int k = i; k < count && List[k].kind == OPERATOR && List[k].text[0] == '-'; k++) value = -value;
            done = true;
            break;
        }
        double b = Values[--values], a = Values[--values], r;
        switch (op) {
        case '+': r = a + b; break;
        case '-': r = a - b; break;
        case '*': r = a * b; break;
        case '/': r = a / b; break;
        case '^': r = pow(a, b); break;
        case '%': r = fmod(a, b); break;
        case '&': r = (double)((int)a & (int)b); break;
        case '|': r = (double)((int)a | (int)b); break;
        case '~': r = (double)((int)a ^ (int)b); break;
        case '!': r = (double)(~(int)b); break;
        case '=': r = a == b ? 1 : 0; break;
        case '<': r = a < b ? 1 : 0; break;
        case '>': r = a > b ? 1 : 0; break;
        default:
            if (result) FormatIntoN(result, NUMBER_TEXT_SIZE, "Bad Operator: %c", op);
            return 0;
        }
        Values[values++] = r;
    }
    if (!done) value = values ? Values[0] : 0;
    if (result) FormatNumber(value, result);
    return value;
}

int CompareExpression(const char* text) {
    if (!text || !*text) return 0;
    if (!strpbrk(text, "=><")) {
        if (strcmp(text, "0") != 0) return 1;
    }
    // Left side up to the first operator; a later operator replaces it and
    // restarts the right side.
    std::string left, op, right;
    bool haveOp = false;
    for (const char* p = text; *p;) {
        bool starts = *p == '=' || *p == '>' || *p == '<' || (*p == '!' && p[1] == '=');
        if (starts) {
            op.clear();
            while (*p && strchr("=><!", *p)) op += *p++;
            right.clear();
            haveOp = true;
            continue;
        }
        (haveOp ? right : left) += *p++;
    }
    while (!left.empty() && left.back() == ' ') left.pop_back();
    size_t first = right.find_first_not_of(' ');
    right = first == std::string::npos ? "" : right.substr(first);

    bool numeric = IsTextOf(left.c_str(), 2) && IsTextOf(right.c_str(), 2);
    double a = ParseFloat(left.c_str()), b = ParseFloat(right.c_str());
    int textOrder = lstrcmpA(left.c_str(), right.c_str());
    if (op == "=" || op == "==") return textOrder == 0;  // always as text, in exact case
    if (op == ">") return numeric ? a > b : textOrder >= 1;
    if (op == ">=") return numeric ? a >= b : textOrder >= 0;
    if (op == "<") return numeric ? a < b : textOrder < 0;
    if (op == "<=") return numeric ? a <= b : textOrder <= 0;
    if (op == "!=" || op == "<>" || op == "><") return numeric ? a != b : lstrcmpiA(left.c_str(), right.c_str()) != 0;
    return 0;
}
