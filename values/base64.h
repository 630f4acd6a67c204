// Base64 in the XML format of property lists: lines of text with white space anywhere.
#pragma once

#include <string>
#include <string_view>

// Returns true if `text`, white space aside, stays the same when it is decoded and encoded again: it has whole groups
// of four characters, padding only at the end, and no bits left over.
bool isCanonicalBase64(std::string_view text);

// Returns the bytes of a text that need not be canonical, decoded as the platform's reader does: it skips characters
// outside the alphabet and drops an incomplete group at the end.
std::string decodeBase64(std::string_view text);

// Returns canonical text without line breaks.
std::string encodeBase64(std::string_view bytes);
