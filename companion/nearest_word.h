// What a mistyped word may have meant.
#pragma once

#include <optional>
#include <span>
#include <string_view>

// Returns the word that differs least from `typed`: by at most two inserted, missing, wrong or swapped letters, and by
// fewer than it has. Absent if there is none.
std::optional<std::string_view> nearestWord(std::string_view typed, std::span<const std::string_view> words);
