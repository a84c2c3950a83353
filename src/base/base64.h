// Base64, both ways: mail's encoded words and bodies, and the pictures a
// run report embeds in itself.
#pragma once

#include <string>

// The Base64 of a block, padded with "=".
std::string Base64(const std::string& bytes);
// The bytes of a Base64 text; characters outside the alphabet (line ends,
// padding) are passed over.
std::string FromBase64(const std::string& text);
