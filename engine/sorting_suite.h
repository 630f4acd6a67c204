// The sorting half of the self-test: the order on a small built-in tree.
#pragma once

#include <functional>
#include <string_view>

#include "values/plist_value.h"

// A bookmark with the given title, for fixtures; the title doubles as its identifier.
PlistValue leaf(std::u16string_view name);

using SortFunction = std::function<PlistValue(const PlistValue& node, bool root)>;

// Checks a sort function, the program's own unless told otherwise. A check that fails ends the process by a
// signal, with nothing printed.
void runSortingSuite();
void runSortingSuite(const SortFunction& sort);
