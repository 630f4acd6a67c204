// The comparison of a rewritten file with the file that it was made from.
#include "platform/linux/plist/rearranged_source.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "engine/sort_order.h"
#include "platform/error.h"
#include "platform/linux/plist/property_list_codec.h"
#include "tests/support/bookmark_trees.h"
#include "tests/support/virtual_machine.h"

namespace {

PlistValue tree() {
  return rootNode({leafNode(u"z"), folderNode(u"Foo", {leafNode(u"b"), folderNode(u"Bar", {}), leafNode(u"a")}),
                   folderNode(u"Empty", {}), leafNode(u"y")});
}

class RearrangedSource : public testing::TestWithParam<PropertyListFormat> {
 protected:
  RearrangedSource()
      : source_(codec_.parse(codec_.serialize(tree(), GetParam())).value),
        inOrder_(sorted(source_, true)),
        rewritten_(codec_.serialize(inOrder_, GetParam())) {}

  VirtualMachine machine_;
  PropertyListCodec codec_;
  PlistValue source_;
  PlistValue inOrder_;
  Bytes rewritten_;
};

INSTANTIATE_TEST_SUITE_P(Formats, RearrangedSource,
                         testing::Values(PropertyListFormat::binary, PropertyListFormat::xml), [](const auto& format) {
                           return format.param == PropertyListFormat::binary ? "binary" : "xml";
                         });

TEST_P(RearrangedSource, holdsForARewrittenFile) {
  EXPECT_FALSE(inOrder_ == source_);
  EXPECT_TRUE(isRearrangedSource(rewritten_, inOrder_));
}

TEST_P(RearrangedSource, holdsForTheSourceAndItsOwnTree) {
  EXPECT_TRUE(isRearrangedSource(source_.place()->document->source, source_));
}

TEST_P(RearrangedSource, holdsForNoFileWithAnotherByte) {
  for (std::size_t place = 0; place < rewritten_.size(); ++place) {
    std::string changed(rewritten_.text());
    changed[place] = static_cast<char>(changed[place] ^ 1);
    EXPECT_FALSE(isRearrangedSource(Bytes(changed), inOrder_)) << "byte " << place;
  }
}

TEST_P(RearrangedSource, holdsHoweverTheFileIsCutIntoPieces) {
  for (std::size_t size = 1; size < rewritten_.size(); size += 1 + size / 2) {
    BytePieces pieces;
    for (std::size_t start = 0; start < rewritten_.size(); start += size)
      pieces.append(Bytes(std::string(rewritten_.text().substr(start, size))));
    EXPECT_TRUE(isRearrangedSource(pieces, inOrder_)) << size;
  }
}

TEST_P(RearrangedSource, consistsOfPiecesOfTheFile) {
  const BytePieces pieces = codec_.serializeInPieces(inOrder_, GetParam());
  const Bytes& file = source_.place()->document->source;
  std::size_t copied = 0;
  for (const Bytes& piece : pieces.pieces())
    copied += std::less_equal<>()(file.data(), piece.data()) && std::less<>()(piece.data(), file.data() + file.size())
                  ? 0
                  : piece.size();
  const std::size_t references = GetParam() == PropertyListFormat::binary ? 3 + 4 : 0;  // of the two sorted lists
  EXPECT_EQ(copied, references);
  EXPECT_EQ(pieces.joined(), rewritten_);
  EXPECT_TRUE(isRearrangedSource(pieces, inOrder_));
}

TEST_P(RearrangedSource, holdsForNoFileOfAnotherSize) {
  const std::string content(rewritten_.text());
  for (std::size_t size = 0; size < content.size(); ++size)
    EXPECT_FALSE(isRearrangedSource(Bytes(content.substr(0, size)), inOrder_)) << "size " << size;
  EXPECT_FALSE(isRearrangedSource(Bytes(content + "\n"), inOrder_));
}

TEST_P(RearrangedSource, holdsForNoFileInAnotherOrder) {
  EXPECT_FALSE(isRearrangedSource(rewritten_, source_));
  EXPECT_FALSE(isRearrangedSource(source_.place()->document->source, inOrder_));
  EXPECT_FALSE(isRearrangedSource(rewritten_, sorted(source_, false)));
}

TEST_P(RearrangedSource, holdsForNoTreeWithAnotherTitle) {
  const PlistValue renamed = inOrder_.replacing(*inOrder_.indexOf(u"Title"), u"other");
  EXPECT_FALSE(isRearrangedSource(rewritten_, renamed));
}

TEST_P(RearrangedSource, holdsForNoTreeFromAnotherFile) { EXPECT_FALSE(isRearrangedSource(rewritten_, tree())); }

TEST_P(RearrangedSource, isParsedIfItWasWrittenAnew) {
  const PlistValue renamed = inOrder_.replacing(*inOrder_.indexOf(u"Title"), u"other");
  const Bytes anew = codec_.serialize(renamed, GetParam());
  EXPECT_FALSE(isRearrangedSource(anew, renamed));
  EXPECT_TRUE(codec_.parsesTo(renamed, anew));
  EXPECT_FALSE(codec_.parsesTo(inOrder_, anew));
  EXPECT_TRUE(codec_.parsesTo(tree(), codec_.serialize(tree(), GetParam())));
  EXPECT_THROW(codec_.parsesTo(renamed, Bytes("<plist>")), Error);
}

}  // namespace
