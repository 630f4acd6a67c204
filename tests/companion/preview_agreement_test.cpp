// On random trees, a preview shows exactly what a sort then moves.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "companion/companion.h"
#include "engine/bookmark_node.h"
#include "engine/sort_order.h"
#include "tests/companion/companion_machine.h"
#include "tests/support/random_trees.h"

namespace {

using nlohmann::json;

// The node with the children of each listed folder in the order of the JSON preview.
PlistValue applied(const json& preview, const PlistValue& node) {
  if (!preview.contains("children")) return node;
  const PlistValue old = node.value(u"Children").value();
  std::vector<PlistValue> children;
  for (const json& entry : preview["children"]) children.push_back(applied(entry, old.at(entry["from"])));
  EXPECT_EQ(children.size(), old.size());
  std::vector<PlistEntry> entries;
  for (std::size_t index = 0; index < node.size(); ++index) {
    const std::u16string key = node.keyAt(index).utf16();
    entries.push_back({key, key == u"Children" ? PlistValue::array(children) : node.valueAt(index)});
  }
  return PlistValue::dictionary(std::move(entries));
}

// The length of the longest increasing subsequence. Takes quadratic time.
std::size_t longestRun(const std::vector<std::size_t>& from) {
  std::vector<std::size_t> best(from.size(), 1);
  for (std::size_t index = 0; index < from.size(); ++index)
    for (std::size_t before = 0; before < index; ++before)
      if (from[before] < from[index]) best[index] = std::max(best[index], best[before] + 1);
  return best.empty() ? 0 : *std::max_element(best.begin(), best.end());
}

// Expects of each listed folder that the titles match, that the entries that are not moved keep their order, and that
// the moved entries are as few as possible. Returns the number of moved entries.
std::size_t expectMarks(const json& preview, const PlistValue& node) {
  if (!preview.contains("children")) return 0;
  const PlistValue old = node.value(u"Children").value();
  std::size_t movedInAll = 0;
  std::size_t movedHere = 0;
  std::vector<std::size_t> sortablePlaces;
  std::vector<std::size_t> keptPlaces;
  for (std::size_t place = 0; place < preview["children"].size(); ++place) {
    const json& entry = preview["children"][place];
    const std::size_t from = entry["from"];
    const PlistValue child = old.at(from);
    EXPECT_EQ(entry["title"], utf8(title(child)));
    EXPECT_EQ(entry["kind"] == "folder", folder(child));
    if (!sortable(child)) {
      EXPECT_EQ(from, place);
      EXPECT_EQ(entry["moved"], false);
    } else {
      sortablePlaces.push_back(from);
      if (entry["moved"])
        ++movedHere;
      else
        keptPlaces.push_back(from);
    }
    movedInAll += expectMarks(entry, child);
  }
  EXPECT_TRUE(std::is_sorted(keptPlaces.begin(), keptPlaces.end()));
  EXPECT_EQ(movedHere, sortablePlaces.size() - longestRun(sortablePlaces));
  return movedInAll + movedHere;
}

// The number of lines of a text preview that begin with an arrow.
std::size_t arrows(const std::string& text) {
  std::size_t count = 0;
  for (std::size_t start = 0; start < text.size(); start = text.find('\n', start) + 1) {
    const std::string_view line = std::string_view(text).substr(start);
    if (line.starts_with("↑ ") || line.starts_with("↓ ")) ++count;
  }
  return count;
}

class PreviewAgreement : public RandomTreeTest, protected CompanionMachine {
 protected:
  // The same for the folders below the root, whose own entries are never sorted.
  static std::size_t expectMarksBelow(const json& preview, const PlistValue& root) {
    std::size_t moved = 0;
    if (!preview.contains("children")) return moved;
    for (std::size_t place = 0; place < preview["children"].size(); ++place) {
      const json& entry = preview["children"][place];
      EXPECT_EQ(entry["from"], place);
      EXPECT_EQ(entry["moved"], false);
      moved += expectMarks(entry, root.value(u"Children")->at(place));
    }
    return moved;
  }
};

TEST_F(PreviewAgreement, previewMatchesTheSort) {
  unsigned sorts = 0;
  forEachTree([&](const PlistValue& tree) {
    if (!childrenOf(tree)) return;  // not a bookmark file
    NativePropertyLists codec;
    const PropertyListFormat format = sorts % 2 == 0 ? PropertyListFormat::binary : PropertyListFormat::xml;
    const Bytes before = codec.serialize(tree, format);
    const PlistValue old = codec.parse(before).value;  // XML has no fractions of a second
    machine_.files.put(bookmarks, std::string(before.text()));
    machine_.journal.clear();

    const json changes = json::parse(run({"preview", "--json"}).output);
    const json whole = json::parse(run({"preview", "--json", "--all"}).output);
    const std::string shown = run({"preview", "--quiet"}).output;
    const std::string shownWhole = run({"preview", "--quiet", "--all"}).output;
    const int checked = run({"check"}).status.value();
    ASSERT_EQ(machine_.files.content(bookmarks), before.text());
    ASSERT_EQ(run({"sort"}).status, 0);

    const PlistValue after = codec.parse(Bytes(machine_.files.content(bookmarks))).value;
    EXPECT_EQ(applied(changes, old), after);
    EXPECT_EQ(applied(whole, old), after);
    const bool changed = machine_.files.content(bookmarks) != before.text();
    EXPECT_EQ(changes["isInOrder"], !changed);
    EXPECT_EQ(checked, changed ? 1 : 0);
    EXPECT_EQ(changes["moved"], expectMarksBelow(changes, old));
    EXPECT_EQ(whole["moved"], changes["moved"]);
    EXPECT_EQ(arrows(shown), changes["moved"]);
    EXPECT_EQ(arrows(shownWhole), changes["moved"]);
    EXPECT_EQ(shown.empty(), !changed);
    sorts += changed ? 1 : 0;
  });
  EXPECT_GT(sorts, trees() / 3) << "too few trees needed sorting";
}

}  // namespace
