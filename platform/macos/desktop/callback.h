// Calls into the program from frames of AppKit or Foundation.
#pragma once

// Calls `callback` with `arguments`. A C++ or Objective-C exception that leaves it ends the process, because those
// frames would otherwise swallow the exception and continue.
template <class Callback, class... Arguments>
auto callBack(const Callback& callback, Arguments&&... arguments) noexcept {
  return callback(static_cast<Arguments&&>(arguments)...);
}
