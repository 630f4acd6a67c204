// Arguments in the form that exec functions take.
#pragma once

#include <string>
#include <vector>

// Returns pointers to the words and a terminating null pointer. They are valid until `words` changes.
inline std::vector<char*> pointersTo(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return pointers;
}
