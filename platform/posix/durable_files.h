// Writing files that are whole and on the disk when the call returns.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

#include "values/bytes.h"

// Whether what was written is waited for until the disk has it.
enum class Flush { toDisk, never };

// The three that follow throw the errors of FileAttempt.

// Writes a new file, readable for its owner only, whatever the umask; it is whole from the moment on that it has its
// name, even if the process is killed. Fails if anything of that name exists, a symbolic link included, and leaves
// nothing behind when it fails.
void writeNewFile(const std::string& path, const Bytes& bytes, Flush flush = Flush::toDisk);

// Replaces a file whole or not at all, by a temporary file in its folder that is renamed over it. A symbolic link is
// followed. The permission bits of the old file are kept, its owner and group where the system permits it; one that did
// not exist gets exactly `modeIfNew`, from the moment on that it has its name. Once the new file is in place the call
// has succeeded: a failure to flush the folder after that is not reported, because then either the old file or the new
// one is whole on disk, and saying that nothing was replaced would be wrong.
void replaceFile(const std::string& path, const Bytes& bytes, mode_t modeIfNew, Flush flush = Flush::toDisk);

// The same for a file that is there and that others may change, but only if `isExpected`, which is to look at its
// content, answers true when everything else is done; answers whether it was replaced. What somebody else puts in its
// place while `isExpected` looks is noticed too. No system compares and renames in one step, but between the
// two nothing else is done.
bool replaceFileIf(const std::string& path, const Bytes& bytes, const std::function<bool()>& isExpected,
                   Flush flush = Flush::toDisk);

// The permission bits of any new file of this process.
mode_t modeOfNewFiles();

// Makes the name `path` last, by flushing the folder that it is in. Answers the error number, 0 if all is well. A
// folder that may not be read, or a file system that flushes no folders, is no failure: there is nothing better to be
// had.
int flushName(const std::string& path, Flush flush);

// The folder that the last component of a path is in; "." if the path names none.
std::string parentOf(const std::string& path);
