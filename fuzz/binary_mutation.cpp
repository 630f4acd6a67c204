#include "fuzz/binary_mutation.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <random>
#include <span>
#include <utility>

namespace {

constexpr std::uint8_t textMarker = textKind << 4;

// Changes the objects of one file.
class Mutation {
 public:
  Mutation(BinaryObjects& all, unsigned seed) : all_(all), random_(seed) {}

  void mutate(const ChangeBytes& changeBytes) {
    switch (below(12)) {
      case 0: return addObject();
      case 1: return removeReference();
      case 2: return swapReferences();
      case 3: return redirect();
      case 4: return insertReference();
      case 5: return changeMarker();
      case 6: return changeSizes();
      case 7: return swapObjects();
      case 8: return copyObject();
      case 9: return makeFolder();
      default: return changeContent(changeBytes);
    }
  }

  void graft(const BinaryObjects& other) {
    const std::size_t first = all_.objects.size();
    for (BinaryObject object : other.objects) {
      for (std::uint64_t& reference : object.references) reference += first;
      all_.objects.push_back(std::move(object));
    }
    widenReferences();
    const std::uint64_t top = other.top + first;
    if (BinaryObject* container = anyContainer(first))
      insert(*container, anyText(), top);
    else
      all_.top = top;
  }

  std::size_t below(std::size_t limit) { return random_() % limit; }

 private:
  std::size_t anyIndex() { return below(all_.objects.size()); }

  // Returns a container among the first `count` objects, or null.
  BinaryObject* anyContainer(std::size_t count) {
    const std::size_t start = below(count);
    for (std::size_t step = 0; step < count; ++step)
      if (BinaryObject& object = all_.objects[(start + step) % count]; isContainer(object)) return &object;
    return nullptr;
  }
  BinaryObject* anyContainer() { return anyContainer(all_.objects.size()); }

  // Returns an object that can be a key, or any object if there is none.
  std::size_t anyText() {
    const std::size_t start = anyIndex();
    for (std::size_t step = 0; step < all_.objects.size(); ++step) {
      const std::size_t index = (start + step) % all_.objects.size();
      if (kindOf(all_.objects[index]) == textKind || kindOf(all_.objects[index]) == wideTextKind) return index;
    }
    return start;
  }

  // Makes references large enough for the object numbers. Rarely does not, to test references that are too small.
  void widenReferences() {
    if (all_.objects.size() > 0xFF && below(16) != 0) all_.referenceSize = std::max(all_.referenceSize, 2U);
  }

  std::size_t append(BinaryObject object) {
    all_.objects.push_back(std::move(object));
    widenReferences();
    return all_.objects.size() - 1;
  }
  std::size_t appendText(std::string text) { return append({textMarker, std::move(text), {}, below(8) == 0}); }

  // Adds a value to a container; a dictionary gets an entry with this key.
  void insert(BinaryObject& container, std::uint64_t key, std::uint64_t value) {
    std::vector<std::uint64_t>& references = container.references;
    if (kindOf(container) != dictionaryKind) {
      references.insert(references.begin() + static_cast<std::ptrdiff_t>(below(references.size() + 1)), value);
      return;
    }
    const std::size_t count = references.size() / 2;
    const auto place = static_cast<std::ptrdiff_t>(below(count + 1));
    references.insert(references.begin() + static_cast<std::ptrdiff_t>(count) + place, value);
    references.insert(references.begin() + place, key);
  }

  // Returns an object of any kind, with a size that the kind can have.
  BinaryObject newObject() {
    static constexpr std::array<std::uint8_t, 18> markers{0x08, 0x09, 0x10, 0x11, 0x12, 0x13, 0x14, 0x22, 0x23,
                                                          0x33, 0x40, 0x50, 0x60, 0xA0, 0xD0, 0x80, 0xC0, 0x00};
    BinaryObject object;
    object.marker = markers[below(markers.size())];
    const bool sized = kindOf(object) >= integerKind && kindOf(object) <= dateKind;
    std::size_t size = sized ? std::size_t{1} << (object.marker & 0x0F) : 0;
    if (kindOf(object) >= dataKind && kindOf(object) <= wideTextKind) size = 2 * below(10);
    for (std::size_t byte = 0; byte < size; ++byte) object.content.push_back(static_cast<char>(below(256)));
    return object;
  }

  void addObject() {
    BinaryObject object = newObject();
    if (isContainer(object))
      for (std::size_t left = below(4); left > 0; --left) insert(object, anyText(), anyIndex());
    const std::size_t added = append(std::move(object));
    if (BinaryObject* container = anyContainer()) insert(*container, anyText(), added);
  }

  void removeReference() {
    BinaryObject* container = anyContainer();
    if (container == nullptr || container->references.empty()) return;
    std::vector<std::uint64_t>& references = container->references;
    if (kindOf(*container) == dictionaryKind && references.size() >= 2) {
      const auto place = static_cast<std::ptrdiff_t>(below(references.size() / 2));
      references.erase(references.begin() + static_cast<std::ptrdiff_t>(references.size() / 2) + place);
      references.erase(references.begin() + place);
      return;
    }
    references.erase(references.begin() + static_cast<std::ptrdiff_t>(below(references.size())));
  }

  void swapReferences() {
    BinaryObject* container = anyContainer();
    if (container == nullptr || container->references.empty()) return;
    const std::size_t count = container->references.size();
    std::swap(container->references[below(count)], container->references[below(count)]);
  }

  // Changes the target of a reference. This makes cycles and shared objects, and rarely a reference out of range.
  void redirect() {
    BinaryObject* container = anyContainer();
    if (container == nullptr || container->references.empty()) {
      all_.top = anyIndex();
      return;
    }
    const std::uint64_t target = below(32) == 0 ? all_.objects.size() + below(2) : anyIndex();
    container->references[below(container->references.size())] = target;
  }

  void insertReference() {
    if (BinaryObject* container = anyContainer()) insert(*container, anyText(), anyIndex());
  }

  // Changes the kind of an object: an array becomes a set or a dictionary, text becomes data or wide text.
  void changeMarker() {
    BinaryObject& object = all_.objects[anyIndex()];
    static constexpr std::array<std::uint8_t, 4> containers{0xA0, 0xD0, 0xC0, 0xB0};
    static constexpr std::array<std::uint8_t, 5> contents{0x40, 0x50, 0x60, 0x70, 0x80};
    if (isContainer(object))
      object.marker = containers[below(containers.size())];
    else if (kindOf(object) >= dataKind)
      object.marker = contents[below(contents.size())];
    else
      object.marker = static_cast<std::uint8_t>((object.marker & 0xF0) | below(16));
  }

  void changeSizes() {
    static constexpr std::array<unsigned, 6> sizes{1, 2, 3, 4, 5, 8};
    unsigned& size = below(2) == 0 ? all_.offsetSize : all_.referenceSize;
    size = sizes[below(sizes.size())];
    BinaryObject& object = all_.objects[anyIndex()];
    object.longCount = !object.longCount;
  }

  // Swaps two objects and updates the references, so the property list stays the same.
  void swapObjects() {
    const std::size_t one = anyIndex();
    const std::size_t other = anyIndex();
    std::swap(all_.objects[one], all_.objects[other]);
    const auto follow = [&](std::uint64_t& reference) {
      if (reference == one)
        reference = other;
      else if (reference == other)
        reference = one;
    };
    follow(all_.top);
    for (BinaryObject& object : all_.objects) std::ranges::for_each(object.references, follow);
  }

  void copyObject() {
    const std::size_t copied = append(all_.objects[anyIndex()]);
    if (BinaryObject* container = anyContainer(copied)) insert(*container, anyText(), copied);
  }

  // Adds a folder or a bookmark of Safari's shape over existing objects.
  void makeFolder() {
    const bool folder = below(3) != 0;
    BinaryObject node{dictionaryKind << 4, {}, {}, false};
    insert(node, appendText("WebBookmarkType"), appendText(folder ? "WebBookmarkTypeList" : "WebBookmarkTypeLeaf"));
    insert(node, appendText("Title"), anyText());
    if (folder) {
      BinaryObject children{arrayKind << 4, {}, {}, false};
      for (std::size_t left = below(6); left > 0; --left) insert(children, 0, anyIndex());
      insert(node, appendText("Children"), append(std::move(children)));
    }
    const std::size_t added = append(std::move(node));
    BinaryObject* container = anyContainer(added);
    if (container == nullptr || below(4) == 0)
      all_.top = added;
    else
      insert(*container, anyText(), added);
  }

  void changeContent(const ChangeBytes& changeBytes) {
    BinaryObject& object = all_.objects[anyIndex()];
    if (isContainer(object)) return swapReferences();
    const std::size_t size = object.content.size();
    constexpr std::size_t room = 16;
    object.content.resize(size + room);
    const std::size_t changed = changeBytes(reinterpret_cast<std::uint8_t*>(object.content.data()), size, size + room);
    // A number keeps its size, which is in its marker.
    object.content.resize(kindOf(object) < dataKind ? size : changed);
  }

  BinaryObjects& all_;
  std::minstd_rand random_;
};

std::uint64_t numberAt(const std::string& file, std::size_t place, std::size_t size) {
  return numberIn(std::span(reinterpret_cast<const std::uint8_t*>(file.data()), file.size()).subspan(place, size));
}

}  // namespace

void mutate(BinaryObjects& objects, unsigned seed, const ChangeBytes& changeBytes) {
  Mutation mutation(objects, seed);
  for (std::size_t left = 1 + mutation.below(3); left > 0; --left) mutation.mutate(changeBytes);
}

void graft(BinaryObjects& objects, const BinaryObjects& other, unsigned seed) { Mutation(objects, seed).graft(other); }

void tamper(std::string& file, unsigned seed) {
  std::minstd_rand random(seed);
  random.discard(2);
  const auto below = [&](std::size_t limit) { return random() % limit; };
  if (below(4) != 0) return;
  const std::size_t trailer = file.size() - binaryTrailerSize;
  const std::size_t offsetSize = static_cast<std::uint8_t>(file[trailer + 6]);
  const std::size_t table = numberAt(file, trailer + 24, 8);
  const std::size_t count = (trailer - table) / offsetSize;
  const auto anyEntry = [&] { return table + below(count) * offsetSize; };
  const auto flip = [&](std::size_t place) { file[place] = static_cast<char>(file[place] ^ (1 << below(8))); };
  const std::size_t entry = anyEntry();
  const std::size_t offset = std::min<std::size_t>(numberAt(file, entry, offsetSize), table - 1);
  switch (below(5)) {
    case 0: return void(file.replace(entry, offsetSize, file.substr(anyEntry(), offsetSize)));
    case 1: return flip(entry + offsetSize - 1);
    case 2: return flip(offset);
    case 3: return flip(offset + 1);
    default: return flip(trailer + 6 + below(binaryTrailerSize - 6));
  }
}
