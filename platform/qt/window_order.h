// The order of the program's windows on the screen.
#pragma once

#include <QWidget>

// Shows a window, also a minimised one, in front of the program's other windows, and asks the desktop to activate it.
void orderFront(QWidget& window);

// Returns the visible windows and dialogs, also minimised ones, in no particular order.
QWidgetList visibleWindows();

// Returns the modal dialog, else the window that was ordered front last, else the active one, else any; null if no
// window is visible or all are minimised.
QWidget* frontWindow();
