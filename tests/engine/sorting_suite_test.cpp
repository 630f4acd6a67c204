// The sorting suite of the self-test: it passes on correct sorts, and every wrong sort ends the process.
#include "engine/sorting_suite.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <compare>
#include <csignal>
#include <iostream>
#include <vector>

#include "engine/bookmark_node.h"
#include "engine/sort_order.h"
#include "tests/support/virtual_machine.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::KilledBySignal;

class SortingSuiteDeathTest : public testing::Test {
 protected:
  // Runs the suite with standard output sent to standard error, which death tests check.
  static void runShowingOutput(const SortFunction& sort) {
    std::cout.rdbuf(std::cerr.rdbuf());
    runSortingSuite(sort);
  }

  VirtualMachine machine_;
};

PlistValue withChildren(const PlistValue& node, std::vector<PlistValue> children) {
  return node.replacing(*node.indexOf(bookmark::children), PlistValue::array(std::move(children)));
}

std::vector<PlistValue> childList(const PlistValue& node) {
  std::vector<PlistValue> list;
  const PlistValue children = *node.value(bookmark::children);
  for (std::size_t index = 0; index < children.size(); ++index) list.push_back(children.at(index));
  return list;
}

// A plausible sort with a switch for each mistake.
struct Variant {
  bool foldersFirst = true;
  bool recursive = true;
  bool sparesReadingList = true;
  bool keepsRootInOrder = true;
  bool (*before)(const std::u16string& a, const std::u16string& b) = [](const std::u16string& a,
                                                                        const std::u16string& b) {
    return platform().collation.localizedStandardCompare(a, b) == std::strong_ordering::less;
  };

  PlistValue operator()(const PlistValue& node, bool root) const {
    if (!childrenOf(node) || (sparesReadingList && title(node) == u"com.apple.ReadingList")) return node;
    std::vector<PlistValue> children = childList(node);
    if (recursive || root)
      for (PlistValue& child : children) child = (*this)(child, false);
    if (!root || !keepsRootInOrder)
      std::stable_sort(children.begin(), children.end(), [this](const PlistValue& a, const PlistValue& b) {
        if (foldersFirst && folder(a) != folder(b)) return folder(a);
        return before(title(a), title(b));
      });
    return withChildren(node, children);
  }
};

TEST_F(SortingSuiteDeathTest, passesOnTheProgramsOwnOrderAndPrintsNothing) {
  runSortingSuite();
  EXPECT_THAT(machine_.journal.entries(), IsEmpty());
}

TEST_F(SortingSuiteDeathTest, passesOnAnyCorrectOrder) { runSortingSuite(Variant()); }

TEST_F(SortingSuiteDeathTest, sortsTheFixtureAsARootBothTimes) {
  std::vector<bool> roots;
  runSortingSuite([&roots](const PlistValue& node, bool root) {
    roots.push_back(root);
    return sorted(node, root);
  });
  EXPECT_THAT(roots, ElementsAre(true, true));
}

TEST_F(SortingSuiteDeathTest, endsTheProcessOnACaseSensitiveOrder) {
  Variant wrong;
  wrong.before = [](const std::u16string& a, const std::u16string& b) { return a < b; };
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SortingSuiteDeathTest, endsTheProcessIfNumbersAreComparedDigitByDigit) {
  Variant wrong;
  wrong.before = [](const std::u16string& a, const std::u16string& b) {
    const auto lower = [](std::u16string text) {
      for (char16_t& unit : text) unit = unit < u'a' && unit >= u'A' ? static_cast<char16_t>(unit + 32) : unit;
      return text;
    };
    return lower(a) < lower(b);
  };
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SortingSuiteDeathTest, endsTheProcessIfTheReadingListIsSorted) {
  Variant wrong;
  wrong.sparesReadingList = false;
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SortingSuiteDeathTest, endsTheProcessIfFoldersAreNotFirst) {
  Variant wrong;
  wrong.foldersFirst = false;
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SortingSuiteDeathTest, endsTheProcessIfInnerFoldersAreNotSorted) {
  Variant wrong;
  wrong.recursive = false;
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SortingSuiteDeathTest, endsTheProcessIfNothingIsSorted) {
  EXPECT_EXIT(runShowingOutput([](const PlistValue& node, bool) { return node; }), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SortingSuiteDeathTest, endsTheProcessIfSortingAgainChangesSomething) {
  int calls = 0;
  const auto wrong = [&calls](const PlistValue& node, bool root) {
    const PlistValue result = sorted(node, root);
    return ++calls == 1 ? result : withChildren(result, {});
  };
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SortingSuiteDeathTest, endsTheProcessIfChildrenAreMissingOrInvalid) {
  const auto empty = [](const PlistValue&, bool) { return PlistValue::dictionary({}); };
  const auto scalar = [](const PlistValue&, bool) { return PlistValue(1); };
  const auto childless = [](const PlistValue& node, bool) { return withChildren(node, {}); };
  const auto onlyTheBar = [](const PlistValue& node, bool root) {
    return withChildren(node, {childList(sorted(node, root)).front()});
  };
  const auto noArray = [](const PlistValue& node, bool) {
    return node.replacing(*node.indexOf(bookmark::children), u"a string");
  };
  for (const SortFunction& wrong : std::vector<SortFunction>{empty, scalar, childless, onlyTheBar, noArray})
    EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SortingSuiteDeathTest, harnessShowsWhatIsPrinted) {
  const auto talkative = [](const PlistValue& node, bool) {
    std::cout << "printed";
    return node;
  };
  EXPECT_EXIT(runShowingOutput(talkative), KilledBySignal(SIGABRT), "^printed$");
}

}  // namespace
