"""The maker's values."""
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]


def values(tree=ROOT):
    """What product.cmake of a tree sets, by the names without "QUILLERY_"."""
    text = (tree / "product.cmake").read_text(encoding="utf-8")
    return dict(re.findall(r'^set\(QUILLERY_(\w+) "(.*)"\)$', text, re.MULTILINE))
