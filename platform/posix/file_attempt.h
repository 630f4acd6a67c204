// Errors of operations on files and folders.
#pragma once

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

#include "platform/error.h"
#include "values/harmless_text.h"

// An operation on a file or folder, and the errors of the domain "POSIX" that describe its failure.
struct FileAttempt {
  const char* kind;         // "file" or "folder"
  const std::string& path;  // must outlive this object
  const char* verb;         // such as "opened"

  // Returns "The file “a” couldn’t be opened because it is too old (/folder/a).", for the reason "it is too old". The
  // path is escaped by harmlessLine.
  Error failure(int code, const std::string& reason) const { return sentence(code, " because " + reason); }

  // Returns "The file “a” couldn’t be opened: Permission denied (/folder/a).", in the system's words for `code`.
  Error failure(int code) const { return sentence(code, ": " + std::generic_category().message(code)); }

 private:
  Error sentence(int code, const std::string& ending) const {
    const std::string name = std::filesystem::path(path).filename().string();
    return {"POSIX", code,
            std::string("The ") + kind + " “" + harmlessLine(name.empty() ? path : name) + "” couldn’t be " + verb +
                ending + " (" + harmlessLine(path) + ")."};
  }
};

// Throws an error of `attempt` unless `status` is that of a regular file.
inline void requireRegular(const struct stat& status, const FileAttempt& attempt) {
  if (S_ISDIR(status.st_mode)) throw attempt.failure(EISDIR);
  if (!S_ISREG(status.st_mode)) throw attempt.failure(EINVAL, "it is not a regular file");
}
