// Fetching by HTTP, and saving pages as HTML or as plain text.
#pragma once

#include <windows.h>

#include <string>

enum {
    SAVE_HTML = 1,
    SAVE_HTML_AND_FILES = 2,
    SAVE_TEXT = 3,
};

// Fetches `url` into `outFile` (appended) and/or `outBuffer` (zero-ended,
// cut at its size); the total number of bytes received, 0 on failure with the
// reason in StepFailureText. `progressWindow` (optional) shows the count.
long FetchUrl(const char* url, const char* outFile, char* outBuffer, long outBufferSize, HWND progressWindow);
// The address as it goes to the server: in an http or https address the
// path and query's characters beyond ASCII become their UTF-8 bytes
// percent-encoded ("Zürich" is "Z%C3%BCrich"), as browsers send them, and a
// host named beyond ASCII goes in its IDNA form ("xn--..."); an ASCII address
// and any other scheme stay as given.
std::string WireUrl(const char* url);
// Saves a page by `mode`; the byte count, 0 on failure.
long SavePage(const char* url, const char* outFile, int mode);
// The readable text of an HTML page, as "Save Web Page Text" keeps it;
// `length` gets the count of bytes to write (see the note in the source).
std::string PageText(const std::string& page, size_t* length);
