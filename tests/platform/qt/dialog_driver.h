// Operates modal dialogs in place of a user.
#pragma once

#include <QDialog>
#include <functional>

// Calls `work` with the next modal dialog that appears, from the dialog's own loop. Fails the test and ends all loops
// if none appears within 20 seconds.
void withNextDialog(std::function<void(QDialog&)> work);
