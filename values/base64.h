// Base64 as the XML format of property lists holds it: lines of text with white space anywhere.
#pragma once

#include <string>
#include <string_view>

// Whether a text is whole groups of four of the alphabet between white space, padded only at the end and with no
// bits left over: what stays the same when it is decoded and encoded again.
bool isCanonicalBase64(std::string_view text);

// The bytes of a text that need not be canonical, as the platform's reader takes them: characters outside the
// alphabet are skipped, an incomplete group at the end is dropped.
std::string decodeBase64(std::string_view text);

// Canonical text without line breaks.
std::string encodeBase64(std::string_view bytes);
