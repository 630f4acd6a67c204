#include "platform/linux/session/exec_line.h"

#include <string_view>
#include <utility>

namespace {

// Codes for files, and those that are no longer used and mean nothing.
constexpr std::string_view codesForFiles = "fFuU";
constexpr std::string_view formerCodes = "dDnNvm";
constexpr std::string_view escapedInQuotes = "\"`$\\";

bool contains(std::string_view characters, char character) {
  return characters.find(character) != std::string_view::npos;
}

// The line's arguments without their quotes; absent if a quote is not closed.
std::optional<std::vector<std::string>> argumentsOf(const std::string& line) {
  std::vector<std::string> arguments;
  std::optional<std::string> argument;  // absent between two of them
  bool isQuoted = false;
  for (std::size_t index = 0; index < line.size(); ++index) {
    const char character = line[index];
    const bool isPair = isQuoted && character == '\\' && index + 1 < line.size();
    if (character == ' ' && !isQuoted) {
      if (argument) arguments.push_back(*std::exchange(argument, std::nullopt));
      continue;
    }
    if (!argument) argument.emplace();
    if (isPair && contains(escapedInQuotes, line[index + 1]))
      *argument += line[++index];
    else if (character == '"')
      isQuoted = !isQuoted;
    else
      *argument += character;
  }
  if (argument) arguments.push_back(*argument);
  if (isQuoted) return std::nullopt;
  return arguments;
}

// What a field code stands for; absent if there is none such.
std::optional<std::string> expansion(char code, const DesktopEntry& entry, const std::string& location) {
  if (code == '%') return "%";
  if (code == 'c') return entry.localizedText("Name").value_or("");
  if (code == 'k') return location;
  if (code == 'i') return entry.localizedText("Icon").value_or("");
  if (contains(codesForFiles, code) || contains(formerCodes, code)) return "";
  return std::nullopt;
}

// An argument with its field codes expanded; absent if one of them is not valid.
std::optional<std::string> expanded(const std::string& argument, const DesktopEntry& entry,
                                    const std::string& location) {
  std::string text;
  for (std::size_t index = 0; index < argument.size(); ++index) {
    if (argument[index] != '%') {
      text += argument[index];
      continue;
    }
    if (++index == argument.size()) return std::nullopt;
    const auto meant = expansion(argument[index], entry, location);
    if (!meant) return std::nullopt;
    text += *meant;
  }
  return text;
}

}  // namespace

std::optional<std::vector<std::string>> commandOf(const DesktopEntry& entry, const std::string& location) {
  const auto arguments = argumentsOf(entry.text("Exec").value_or(""));
  if (!arguments) return std::nullopt;
  std::vector<std::string> command;
  for (const std::string& argument : *arguments) {
    const auto text = expanded(argument, entry, location);
    if (!text) return std::nullopt;
    if (text->empty() && !argument.empty()) continue;  // nothing but codes that stand for nothing
    if (argument == "%i") command.emplace_back("--icon");
    command.push_back(*text);
  }
  if (command.empty()) return std::nullopt;
  return command;
}
