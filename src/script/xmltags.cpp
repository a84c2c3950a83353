#include "script/xmltags.h"

#include <string.h>

#include "base/words.h"
#include "base/utf8.h"

namespace {

// "<action>" gives the opening form "<action" (attributes may follow) and
// the closing form "</action>"; false for a tag too long for either.
bool TagForms(const char* tag, char* open, char* close, size_t size) {
    size_t tagLen = strlen(tag);
    if (tagLen >= size - 2) return false;
    memcpy(open, tag, tagLen + 1);
    if (tagLen && open[tagLen - 1] == '>') open[tagLen - 1] = 0;
    close[0] = tag[0];
    close[1] = '/';
    memcpy(close + 2, tag + 1, tagLen);
    return true;
}

}  // namespace

int ReadTag(const char* xml, const char* tag, char* dest, int limit,
            const char* const attributeNames[4], char* const attributeDests[4]) {
    char open[128], close[128];
    const char* start = nullptr;
    if (xml && *xml && tag && *tag && TagForms(tag, open, close, sizeof open)) start = FindNoCase(xml, open);
    return ReadTagAt(start, tag, dest, limit, attributeNames, attributeDests);
}

int ReadTagAt(const char* start, const char* tag, char* dest, int limit,
              const char* const attributeNames[4], char* const attributeDests[4]) {
    if (attributeDests)
        for (int i = 0; i < 4; i++)
            if (attributeDests[i]) attributeDests[i][0] = 0;
    if (dest) dest[0] = 0;
    if (!start || !tag || !*tag) return 0;
    char own[260];
    if (!dest) {
        dest = own;
        if (limit >= 0) limit = 259;
    }
    char open[128], close[128];
    if (!TagForms(tag, open, close, sizeof open)) return 0;

    const char* gt = strchr(start, '>');
    size_t headLen = gt ? (size_t)(gt - start + 1) : strlen(start);
    if (headLen > 255) headLen = CharBoundary(start, 255);
    char head[256];
    memcpy(head, start, headLen);
    head[headLen] = 0;

    if (attributeNames && attributeDests) {
        for (int i = 0; i < 4; i++) {
            if (!attributeNames[i] || !attributeDests[i]) continue;
            const char* at = FindNoCase(head, attributeNames[i]);
            if (!at) continue;
            const char* v = at + strlen(attributeNames[i]);
            for (int k = 0; k < 2 && *v; k++) v++;  // the = and the opening quote
            size_t n = strcspn(v, "\"");
            if (n > 259) n = CharBoundary(v, 259);
            memcpy(attributeDests[i], v, n);
            attributeDests[i][n] = 0;
            DecodeEntities(attributeDests[i]);
        }
    }

    const char* content = gt ? gt + 1 : start + strlen(start);
    const char* end = FindNoCase(content, close);
    size_t length;
    if (end) {
        length = (size_t)(end - content);
    } else {
        size_t rest = strlen(content);
        length = limit < 0 ? 0 : ((size_t)limit < rest ? CharBoundary(content, (size_t)limit) : rest);
    }
    if (limit < 0) return (int)length + 1;
    // A field keeps its width in bytes, but never half a character.
    if (length > (size_t)limit) length = CharBoundary(content, (size_t)limit);
    memcpy(dest, content, length);
    dest[length] = 0;
    int number = ParseInt(dest);
    DecodeEntities(dest);
    return number;
}

void FindTags(const char* xml, const char* const* tags, int count, const char** found) {
    for (int i = 0; i < count; i++) found[i] = nullptr;
    if (!xml) return;
    int missing = count;
    // Every tag begins with "<": one walk over those places, each compared
    // with the tags not found yet, gives what ReadTag's FindNoCase gives.
    for (const char* p = FindChar(xml, '<'); p && missing; p = FindChar(p + 1, '<')) {
        // Most places are closing tags, whose "/" starts no tag searched
        // for: one byte tells which tags are worth comparing.
        const char next = AsciiLower(p[1]);
        for (int i = 0; i < count; i++) {
            const char first = tags[i][1];
            if (found[i] || (first && first != '>' && AsciiLower(first) != next)) continue;
            const char* a = p + 1;
            const char* b = tags[i] + 1;
            // The tag's final ">" is not compared: attributes may follow.
            while (*b && !(b[0] == '>' && !b[1]) && AsciiLower(*a) == AsciiLower(*b)) a++, b++;
            if (!*b || (b[0] == '>' && !b[1])) {
                found[i] = p;
                missing--;
            }
        }
    }
}

void StripComments(char* text, size_t length) {
    if (!text) return;
    (void)length;
    // One pass: what stands between the comments is copied onto itself. A
    // comment with no end cuts the text where it starts.
    char* w = text;
    const char* r = text;
    for (const char* open; (open = FindExact(r, "<!--")) != nullptr;) {
        memmove(w, r, (size_t)(open - r));
        w += open - r;
        const char* end = FindExact(open + 4, "-->");
        if (!end) {
            *w = 0;
            return;
        }
        r = end + 3;
    }
    if (w != r) memmove(w, r, TextLength(r) + 1);
}

int EncodeEntities(char* text, int bufferSize, int mask) {
    if (!text) return 0;
    int need = (int)strlen(text) + 1;
    for (const char* p = text; *p; p++) {
        if (*p == '&') need += 4;
        else if (*p == '<' || *p == '>') need += 3;
    }
    if (need > bufferSize) return need;
    static const struct {
        int bit;
        char c;
        const char* entity;
    } kCodes[] = {{1, '&', "&amp;"}, {2, '<', "&lt;"}, {4, '>', "&gt;"}};
    for (const auto& code : kCodes) {
        if (!(mask & code.bit)) continue;
        size_t add = strlen(code.entity) - 1;
        for (char* p = strchr(text, code.c); p; p = strchr(p + add + 1, code.c)) {
            memmove(p + add + 1, p + 1, strlen(p + 1) + 1);
            memcpy(p, code.entity, add + 1);
        }
    }
    return need;
}

void DecodeEntities(char* text) {
    static const char* const kPairs[][2] = {
        {"&amp;", "&"}, {"&#038;", "&"}, {"&lt;", "<"},   {"&#060;", "<"}, {"&gt;", ">"},
        {"&#062;", ">"}, {"&apos;", "'"}, {"&#039;", "'"}, {"&quot;", "\""}, {"&#034;", "\""},
    };
    // Every entity begins with "&", and what a pass writes stands where an
    // entity stood: each pass can start at the first "&" left, and none is
    // needed once none is.
    for (const auto& pair : kPairs) {
        char* from = (char*)FindChar(text, '&');
        if (!from) return;
        ReplaceAllInPlace(from, pair[0], pair[1]);
    }
}
