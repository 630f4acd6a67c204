// Logs whose events are single lines with their times.
#include "platform/linux/event_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "values/log_line.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

const std::string time = "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}";

class EventLogTest : public testing::Test {
 protected:
  std::ostringstream stream_;
  std::vector<std::string> events_;
};

TEST_F(EventLogTest, writesEachEventInOneLineWithItsTime) {
  {
    const EventLog log(stream_, [&](const std::string& event) { events_.push_back(event); });
    logLine(stream_, "Bookmarks sorted: In order.\n\nBackup: /a b");
    logLine(stream_, "Another");
  }
  EXPECT_THAT(stream_.str(), MatchesRegex(time + " Bookmarks sorted: In order. Backup: /a b\n" + time + " Another\n"));
  EXPECT_THAT(events_, ElementsAre("Bookmarks sorted: In order. Backup: /a b", "Another"));
}

TEST_F(EventLogTest, joinsTheFlushedPartsOfAnEvent) {
  const EventLog log(stream_, [&](const std::string& event) { events_.push_back(event); });
  stream_ << std::unitbuf << "one" << ' ';
  EXPECT_THAT(events_, IsEmpty());
  stream_ << "event" << '\n';
  EXPECT_THAT(events_, ElementsAre("one event"));
}

TEST_F(EventLogTest, givesTheStreamBackAtItsEnd) {
  {
    const EventLog log(stream_, [](const std::string&) {});
  }
  logLine(stream_, "plain");
  EXPECT_EQ(stream_.str(), "plain\n");
}

}  // namespace
