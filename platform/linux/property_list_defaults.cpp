#include "platform/linux/property_list_defaults.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "platform/posix/durable_files.h"
#include "platform/posix/file_attributes.h"
#include "platform/posix/file_descriptor.h"
#include "platform/product.h"
#include "values/log_line.h"

namespace {

constexpr unsigned folderMode = 0700;
constexpr unsigned fileMode = 0600;

Error lockFailure(const std::string& path) {
  return {"POSIX", errno,
          "The settings couldn’t be locked: " + std::generic_category().message(errno) + " (" + path + ")."};
}

// Holds the exclusive lock on the settings during its lifetime. The lock file is never removed: otherwise a process
// that waits for the lock of the removed file and a process that creates a new file would both continue.
class SettingsLock {
 public:
  explicit SettingsLock(const std::string& path)
      : file_(uninterrupted([&] { return open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, fileMode); })) {
    if (!file_.isOpen()) throw lockFailure(path);
    if (giveToOwnerOf(parentOf(path), file_) != 0) throw lockFailure(path);
    if (uninterrupted([&] { return flock(file_.get(), LOCK_EX); }) != 0) throw lockFailure(path);
  }

  // Closing the file does not release the lock if a process forked meanwhile still has the file open.
  ~SettingsLock() { flock(file_.get(), LOCK_UN); }
  SettingsLock(const SettingsLock&) = delete;
  SettingsLock& operator=(const SettingsLock&) = delete;

 private:
  FileDescriptor file_;
};

std::optional<PlistValue> entry(const std::optional<PlistValue>& root, const std::string& key) {
  const std::u16string units = utf16(key);
  return root ? root->value(PlistKey(units)) : std::nullopt;
}

// Returns the dictionary with one entry changed, or appended if it is new.
PlistValue withEntry(const std::optional<PlistValue>& root, const std::string& key, const PlistValue& value) {
  const std::u16string units = utf16(key);
  if (!root) return PlistValue::dictionary({{units, value}});
  if (const std::optional<std::size_t> index = root->indexOf(PlistKey(units))) return root->replacing(*index, value);
  std::vector<PlistEntry> entries;
  entries.reserve(root->size() + 1);
  for (std::size_t index = 0; index < root->size(); ++index)
    entries.push_back({root->keyAt(index).utf16(), root->valueAt(index)});
  entries.push_back({units, value});
  return PlistValue::dictionary(std::move(entries));
}

}  // namespace

std::string configurationFolder() {
  const char* configured = std::getenv("XDG_CONFIG_HOME");
  if (configured != nullptr && configured[0] == '/') return configured;
  try {
    return PosixFileSystem().homeFolder() + "/.config";
  } catch (const Error&) {
    return {};
  }
}

PropertyListDefaults::PropertyListDefaults(const std::string& folder)
    : folder_(folder), path_(folder + "/" + std::string(product::bundleIdentifier) + ".plist") {}

std::optional<PlistValue> PropertyListDefaults::object(const std::string& key) {
  if (folder_.empty()) return std::nullopt;
  try {
    return entry(read().root, key);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

void PropertyListDefaults::set(const std::string& key, const PlistValue& value) {
  try {
    if (folder_.empty())
      throw Error("POSIX", ENOENT, "The settings couldn’t be saved because there is no home folder.");
    store(key, value);
  } catch (const std::exception& error) {
    logLine(std::cerr, std::string(product::name) + ": " + error.what());
  }
}

PropertyListDefaults::Stored PropertyListDefaults::read() {
  Stored stored;
  try {
    stored.bytes = files_.read(path_);
  } catch (const Error& error) {
    if (error.code() == ENOENT) return stored;
    throw;  // the file exists, and `set` must not replace it unread
  }
  try {
    PlistValue root = codec_.parse(stored.bytes).value;
    if (root.is(PlistKind::dictionary)) stored.root = std::move(root);
  } catch (const Error&) {
    return stored;
  }
  return stored;
}

void PropertyListDefaults::store(const std::string& key, const PlistValue& value) {
  if (entry(read().root, key) == value) return;  // needs neither the lock nor permission to write
  files_.createFolder(folder_, folderMode);
  const SettingsLock lock(path_ + ".lock");
  const Stored stored = read();
  const Bytes bytes = codec_.serialize(withEntry(stored.root, key, value), PropertyListFormat::xml);
  if (bytes == stored.bytes) return;  // such as a date that differs by less than a second
  if (!stored.root && !stored.bytes.empty()) saveDamaged(stored.bytes);
  files_.writeAtomically(path_, bytes, fileMode);
}

bool PropertyListDefaults::isCopy(const std::string& path, const Bytes& bytes) {
  try {
    return files_.read(path) == bytes;
  } catch (const Error&) {
    return false;  // such as a folder, a dangling link or another user's file
  }
}

void PropertyListDefaults::saveDamaged(const Bytes& bytes) {
  const std::string start = folder_ + "/" + std::string(product::bundleIdentifier) + ".damaged-";
  for (unsigned number = 1;; ++number) {
    const std::string copy = start + std::to_string(number) + ".plist";
    try {
      files_.writeNew(copy, bytes);
      std::cerr << product::name << ": The settings couldn’t be read and are empty now; the old file is saved as "
                << copy << "." << std::endl;
      return;
    } catch (const Error& error) {
      if (error.code() != EEXIST) throw;
    }
    if (isCopy(copy, bytes)) return;  // saved by an earlier `set` that failed afterwards
  }
}
