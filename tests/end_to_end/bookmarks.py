"""A bookmark file with Safari's structure, and its titles in a form that is easy to compare."""
import plistlib


def leaf(title):
    return {
        "WebBookmarkType": "WebBookmarkTypeLeaf",
        "WebBookmarkUUID": f"leaf {title}",
        "URLString": f"https://example.com/{title.replace(' ', '-')}",
        "URIDictionary": {"title": title},
        "Sync": {"ServerData": bytes(range(20))},
    }


def folder(title, *children, **more):
    return {
        "WebBookmarkType": "WebBookmarkTypeList",
        "WebBookmarkUUID": f"folder {title}",
        "Title": title,
        "Children": list(children),
        **more,
    }


def unsorted_tree():
    reading_list = folder("com.apple.ReadingList", leaf("Read second"), leaf("Read first"))
    history = {"WebBookmarkType": "WebBookmarkTypeProxy", "WebBookmarkIdentifier": "History", "Title": "History"}
    bar = folder(
        "BookmarksBar",
        leaf("zebra"), leaf("Chapter 10"), leaf("Chapter 9"), leaf("Eggs"), leaf("éclairs"),
        folder("Recipes", leaf("Soup"), leaf("Bread"), folder("Cakes")),
        folder("Articles"),
    )
    return {
        "WebBookmarkFileVersion": 1,
        "WebBookmarkType": "WebBookmarkTypeList",
        "WebBookmarkUUID": "root",
        "Title": "",
        "Children": [history, bar, folder("BookmarksMenu", leaf("b"), leaf("a")), reading_list],
    }


# What `titles` returns for the tree above once it is sorted.
SORTED_TITLES = [
    "History",
    ["BookmarksBar",
     ["Articles"], ["Recipes", ["Cakes"], "Bread", "Soup"], "Chapter 9", "Chapter 10", "éclairs", "Eggs", "zebra"],
    ["BookmarksMenu", "a", "b"],
    ["com.apple.ReadingList", "Read second", "Read first"],
]


def titles(node):
    """The titles in a folder: text for a bookmark, and for a folder a list that starts with the folder's own title."""
    return [[child["Title"], *titles(child)] if "Children" in child
            else child.get("Title") or child["URIDictionary"]["title"] for child in node["Children"]]


def bookmarks_bar(tree):
    return next(child for child in tree["Children"] if child["Title"] == "BookmarksBar")


def serialized(tree, is_binary=True):
    return plistlib.dumps(tree, fmt=plistlib.FMT_BINARY if is_binary else plistlib.FMT_XML)
