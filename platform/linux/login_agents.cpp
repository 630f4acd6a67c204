#include "platform/linux/login_agents.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "platform/linux/detached_process.h"
#include "platform/linux/event_log.h"
#include "platform/linux/plist/property_list_codec.h"
#include "platform/linux/posix_file_system.h"
#include "platform/linux/word_pointers.h"
#include "platform/product.h"
#include "values/harmless_text.h"
#include "values/log_line.h"
#include "values/plist_text.h"
#include "values/plist_value.h"

namespace {

constexpr int logMode = 0644;

struct Agent {
  std::string label;
  std::vector<std::string> arguments;  // the first is the program's path
  std::optional<std::string> output;
  std::optional<std::string> errors;
  bool runsAtLoad = false;
};

std::optional<std::string> textAt(const PlistValue& agent, const PlistKey& key) {
  const std::optional<PlistValue> value = agent.value(key);
  if (!value || !value->is(PlistKind::string)) return std::nullopt;
  return utf8(value->string()->utf16());
}

std::vector<std::string> argumentsOf(const PlistValue& agent) {
  std::vector<std::string> arguments;
  const std::optional<PlistValue> list = agent.value(u"ProgramArguments");
  for (std::size_t index = 0; list && index < list->size(); ++index) {
    const std::optional<PlistText> text = list->is(PlistKind::array) ? list->stringAt(index) : std::nullopt;
    if (!text) throw std::runtime_error("its ProgramArguments are not an array of strings");
    arguments.push_back(utf8(text->utf16()));
  }
  if (arguments.empty()) throw std::runtime_error("it has no ProgramArguments");
  return arguments;
}

// Returns true if a label can be used as a file name and as a line of a desktop entry.
bool isLabel(std::string_view label) {
  return !label.empty() && label.front() != '.' && label.find('/') == std::string_view::npos &&
         harmlessLine(label) == label;
}

// Returns true if a desktop entry can represent a path: of the control characters, it has escapes for only three.
bool canBeInAnEntry(std::string path) {
  std::erase_if(path, [](char character) { return character == '\n' || character == '\r' || character == '\t'; });
  return std::ranges::none_of(utf16(path), [](char16_t unit) { return unit < 0x20 || (unit >= 0x7F && unit < 0xA0); });
}

Agent read(const std::string& propertyList) {
  const PlistValue stored = PropertyListCodec().parse(PosixFileSystem().read(propertyList)).value;
  Agent agent;
  agent.label = textAt(stored, u"Label").value_or("");
  if (!isLabel(agent.label)) throw std::runtime_error("it has no valid Label");
  agent.arguments = argumentsOf(stored);
  agent.output = textAt(stored, u"StandardOutPath");
  agent.errors = textAt(stored, u"StandardErrorPath");
  const std::optional<PlistValue> runsAtLoad = stored.value(u"RunAtLoad");
  agent.runsAtLoad = runsAtLoad && runsAtLoad->boolean().value_or(false);
  return agent;
}

// Prints an error and returns the status for it.
AgentStatus complain(const std::string& propertyList, const std::string& reason) {
  logLine(std::cerr, "quillery-launchctl: " + harmlessLine(propertyList) + ": " + reason);
  return AgentStatus::failed;
}

std::string ownDomain() { return "gui/" + std::to_string(getuid()); }

// Returns the label in a service target; absent if the target is not in the user's own session.
std::optional<std::string> labelIn(const std::string& serviceTarget) {
  const std::string prefix = ownDomain() + "/";
  if (!serviceTarget.starts_with(prefix)) return std::nullopt;
  return serviceTarget.substr(prefix.size());
}

// Escapes a character of a quoted argument in an Exec line: first for the quotes and field codes of the Exec line, then
// for the string syntax of desktop entries, which has no line breaks.
std::string escaped(char character) {
  switch (character) {
    case '%': return "%%";
    case '"':
    case '`':
    case '$': return std::string(R"(\\)") + character;
    case '\\': return R"(\\\\)";
    case '\n': return R"(\n)";
    case '\r': return R"(\r)";
    case '\t': return R"(\t)";
    default: return {character};
  }
}

std::string quoted(const std::string& argument) {
  std::string text = "\"";
  for (const char character : argument) text += escaped(character);
  return text + '"';
}

// Escapes a path as a value of a desktop entry.
std::string entryValue(const std::string& path) {
  std::string text;
  for (const char character : path) {
    if (character == '\n' || character == '\r' || character == '\t')
      text += escaped(character);
    else
      text += character == '\\' ? R"(\\)" : std::string(1, character);
  }
  return text;
}

// The icon of an application is named after its identifier. Without the program, the entry has no effect.
std::string autostartEntry(const Agent& agent, const std::string& runner, const std::string& propertyList) {
  return "[Desktop Entry]\nType=Application\nName=" + std::string(product::name) +
         "\nComment=Keeps Safari bookmarks in order, folders first\nIcon=" + agent.label + "\nExec=" + quoted(runner) +
         " run " + quoted(propertyList) + "\nTryExec=" + entryValue(agent.arguments.front()) +
         "\nX-GNOME-Autostart-enabled=true\n";
}

// Redirects a standard stream to the end of a file, or to /dev/null if there is no path or the file cannot be opened. A
// pipe cannot be opened while nobody reads it; otherwise a text that does not fit into it is lost. Waiting for a reader
// could take for ever.
void redirect(int stream, const std::optional<std::string>& path) {
  int file =
      path ? open(path->c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, logMode) : -1;
  if (file < 0) file = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(file, stream);
}

}  // namespace

LoginAgents::LoginAgents(std::string configurationFolder, std::string runner)
    : configurationFolder_(std::move(configurationFolder)), runner_(std::move(runner)) {}

std::string LoginAgents::entryPath(const std::string& label) const {
  return configurationFolder_ + "/autostart/" + label + ".desktop";
}

AgentStatus LoginAgents::bootstrap(const std::string& domain, const std::string& propertyList) {
  if (domain != ownDomain()) return AgentStatus::wrongDomain;
  try {
    load(std::filesystem::absolute(propertyList).string());
    return AgentStatus::done;
  } catch (const Error& error) {
    return complain(propertyList, error.description());
  } catch (const std::exception& error) {
    return complain(propertyList, error.what());
  }
}

void LoginAgents::load(const std::string& propertyList) const {
  const Agent agent = read(propertyList);
  const std::string entry = entryPath(agent.label);
  if (std::filesystem::exists(entry)) throw std::runtime_error("it is already loaded");
  if (!canBeInAnEntry(runner_) || !canBeInAnEntry(propertyList) || !canBeInAnEntry(agent.arguments.front()))
    throw std::runtime_error("a path with control characters can’t be loaded");
  PosixFileSystem files;
  files.createFolder(configurationFolder_ + "/autostart", defaultAttributes);
  files.writeAtomically(entry, Bytes(autostartEntry(agent, runner_, propertyList)));
  if (agent.runsAtLoad) startDetached({runner_, "run", propertyList}, "");
}

AgentStatus LoginAgents::print(const std::string& serviceTarget) const {
  const auto label = labelIn(serviceTarget);
  const bool isLoaded = label && isLabel(*label) && std::filesystem::exists(entryPath(*label));
  return isLoaded ? AgentStatus::done : AgentStatus::notFound;
}

AgentStatus LoginAgents::bootout(const std::string& serviceTarget) {
  const auto label = labelIn(serviceTarget);
  std::error_code problem;
  const bool wasLoaded = label && isLabel(*label) && std::filesystem::remove(entryPath(*label), problem);
  return wasLoaded ? AgentStatus::done : AgentStatus::notLoaded;
}

AgentStatus LoginAgents::run(const std::string& propertyList) {
  try {
    Agent agent = read(propertyList);
    const std::vector<char*> arguments = pointersTo(agent.arguments);
    redirect(STDOUT_FILENO, agent.output);
    redirect(STDERR_FILENO, agent.errors);
    setenv(logVariable, "1", 1);
    execv(arguments.front(), arguments.data());
    return complain(propertyList, "its program couldn’t be run: " + std::generic_category().message(errno));
  } catch (const Error& error) {
    return complain(propertyList, error.description());
  } catch (const std::exception& error) {
    return complain(propertyList, error.what());
  }
}
