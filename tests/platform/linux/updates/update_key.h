// A key made for tests, and what it signs.
#pragma once

#include <string>

// The public half, in base64.
std::string testPublicKey();

// Returns the signature of the bytes, in base64.
std::string signedByTestKey(const std::string& bytes);
