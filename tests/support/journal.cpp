#include "tests/support/journal.h"

Entries operator+(Entries entries, const Entries& more) {
  entries.insert(entries.end(), more.begin(), more.end());
  return entries;
}

void Journal::before(const std::string& name, Action action, int occurrence) {
  before_[{name, occurrence}] = std::move(action);
}

void Journal::after(const std::string& name, Action action, int occurrence) {
  after_[{name, occurrence}] = std::move(action);
}

int Journal::count(const std::string& name) const {
  const auto found = counts_.find(name);
  return found == counts_.end() ? 0 : found->second;
}

int Journal::begin(const std::string& name, const std::string& object) {
  entries_.push_back(object.empty() ? name : name + " " + object);
  const int occurrence = ++counts_[name];
  if (const auto found = beforeEach_.find(name); found != beforeEach_.end()) found->second(object);
  run(before_, name, occurrence, object);
  return occurrence;
}

void Journal::run(Actions& actions, const std::string& name, int occurrence, const std::string& object) {
  const auto found = actions.find({name, occurrence});
  if (found == actions.end()) return;
  // Erase it first, because the action may register another one.
  const Action action = std::move(found->second);
  actions.erase(found);
  action(object);
}
