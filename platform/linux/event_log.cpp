#include "platform/linux/event_log.h"

#include <sys/uio.h>
#include <unistd.h>

#define SD_JOURNAL_SUPPRESS_LOCATION  // the paths of our sources tell the user nothing
#include <systemd/sd-journal.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <utility>

namespace {

std::string localTime() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  std::array<char, 32> text{};
  if (localtime_r(&now, &local) != nullptr)
    static_cast<void>(std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local));
  return text.data();
}

// Replaces each run of line feeds by a space.
std::string inOneLine(const std::string& text) {
  std::string line;
  for (const char character : text) {
    if (character != '\n')
      line += character;
    else if (!line.empty() && line.back() != ' ')
      line += ' ';
  }
  if (line.ends_with(' ')) line.pop_back();
  return line;
}

// Without a journal, nothing happens. The priority is a number of syslog.h.
std::function<void(const std::string&)> journal(const std::string& priority) {
  return [priority](const std::string& event) {
    std::array<std::string, 3> fields = {"MESSAGE=" + event, "PRIORITY=" + priority, "SYSLOG_IDENTIFIER=quillery"};
    std::array<iovec, 3> parts{};
    std::ranges::transform(fields, parts.begin(), [](std::string& field) { return iovec{field.data(), field.size()}; });
    static_cast<void>(sd_journal_sendv(parts.data(), static_cast<int>(parts.size())));
  };
}

}  // namespace

EventLog::EventLog(std::ostream& stream, std::function<void(const std::string&)> alsoTo)
    : stream_(stream), output_(stream.rdbuf(this)), alsoTo_(std::move(alsoTo)) {}

EventLog::~EventLog() { stream_.rdbuf(output_); }

EventLog::int_type EventLog::overflow(int_type character) {
  if (!traits_type::eq_int_type(character, traits_type::eof()))
    pending_.push_back(traits_type::to_char_type(character));
  return traits_type::not_eof(character);
}

std::streamsize EventLog::xsputn(const char* characters, std::streamsize count) {
  pending_.append(characters, static_cast<std::size_t>(count));
  return count;
}

int EventLog::sync() {
  if (!pending_.ends_with('\n')) return 0;  // standard error is flushed after each part of an event
  const std::string event = inOneLine(std::exchange(pending_, {}));
  alsoTo_(event);
  const std::string line = localTime() + " " + event + "\n";
  const auto size = static_cast<std::streamsize>(line.size());
  return output_->sputn(line.data(), size) == size ? output_->pubsync() : -1;
}

void logEventsIfAsked() {
  if (std::getenv(logVariable) == nullptr) return;
  unsetenv(logVariable);
  static const EventLog output(std::cout, journal("6"));  // information
  static const EventLog errors(std::cerr, journal("3"));  // an error
}
