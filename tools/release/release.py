#!/usr/bin/env python3
"""Makes a release: tests, packs, signs, and extends the feed of updates. Uploads nothing.

usage: release.py --new-key FILE
       release.py (--key FILE | --keychain ACCOUNT) (--appcast FILE | --first) [--tree FOLDER]

The tree must be committed, and CHANGELOG.md must have a heading with the version of CMakeLists.txt. Each system makes its
own package: Linux a .deb, a Mac a disk image and a file for Homebrew. --appcast names the feed as it is published;
--first starts one. The results are in build/publish. --new-key writes a private key, which belongs in no repository.
"""
import argparse
import datetime
import hashlib
import pathlib
import platform
import re
import shutil
import subprocess
import sys
import tempfile

import appcast
import product
import signing
from signing import Refusal

ROOT = pathlib.Path(__file__).resolve().parents[2]
SYSTEM = "macos" if platform.system() == "Darwin" else "linux"
CASK = """cask "{token}" do
  version "{version}"
  sha256 "{checksum}"

  url "{downloads}{token_name}-#{{version}}.dmg"
  name "{name}"
  desc "Keeps Safari's bookmarks in order"
  homepage "{page}"

  livecheck do
    url "{feed}"
    strategy :sparkle
  end

  auto_updates true
  depends_on macos: ">= :monterey"

  app "{name}.app"

  uninstall launchctl: "{identifier}",
            quit:      "{identifier}"

  zap trash: [
    "~/Library/Caches/{identifier}",
    "~/Library/LaunchAgents/{identifier}.plist",
    "~/Library/Logs/{maker}",
    "~/Library/Preferences/{identifier}.plist",
  ]
end
"""


class Tree:
    """What a release takes from the source tree."""

    def __init__(self, folder):
        self.folder = folder
        self.product = product.values(folder)
        project = re.search(r"^project\(\w+ VERSION (\S+)", (folder / "CMakeLists.txt").read_text(encoding="utf-8"),
                            re.MULTILINE)
        self.version = project.group(1) if project else ""
        self.time = datetime.datetime.fromtimestamp(int(self.product["RELEASE_TIME"]), datetime.timezone.utc)

    def require_clean(self):
        changed = subprocess.run(["git", "status", "--porcelain"], cwd=self.folder, capture_output=True, text=True,
                                 check=True).stdout
        if changed:
            raise Refusal("the tree has changes that are not committed:\n" + changed.rstrip())

    def notes(self):
        """What CHANGELOG.md says of the version."""
        if not appcast.VERSION.fullmatch(self.version):
            raise Refusal(f"the version “{self.version}” in CMakeLists.txt is not two or three numbers")
        text = (self.folder / "CHANGELOG.md").read_text(encoding="utf-8")
        part = re.search(rf"^## {re.escape(self.version)}\b.*\n((?:(?!## ).*\n?)*)", text, re.MULTILINE)
        if not part or not part.group(1).strip():
            raise Refusal(f"CHANGELOG.md says nothing of version {self.version}")
        return part.group(1).strip()

    def run(self, *words):
        print(f"==> ./dev {' '.join(words)}", flush=True)
        if subprocess.run(["./dev", *words], cwd=self.folder, check=False).returncode != 0:
            raise Refusal(f"./dev {' '.join(words)} failed")

    def one_file(self, pattern):
        found = sorted(self.folder.glob(pattern))
        if len(found) != 1:
            raise Refusal(f"there are {len(found)} files {pattern}, not one")
        return found[0]

    def processor(self):
        """The kind of processor that the package is for, as the system calls it; empty if it is for every one."""
        if SYSTEM == "macos":
            return ""
        try:
            return subprocess.run(["dpkg", "--print-architecture"], capture_output=True, text=True, check=True).stdout.strip()
        except (FileNotFoundError, subprocess.CalledProcessError) as error:
            raise Refusal("dpkg does not say which processor this is") from error

    def package(self):
        """Builds the package of this system. Returns its path and what an item of the feed says of it."""
        if SYSTEM == "macos":
            self.run("dmg")
            return self.one_file("build/dmg/*.dmg"), {
                "processor": "", "minimum_system": self.product["MINIMUM_MACOS"],
                "media_type": "application/x-apple-diskimage"}
        self.run("package")
        path = self.one_file(f"build/release/*_{self.processor()}.deb")
        return path, {"processor": self.processor(), "minimum_system": self.product["MINIMUM_DEBIAN"],
                      "media_type": "application/vnd.debian.binary-package"}

    def cask(self, package):
        return CASK.format(token=self.product["NAME"].lower(), token_name=self.product["NAME"], version=self.version,
                           checksum=hashlib.sha256(package.read_bytes()).hexdigest(), name=self.product["NAME"],
                           downloads=self.product["DOWNLOADS"], page=self.product["WEB_PAGE"],
                           feed=self.product["FEED_ADDRESS"], identifier=self.product["BUNDLE_IDENTIFIER"],
                           maker=self.product["MAKER"])


def make_key(path):
    signing.new_key(path)
    public = signing.public_key(signing.key_of_file(path))
    print(f"The private key is in {path}. Keep it, and a copy of it, where nobody else can read it.\n"
          f"In product.cmake, write:\n\n"
          f'set(QUILLERY_FEED_PUBLIC_KEY "{public}")')


def require_own(key, tree):
    """Refuses a private key whose public half the programs do not have."""
    public = tree.product["FEED_PUBLIC_KEY"]
    signing.require_key(public)
    if signing.public_key(key) != public:
        raise Refusal("the key is not the one whose public half is in product.cmake")
    return public


def release(tree, key, published):
    """Makes a release into build/publish. Returns that folder and the new item of the feed."""
    tree.require_clean()
    notes = tree.notes()
    public = require_own(key, tree)
    items = appcast.read(published) if published else []
    appcast.require_newer(items, SYSTEM, tree.processor(), tree.version, tree.time)
    tree.run("test")
    package, about = tree.package()

    folder = tree.folder / "build/publish"
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    copy = folder / package.name
    shutil.copy(package, copy)
    signature = signing.sign(copy, key)
    with tempfile.TemporaryDirectory() as scratch:
        if not signing.verifies(copy, signature, public, pathlib.Path(scratch)):
            raise Refusal("the signature does not hold")
    item = appcast.Item(version=tree.version, system=SYSTEM, address=tree.product["DOWNLOADS"] + copy.name, length=copy.stat().st_size,
                        signature=signature, notes=notes, date=tree.time, **about)
    appcast.write(folder / "appcast.xml", appcast.extended(items, item), tree.product["NAME"], tree.product["WEB_PAGE"])
    if SYSTEM == "macos":
        (folder / f"{tree.product['NAME'].lower()}.rb").write_text(tree.cask(copy), encoding="utf-8")
    return folder, item


def main():
    parser = argparse.ArgumentParser(description="Makes a release: tests, packs, signs, extends the feed.")
    key = parser.add_mutually_exclusive_group(required=True)
    key.add_argument("--new-key", metavar="FILE", help="make a key pair")
    key.add_argument("--key", metavar="FILE", help="the private key")
    key.add_argument("--keychain", metavar="ACCOUNT", help="take the private key from the keychain of a Mac")
    feed = parser.add_mutually_exclusive_group()
    feed.add_argument("--appcast", metavar="FILE", type=pathlib.Path, help="the appcast as it is published")
    feed.add_argument("--first", action="store_true", help="there is no appcast yet")
    parser.add_argument("--tree", metavar="FOLDER", type=pathlib.Path, default=ROOT, help=argparse.SUPPRESS)
    options = parser.parse_args()
    try:
        if options.new_key:
            make_key(options.new_key)
            return 0
        if not options.first and (not options.appcast or not options.appcast.exists()):
            raise Refusal("name the published appcast with --appcast FILE, or start one with --first")
        private = signing.key_of_file(options.key) if options.key else signing.key_of_keychain(options.keychain)
        tree = Tree(options.tree.resolve())
        folder, item = release(tree, private, options.appcast)
    except Refusal as refusal:
        print(f"release: {refusal}", file=sys.stderr)
        return 1
    print(f"\nVersion {item.version} is in {folder}. Left to do, in this order:\n"
          f"1. Upload {pathlib.Path(item.address).name} to {item.address}\n"
          f"2. Upload appcast.xml to the address of the feed, {tree.product['FEED_ADDRESS']}\n"
          f"3. git tag v{item.version}, and push the tag")
    if SYSTEM == "macos":
        print("4. Send the file for Homebrew (.rb) to the repository of its casks")
    return 0


if __name__ == "__main__":
    sys.exit(main())
