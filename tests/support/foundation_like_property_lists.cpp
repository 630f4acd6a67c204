#include "tests/support/foundation_like_property_lists.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/error.h"
#include "tests/support/plist_json.h"

namespace {

// Makes values anew, with keys in ascending or descending order. What was shared stays shared.
class Copier {
 public:
  enum class Keys { ascending, descending };
  explicit Copier(Keys keys) : keys_(keys) {}

  PlistValue copy(const PlistValue& value) {
    if (!value.is(PlistKind::array) && !value.is(PlistKind::dictionary)) return scalarCopy(value);
    const auto known = copies_.find(value.identity());
    if (known != copies_.end()) return known->second;
    return copies_.emplace(value.identity(), copyOfContainer(value)).first->second;
  }

 private:
  PlistValue copyOfContainer(const PlistValue& value) {
    return value.is(PlistKind::array) ? copyOfArray(value) : copyOfDictionary(value);
  }

  PlistValue copyOfArray(const PlistValue& value) {
    std::vector<PlistValue> elements;
    elements.reserve(value.size());
    for (std::size_t index = 0; index < value.size(); ++index) elements.push_back(copy(value.at(index)));
    return PlistValue::array(std::move(elements));
  }

  PlistValue copyOfDictionary(const PlistValue& value) {
    std::vector<std::pair<std::u16string, std::size_t>> keys;
    keys.reserve(value.size());
    for (std::size_t index = 0; index < value.size(); ++index) keys.emplace_back(value.keyAt(index).utf16(), index);
    std::ranges::sort(keys);
    if (keys_ == Keys::descending) std::ranges::reverse(keys);
    std::vector<PlistEntry> entries;
    entries.reserve(value.size());
    for (auto& [key, index] : keys) entries.push_back({std::move(key), copy(value.valueAt(index))});
    return PlistValue::dictionary(std::move(entries));
  }

  Keys keys_;
  std::unordered_map<PlistValue::Identity, PlistValue> copies_;
};

}  // namespace

PropertyLists::Parsed FoundationLikePropertyLists::parse(const Bytes& bytes) {
  try {
    const Parsed parsed = lists_->parse(bytes);
    return {Copier(Copier::Keys::descending).copy(parsed.value), parsed.format};
  } catch (const Error&) {
    throw Error("NSCocoaErrorDomain", 3840, "The data couldn’t be read because it isn’t in the correct format.");
  }
}

Bytes FoundationLikePropertyLists::serialize(const PlistValue& value, PropertyListFormat format) {
  const auto keys = format == PropertyListFormat::xml ? Copier::Keys::ascending : Copier::Keys::descending;
  return lists_->serialize(Copier(keys).copy(value), format);
}

std::unique_ptr<PropertyLists> asEnvironmentSays(std::unique_ptr<PropertyLists> lists) {
  if (std::getenv("QUILLERY_FOUNDATION_LIKE") == nullptr) return lists;
  return std::make_unique<FoundationLikePropertyLists>(std::move(lists));
}
