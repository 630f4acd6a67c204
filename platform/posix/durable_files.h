// Writing files atomically and durably.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/file_system.h"
#include "values/byte_pieces.h"
#include "values/bytes.h"

// Whether a write waits until the data is on disk. `never` is for measurements only.
enum class Flush { toDisk, never };

// The first three functions throw the errors of FileAttempt. Files that they create belong to ownershipIn the folder.

// Writes a new file that only its owner may read and write, whatever the umask. The file gets its name only when it is
// complete, so a killed process leaves no partial file of that name. Fails if anything of that name exists, including a
// symbolic link. Leaves no file behind on failure.
void writeNewFile(const std::string& path, const Bytes& bytes, Flush flush = Flush::toDisk);

// Replaces a file atomically: writes a temporary file in the same folder and renames it over the target. Follows
// symbolic links. Keeps the target's owner, group, permissions and extended attributes as copyAttributes does. A file
// that does not exist is created with exactly the permission bits `modeIfNew`. Removes abandoned files from the folder.
//
// Succeeds as soon as the rename has. A later failure to flush the folder is ignored: the disk then has either the
// complete old file or the complete new one, and to report that nothing was replaced would be wrong.
void replaceFile(const std::string& path, const Bytes& bytes, mode_t modeIfNew, Flush flush = Flush::toDisk);

// Like replaceFile, but for a file that exists and that other processes may change: replaces it only if `mayReplace`
// returns true and the file's content is exactly `expected`. Asks and compares when the temporary file is complete, and
// also replaces nothing if another process changes or replaces the file during the comparison. Only the rename follows;
// no system offers to compare and rename in one step. So it looks at the replaced file once more after the rename.
// Throws nothing once the rename has succeeded. Does not remove abandoned files.
Replacement replaceFileIf(const std::string& path, const Bytes& expected, const BytePieces& bytes,
                          const std::function<bool()>& mayReplace, Flush flush = Flush::toDisk);

// See FileSystem::removeAbandonedFiles. Throws nothing.
void removeFilesAbandonedBeside(const std::string& path, const std::vector<std::string>& inUse);

// Returns true if both are the status of the same unchanged file. Every change of a file sets its change time.
bool isSameFile(const struct stat& one, const struct stat& other);

// Returns the permission bits that the umask leaves to a new file.
mode_t modeOfNewFiles();

// Flushes a folder, so that new names in it survive a crash. Returns 0 or the error number. It is not an error if the
// folder may not be read or its file system cannot flush folders, because there is no other way to flush it. Needs no
// memory.
int flushFolder(const std::string& path, Flush flush);

// Returns the folder of a path's last component; "." if the path has only one component.
std::string parentOf(const std::string& path);
