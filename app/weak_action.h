// Actions of controls and menu items.
#pragma once

#include <memory>

#include "platform/window.h"

// Returns an action that calls a command of `object` and keeps the object alive meanwhile. No-op once the object is
// destroyed.
template <class Object>
Action weakAction(const std::weak_ptr<Object>& object, void (Object::*command)()) {
  return [object, command] {
    if (const auto present = object.lock()) (present.get()->*command)();
  };
}
