"""The feed of updates: RSS with Sparkle's elements, an item for each version, system and kind of processor.

Sparkle asks for an item for each system, because sparkle:minimumSystemVersion belongs to the item. An item without
sparkle:os is for Macs. Sparkle does not look at quillery:processor, because a Mac's enclosure is for every processor.
"""
import dataclasses
import datetime
import email.utils
import re
import urllib.parse
import xml.etree.ElementTree as ElementTree

import product
from signing import SIGNATURE_SIZE, Refusal, decoded

SPARKLE = "http://www.andymatuschak.org/xml-namespaces/sparkle"
QUILLERY = product.values()["FEED_NAMESPACE"]
VERSION = re.compile(r"\d+(\.\d+){1,2}")
ElementTree.register_namespace("sparkle", SPARKLE)
ElementTree.register_namespace("quillery", QUILLERY)


def sparkle(name):
    return f"{{{SPARKLE}}}{name}"


def order_of(version):
    """What versions are ordered by. As in Sparkle, 1.2 and 1.2.0 are equal."""
    numbers = [int(number) for number in version.split(".")]
    return numbers + [0] * (3 - len(numbers))


@dataclasses.dataclass
class Item:
    version: str
    system: str  # "macos" or "linux"
    processor: str  # as the system calls it; empty for every processor
    minimum_system: str
    address: str
    length: int
    signature: str
    media_type: str
    notes: str
    date: datetime.datetime

    def problems(self):
        """What is wrong with the item, as sentences."""
        if not VERSION.fullmatch(self.version):
            yield f"“{self.version}” is not a version of two or three numbers"
        if self.system not in ("macos", "linux"):
            yield f"“{self.system}” is no system of ours"
        if urllib.parse.urlsplit(self.address).scheme != "https":
            yield f"the address {self.address} is not https"
        if self.length <= 0:
            yield "the length of the enclosure is missing"
        if not self.notes.strip():
            yield "there are no release notes"
        try:
            decoded(self.signature, SIGNATURE_SIZE, "the signature")
        except Refusal as refusal:
            yield str(refusal)

    def element(self):
        item = ElementTree.Element("item")

        def add(name, text, **attributes):
            ElementTree.SubElement(item, name, attributes).text = text

        add("title", f"Version {self.version}")
        add("pubDate", email.utils.format_datetime(self.date))
        add(sparkle("version"), self.version)
        add(sparkle("shortVersionString"), self.version)
        add(sparkle("minimumSystemVersion"), self.minimum_system)
        add("description", self.notes, **{sparkle("format"): "plain-text"})
        enclosure = {"url": self.address, "length": str(self.length), "type": self.media_type,
                     sparkle("os"): self.system, sparkle("edSignature"): self.signature}
        if self.processor:
            enclosure[f"{{{QUILLERY}}}processor"] = self.processor
        ElementTree.SubElement(item, "enclosure", enclosure)
        return item


def item_of(element):
    """The item that an element describes."""
    enclosure = element.find("enclosure")
    if enclosure is None:
        raise Refusal("the appcast has an item without an enclosure")
    text = {name: element.findtext(name, "").strip() for name in
            ["pubDate", "description", sparkle("version"), sparkle("minimumSystemVersion")]}
    try:
        return Item(version=text[sparkle("version")], system=enclosure.get(sparkle("os"), "macos"),
                    processor=enclosure.get(f"{{{QUILLERY}}}processor", ""),
                    minimum_system=text[sparkle("minimumSystemVersion")], address=enclosure.get("url", ""),
                    length=int(enclosure.get("length", "0")), signature=enclosure.get(sparkle("edSignature"), ""),
                    media_type=enclosure.get("type", ""), notes=text["description"],
                    date=email.utils.parsedate_to_datetime(text["pubDate"]))
    except (TypeError, ValueError) as error:
        raise Refusal(f"the appcast has an item that cannot be read: {error}") from error


def read(path):
    """The items of an appcast."""
    try:
        root = ElementTree.parse(path).getroot()
    except (OSError, ElementTree.ParseError) as error:
        raise Refusal(f"the appcast {path} cannot be read: {error}") from error
    items = [item_of(element) for element in root.findall("channel/item")]
    require_sound(items)
    return items


def require_sound(items):
    """Refuses items that an updater would not take."""
    for item in items:
        for problem in item.problems():
            raise Refusal(f"version {item.version} for {item.system}: {problem}")


def require_newer(items, system, processor, version, date):
    """Refuses a version for a system and processor unless it is newer than its items, by its number and by its date."""
    for item in items:
        if (item.system, item.processor) != (system, processor):
            continue
        if order_of(item.version) >= order_of(version):
            raise Refusal(f"version {version} is not newer than {item.version}, which the appcast has")
        if item.date >= date:
            raise Refusal(f"the time of the release in product.cmake is not later than that of version {item.version}")


def extended(items, new):
    """The items with a new one, the newest first."""
    require_sound([new])
    return sorted([new, *items], key=lambda item: (order_of(item.version), item.system, item.processor), reverse=True)


def write(path, items, name, page):
    """Writes the appcast of a product with a name and a web page."""
    root = ElementTree.Element("rss", version="2.0")
    channel = ElementTree.SubElement(root, "channel")
    for element, text in [("title", name), ("link", page), ("description", f"Updates of {name}"), ("language", "en")]:
        ElementTree.SubElement(channel, element).text = text
    channel.extend(item.element() for item in items)
    ElementTree.indent(root)
    path.write_bytes(ElementTree.tostring(root, encoding="utf-8", xml_declaration=True) + b"\n")
