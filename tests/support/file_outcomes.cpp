#include "tests/support/file_outcomes.h"

#include "platform/error.h"

std::string outcomeOf(const std::function<void()>& operation) {
  try {
    operation();
    return "done";
  } catch (const Error& error) {
    return error.domain() + " " + std::to_string(error.code()) + ": " + error.description();
  }
}

std::string sentence(int code, const std::string& failed, const std::string& words, const std::string& path) {
  return "POSIX " + std::to_string(code) + ": " + failed + ": " + words + " (" + path + ").";
}

std::string patterned(std::size_t size) {
  std::string text(size, '\0');
  for (std::size_t index = 0; index < size; ++index) text[index] = static_cast<char>(index * 7 + index / 251);
  return text;
}
