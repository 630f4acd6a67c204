// Windows of a program without a place among the running ones.
#pragma once

#include "platform/window.h"

// Shows a window in front of everything: a program that lives in the menu bar has to come forward by itself.
void bringToFront(Window& window);
