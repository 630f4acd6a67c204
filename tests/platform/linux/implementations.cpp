// The implementations of Linux, for the tests of interfaces.
#include "tests/interfaces/implementations.h"

#include "platform/linux/civil_calendar.h"
#include "platform/linux/icu_collation.h"
#include "platform/linux/linux_processes.h"
#include "platform/linux/plist/property_list_codec.h"
#include "platform/linux/posix_file_system.h"
#include "platform/linux/property_list_defaults.h"

namespace {

class SettingsInAFolder : public UserDefaultsSubject {
 public:
  UserDefaults& defaults() override { return defaults_; }
  void startAnew() override { defaults_ = PropertyListDefaults(scratch_.path()); }

 private:
  ScratchFolder scratch_;
  PropertyListDefaults defaults_{scratch_.path()};
};

}  // namespace

Implementation<FileSystemSubject> nativeFileSystem() {
  return {"Posix", [] { return std::make_unique<RealFiles>(std::make_unique<PosixFileSystem>()); }};
}

Implementation<PropertyLists> nativePropertyLists() {
  return {"Codec", [] { return std::make_unique<PropertyListCodec>(); }};
}

Implementation<CalendarsSubject> nativeCalendars() {
  return {"Civil", [] { return std::make_unique<ZoneInTheEnvironment<CivilCalendars>>(); }};
}

CollationImplementation nativeCollation() {
  return {"Icu",
          {"en", "fr", "es", "cs", "ja", "he", "et", "root", "sv", "de", "fr_CA", "hr", "th", "zh"},
          [](const std::string& locale) { return std::make_unique<IcuCollation>(locale); }};
}

Implementation<UserDefaultsSubject> nativeUserDefaults() {
  return {"PropertyList", [] { return std::make_unique<SettingsInAFolder>(); }};
}

Implementation<Processes> nativeProcesses() {
  return {"Linux", [] { return std::make_unique<LinuxProcesses>(); }};
}

// That of the session layer runs on Qt's event loop, in quillery_desktop_tests.
std::vector<Implementation<MainLoopSubject>> nativeMainLoops() { return {}; }
