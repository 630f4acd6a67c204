// Writing bytes to a file descriptor.
#pragma once

#include "platform/posix/file_attempt.h"
#include "platform/posix/file_descriptor.h"
#include "values/byte_pieces.h"

// Appends all bytes to a file, small pieces together. Throws the error of the attempt on failure; some bytes may then
// have been written.
void writeAll(const FileDescriptor& file, const BytePieces& bytes, const FileAttempt& attempt);
