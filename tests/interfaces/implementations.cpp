#include "tests/interfaces/implementations.h"

#include "tests/support/foundation_like_property_lists.h"
#include "tests/support/virtual_machine.h"

namespace {

// What parts of a virtual machine need, for a part without the machine.
struct Surroundings {
  Journal journal;
  VirtualMainLoop loop{journal};
};

class LonePropertyLists : Surroundings, public VirtualPropertyLists {
 public:
  LonePropertyLists() : VirtualPropertyLists(journal) {}
};

class LoneProcesses : Surroundings, public VirtualProcesses {
 public:
  LoneProcesses() : VirtualProcesses(journal, loop) {}
};

class VirtualFiles : public FileSystemSubject {
 public:
  VirtualFiles() { files_.createFolder(folder(), 0755); }

  FileSystem& files() override { return files_; }
  std::string folder() const override { return "/home/user/test"; }
  void put(const std::string& path, const std::string& content, unsigned mode) override {
    files_.put(path, content, mode);
  }
  void remove(const std::string& path) override { files_.remove(path); }
  std::string content(const std::string& path) const override { return files_.content(path); }
  unsigned mode(const std::string& path) const override { return files_.mode(path); }
  std::vector<std::string> names() const override {
    std::vector<std::string> names;
    const std::string start = folder() + "/";
    for (const auto& [path, file] : files_.files())
      if (path.starts_with(start) && path.find('/', start.size()) == path.npos)
        names.push_back(path.substr(start.size()));
    return names;
  }

 private:
  Journal journal_;
  VirtualFileSystem files_{journal_};
};

class VirtualZone : public CalendarsSubject {
 public:
  Calendars& calendars() override { return calendars_; }
  void moveTo(const std::string& zone) override { calendars_.moveTo(zone); }

 private:
  VirtualCalendars calendars_;
};

// The machine keeps its settings when the program starts anew.
class VirtualSettings : public UserDefaultsSubject {
 public:
  UserDefaults& defaults() override { return defaults_; }
  void startAnew() override {}

 private:
  Journal journal_;
  VirtualUserDefaults defaults_{journal_};
};

// Time passes only while the loop runs or the thread is busy.
class VirtualTime : public MainLoopSubject {
 public:
  MainLoop& loop() override { return loop_; }
  bool runUntil(const std::function<bool()>& condition) override {
    for (int turn = 0; turn < 100'000; ++turn) {
      if (condition()) return true;
      loop_.advance(std::chrono::milliseconds(1));
    }
    return false;
  }
  void beBusyFor(std::chrono::milliseconds span) override { loop_.occupy(span); }

 private:
  Journal journal_;
  VirtualMainLoop loop_{journal_};
};

}  // namespace

std::vector<Implementation<FileSystemSubject>> fileSystems() {
  return {nativeFileSystem(), {"Virtual", [] { return std::make_unique<VirtualFiles>(); }}};
}

std::vector<Implementation<PropertyLists>> propertyLists() {
  return {
      nativePropertyLists(),
      {"FoundationLike", [] { return std::make_unique<FoundationLikePropertyLists>(nativePropertyLists().make()); }},
      {"Virtual", [] { return std::make_unique<LonePropertyLists>(); }}};
}

std::vector<Implementation<CalendarsSubject>> calendars() {
  return {nativeCalendars(), {"Virtual", [] { return std::make_unique<VirtualZone>(); }}};
}

std::vector<CollationImplementation> collations() {
  return {nativeCollation(), {"Virtual", {"en"}, [](const auto&) { return std::make_unique<EnglishCollation>(); }}};
}

std::vector<Implementation<UserDefaultsSubject>> userDefaults() {
  return {nativeUserDefaults(), {"Virtual", [] { return std::make_unique<VirtualSettings>(); }}};
}

std::vector<Implementation<Processes>> processes() {
  return {nativeProcesses(), {"Virtual", [] { return std::make_unique<LoneProcesses>(); }}};
}

std::vector<Implementation<MainLoopSubject>> mainLoops() {
  std::vector<Implementation<MainLoopSubject>> all = nativeMainLoops();
  all.push_back({"Virtual", [] { return std::make_unique<VirtualTime>(); }});
  return all;
}
