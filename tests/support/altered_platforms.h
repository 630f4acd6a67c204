// Parts of a platform with one mistake each, for the tests of the self-test.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/platform.h"

// Calendars whose search is another.
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

// Searches with a mistake.
std::optional<Instant> onOrAfter(const Calendar& calendar, Instant after, MatchingTime matching);
std::optional<Instant> withWeekdaysFromZero(const Calendar& calendar, Instant after, MatchingTime matching);
// Passes over a match in a gap, as if nothing were due that day.
std::optional<Instant> withoutGaps(const Calendar& calendar, Instant after, MatchingTime matching);
std::optional<Instant> findingNothing(const Calendar& calendar, Instant after, MatchingTime matching);

// A collation that compares code units.
class CaseSensitiveCollation : public Collation {
 public:
  std::strong_ordering localizedStandardCompare(std::u16string_view a, std::u16string_view b) const override {
    return a <=> b;
  }
};

// The installed platform with other calendars or another collation.
Platform with(Calendars& calendars);
Platform with(Collation& collation);
