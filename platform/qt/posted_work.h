// Posts work that an object owns to the event loop.
#pragma once

#include <QObject>

#include "platform/main_loop.h"

// Runs `work` after the work that is running now and the work posted here before, unless `owner` is destroyed first.
// The work must not throw.
void post(QObject& owner, Work work);
