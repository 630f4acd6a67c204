#!/usr/bin/env python3
"""Writes the demo's bookmark files: one tree with Safari's structure, in binary and in XML.

usage: make_demo_bookmarks.py [FOLDER]

FOLDER defaults to tests/data/demo. The output is the same on every run.
"""
import datetime
import pathlib
import plistlib
import sys
import uuid

NAMESPACE = uuid.UUID("6f9619ff-8b86-d011-b42d-00c04fc964ff")


def identifier(*path):
    return str(uuid.uuid5(NAMESPACE, "/".join(path))).upper()


def leaf(title, address):
    return {
        "URIDictionary": {"title": title},
        "URLString": address,
        "WebBookmarkType": "WebBookmarkTypeLeaf",
        "WebBookmarkUUID": identifier("leaf", title, address),
    }


def folder(title, *children):
    return {
        "Children": list(children),
        "Title": title,
        "WebBookmarkType": "WebBookmarkTypeList",
        "WebBookmarkUUID": identifier("folder", title),
    }


def proxy(title, name):
    return {
        "Title": title,
        "WebBookmarkIdentifier": name,
        "WebBookmarkType": "WebBookmarkTypeProxy",
        "WebBookmarkUUID": identifier("proxy", title),
    }


def saved(title, address, day, preview):
    entry = leaf(title, address)
    entry["ReadingList"] = {"DateAdded": datetime.datetime(2026, 3, day, 8, 30), "PreviewText": preview}
    entry["ReadingListNonSync"] = {"AddedLocally": True, "FetchResult": 1, "neverFetchMetadata": False}
    return entry


def synced(entry):
    name = entry["WebBookmarkUUID"]
    data = bytes.fromhex(name.replace("-", "")) * 3
    entry["Sync"] = {"Key": "\"" + name[:8] + "\"", "ServerData": data, "ServerID": name}
    return entry


def tree():
    bar = folder(
        "BookmarksBar",
        leaf("weather", "https://weather.example.org/"),
        synced(leaf("Chapter 10", "https://books.example.org/10")),
        leaf("Chapter 9", "https://books.example.org/9"),
        folder(
            "Recipes",
            leaf("Zucchini bread", "https://kitchen.example.org/zucchini"),
            leaf("éclairs", "https://kitchen.example.org/eclairs"),
            leaf("Eggs, poached", "https://kitchen.example.org/eggs"),
            folder("soups", leaf("Minestrone", "https://kitchen.example.org/minestrone")),
            folder("Bread", leaf("Rye", "https://kitchen.example.org/rye"),
                   leaf("baguette", "https://kitchen.example.org/baguette")),
        ),
        leaf("Änderungen", "https://news.example.org/de"),
        leaf("chapter 9", "https://books.example.org/9b"),
        leaf("", "https://untitled.example.org/"),
        folder("Archive"),
    )
    menu = folder(
        "BookmarksMenu",
        leaf("Trains", "https://travel.example.net/trains"),
        folder("com.apple.FavoritesProxy", leaf("b", "https://b.example.net/"), leaf("a", "https://a.example.net/")),
        leaf("🚀 Launches", "https://space.example.net/"),
        proxy("Frequently visited", "Frequent"),
        leaf("アニメ", "https://anime.example.net/"),
        leaf("airports", "https://travel.example.net/airports"),
        synced(folder("Work", leaf("Wiki", "https://wiki.example.net/"), leaf("CI", "https://ci.example.net/"))),
    )
    reading_list = folder(
        "com.apple.ReadingList",
        saved("Why tides are late", "https://journal.example.com/tides", 14,
              "The moon passes overhead, and the sea follows."),
        saved("A short history of the full stop", "https://journal.example.com/stop", 9,
              "It was not always at the end."),
    )
    return {
        "Children": [proxy("History", "History"), bar, menu, reading_list],
        "Title": "",
        "WebBookmarkFileVersion": 1,
        "WebBookmarkType": "WebBookmarkTypeList",
        "WebBookmarkUUID": "Root",
    }


def main():
    default = pathlib.Path(__file__).resolve().parent.parent / "tests/data/demo"
    target = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else default
    target.mkdir(parents=True, exist_ok=True)
    for name, form in [("binary", plistlib.FMT_BINARY), ("xml", plistlib.FMT_XML)]:
        (target / f"Bookmarks.{name}.plist").write_bytes(plistlib.dumps(tree(), fmt=form))


if __name__ == "__main__":
    main()
