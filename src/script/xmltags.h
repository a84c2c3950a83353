// The primitives of the script reader: a tolerant search for tags in text,
// comment removal and the entity coding. No XML library: unknown tags are
// ignored and order does not matter, which is what lets older files open.
#pragma once

#include <stddef.h>

// Looks up `tag` (as "<action>") in `xml`, case-insensitively. With a negative
// `limit` returns the content's length plus 1 and stores nothing; otherwise
// copies at most `limit` characters to `dest` (its own buffer when null),
// decodes entities, and returns ParseInt of the raw content. Up to four
// attributes are read into buffers of 260 bytes. 0 when the tag is absent.
int ReadTag(const char* xml, const char* tag, char* dest, int limit,
            const char* const attributeNames[4] = nullptr, char* const attributeDests[4] = nullptr);
// ReadTag with the opening tag already looked up: `start` is where
// FindNoCase finds the opening form ("<action", without its ">") in the text,
// or null when it is not there.
int ReadTagAt(const char* start, const char* tag, char* dest, int limit,
              const char* const attributeNames[4] = nullptr, char* const attributeDests[4] = nullptr);
// Looks up several tags ("<action>", each beginning with "<") in one walk
// over the text: found[i] is where ReadTag would find tags[i] opening (its
// "<" with no ">" compared, since attributes may follow), or null.
void FindTags(const char* xml, const char* const* tags, int count, const char** found);
// Removes every "<!-- ... -->" in place; an unterminated comment takes the rest.
void StripComments(char* text, size_t length);
// Encodes & < > (mask bits 1, 2, 4) in place when the result fits in
// `bufferSize`; otherwise changes nothing. Returns the length needed.
int EncodeEntities(char* text, int bufferSize, int mask);
// Decodes the five entities and their numeric forms in place.
void DecodeEntities(char* text);
