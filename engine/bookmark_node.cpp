#include "engine/bookmark_node.h"

namespace {

NodeType typeOf(const std::optional<PlistText>& text) {
  if (!text) return NodeType::other;
  if (*text == bookmark::leafType) return NodeType::leaf;
  return *text == bookmark::listType ? NodeType::list : NodeType::other;
}

bool holdsOnlyDictionaries(const PlistValue& list) {
  for (std::size_t index = 0; index < list.size(); ++index)
    if (list.kindAt(index) != PlistKind::dictionary) return false;
  return true;
}

}  // namespace

NodeFields fieldsOf(const PlistValue& node) {
  constexpr std::array keys = {bookmark::type, bookmark::title, bookmark::uriDictionary, bookmark::children};
  const auto [type, title, uriDictionary, children] = node.indicesOf(keys);
  NodeFields fields;
  fields.children = children;
  if (type != PlistValue::absent) fields.type = typeOf(node.stringAt(type));
  std::optional<PlistText> text;
  if (title != PlistValue::absent) text = node.stringAt(title);
  if (!text && uriDictionary != PlistValue::absent) {
    const PlistValue uri = node.valueAt(uriDictionary);
    if (const auto inner = uri.indexOf(bookmark::uriTitle)) text = uri.stringAt(*inner);
  }
  if (text) fields.title = *text;
  return fields;
}

bool folder(const PlistValue& node) { return fieldsOf(node).type == NodeType::list; }

std::u16string title(const PlistValue& node) { return fieldsOf(node).title.utf16(); }

PlistText addressOf(const PlistValue& node) {
  const std::optional<PlistValue> address = node.value(bookmark::address);
  return address ? address->string().value_or(PlistText(u"")) : PlistText(u"");
}

std::optional<PlistValue> childrenOf(const PlistValue& node) { return EntryLists().of(node); }

std::optional<PlistValue> EntryLists::of(const PlistValue& node) {
  std::optional<PlistValue> list = node.value(bookmark::children);
  if (!list || !list->is(PlistKind::array)) return std::nullopt;
  if (!node.mayBeShared() && !list->mayBeShared()) return holdsOnlyDictionaries(*list) ? list : std::nullopt;
  const auto [known, isNew] = isValid_.emplace(list->identity(), false);
  if (isNew) known->second = holdsOnlyDictionaries(*list);
  return known->second ? list : std::nullopt;
}
