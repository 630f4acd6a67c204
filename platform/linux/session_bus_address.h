// Where the session bus listens.
#pragma once

#include <optional>
#include <string>

// Returns the D-Bus address of the session bus: the value of DBUS_SESSION_BUS_ADDRESS. If that is not set or empty, as
// under cron, it is the usual bus of the user whose home folder this is, who may be another user than that of this
// process: the first socket of this user's at XDG_RUNTIME_DIR/bus or /run/user/UID/bus. Absent if there is none.
std::optional<std::string> sessionBusAddress();
