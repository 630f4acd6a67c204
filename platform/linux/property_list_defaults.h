// The settings in a property list in the user's configuration folder.
#pragma once

#include <optional>
#include <string>

#include "platform/linux/plist/property_list_codec.h"
#include "platform/linux/posix_file_system.h"
#include "platform/user_defaults.h"
#include "values/bytes.h"
#include "values/plist_value.h"

// Returns the folder for the settings of this user's programs: XDG_CONFIG_HOME if it is an absolute path, otherwise
// .config in the home folder. Returns the empty string if there is no home folder either.
std::string configurationFolder();

// The settings are the entries of one dictionary in an XML file that is named after the bundle identifier. Nothing is
// cached between calls, because another process may change the file. Dates keep only whole seconds, as in every
// XML property list.
//
// No function throws. A setting that cannot be read is absent. If a setting cannot be stored, `set` leaves the file as
// it was and prints one line on standard error.
//
// A file without a property list, or whose root is not a dictionary, counts as empty. Before `set` replaces such a
// file, it saves the file's bytes in "….damaged-1.plist" beside it, or with the next number that is free.
class PropertyListDefaults : public UserDefaults {
 public:
  // `folder` may not exist; `set` creates it, accessible only to its owner. If `folder` is empty, every setting is
  // absent and nothing can be stored.
  explicit PropertyListDefaults(const std::string& folder = configurationFolder());

  std::optional<PlistValue> object(const std::string& key) override;

  // Replaces the file atomically. The other entries keep their values and their order, and a new key comes last. A lock
  // on the empty file "….plist.lock", which is never removed, keeps concurrent processes from losing each other's
  // changes. If the file already has the value, it is not written.
  void set(const std::string& key, const PlistValue& value) override;

 private:
  // The content of the file.
  struct Stored {
    Bytes bytes;                     // empty if there is no file
    std::optional<PlistValue> root;  // a dictionary; absent if the file has none
  };

  Stored read();
  void store(const std::string& key, const PlistValue& value);
  bool isCopy(const std::string& path, const Bytes& bytes);
  void saveDamaged(const Bytes& bytes);

  std::string folder_;
  std::string path_;
  PosixFileSystem files_;
  PropertyListCodec codec_;
};
