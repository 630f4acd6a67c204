// Windows of a program without a Dock icon.
#pragma once

#include "platform/window.h"

// Shows a window in front of all others. A menu-bar program is not activated by a click on its icon, so it has to
// activate itself.
void bringToFront(Window& window);
