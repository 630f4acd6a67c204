// Replaces functions of the C library in the whole test program, to act between system calls or make them fail.
#pragma once

#include <functional>
#include <string>

// What to do at a system call while the object lives. Each handler returns the error number to fail with, or 0.
struct InterceptedCalls {
  InterceptedCalls();
  ~InterceptedCalls();
  InterceptedCalls(const InterceptedCalls&) = delete;
  InterceptedCalls& operator=(const InterceptedCalls&) = delete;

  // If true, files can only be created with a name, as on a file system that does not support others.
  bool noUnnamedFiles = false;
  std::function<int()> beforeLink;                                      // linkat
  std::function<int()> beforeRename;                                    // rename
  std::function<int(const std::string& attribute)> beforeSetAttribute;  // fsetxattr
};
