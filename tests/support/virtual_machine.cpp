#include "tests/support/virtual_machine.h"

#include "app/alert.h"

VirtualMachine::VirtualMachine() { automatic = false; }

VirtualMachine::~VirtualMachine() { automatic = false; }

Collation& VirtualMachine::englishCollation() {
  static EnglishCollation collation;
  return collation;
}

void VirtualMachine::sleep(VirtualMainLoop::Duration duration, VirtualMainLoop::Place placeOfWake) {
  loop.sleep(duration);
  workspace.wake(placeOfWake);
}
