// The text workhorses of translation and of the text functions.
#pragma once

#include <stddef.h>

#include <string>

// The longest text a function may build, a translation yield or a variable
// hold: 64 MiB. A text that would grow past it is not built; the flag below
// is raised instead, and the run core fails the step with TextCeilingText.
enum : size_t { TEXT_CEILING = 64u << 20 };
extern volatile bool TextCeilingHit;
extern const char* const TextCeilingText;
// Raised when a stop of the run cut a translation short: the step got an
// empty text that is not what the script said, so nothing of it is saved.
extern volatile bool TranslationCut;

// Replaces occurrences of `find`: nth 0 all, a positive nth only that one,
// -1 only the last; exactCase 0 matches in any case. In place: the caller
// makes sure of the room. Returns the number of replacements.
int ReplaceText(char* text, const char* find, const char* replacement, int nth, int exactCase);
// The same on a growing string.
int ReplaceInString(std::string& text, const char* find, const char* replacement, int nth, int exactCase);
// Counts non-overlapping occurrences in any case.
int CountText(const char* text, const char* find);
// Inserts at a zero-based position, padding with blanks up to it first. A
// result past TEXT_CEILING is not built: the text stays, the flag is raised.
void InsertAt(std::string& text, int position, const char* insertion);
// mode 0 cuts at the first marker (any case); 1 and 2 strip the marker
// repeatedly from the start or the end; 4 drops the first, 5 the last character.
void CutText(std::string& text, const char* marker, int mode);
// The field at a zero-based index; with `quoted`, doubled quotes protect
// themselves during the split. Returns 1 when the field exists.
int GetItem(const char* text, const char* separator, int index, char* dest, int destSize, int exactCase, int quoted);
// The index-th argument (from 1) of a call text such as 'Name( a, "b c", 3 )';
// returns ParseInt of it.
int GetCallArgument(const char* call, int index, char* dest, int destSize);
// Shifts every character by `by`: a password is kept in a step shifted by 3,
// and read back with -3.
void ShiftLetters(std::string& text, int by);
