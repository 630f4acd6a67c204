#include "app/login_agent.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "engine/sorter_error.h"
#include "platform/platform.h"
#include "platform/product.h"

namespace {

using std::chrono::milliseconds;

constexpr const char* launchctl = "/bin/launchctl";

// How long an unloaded job may take to disappear, and how often that is checked.
constexpr milliseconds unloadLimit{5000};
constexpr milliseconds unloadPollInterval{100};

// How often loading is tried, and how long the program waits in between.
constexpr int loadAttempts = 3;
constexpr milliseconds loadRetryDelay{2000};

std::string identifier() { return std::string(product::bundleIdentifier); }

std::string agentsFolder() { return platform().fileSystem.homeFolder() + "/Library/LaunchAgents"; }
std::string logFolder() { return platform().fileSystem.homeFolder() + "/Library/Logs/" + std::string(product::maker); }
std::string agentFile() { return agentsFolder() + "/" + identifier() + ".plist"; }

// The user's graphical login session, and the job in it.
std::string domain() { return "gui/" + std::to_string(platform().processes.userIdentifier()); }
std::string serviceTarget() { return domain() + "/" + identifier(); }

PlistValue text(const std::string& utf8Text) { return utf16(utf8Text); }

PlistValue wantedAgent() {
  const PlistValue label = text(identifier());
  return PlistValue::dictionary({
      {u"AssociatedBundleIdentifiers", PlistValue::array({label})},
      {u"Label", label},
      {u"ProgramArguments", PlistValue::array({text(platform().bundle.executablePath()), u"--login"})},
      {u"RunAtLoad", true},
      {u"StandardErrorPath", text(logFolder() + "/quillery-errors.log")},
      {u"StandardOutPath", text(logFolder() + "/quillery.log")},
  });
}

int launch(const std::vector<std::string>& arguments) { return platform().processes.run(launchctl, arguments); }

// The stored agent; none if the file is missing or malformed.
std::optional<PlistValue> storedAgent() {
  try {
    return platform().propertyLists.parse(platform().fileSystem.read(agentFile())).value;
  } catch (const Error&) {
    return std::nullopt;
  }
}

bool isLoaded() { return launch({"print", serviceTarget()}) == 0; }

// Returns true if launchd started this process as the agent's job. To unload the job would end this process.
bool isTheJob() { return platform().processes.environmentVariable("XPC_SERVICE_NAME") == identifier(); }

// bootout returns before the job is gone, and until then launchd refuses to load another job of that label.
void unload() {
  launch({"bootout", serviceTarget()});  // fails if nothing was loaded, which is fine
  milliseconds waited{0};
  while (waited < unloadLimit && isLoaded()) {
    platform().processes.pause(unloadPollInterval);
    waited += unloadPollInterval;
  }
}

Error loadingFailed() {
  return sorterError(SorterError::agentNotLoaded,
                     "Could not enable automatic sorting. Please reopen the installed app.");
}

// launchd may refuse a job for some seconds after it has unloaded one of the same label. It also refuses a job that the
// user has switched off, which is the user's choice and no error.
void load() {
  for (int attempt = 1; launch({"bootstrap", domain(), agentFile()}) != 0; ++attempt) {
    if (desktop().workspace.hasSwitchedOff(agentFile())) return;
    if (attempt == loadAttempts) throw loadingFailed();
    platform().processes.pause(loadRetryDelay);
  }
}

}  // namespace

void registerBackgroundJob() {
  FileSystem& files = platform().fileSystem;
  files.createFolder(agentsFolder(), defaultAttributes);
  files.createFolder(logFolder(), defaultAttributes);
  const PlistValue wanted = wantedAgent();
  if (storedAgent() == wanted && isLoaded()) return;
  const bool reloads = !isTheJob();  // otherwise the next login loads the new file
  if (reloads) unload();
  files.writeAtomically(agentFile(), platform().propertyLists.serialize(wanted, PropertyListFormat::xml));
  if (reloads) load();
}
