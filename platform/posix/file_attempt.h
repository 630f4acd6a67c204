// What was being done with a file or a folder, for the sentence that says that it failed.
#pragma once

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

#include "platform/error.h"

// "The file “a” couldn’t be opened because …": `kind` is "file", `verb` is "opened".
struct FileAttempt {
  const char* kind;
  const std::string& path;
  const char* verb;

  // An error of the domain "POSIX"; `reason` is in our words, complete as it stands after "because".
  Error failure(int code, const std::string& reason) const {
    const std::string name = std::filesystem::path(path).filename().string();
    return {"POSIX", code,
            std::string("The ") + kind + " “" + (name.empty() ? path : name) + "” couldn’t be " + verb + " because " +
                reason + " (" + path + ")."};
  }

  // The same for an error number of the system, in the system's words.
  Error failure(int code) const {
    return failure(code, "the system answered “" + std::generic_category().message(code) + "”");
  }
};

// Throws the failure of what is no regular file: a folder, a pipe, a device.
inline void requireRegular(const struct stat& status, const FileAttempt& attempt) {
  if (S_ISDIR(status.st_mode)) throw attempt.failure(EISDIR);
  if (!S_ISREG(status.st_mode)) throw attempt.failure(EINVAL, "it is not a regular file");
}
