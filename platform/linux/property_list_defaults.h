// The settings, in a property list in the user's configuration folder.
#pragma once

#include <optional>
#include <string>

#include "values/bytes.h"
#include "values/plist_value.h"
#include "platform/linux/plist/property_list_codec.h"
#include "platform/linux/posix_file_system.h"
#include "platform/user_defaults.h"

// Where this user's programs keep their settings: XDG_CONFIG_HOME if it holds an absolute path, else the folder .config
// in the home folder. Empty if the home folder is not to be found either.
std::string configurationFolder();

// Settings are the entries of one dictionary, in the XML file that is named after the bundle identifier. Nothing is
// remembered between two calls, because another process may have changed the file. Its dates are kept to the second,
// as in every XML property list.
//
// No function throws. Whatever cannot be read is absent, and a failure to store leaves all as it was and is said in
// one line on standard error.
//
// A file that holds no property list, or one that is no dictionary, counts as empty. Before the first `set` replaces
// it, its bytes are kept in a file beside it, "….damaged-1.plist" or the next number that is free.
class PropertyListDefaults : public UserDefaults {
 public:
  // `folder` need not exist; `set` creates it, for its owner only. Empty stands for no folder: all is absent and
  // nothing is stored.
  explicit PropertyListDefaults(const std::string& folder = configurationFolder());

  std::optional<PlistValue> object(const std::string& key) override;

  // Replaces the file whole, and in it only this key: entries keep their order, and a new one comes last. Several
  // processes that do this at once wait for each other, so that none loses what another has set; the empty file
  // "….plist.lock" is what they wait at, and it stays. A value that is stored already is not written again.
  void set(const std::string& key, const PlistValue& value) override;

 private:
  // The file as it is now.
  struct Stored {
    Bytes bytes;                     // none if there is no file
    std::optional<PlistValue> root;  // a dictionary; absent if there is no file or no dictionary in it
  };

  Stored read();
  void store(const std::string& key, const PlistValue& value);
  bool isCopy(const std::string& path, const Bytes& bytes);
  void keepDamaged(const Bytes& bytes);

  std::string folder_;
  std::string path_;
  PosixFileSystem files_;
  PropertyListCodec codec_;
};
