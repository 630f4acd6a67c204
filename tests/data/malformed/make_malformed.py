#!/usr/bin/env python3
"""Writes property lists that are no such thing, one for each way that a format can be wrong.

usage: make_malformed.py [FOLDER]

FOLDER is the one that this program is in unless given. The same bytes come out each time. What is said of each file is
in messages.tsv, together with what is said of the refused files in tests/data/property_lists, which are not made again
here.
"""
import pathlib
import sys


def count(kind, number):
    """The marker of an object of that kind with that many things in it."""
    return bytes([kind << 4 | number]) if number < 15 else bytes([kind << 4 | 15, 0x11]) + number.to_bytes(2, "big")


def text(ascii_text):
    return count(5, len(ascii_text)) + ascii_text.encode()


def array(*references):
    return count(10, len(references)) + bytes(references)


def dictionary(keys, values):
    return count(13, len(keys)) + bytes(keys) + bytes(values)


def binary(*objects, top=0, offset_size=1, reference_size=1, offsets=None, number=None, table=None, between=b""):
    """A binary property list of these objects; each of the other things may be other than it should be."""
    body = b"bplist00"
    places = []
    for item in objects:
        places.append(len(body))
        body += item
    width = max(1, offset_size)
    body += between
    start = len(body)
    body += b"".join(place.to_bytes(width, "big") for place in (offsets or places))
    return (body + bytes(6) + bytes([offset_size, reference_size])
            + (len(objects) if number is None else number).to_bytes(8, "big") + top.to_bytes(8, "big")
            + (start if table is None else table).to_bytes(8, "big"))


def nested(levels):
    """That many arrays, each in the one before."""
    outer = (count(10, 1) + (level + 1).to_bytes(2, "big") for level in range(levels - 1))
    return binary(*outer, array(), reference_size=2, offset_size=2)


def cut_after(content, part):
    return content[:content.index(part) + len(part)]


WHOLE = binary(dictionary([1], [2]), text("Children"), array())

BINARY = {
    "cut-in-header": WHOLE[:8],
    "cut-in-objects": WHOLE[:20],
    "cut-in-trailer": WHOLE[:-1],
    "byte-too-many": WHOLE + b"\0",
    "offset-size-0": binary(array(), offset_size=0),
    "reference-size-0": binary(array(), reference_size=0),
    "no-objects": binary(array(), number=0),
    "top-out-of-range": binary(array(), top=1),
    "table-in-header": binary(array(), table=3),
    "table-beyond": binary(array(), table=1000),
    "table-too-short": binary(array(), array(), number=1),
    "table-too-long": binary(array(), number=3),
    "objects-without-number": binary(array(), number=2**64 - 1),
    "references-too-small": binary(*([array()] * 256), offset_size=2),
    "offsets-too-small": binary(text("x" * 300), offset_size=1, offsets=[8]),
    "offset-beyond-objects": binary(array(), offsets=[9]),
    "offset-into-header": binary(array(1), text("a"), offsets=[8, 3]),
    "reference-out-of-range": binary(array(7)),
    "cycle-of-one": binary(array(0)),
    "cycle-of-three": binary(array(1), array(2), array(0)),
    "cycle-through-value": binary(dictionary([1], [0]), text("a")),
    "key-is-array": binary(dictionary([1], [1]), array()),
    "key-is-number": binary(dictionary([1], [1]), b"\x10\x05"),
    "key-read-as-number-before": binary(array(1, 2), b"\x10\x05", dictionary([1], [1])),
    "null": binary(array(1), b"\x00"),
    "fill-byte": binary(array(1), b"\x0f"),
    "uid": binary(array(1), b"\x80\x01"),
    "set": binary(array(1), b"\xc0"),
    "ordered-set": binary(array(1), b"\xb0"),
    "type-9": binary(array(1), b"\x90"),
    "type-e": binary(array(1), b"\xe0"),
    "real-of-2-bytes": binary(array(1), b"\x21\0\0"),
    "real-of-16-bytes": binary(array(1), b"\x24" + bytes(16)),
    "date-of-4-bytes": binary(array(1), b"\x32" + bytes(4)),
    "integer-of-32-bytes": binary(array(1), b"\x15" + bytes(32)),
    "integer-above-64-bits": binary(array(1), b"\x14" + b"\0" * 7 + b"\1" + bytes(8)),
    "integer-below-63-bits": binary(array(1), b"\x14" + b"\xff" * 8 + b"\x7f" + bytes(7)),
    "integer-beyond-objects": binary(array(1), b"\x13\0"),
    "real-beyond-objects": binary(array(1), b"\x23\0"),
    "date-beyond-objects": binary(array(1), b"\x33\0"),
    "text-beyond-objects": binary(array(1), b"\x5eabc"),
    "wide-text-beyond-objects": binary(array(1), b"\x62\0a\0"),
    "data-beyond-objects": binary(array(1), b"\x44abc"),
    "array-beyond-objects": binary(b"\xa9\0"),
    "dictionary-beyond-objects": binary(b"\xd2\0\0\0"),
    "size-beyond-objects": binary(array(1), b"\x5f"),
    "size-cut-off": binary(array(1), b"\x5f\x12\0"),
    "size-is-text": binary(array(1), b"\x5f\x51\x01a"),
    "size-above-64-bits": binary(array(1), b"\x5f\x14" + b"\1" + bytes(15)),
    "size-of-2^63": binary(array(1), b"\x5f\x13\x80" + bytes(7)),
    "objects-over-one-another": binary(array(*range(1, 9)), b"\x5d" + b"\x5d" * 14, offsets=[8] + list(range(17, 25)),
                                       number=9),
    "levels-513": nested(513),
    "version-15": b"bplist15" + WHOLE[8:],
    "root-is-array": binary(array()),
    "root-is-empty": binary(dictionary([], [])),
    "no-children": binary(dictionary([1], [2]), text("Title"), text("a")),
    "children-is-text": binary(dictionary([1], [2]), text("Children"), text("a")),
    "children-hold-text": binary(dictionary([1], [2]), text("Children"), array(3), text("a")),
}


def xml(content, head='<?xml version="1.0" encoding="UTF-8"?>\n<!DOCTYPE plist>\n'):
    return (head + content).encode()


def tree(content):
    """A bookmark tree with something wrong in the title on its second line."""
    return xml(f'<plist version="1.0"><dict>\n<key>Title</key>{content}\n<key>Children</key><array/></dict></plist>', "")


XML = {
    "cut-after-declaration": xml(""),
    "cut-in-tag": tree("<string>a</string>")[:-3],
    "cut-in-text": cut_after(tree("<string>a</string>"), b"<string>a"),
    "cut-between-tags": cut_after(tree("<string>a</string>"), b"a</string>"),
    "text-before": b"<?x?> hello <plist/>",
    "declaration-unclosed": b"<?xml version='1.0'",
    "comment-before-unclosed": b"<!-- a <plist/>",
    "comment-within-unclosed": tree("<string>a</string><!-- "),
    "instruction-unclosed": tree("<string>a</string><? "),
    "doctype-misspelt": b"<!DOCTYP plist><plist/>",
    "doctype-unclosed": b"<!DOCTYPE plist",
    "doctype-with-entities": b'<!DOCTYPE plist [<!ENTITY a "b">]><plist><string>&a;</string></plist>',
    "doctype-among-elements": tree("<!DOCTYPE plist>"),
    "text-in-dictionary": tree("<string>a</string>b"),
    "text-in-array": tree("<array>b</array>"),
    "tag-unclosed": b"<plist><dict",
    "tag-without-name": tree("< >"),
    "element-unknown": tree("<text>a</text>"),
    "element-in-capitals": tree("<STRING>a</STRING>"),
    "close-tag-of-another": tree("<string>a</key>"),
    "close-tag-too-long": tree("<string>a</strings>"),
    "close-tag-missing": tree("<array><string>a</string>"),
    "element-in-text": tree("<string>a<b/></string>"),
    "element-in-integer": tree("<integer>1<true/></integer>"),
    "plist-empty": xml("<plist></plist>"),
    "plist-self-closed": xml("<plist/>"),
    "plist-of-two": xml("<plist><dict/><dict/></plist>"),
    "value-without-key": xml("<plist><dict>\n<string>a</string></dict></plist>"),
    "key-without-value": xml("<plist><dict>\n<key>a</key></dict></plist>"),
    "key-after-key": xml("<plist><dict>\n<key>a</key><key>b</key><key>c</key></dict></plist>"),
    "comment-in-text": tree("<string>a<!-- b --></string>"),
    "cdata-unclosed": tree("<string><![CDATA[a</string>"),
    "entity-unknown": tree("<string>&nbsp;</string>"),
    "entity-unclosed": tree("<string>&amp</string>"),
    "reference-empty-of-digits": tree("<string>&#x;</string>").replace(b"&#x;", b"&#xG;"),
    "reference-too-long": tree("<string>&#x000000041;</string>"),
    "reference-unclosed": tree("<string>&#65</string>"),
    "reference-above-unicode": tree("<string>&#x110000;</string>"),
    "reference-to-surrogate": tree("<string>&#xD800;</string>"),
    "data-self-closed": tree("<data/>"),
    "data-not-ascii": tree("<data>AAé=</data>"),
    "data-unclosed": cut_after(tree("<data>AAAA</data>"), b"AAAA"),
    "date-of-words": tree("<date>today</date>"),
    "date-without-time": tree("<date>2024-01-02</date>"),
    "real-self-closed": tree("<real/>"),
    "real-of-words": tree("<real>one</real>"),
    "real-blank": tree("<real> </real>"),
    "integer-self-closed": tree("<integer/>"),
    "integer-empty": tree("<integer></integer>"),
    "integer-sign-only": tree("<integer>-</integer>"),
    "integer-hexadecimal-without-digits": tree("<integer>0x</integer>"),
    "integer-with-fraction": tree("<integer>1.5</integer>"),
    "integer-above-64-bits": tree("<integer>18446744073709551616</integer>"),
    "integer-below-63-bits": tree("<integer>-9223372036854775809</integer>"),
    "integer-unclosed": cut_after(tree("<integer>12</integer>"), b"12"),
    "utf8-cut-off": tree("<string>a\xe9</string>").replace("é".encode(), b"\xc3"),
    "utf8-overlong": tree("<string>@</string>").replace(b"@", b"\xc1\x81"),
    "utf8-surrogate": tree("<string>@</string>").replace(b"@", b"\xed\xa0\x80"),
    "utf8-above-unicode": tree("<string>@</string>").replace(b"@", b"\xf4\x90\x80\x80"),
    "encoding-name-endless": xml("<plist/>", "<?xml version='1.0' encoding='" + 5000 * "endless" + "'?>"),
    "encoding-name-obeyed": xml("<plist/>", "<?xml version='1.0' encoding='\x1b[2J\nBookmarks sorted'?>"),
    "encoding-unknown": xml("<plist/>", "<?xml version='1.0' encoding='EBCDIC-OF-MARS'?>"),
    "utf16-lone-surrogate": "\ufeff<plist><string>a".encode("utf-16-le") + b"\x00\xd8" + "</string></plist>".encode("utf-16-le"),
    "utf16-odd": "\ufeff<plist><dict/></plist>".encode("utf-16-be")[:-1],
    "utf32-above-unicode": "\ufeff<plist>".encode("utf-32-be") + b"\x00\x11\x00\x00",
    "levels-513": xml("<plist>" + "<array>" * 513 + "</array>" * 513 + "</plist>"),
    "plists-513": xml("<plist>" * 513 + "<dict/>" + "</plist>" * 513),
    "root-is-array": xml("<plist><array/></plist>"),
    "root-is-empty": xml("<plist><dict/></plist>"),
    "root-is-text": xml("<plist><string>a</string></plist>"),
    "no-children": xml("<plist><dict><key>Title</key><string>a</string></dict></plist>"),
    "children-is-dictionary": xml("<plist><dict><key>Children</key><dict/></dict></plist>"),
    "children-hold-text": xml("<plist><dict><key>Children</key><array><string>a</string></array></dict></plist>"),
    "web-page": b"<!DOCTYPE html>\n<html><body>Not found</body></html>\n",
}

OLD_STYLE = {
    "text-after": b"{ Children = (); }\n)",
    "cut-in-dictionary": b"{\n Children = ();",
    "cut-after-equals": b"{\n Children =",
    "cut-in-array": b"{\n Children = ({ Title = a; }",
    "cut-in-text": b'{\n Title = "a; }',
    "cut-after-backslash": b'{\n Title = "a\\',
    "cut-in-data": b"{\n a = <0fbd",
    "entry-without-semicolon": b"{\n Title = a\n b = c; }",
    "entry-without-equals": b"{\n Title a; }",
    "array-without-comma": b"{ Children = (\na b) ; }",
    "array-with-two-commas": b"{ Children = (\na,, b); }",
    "value-missing": b"{\n Title = ; }",
    "key-is-array": b"{\n (a) = b; }",
    "key-is-data": b"{\n <0f> = b; }",
    "character-unexpected": b"{\n Title = +a; }",
    "character-of-nothing": b"{\n Title = \x00; }",
    "data-of-odd-digits": b"{\n a = <0fb>; }",
    "data-of-half-bytes": b"{\n a = <0 fb>; }",
    "data-of-words": b"{\n a = <0fxy>; }",
    "utf8-cut-off": b"{\n Title = a;\n b = \"\xc3\"; }",
    "levels-513": b"(" * 513 + b")" * 513,
    "root-is-array": b"( a, b )",
    "root-is-text": b"hello",
    "nothing-but-space": b" \n\t",
    "no-children": b"{ Title = a; }",
    "children-hold-text": b"{ Children = ( a ); }",
    "json": b'{ "Children": [] }\n',
    "rubbish": bytes(range(128, 192)),
}


def main():
    folder = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent
    for prefix, files in (("binary", BINARY), ("xml", XML), ("old_style", OLD_STYLE)):
        for name, content in files.items():
            (folder / f"{prefix}-{name}.plist").write_bytes(content)


if __name__ == "__main__":
    main()
