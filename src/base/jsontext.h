// JSON and XML text for the files a scheduler or a CI server reads: texts
// escaped so that every byte a script or a window gave comes out as a valid
// document, and the one JSON shape the program reads, a flat object.
#pragma once

#include <stddef.h>

#include <string>
#include <vector>

// Valid UTF-8 of any text: a byte that is no part of a UTF-8 sequence is
// taken as the legacy code page's character of that value (Latin-1).
std::string AsUtf8(const char* text, size_t length);
inline std::string AsUtf8(const std::string& text) { return AsUtf8(text.data(), text.size()); }

// Appends `text` as a JSON string, quotes included: '"', '\' and every
// control character escaped, the rest as UTF-8.
void AppendJsonString(std::string& out, const std::string& text);
// Appends `text` escaped for XML or HTML content and attributes. A control
// character that XML 1.0 does not allow (all below 0x20 but tab, line feed
// and carriage return) becomes "?": the document must stay readable.
void AppendXmlText(std::string& out, const std::string& text);

enum JsonValueKind { JSON_TEXT, JSON_NUMBER, JSON_BOOLEAN, JSON_NULL };
struct JsonField {
    std::string name;
    std::string value;  // a text as UTF-8; a number as written; "1" or "0"; "" for null
    JsonValueKind kind;
};
// Reads a JSON object whose values are texts, numbers, booleans or null. A
// nested object or array, or anything that is no JSON, is refused: false,
// with `error` as "line L, column C: <what is wrong>".
bool ReadFlatJsonObject(const std::string& text, std::vector<JsonField>& fields, std::string& error);
