// The user's session, through AppKit.
#pragma once

#include "platform/workspace.h"

// Uses NSWorkspace. An application's location is the path of its bundle.
class AppKitWorkspace : public Workspace {
 public:
  std::optional<std::string> locateApplication(const std::string& bundleIdentifier) override;
  void openApplication(const std::string& location) override;
  void openAddress(const std::string& address) override;
  void openFolder(const std::string& path) override;
  void revealFile(const std::string& path) override;
  // The pane of System Settings for Full Disk Access.
  std::optional<std::string> fileAccessSettings() override;
  // Uses SMAppService, which macOS 12 does not have, nor its setting; returns false there.
  bool hasSwitchedOff(const std::string& agentFile) override;
  Observation observeTerminations(TerminationHandler handler) override;
  Observation observeWake(std::function<void()> handler) override;
};
