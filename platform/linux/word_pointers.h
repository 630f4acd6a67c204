// Words as the system takes those of a command.
#pragma once

#include <string>
#include <vector>

// Pointers to the words, and a null one behind them; they hold for as long as the words are not changed.
inline std::vector<char*> pointersTo(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return pointers;
}
