// Changes a binary property list in its own terms: objects, references, counts and tables, rather than bytes. Most of
// what comes out is a property list again, and so gets past the first checks of a reader.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "fuzz/binary_objects.h"

// Changes bytes in their place: takes their start, how many there are and how many there may be, and answers how many
// there are then.
using ChangeBytes = std::function<std::size_t(std::uint8_t*, std::size_t, std::size_t)>;

// Makes one change, or a few, which one by `seed`; `changeBytes` changes what strings, data and numbers hold. There is
// at least one object.
void mutate(BinaryObjects& objects, unsigned seed, const ChangeBytes& changeBytes);

// Puts the objects of two files together: those of `other` come last, and its top object gets into a container of the
// first or takes the place of one of its objects.
void graft(BinaryObjects& objects, const BinaryObjects& other, unsigned seed);

// Makes a file that claims something untrue: about where an object is, how large it is, or what the trailer says.
// Three times in four, by `seed`, it stays as it is.
void tamper(std::string& file, unsigned seed);
