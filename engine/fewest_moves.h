// Which entries of a list have to be moved to bring it into another order.
#pragma once

#include <vector>

#include "engine/sort_order.h"

// For each place of `order` whether the entry that goes there counts as moved: the fewest entries that have to be taken
// out and put in elsewhere, while the others keep their order among each other. Where different entries would do, those
// whose place does not change stay, and else those that end up further down. Takes n log n steps for n places.
std::vector<bool> fewestMoves(const FolderOrder& order);
