// The preview: what a sort would move in each folder.
#include "engine/sort_preview.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "engine/bookmark_node.h"
#include "tests/support/binary_file.h"
#include "tests/support/bookmark_trees.h"
#include "tests/support/virtual_machine.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SortPreviewTest : public testing::Test {
 protected:
  // "title 2>0" for each entry of a folder, followed by "!" if it is moved and by "…" if something changes inside.
  static std::vector<std::string> entries(SortPreview& preview, const PlistValue& folder) {
    std::vector<std::string> lines;
    preview.forEachEntry(folder, [&](const PreviewEntry& entry) {
      lines.push_back(utf8(title(entry.node)) + " " + std::to_string(entry.from) + ">" + std::to_string(entry.to) +
                      (entry.isMoved ? "!" : "") + (entry.changesInside ? "…" : ""));
    });
    return lines;
  }

 private:
  VirtualMachine machine_;
};

constexpr std::size_t plenty = 1000;

PlistValue childOf(const PlistValue& node, std::size_t index) { return childrenOf(node)->at(index); }

TEST_F(SortPreviewTest, listsTheMovesOfEachFolder) {
  const PlistValue root = rootNode(
      {folderNode(u"Bar", {leafNode(u"b"), folderNode(u"F", {leafNode(u"z"), leafNode(u"a")}), leafNode(u"c")}),
       folderNode(u"Menu", {leafNode(u"a"), leafNode(u"b")})});
  SortPreview preview(root, plenty);
  EXPECT_FALSE(preview.isInOrder());
  EXPECT_THAT(entries(preview, root), ElementsAre("Bar 0>0…", "Menu 1>1")) << "the root's own entries stay";
  const PlistValue bar = childOf(root, 0);
  EXPECT_THAT(entries(preview, bar), ElementsAre("F 1>0!…", "b 0>1", "c 2>2"));
  EXPECT_THAT(entries(preview, childOf(bar, 1)), ElementsAre("a 1>0!", "z 0>1"));
  EXPECT_THAT(entries(preview, childOf(root, 1)), ElementsAre("a 0>0", "b 1>1"));
  EXPECT_EQ(preview.movedEntries(), 2U);
  EXPECT_EQ(preview.foldersWithMoves(), 2U);
}

TEST_F(SortPreviewTest, listsNoMovesForATreeInOrder) {
  const PlistValue root = rootNode({folderNode(u"Bar", {leafNode(u"a"), leafNode(u"b")})});
  SortPreview preview(root, plenty);
  EXPECT_TRUE(preview.isInOrder());
  EXPECT_FALSE(preview.changes(root));
  EXPECT_THAT(entries(preview, root), ElementsAre("Bar 0>0"));
  EXPECT_EQ(preview.movedEntries(), 0U);
}

TEST_F(SortPreviewTest, neverMarksAFixedEntry) {
  const PlistValue folder =
      folderNode(u"Bar", {leafNode(u"c"), leafNode(u"d"), proxyNode(u"X"), leafNode(u"a"), leafNode(u"b")});
  SortPreview preview(rootNode({folder}), plenty);
  EXPECT_THAT(entries(preview, folder), ElementsAre("a 3>0!", "b 4>1!", "X 2>2", "c 0>3", "d 1>4"))
      << "although X no longer follows c and d";
}

TEST_F(SortPreviewTest, leavesTheReadingListAlone) {
  const PlistValue readingList = folderNode(u"com.apple.ReadingList", {leafNode(u"z"), leafNode(u"a")});
  const PlistValue root = rootNode({readingList});
  SortPreview preview(root, plenty);
  EXPECT_TRUE(preview.isInOrder());
  EXPECT_THAT(entries(preview, readingList), ElementsAre("z 0>0", "a 1>1"));
}

TEST_F(SortPreviewTest, listsNoEntriesOfAnInvalidFolder) {
  const PlistValue broken = folderNode(u"Bar", {leafNode(u"z"), u"a string", leafNode(u"a")});
  SortPreview preview(rootNode({broken}), plenty);
  EXPECT_TRUE(preview.isInOrder());
  EXPECT_THAT(entries(preview, broken), IsEmpty());
  EXPECT_THAT(entries(preview, leafNode(u"a")), IsEmpty());
}

TEST_F(SortPreviewTest, listsASharedNodeInBothFolders) {
  BinaryFile file;
  const std::uint32_t inner = file.folder("inner", {file.leaf("z"), file.leaf("a")});
  const std::uint32_t top = file.folder("", {file.folder("one", {inner}), file.folder("two", {inner})});
  const PlistValue root = NativePropertyLists().parse(file.bytes(top)).value;
  SortPreview preview(root, plenty);
  for (const std::size_t index : {0U, 1U}) {
    EXPECT_THAT(entries(preview, childOf(root, index)), ElementsAre("inner 0>0…"));
    EXPECT_THAT(entries(preview, childOf(childOf(root, index), 0)), ElementsAre("a 1>0!", "z 0>1"));
  }
}

TEST_F(SortPreviewTest, listsASharedListInEachFolderButTheReadingList) {
  BinaryFile file;
  const std::uint32_t list = file.array({file.leaf("z"), file.leaf("a")});
  std::vector<std::uint32_t> folders;
  for (const char* title : {"one", "two", "com.apple.ReadingList"})
    folders.push_back(file.dictionary({file.string("WebBookmarkType"), file.string("Title"), file.string("Children")},
                                      {file.string("WebBookmarkTypeList"), file.string(title), list}));
  const PlistValue root = NativePropertyLists().parse(file.bytes(file.folder("", folders))).value;
  SortPreview preview(root, plenty);
  EXPECT_THAT(entries(preview, root), ElementsAre("one 0>0…", "two 1>1…", "com.apple.ReadingList 2>2"));
  for (const std::size_t index : {0U, 1U})
    EXPECT_THAT(entries(preview, childOf(root, index)), ElementsAre("a 1>0!", "z 0>1"));
  EXPECT_THAT(entries(preview, childOf(root, 2)), ElementsAre("z 0>0", "a 1>1"));
}

TEST_F(SortPreviewTest, stopsAtItsLimitOfEntries) {
  const PlistValue root = rootNode({leafNode(u"a"), leafNode(u"b"), leafNode(u"c")});
  SortPreview enough(root, 3);
  EXPECT_EQ(entries(enough, root).size(), 3U);
  SortPreview tooFew(root, 2);
  try {
    entries(tooFew, root);
    ADD_FAILURE() << "no error";
  } catch (const Error& error) {
    EXPECT_EQ(error.domain(), "Sorter");
    EXPECT_EQ(error.code(), 5);
    EXPECT_EQ(error.description(),
              "The bookmark file refers to the same folders so often that a preview of it would not end.");
  }
}

TEST_F(SortPreviewTest, isQuickForExponentiallySharedFolders) {
  BinaryFile file(2);
  std::uint32_t folder = file.folder("0", {file.leaf("z"), file.leaf("a")});
  for (int level = 1; level < 100; ++level) folder = file.folder(std::to_string(level), {folder, folder});
  const Bytes bytes = file.bytes(file.folder("", {folder}));
  const PlistValue root = NativePropertyLists().parse(bytes).value;
  SortPreview preview(root, bytes.size());
  EXPECT_FALSE(preview.isInOrder());
  const std::function<void(const PreviewEntry&)> walk = [&](const PreviewEntry& entry) {
    preview.forEachEntry(entry.node, walk);
  };
  EXPECT_THROW(preview.forEachEntry(root, walk), Error) << "2^100 entries";
}

}  // namespace
