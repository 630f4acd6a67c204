"""Random property lists: bookmark trees with values of every type, as Python's plistlib can write them."""
import datetime
import plistlib

LIST, LEAF, PROXY = "WebBookmarkTypeList", "WebBookmarkTypeLeaf", "WebBookmarkTypeProxy"
READING_LIST = "com.apple.ReadingList"

WORDS = ["chapter", "Chapter", "a", "B", "b", "zebra", "éclair", "Ärger", "ångström", "straße", "İstanbul", "ﬁle", "日本",
         "한국어", "עברית", "русский", "e\u0301", "\u00e9", "👩‍👩‍👧", "𝔘𝔫𝔦", "&<>\"'", "]]>", "-", ".", "", " ", "\t", "\n", "\r\n",
         "com.apple.", "ﷺ", "\u200b", "\u2028", "\u202e", "٣", "Ⅷ", "½"]
CONTROLS = ["\0", "\1", "\x1b[31m", "\x7f", "\x85", "\ufffe"]  # XML cannot hold these, or not all of them
INTEGERS = [0, 1, -1, 127, 128, 255, 256, 65535, 65536, 2**31, -2**31, 2**32, 2**63 - 1, 2**63, 2**64 - 1, -2**63]
REALS = [0.0, -0.0, 1.0, -1.5, 0.1, 1e300, 5e-324, 1.7976931348623157e308, float("inf"), float("-inf"), float("nan")]


class RandomList:
    """Draws one property list. `binary` says which format it is for; `oddity` is what makes it unreadable for the
    program, None if nothing does."""

    def __init__(self, lot, binary):
        self.lot = lot
        self.binary = binary
        self.shared = []  # containers that may be used again, so that the file refers to them from several places
        self.simple = lot.random() < 0.4  # whether all titles are plain words and numbers
        self.left = lot.choice((4, 20, 40, 40, 80, 300))  # nodes still to be made
        self.oddity = None

    def chance(self, probability):
        return self.lot.random() < probability

    def text(self):
        if self.simple:
            return " ".join(self.lot.choice(("a", "b", "chapter", "Zoo", self.number())) for _ in range(2))
        parts = [self.lot.choice((self.lot.choice(WORDS), self.number())) for _ in range(self.lot.randrange(5))]
        if self.binary and self.chance(0.02):
            parts.append(self.lot.choice(CONTROLS))
        if self.chance(0.02):
            parts.append("long" * self.lot.randrange(400))
        return "".join(parts)

    def number(self):
        return str(self.lot.randrange(10 ** self.lot.randrange(1, 5))).rjust(self.lot.choice((0, 0, 0, 4)), "0")

    def instant(self):
        return datetime.datetime(1, 1, 1) + datetime.timedelta(seconds=self.lot.randrange(9998 * 365 * 86400))

    def scalar(self):
        lot = self.lot
        return lot.choice((
            self.text,
            lambda: lot.choice(INTEGERS),
            lambda: lot.randrange(-2**63, 2**64),
            lambda: lot.choice(REALS),
            lambda: lot.gauss(0, 1e6),
            lambda: self.chance(0.5),
            self.instant,
            lambda: lot.randbytes(lot.choice((0, 1, 14, 15, 16, 60, 300))),
        ))()

    def value(self, depth=0):
        """Any value that is no bookmark."""
        if self.shared and self.chance(0.05):
            return self.lot.choice(self.shared)
        if depth > 3 or self.chance(0.7):
            return self.scalar()
        if self.chance(0.5):
            result = [self.value(depth + 1) for _ in range(self.lot.choice((0, 1, 2, 5, 16)))]
        else:
            result = {self.text(): self.value(depth + 1) for _ in range(self.lot.randrange(6))}
        if self.chance(0.3):
            self.shared.append(result)
        return result

    def title_fields(self):
        """The fields that give a bookmark its title, in any of the ways that there are."""
        kind = self.lot.random()
        if kind < 0.5:
            return {"Title": self.text()}
        if kind < 0.8:
            return {"URIDictionary": {"title": self.text(), "": self.scalar()}}
        if kind < 0.85:
            return {"Title": self.scalar(), "URIDictionary": {"title": self.scalar()}}
        if kind < 0.9:
            return {"Title": "com.apple." + self.text()}
        if kind < 0.92:
            return {"Title": READING_LIST}
        if kind < 0.95:
            return {"URIDictionary": self.scalar()}
        return {}

    def kind_field(self, kinds):
        kind = self.lot.choice(kinds)
        return {} if kind is None else {"WebBookmarkType": kind}

    def node(self, depth):
        self.left -= 1
        is_folder = depth < 12 and self.chance(0.8 if depth == 1 else 0.35)
        usual = LIST if is_folder else LEAF
        fields = {**self.kind_field((usual,) * 12 + (LIST, LEAF, PROXY, None, 7)), **self.title_fields()}
        for _ in range(self.lot.choice((0, 0, 1, 2))):
            fields[self.text()] = self.value()
        if is_folder:
            fields["Children"] = self.children(depth)
        elif self.chance(0.02):
            fields["Children"] = self.value()
        items = list(fields.items())
        self.lot.shuffle(items)
        return dict(items)

    def children(self, depth):
        """The entries of a folder. Some are entries of another folder, too."""
        entries = []
        for _ in range(self.lot.choice((0, 1, 2, 3, 5, 8, 12, 20))):
            if self.left <= 0:
                break
            nodes = [value for value in self.shared if isinstance(value, dict)]
            if nodes and self.chance(0.04):
                entries.append(self.lot.choice(nodes))
                continue
            entries.append(self.node(depth + 1))
            if self.chance(0.04):
                self.shared.append(entries[-1])
        if entries and self.chance(0.01):
            entries.append(self.scalar())
        return entries

    def root(self):
        entries = [self.node(1) for _ in range(self.lot.choice((0, 1, 3, 4, 5)))]
        result = {**self.kind_field((LIST, LIST, PROXY, None)), "Title": self.lot.choice(("", self.text())),
                  "Children": entries, "More": self.value()}
        if self.chance(0.03):
            self.oddity = "no bookmark tree"
            mixed = {**result, "Children": [*entries, "text"]}
            result = self.lot.choice((mixed, {"Children": {}}, {}, entries, "text"))
        elif self.binary and self.chance(0.03):
            self.oddity = "a value that only keyed archives have"
            result[self.text()] = self.lot.choice((plistlib.UID(self.lot.randrange(1000)), None))
        return result
