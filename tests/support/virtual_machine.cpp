#include "tests/support/virtual_machine.h"

#include "app/alert.h"

VirtualMachine::VirtualMachine() { automatic = false; }

VirtualMachine::~VirtualMachine() { automatic = false; }
