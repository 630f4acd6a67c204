// The sorting suite of the self-test: the order on a small built-in tree.
#pragma once

#include <functional>
#include <string_view>

#include "values/plist_value.h"

// A bookmark with the given title, for fixtures. The title is its identifier too.
PlistValue leaf(std::u16string_view name);

using SortFunction = std::function<PlistValue(const PlistValue& node, bool root)>;

// Checks the program's own sort function, or the given one. A check that fails ends the process by a signal and prints
// nothing.
void runSortingSuite();
void runSortingSuite(const SortFunction& sort);
