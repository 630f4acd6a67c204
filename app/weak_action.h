// Actions of controls and menu items.
#pragma once

#include <memory>

#include "platform/window.h"

// Calls a command of `object`, which it keeps alive for as long as that runs; does nothing once the object is gone.
template <class Object>
Action weakAction(const std::weak_ptr<Object>& object, void (Object::*command)()) {
  return [object, command] {
    if (const auto present = object.lock()) (present.get()->*command)();
  };
}
