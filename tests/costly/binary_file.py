"""Writes binary property lists object by object, with any references, so that objects can be shared."""
import struct


class BinaryFile:
    def __init__(self, reference_size=2):
        self.reference_size = reference_size
        self.objects = []
        self.strings = {}

    def add(self, content):
        self.objects.append(content)
        return len(self.objects) - 1

    @staticmethod
    def counted(marker, count):
        if count < 15:
            return bytes([marker | count])
        return bytes([marker | 15, 0x12]) + struct.pack(">I", count)

    def references(self, numbers):
        size = self.reference_size
        return b"".join(number.to_bytes(size, "big") for number in numbers)

    def string(self, text):
        """Adds a string, or returns the object that has it already."""
        if text not in self.strings:
            self.strings[text] = self.new_string(text)
        return self.strings[text]

    def new_string(self, text):
        if text.isascii():
            return self.add(self.counted(0x50, len(text)) + text.encode("ascii"))
        units = text.encode("utf-16-be", "surrogatepass")
        return self.add(self.counted(0x60, len(units) // 2) + units)

    def array(self, elements):
        return self.add(self.counted(0xA0, len(elements)) + self.references(elements))

    def dictionary(self, entries):
        """Adds a dictionary of pairs of object numbers."""
        entries = list(entries)
        return self.add(self.counted(0xD0, len(entries)) + self.references([key for key, _ in entries]) +
                        self.references([value for _, value in entries]))

    def node(self, type_name, title, *more):
        """Adds a node with a title (a text or the number of a string) and more entries."""
        number = title if isinstance(title, int) else self.string(title)
        return self.dictionary([(self.string("WebBookmarkType"), self.string(type_name)),
                                (self.string("Title"), number), *more])

    def leaf(self, title, *more):
        return self.node("WebBookmarkTypeLeaf", title, *more)

    def folder(self, title, children, *more):
        """Adds a folder; `children` are numbers of entries, or the number of an array."""
        array = children if isinstance(children, int) else self.array(children)
        return self.node("WebBookmarkTypeList", title, (self.string("Children"), array), *more)

    def content(self, top):
        """Returns the file with this top object."""
        body = bytearray(b"bplist00")
        offsets = []
        for content in self.objects:
            offsets.append(len(body))
            body += content
        table = len(body)
        offset_size = (table.bit_length() + 7) // 8
        for offset in offsets:
            body += offset.to_bytes(offset_size, "big")
        return bytes(body) + struct.pack(">6xBBQQQ", offset_size, self.reference_size, len(offsets), top, table)
