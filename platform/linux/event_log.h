// The log of a program that the session has started.
#pragma once

#include <functional>
#include <ostream>
#include <streambuf>
#include <string>

// Makes each event that a program prints on a stream one line, which begins with the local date and time, as long as
// this lives. An event is what ends with a line feed when the stream is flushed; see logLine.
class EventLog : public std::streambuf {
 public:
  // `alsoTo` gets each event, too, in one line without the time.
  EventLog(std::ostream& stream, std::function<void(const std::string&)> alsoTo);
  ~EventLog() override;
  EventLog(const EventLog&) = delete;
  EventLog& operator=(const EventLog&) = delete;

 protected:
  int_type overflow(int_type character) override;
  std::streamsize xsputn(const char* characters, std::streamsize count) override;
  int sync() override;

 private:
  std::ostream& stream_;
  std::streambuf* output_;
  std::function<void(const std::string&)> alsoTo_;
  std::string pending_;
};

// The variable that the runner of login agents sets for their programs.
inline constexpr const char* logVariable = "QUILLERY_LOG";

// Makes standard output and standard error such logs, which systemd's journal gets as well, if that variable is set.
// Removes the variable, so that started programs do not inherit it.
void logEventsIfAsked();
