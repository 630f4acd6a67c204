// Mutates the structure of a binary property list: objects, references, counts and tables. Unlike files with random
// bytes, most of the results are property lists again, so they pass the first checks of a reader.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "fuzz/binary_objects.h"

// Changes bytes in place. Takes their start, their count and the capacity; returns the new count.
using ChangeBytes = std::function<std::size_t(std::uint8_t*, std::size_t, std::size_t)>;

// Makes one to three changes, selected by `seed`. `changeBytes` changes the content of strings, data and numbers. There
// must be at least one object.
void mutate(BinaryObjects& objects, unsigned seed, const ChangeBytes& changeBytes);

// Appends the objects of another file and inserts its top object into a container of the first file. If the first file
// has no container, that object becomes the top object.
void graft(BinaryObjects& objects, const BinaryObjects& other, unsigned seed);

// Makes a file inconsistent: changes an offset, the size of an object, or the trailer. For three of four values of
// `seed` the file stays as it is.
void tamper(std::string& file, unsigned seed);
