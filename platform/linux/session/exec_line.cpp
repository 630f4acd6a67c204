#include "platform/linux/session/exec_line.h"

#include <string_view>
#include <utility>

namespace {

// Codes for files, and deprecated codes, which expand to nothing.
constexpr std::string_view codesForFiles = "fFuU";
constexpr std::string_view deprecatedCodes = "dDnNvm";
constexpr std::string_view escapedInQuotes = "\"`$\\";

bool contains(std::string_view characters, char character) {
  return characters.find(character) != std::string_view::npos;
}

// Returns the line's arguments without their quotes; absent if a quote is not closed.
std::optional<std::vector<std::string>> argumentsOf(const std::string& line) {
  std::vector<std::string> arguments;
  std::optional<std::string> argument;  // absent between arguments
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

// Returns the expansion of a field code; absent if the code is not valid.
std::optional<std::string> expansion(char code, const DesktopEntry& entry, const std::string& location) {
  if (code == '%') return "%";
  if (code == 'c') return entry.localizedText("Name").value_or("");
  if (code == 'k') return location;
  if (code == 'i') return entry.localizedText("Icon").value_or("");
  if (contains(codesForFiles, code) || contains(deprecatedCodes, code)) return "";
  return std::nullopt;
}

// Returns the argument with its field codes expanded; absent if a code is not valid.
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
    if (text->empty() && !argument.empty()) continue;  // only codes that expand to nothing
    if (argument == "%i") command.emplace_back("--icon");
    command.push_back(*text);
  }
  if (command.empty()) return std::nullopt;
  return command;
}
