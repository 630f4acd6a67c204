// The login agent, which starts the program at each login.
#pragma once

// Writes the agent's property list into the user's Library/LaunchAgents and loads it with launchctl, in place of an
// earlier one. No-op if both are done already. If launchd started this process as the agent's job, only writes the
// file; the next login loads it. If the user has switched the agent off, it is not loaded, and that is no error.
//
// Blocks until launchctl ends: nine seconds and a few runs of launchctl at most, usually much less. Throws Error if a
// folder or the file cannot be written or launchctl cannot be started, and SorterError::agentNotLoaded if launchctl
// rejects the agent three times.
void registerBackgroundJob();
