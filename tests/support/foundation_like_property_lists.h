// Property lists that promise no more than Foundation's do.
#pragma once

#include <memory>
#include <utility>

#include "platform/property_lists.h"

// Another implementation without what only ours have: the values that it returns have their keys in another order than
// the file and are at no place of a document, a writer does not know what it may leave as it is, and an error does not
// say where the file is malformed. In XML it writes keys in ascending order, as Foundation does.
class FoundationLikePropertyLists : public PropertyLists {
 public:
  explicit FoundationLikePropertyLists(std::unique_ptr<PropertyLists> lists) : lists_(std::move(lists)) {}

  Parsed parse(const Bytes& bytes) override;
  Bytes serialize(const PlistValue& value, PropertyListFormat format) override;

 private:
  std::unique_ptr<PropertyLists> lists_;
};

// Returns `lists`, or them with no more than Foundation promises if QUILLERY_FOUNDATION_LIKE is set in the environment.
std::unique_ptr<PropertyLists> asEnvironmentSays(std::unique_ptr<PropertyLists> lists);
