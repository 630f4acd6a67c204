// The login agent: what has the program started at each login of its user.
#pragma once

// Writes the agent's property list into the user's Library/LaunchAgents and has launchctl load it, unless both have
// been done already. Waits for launchctl. Throws the platform's Error where a folder, the file or launchctl fails, and
// one of the domain "Sorter" with code 4 if launchctl does not accept the agent.
void registerBackgroundJob();
