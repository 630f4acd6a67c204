// Platforms with one mistake each, for the tests of the self-test.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/platform.h"

// Calendars with another search.
class AlteredCalendars : public Calendars {
 public:
  using Search = std::function<std::optional<Instant>(const Calendar& calendar, Instant after, MatchingTime matching)>;

  AlteredCalendars(Calendars& calendars, Search search) : calendars_(calendars), search_(std::move(search)) {}

  std::shared_ptr<const Calendar> current() override;
  std::shared_ptr<const Calendar> inTimeZone(const std::string& name) override;

 private:
  Calendars& calendars_;
  Search search_;
};

// Finds `after` itself too if it matches.
std::optional<Instant> onOrAfter(const Calendar& calendar, Instant after, MatchingTime matching);
// Counts weekdays from 0 (Sunday).
std::optional<Instant> withWeekdaysFromZero(const Calendar& calendar, Instant after, MatchingTime matching);
// Finds nothing if the match is in a daylight-saving gap.
std::optional<Instant> withoutGaps(const Calendar& calendar, Instant after, MatchingTime matching);
std::optional<Instant> findingNothing(const Calendar& calendar, Instant after, MatchingTime matching);

// A collation that compares code units.
class CaseSensitiveCollation : public Collation {
 public:
  std::strong_ordering localizedStandardCompare(std::u16string_view a, std::u16string_view b) const override {
    return a <=> b;
  }
};

// Another collation that reports each comparison.
class ReportingCollation : public Collation {
 public:
  ReportingCollation(const Collation& collation, std::function<void()> compared)
      : collation_(collation), compared_(std::move(compared)) {}

  std::strong_ordering localizedStandardCompare(std::u16string_view a, std::u16string_view b) const override {
    compared_();
    return collation_.localizedStandardCompare(a, b);
  }

 private:
  const Collation& collation_;
  std::function<void()> compared_;
};

// The installed platform with other calendars or another collation.
Platform with(Calendars& calendars);
Platform with(Collation& collation);
