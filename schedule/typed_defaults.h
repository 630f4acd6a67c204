// Settings converted to the type that the reader needs. A malformed value is never reported.
#pragma once

#include <string>

// The user's setting as a Boolean, by the rules of Foundation's `bool(forKey:)`: a number is true unless it is zero; a
// string is true if it begins with Y, y, T, t or a digit other than zero, after white space, a sign and zeros. Anything
// else is false, and so is a missing setting.
bool booleanForKey(const std::string& key);

// The user's setting as an integer, by the rules of Foundation's `integer(forKey:)`: a real number is truncated; a
// string counts as the integer that it begins with; true is 1. Anything else is 0, and so is a missing setting. A
// number outside the range of int becomes the nearest int.
int integerForKey(const std::string& key);
