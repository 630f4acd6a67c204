// The tests of interfaces that an implementation does not pass, on purpose or because its system cannot, with reasons.
#pragma once

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>

struct Difference {
  std::string_view test;     // its suite, name and parameter, as in "FileSystemTest.isATest/Virtual"
  std::string_view failure;  // a part of the failure that the test reports
  std::string_view reason;
};

// Returns all differences, those of the other system as well.
std::span<const Difference> differences();

// Returns the difference of a test; null if it must pass. The name is as above.
const Difference* differenceOf(const std::string& test);

// Returns the name of the running test as in the list of differences.
std::string nameOfRunningTest();

// Runs a test that is listed as a difference: hides its failures, and fails it if it does not fail as listed.
class ListedFailure {
 public:
  explicit ListedFailure(const Difference& difference) : difference_(difference) {}

  // Ends the hiding. Returns what is wrong with the entry of the list; the empty string if the test failed as listed.
  std::string problem();

 private:
  Difference difference_;
  testing::TestPartResultArray results_;
  std::optional<testing::ScopedFakeTestPartResultReporter> reporter_{
      std::in_place, testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results_};
};

// The fixture of a test that runs over several implementations.
template <class Parameter>
class InterfaceTest : public testing::TestWithParam<Parameter> {
 protected:
  InterfaceTest() {
    if (const Difference* listed = differenceOf(nameOfRunningTest())) failure_.emplace(*listed);
  }
  ~InterfaceTest() override {
    if (!failure_) return;
    if (const std::string problem = failure_->problem(); !problem.empty()) ADD_FAILURE() << problem;
  }

 private:
  std::optional<ListedFailure> failure_;
};
