// Settings read with the type that the reader wants, whatever is stored under the key: nothing is ever reported.
#pragma once

#include <string>

// The user's setting as a Boolean, by the rules of Foundation's `bool(forKey:)`: a number is true unless it is zero; a
// string if it begins with Y, y, T, t or a number other than zero, after white space, a sign and zeroes; everything
// else, and nothing stored, is false.
bool booleanForKey(const std::string& key);

// The user's setting as an integer, by the rules of Foundation's `integer(forKey:)`: a real number loses its fraction;
// a string counts as the integer that it begins with; true is 1; everything else, and nothing stored, is 0. A number
// that an int cannot hold becomes the nearest one that it can.
int integerForKey(const std::string& key);
