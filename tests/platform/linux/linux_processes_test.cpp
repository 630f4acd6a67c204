#include "platform/linux/linux_processes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

TEST(LinuxProcesses, uuidIsInCanonicalForm) {
  LinuxProcesses processes;
  for (int round = 0; round < 100; ++round)
    EXPECT_THAT(processes.randomUuid(),
                testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
}

TEST(LinuxProcesses, uuidIsAnotherEachTimeInEveryDigit) {
  LinuxProcesses processes;
  std::set<std::string> seen;
  std::vector<std::set<char>> digits(36);
  for (int round = 0; round < 1000; ++round) {
    const std::string uuid = processes.randomUuid();
    seen.insert(uuid);
    for (std::size_t place = 0; place < digits.size(); ++place) digits[place].insert(uuid.at(place));
  }
  EXPECT_EQ(seen.size(), 1000U);
  for (std::size_t place = 0; place < digits.size(); ++place) {
    const bool fixed = place == 8 || place == 13 || place == 18 || place == 23 || place == 14;
    EXPECT_EQ(digits[place].size(), fixed ? 1U : place == 19 ? 4U : 16U) << "place " << place;
  }
}

}  // namespace
