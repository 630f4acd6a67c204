// The login agent, which starts the program at each login.
#pragma once

// Writes the agent's property list into the user's Library/LaunchAgents and loads it with launchctl. No-op if both are
// done already. Blocks until launchctl ends. Throws Error if a folder or the file cannot be written or launchctl cannot
// be started, and SorterError::agentNotLoaded if launchctl rejects the agent.
void registerBackgroundJob();
