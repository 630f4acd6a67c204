// The smallest set of entries whose move brings a list into another order.
#pragma once

#include <vector>

#include "engine/sort_order.h"

// Returns for each place of `order` whether its new entry counts as moved. The unmoved entries are a longest increasing
// subsequence: the entries that keep their relative order, so that the fewest possible are moved. Among several such
// choices it prefers entries that keep their index, then entries that end up further down. Takes O(n log n).
std::vector<bool> fewestMoves(const FolderOrder& order);
