"""Files of at most a megabyte that try to take much time or memory. Each function makes one; its name is the case."""
import functools
import inspect
import itertools
import random

from binary_file import BinaryFile

LARGEST = 1_000_000
LETTERS = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-"
LEAF = "<dict><key>WebBookmarkType</key><string>WebBookmarkTypeLeaf</string><key>Title</key><string>%s</string></dict>"


def cycled(items, count):
    return list(itertools.islice(itertools.cycle(items), count))


def one_folder(file, children):
    return file.content(file.folder("", [file.folder("all", children)]))


def xml(content):
    """An XML file with one folder whose children are given."""
    return ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict><key>Children</key><array><dict>"
            "<key>WebBookmarkType</key><string>WebBookmarkTypeList</string><key>Children</key><array>" + content +
            "</array></dict></array></dict></plist>\n").encode()


def leaves(titles):
    return xml("".join(LEAF % title for title in titles))


def numbered(count, length, digits=6):
    """Different titles in descending order, of which a comparison reads all: letters are compared before their case."""
    return ["xX"[number % 2] + "x" * (length - digits - 1) + str(number).zfill(digits) for number in range(count, 0, -1)]


# Titles

def titles_of_256_units_shared(size=LARGEST):
    file = BinaryFile()
    shared = [file.leaf(title) for title in numbered(200, 256)]
    return one_folder(file, cycled(shared, (size - 60_000) // 2))


def titles_of_256_units_shared_in_121_kb():
    return titles_of_256_units_shared(121_000)


def titles_of_three_units_shared():
    file = BinaryFile(1)
    shared = [file.leaf(title) for title in numbered(80, 3, digits=2)]
    return one_folder(file, cycled(shared, LARGEST - 3_000))


def titles_shared_by_many_folders():
    file = BinaryFile()
    shared = [file.leaf(title) for title in numbered(16, 20_000)]
    folders = [file.folder("f", cycled(shared[index % 16:] + shared[:index % 16], 16)) for index in range(11_000)]
    return one_folder(file, folders)


def long_titles_of_many_folders():
    file = BinaryFile(3)
    titles = [file.string(title) for title in numbered(100, 4_000)]
    folders = [file.folder(titles[index % 100], [file.leaf("a" + str(index)), file.leaf(titles[index * 7 % 100])])
               for index in range(7_500)]
    return one_folder(file, folders)


def ignorable_title(character="\u00AD"):
    file = BinaryFile(3)
    short = [file.leaf(str(number)) for number in range(20_000, 0, -1)]
    return one_folder(file, [*short[:10_000], file.leaf(character * 220_000), *short[10_000:]])


def control_characters_in_a_title():
    return ignorable_title("\u0001")


def ignorable_titles_of_many_lengths():
    return leaves("\u00AD" * (400 + number % 100) + str(number) for number in range(900, 0, -1))


def combining_marks_out_of_order():
    return leaves(["e" + "\u0301\u0323" * 110_000 + "b", "e" + "\u0301\u0323" * 110_000 + "a"])


def combining_marks_of_two_letters():
    return leaves(["e" + "\u0301\u0323" * 110_000, "E" + "\u0301\u0323" * 110_000])


def marks_of_two_classes():
    return leaves(["E" + "\u0301" * 100_000 + "\u0323" * 100_000, "e" + "\u0301" * 100_000 + "\u0323" * 100_000])


def combining_marks_in_titles():
    return leaves("eE"[number % 2] + "\u0301\u0323" * 200 + bin(number) for number in range(1_000, 0, -1))


def marks_after_different_letters():
    return leaves([("e" if number % 2 else "E") + "\u0301\u0323\u0327" * 300 + str(number) for number in range(420)])


def hangul_jamo():
    return leaves(("\u1100\u1161\u11A8" * 100 + str(number)) for number in range(900, 0, -1))


def tibetan_vowels():
    return leaves("\u0FB2\u0F71\u0F80\u0F71" * 20_000 + str(number) for number in range(4, 0, -1))


def thai_vowels():
    return leaves(("\u0E40\u0E01\u0E40\u0E02" * 30 + str(number)) for number in range(2_000, 0, -1))


def digits_outside_ascii():
    return leaves("\u0663" * 200 + str(number) + "x" for number in range(1_800, 0, -1))


def digits_outside_ascii_long():
    return leaves("\u0663" * 20_000 + str(number) for number in range(22, 0, -1))


def digits_outside_ascii_shared():
    file = BinaryFile()
    shared = [file.leaf("\u0663" * 2_000 + str(number)) for number in range(200, 0, -1)]
    return one_folder(file, cycled(shared, 90_000))


def numbers_of_many_digits():
    return leaves("1" * 1_000 + str(number) for number in range(850, 0, -1))


def numbers_with_many_zeros():
    return leaves("0" * (300 + number % 7) + "1" for number in range(2_300, 0, -1))


def many_numbers_in_titles():
    return leaves("01 " * 300 + str(number) for number in range(900, 0, -1))


def titles_that_differ_in_case():
    return leaves(("aB" if number % 2 else "Ab") + "xY" * 150 + bin(number) for number in range(2_200, 0, -1))


def titles_that_differ_in_accents():
    return leaves(("\u00e9" if number % 2 else "e") + "\u00e9" * 200 + bin(number) for number in range(1_800, 0, -1))


def chinese_titles():
    return leaves("".join(chr(0x4E00 + (number * 7919 + place * 104729) % 20_000) for place in range(100))
                  for number in range(2_200, 0, -1))


def rare_chinese_titles():
    return leaves(chr(0x20000 + number % 7) + "".join(chr(0x20000 + place * 104729 % 40_000) for place in range(60)) +
                  str(number) for number in range(2_500, 0, -1))


def a_title_of_a_megabyte():
    file = BinaryFile(3)
    return one_folder(file, [file.leaf("y" * 400_000 + "b"), file.leaf("y" * 400_000 + "a")])


def a_long_title_shared():
    file = BinaryFile()
    title = file.string("\u0301" * 150_000)
    shared = [file.leaf(title, (file.string("k"), file.string(str(number)))) for number in range(10_000)]
    return one_folder(file, [*cycled(shared, 200_000), file.leaf("a")])


def long_titles_shared_between_folders_of_one_size(size=402_000):
    file = BinaryFile()
    shared = [file.leaf(title) for title in numbered(50, 4_000)]
    return one_folder(file, cycled(shared, (size - 210_000) // 2))


def control_characters_shared():
    file = BinaryFile()
    shared = [file.leaf("\x1b" * 4_000 + str(number)) for number in range(100, 0, -1)]
    return one_folder(file, cycled(shared, 280_000))


# Lists and folders

def one_list_in_many_folders(valid=True, size=LARGEST):
    file = BinaryFile()
    entries = [file.leaf(title) for title in ("b", "a")] if valid else [file.leaf("a"), file.string("no entry")]
    count = size // 4
    children = file.array([*cycled(entries[:1], count), entries[1]])
    key, types = file.string("Children"), file.string("WebBookmarkType")
    kind = file.string("WebBookmarkTypeList")
    folders = []
    while len(folders) * 15 < size // 2 - 10_000:
        folders.append(file.dictionary([(types, kind), (key, children)]))
    return one_folder(file, folders)


def one_invalid_list_in_many_folders():
    return one_list_in_many_folders(False)


def one_invalid_list_in_78_kb():
    return one_list_in_many_folders(False, 78_000)


def one_empty_folder_in_a_large_list():
    file = BinaryFile(1)
    return one_folder(file, cycled([file.folder("b", []), file.folder("a", [])], LARGEST - 1_000))


def one_folder_in_a_large_list():
    file = BinaryFile(1)
    inner = file.folder("c", [file.leaf("b"), file.leaf("a")])
    return one_folder(file, cycled([inner, file.folder("a", [inner])], LARGEST - 1_000))


def folders_shared_at_each_level():
    file = BinaryFile()
    folder = file.folder("0", [file.leaf("z"), file.leaf("a")])
    for level in range(1, 200):
        folder = file.folder(str(level), [folder, folder])
    return one_folder(file, [folder])


def large_lists_at_each_level():
    file = BinaryFile()
    folder = file.folder("0", [file.leaf("z"), file.leaf("a")])
    for level in range(1, 200):
        folder = file.folder("f" + str(level), cycled([folder, file.leaf("a")], 2_000))
    return one_folder(file, [folder])


def folders_250_levels_deep():
    file = BinaryFile(3)
    bottom = file.folder("x", [file.leaf("b"), file.leaf("a")])
    folders = []
    for branch in range(90):
        folder = bottom
        for level in range(250):
            folder = file.folder(str(branch), [folder])
        folders.append(folder)
    return one_folder(file, folders)


def lists_in_reverse_order():
    return leaves(str(number).zfill(5) for number in range(8_500, 0, -1))


def many_entries_of_other_types():
    file = BinaryFile(1)
    return one_folder(file, cycled([file.dictionary([]), file.leaf("b"), file.leaf("a")], LARGEST - 1_000))


# Dictionaries and keys

def wide_entry_shared(entries=64):
    file = BinaryFile(2)
    more = [(file.string("key " + str(number)), file.string("v")) for number in range(entries - 2)]
    shared = [file.leaf("b", *more), file.leaf("a", *more)]
    return one_folder(file, cycled(shared, (LARGEST - 20_000 - 16 * entries) // 2))


def very_wide_entry_shared():
    return wide_entry_shared(5_000)


def a_long_key_in_many_folders():
    file = BinaryFile()
    key = file.string("k" * 300_000)
    value = file.string("v")
    leaves_inside = file.array([file.leaf("b"), file.leaf("a")])
    return one_folder(file, [file.folder("f", leaves_inside, (key, value)) for _ in range(20_000)])


def hash_of(text, start=2166136261):
    value = start
    for character in text:
        value = (value ^ ord(character)) * 16777619 & 0xFFFFFFFF
    return value


@functools.lru_cache
def colliding(count):
    """Returns texts of equal hash: pairs of blocks of six characters, each of which leads to the same hash."""
    chance = random.Random(1)
    texts, state = [""], hash_of("")
    while len(texts) < count:
        seen = {}
        while True:
            block = "".join(chance.choices(LETTERS, k=6))
            value = hash_of(block, state)
            if seen.setdefault(value, block) != block:
                break
        texts = [text + choice for text in texts for choice in (seen[value], block)]
        state = value
    return texts


@functools.lru_cache
def prefixed_collisions(count, bits):
    """Returns texts of eight characters whose hashes agree in a few low bits."""
    mask = (1 << bits) - 1
    inverse = pow(16777619, -1, 1 << 32)
    target = hash_of("target")
    suffixes = {}
    for suffix in map("".join, itertools.product(LETTERS, repeat=3)):
        value = target
        for character in reversed(suffix):
            value = (value * inverse & 0xFFFFFFFF) ^ ord(character)
        suffixes.setdefault(value & mask, []).append(suffix)
    found = (prefix + suffix for prefix in map("".join, itertools.product(LETTERS, repeat=3))
             for suffix in suffixes.get(hash_of(prefix) & mask, []))
    return list(itertools.islice(found, count))


def keys_of_equal_hash():
    file = BinaryFile(2)
    value = file.string("v")
    entries = [(file.string(key), value) for key in colliding(8_192)]
    return one_folder(file, [file.leaf("b", *entries), file.leaf("a")])


def keys_of_equal_hash_in_xml():
    entries = "".join(f"<key>{key}</key><true/>" for key in colliding(8_192))
    return xml("<dict>" + entries + "</dict>")


def keys_of_nearly_equal_hash():
    file = BinaryFile(3)
    value = file.string("v")
    entries = [(file.string(key), value) for key in prefixed_collisions(60_000, 18)]
    return one_folder(file, [file.leaf("b", *entries), file.leaf("a")])


def keys_of_nearly_equal_hash_in_xml():
    entries = "".join(f"<key>{key}</key><true/>" for key in prefixed_collisions(38_000, 18))
    return xml("<dict>" + entries + "</dict>")


def few_keys_of_equal_hash_in_a_shared_entry():
    """The hash is that of a key that each entry is searched for."""
    file = BinaryFile(1)
    title = file.string("Title")
    target = hash_of("Title")
    inverse = pow(16777619, -1, 1 << 32)
    prefixes = {hash_of(prefix): prefix for prefix in map("".join, itertools.product(LETTERS, repeat=3))}
    more = []
    for suffix in itertools.product(LETTERS, repeat=4):
        value = target
        for character in reversed(suffix):
            value = (value * inverse & 0xFFFFFFFF) ^ ord(character)
        if value in prefixes:
            more.append((file.string(prefixes[value] + "".join(suffix)), title))
            if len(more) == 60:
                break
    shared = [file.leaf("b", *more), file.leaf("a", *more)]
    return one_folder(file, cycled(shared, LARGEST - 3_000))


def a_long_key_whose_hash_is_zero():
    file = BinaryFile()
    start = "k" * 300_000
    state = hash_of(start)
    inverse = pow(16777619, -1, 1 << 32)
    forward = {hash_of(text, state): text for text in map("".join, itertools.product(LETTERS, repeat=3))}
    for suffix in itertools.product(LETTERS, repeat=4):
        value = 0
        for character in reversed(suffix):
            value = (value * inverse & 0xFFFFFFFF) ^ ord(character)
        if value in forward:
            break
    key = file.string(start + forward[value] + "".join(suffix))
    assert hash_of(file.objects[key][6:].decode()) == 0
    return one_folder(file, [file.leaf("b", (key, file.string("v"))) for _ in range(25_000)])


def long_keys_in_many_wide_folders():
    file = BinaryFile()
    value = file.string("v")
    more = [(file.string(str(number) + "k" * 7_000), value) for number in range(70)]
    children = file.array([file.leaf("b"), file.leaf("a")])
    return one_folder(file, [file.folder("f", children, *more) for _ in range(1_600)])


def a_dictionary_of_many_keys_in_each_folder():
    file = BinaryFile(3)
    more = [(file.string(str(number)), file.string("v")) for number in range(20_000)]
    children = file.array([file.leaf("b"), file.leaf("a")])
    return one_folder(file, [file.folder("f", children, *more) for _ in range(5)])


def many_objects_of_one_byte():
    file = BinaryFile(3)
    return one_folder(file, [file.leaf("b", (file.string("k"), file.array([file.add(b"\x08") for _ in range(140_000)]))),
                             file.leaf("a")])


def many_references_to_scalars():
    file = BinaryFile(1)
    truth = file.add(b"\x09")
    return one_folder(file, [file.leaf("b", (file.string("k"), file.array([truth] * (LARGEST - 1_000)))),
                             file.leaf("a")])


# Text

def many_empty_dictionaries():
    return xml("<dict/>" * 140_000)


def many_empty_arrays():
    return xml("<dict><key>k</key><array>" + "<array/>" * 120_000 + "</array></dict>" + LEAF % "b" + LEAF % "a")


def many_comments():
    return xml("<!---->" * 70_000 + LEAF % "b" + "<?x?>" * 95_000 + LEAF % "a")


def many_attributes():
    return xml(LEAF % "b" + "<dict " + "a=\"b\" " * 160_000 + "/>" + LEAF % "a")


def many_equal_keys():
    return xml("<dict>" + "<key>k</key><true/>" * 50_000 + "</dict>" + LEAF % "b" + LEAF % "a")


def many_references_to_characters():
    return xml(LEAF % ("&lt;" * 120_000 + "b") + LEAF % ("&#60;" * 95_000 + "a"))


def many_sections_of_character_data():
    return xml(LEAF % ("<![CDATA[]]>" * 40_000 + "b") + LEAF % ("<![CDATA[]]>" * 40_000 + "a"))


def a_real_of_many_digits():
    return xml("<dict><key>k</key><real>1." + "1" * 900_000 + "e-5</real></dict>" + LEAF % "b" + LEAF % "a")


def an_integer_of_many_digits():
    return xml("<dict><key>k</key><integer>" + "0" * 900_000 + "1</integer></dict>" + LEAF % "b" + LEAF % "a")


def data_of_a_megabyte():
    return xml("<dict><key>k</key><data>" + "A \n" * 300_000 + "</data></dict>" + LEAF % "b" + LEAF % "a")


def nested_too_deeply():
    return xml("<array>" * 120_000)


def nested_property_lists():
    return b"<plist>" * 140_000


def utf16_text():
    text = leaves("\u4e00" + str(number) for number in range(3_700, 0, -1)).decode()
    return b"\xff\xfe" + text.replace("UTF-8", "UTF-16").encode("utf-16-le")


def declared_encoding(name="ISO-2022-JP"):
    return leaves(["b" * 400_000, "a" * 400_000]).replace(b"UTF-8", name.encode(), 1)


def old_style(content):
    return ("{ Children = ( { WebBookmarkType = WebBookmarkTypeList; Children = (" + content + "); } ); }").encode()


def old_style_leaves():
    return old_style(",".join("{WebBookmarkType=WebBookmarkTypeLeaf;Title=%d;}" % number
                              for number in range(19_000, 0, -1)))


def old_style_comments():
    return old_style("/**/" * 120_000 + "{WebBookmarkType=WebBookmarkTypeLeaf;}," + "//\n" * 150_000)


def old_style_unterminated_comments():
    return old_style("/*" * 490_000)


def old_style_escapes():
    return old_style("{Title=\"" + "\\U0301\\U0323" * 40_000 + "\";},{Title='" + "\\\"" * 220_000 + "';}")


def old_style_keys_of_equal_hash():
    return old_style("{" + "".join(key.replace("-", "$") + ";" for key in prefixed_collisions(120_000, 18)) + "}")


def old_style_strings():
    return b"a " * 490_000


def old_style_nested():
    return b"(" * 990_000


def utf8_errors():
    return old_style("\n" * 900_000) + b"\xff"


# Functions that need no arguments.
CASES = [case for case in list(globals().values()) if inspect.isfunction(case) and case.__module__ == __name__ and
         all(parameter.default is not parameter.empty for parameter in inspect.signature(case).parameters.values())]
