// Calling the program from a frame of AppKit's or Foundation's.
#pragma once

// Calls `callback` with what follows. It must not throw: those frames would swallow it and go on as if nothing had
// been, so an exception that leaves it, of C++ or of Objective-C, ends the process.
template <class Callback, class... Arguments>
auto callBack(const Callback& callback, Arguments&&... arguments) noexcept {
  return callback(static_cast<Arguments&&>(arguments)...);
}
