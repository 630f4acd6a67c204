// What the updater needs of a toolkit's network: reading an address piece by piece.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

// Every handler is called on the main thread by the event loop, never by get() itself.
struct TransferHandlers {
  // Asked before a redirection is followed. If it returns false, the transfer fails.
  std::function<bool(const std::string& address)> mayFollowTo;

  // Called with each piece as it arrives. Returns false to stop the transfer; no handler is called any more then.
  std::function<bool(std::string_view bytes)> received;

  // Called once, after the last piece, with none if all of it arrived, otherwise with what failed, as a sentence for
  // the user. A transfer that brings nothing for a minute fails.
  std::function<void(const std::optional<std::string>& failure)> finished;
};

// A transfer in progress. Destroying it cancels it; no handler is called after that. A handler may destroy it.
class Transfer {
 public:
  virtual ~Transfer() = default;
};

class Network {
 public:
  virtual ~Network() = default;

  // Starts to read what is at an address. Sends no cookies and stores nothing. The network must outlive the transfer.
  virtual std::unique_ptr<Transfer> get(const std::string& address, TransferHandlers handlers) = 0;
};
