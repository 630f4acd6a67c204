#include "app/login_agent.h"

#include <optional>
#include <string>
#include <vector>

#include "engine/sorter_error.h"
#include "platform/platform.h"
#include "platform/product.h"

namespace {

constexpr const char* launchctl = "/bin/launchctl";

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

Error loadingFailed() {
  return sorterError(SorterError::agentNotLoaded,
                     "Could not enable automatic sorting. Please reopen the installed app.");
}

}  // namespace

void registerBackgroundJob() {
  FileSystem& files = platform().fileSystem;
  files.createFolder(agentsFolder(), defaultAttributes);
  files.createFolder(logFolder(), defaultAttributes);
  const PlistValue wanted = wantedAgent();
  if (storedAgent() == wanted && launch({"print", serviceTarget()}) == 0) return;
  launch({"bootout", serviceTarget()});  // fails if nothing was loaded, which is fine
  files.writeAtomically(agentFile(), platform().propertyLists.serialize(wanted, PropertyListFormat::xml));
  if (launch({"bootstrap", domain(), agentFile()}) != 0) throw loadingFailed();
}
