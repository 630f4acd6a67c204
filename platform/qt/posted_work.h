// Work for the event loop that belongs to an object.
#pragma once

#include <QObject>

#include "platform/main_loop.h"

// Runs `work` after what is running now and what was posted here before, unless `owner` is gone by then. It must not
// throw.
void post(QObject& owner, Work work);
