// A person in front of a modal dialog.
#pragma once

#include <QDialog>
#include <functional>

// Does something with the next modal dialog, once it is on the screen, from within its own loop: one that is not on the
// screen yet. Fails the test and ends all loops if none comes in 20 seconds.
void withNextDialog(std::function<void(QDialog&)> work);
