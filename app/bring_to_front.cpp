#include "app/bring_to_front.h"

#include "platform/platform.h"

void bringToFront(Window& window) {
  window.makeKeyAndOrderFront();
  platform().userInterface.activateIgnoringOthers();
}
