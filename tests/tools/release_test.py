#!/usr/bin/env python3
"""Makes releases of a small tree of its own with a key of its own, and tries what must be refused.

usage: release_test.py
"""
import datetime
import os
import pathlib
import re
import stat
import subprocess
import sys
import tempfile
import unittest
import xml.dom.minidom

ROOT = pathlib.Path(__file__).resolve().parents[2]
TOOL = ROOT / "tools/release/release.py"
sys.path.insert(0, str(TOOL.parent))
import appcast
import release
import signing

# Packs one file, as ./dev package does; its content depends on the version only.
DEV = """#!/bin/sh
echo "$@" >>"$LOG"
[ "$1" != "$FAILING" ] || exit 1
[ "$1" != package ] || { mkdir -p build/release && rm -f build/release/*.deb && echo VERSION >build/release/quillery_VERSION-1_amd64.deb; }
"""


class ReleaseTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = pathlib.Path(scratch.name)
        self.tree = self.scratch / "a tree"
        self.log = self.scratch / "log"
        self.key = self.scratch / "key.pem"
        signing.new_key(self.key)
        self.public = signing.public_key(self.key.read_bytes())
        self.time = 1_800_000_000
        self.tree.mkdir()
        self.git("init", "--quiet")
        self.commit("0.1.0")

    def git(self, *words):
        subprocess.run(["git", "-c", "user.name=Ada", "-c", "user.email=ada@example.com", *words], cwd=self.tree, check=True)

    def commit(self, version, public=None, log=None, time=None):
        """Commits a tree of this version, released at this time; the default is a second later each time."""
        self.time = time or self.time + 1
        product = (ROOT / "product.cmake").read_text(encoding="utf-8")
        product = re.sub(r"(QUILLERY_RELEASE_TIME) \".*\"", rf'\1 "{self.time}"', product)
        product = re.sub(r"(QUILLERY_FEED_PUBLIC_KEY) \".*\"", rf'\1 "{public or self.public}"', product)
        (self.tree / "product.cmake").write_text(product, encoding="utf-8")
        (self.tree / "CMakeLists.txt").write_text(f"project(quillery VERSION {version} LANGUAGES CXX)\n", encoding="utf-8")
        (self.tree / "CHANGELOG.md").write_text(log or f"# Changes\n\n## Unreleased\n\n## {version}\n\n- Sorts <faster> & better.\n\n"
                                                "## 0.0.1\n\n- First.\n", encoding="utf-8")
        (self.tree / "dev").write_text(DEV.replace("VERSION", version), encoding="utf-8")
        (self.tree / "dev").chmod(0o755)
        (self.tree / ".gitignore").write_text("/build/\n", encoding="utf-8")
        self.git("add", "--all")
        self.git("commit", "--quiet", "--allow-empty", "--message", version)

    def run_tool(self, *words, failing=""):
        return subprocess.run([sys.executable, TOOL, "--tree", self.tree, *map(str, words)], capture_output=True, text=True,
                              check=False, env={**os.environ, "LOG": str(self.log), "FAILING": failing})

    def released(self, *words):
        result = self.run_tool("--key", self.key, *words)
        self.assertEqual(result.returncode, 0, result.stderr)
        return self.tree / "build/publish/appcast.xml"

    def refused(self, *words, **more):
        result = self.run_tool(*words, **more)
        self.assertEqual(result.returncode, 1)
        self.assertNotIn("Traceback", result.stderr)
        return result.stderr

    def published(self):
        """The appcast of a first release, kept as a server would."""
        path = self.scratch / "published.xml"
        path.write_bytes(self.released("--first").read_bytes())
        return path

    def test_a_release_is_tested_packed_signed_and_described(self):
        feed = self.released("--first")
        self.assertEqual(self.log.read_text().split(), ["test", "package"])
        [item] = appcast.read(feed)
        package = feed.parent / "quillery_0.1.0-1_amd64.deb"
        self.assertEqual((item.version, item.system, item.processor, item.minimum_system), ("0.1.0", "linux", "amd64", "12"))
        self.assertEqual(item.length, package.stat().st_size)
        self.assertEqual(item.notes, "- Sorts <faster> & better.")
        self.assertTrue(item.address.endswith("/quillery_0.1.0-1_amd64.deb"))
        self.assertTrue(signing.verifies(package, item.signature, self.public, self.scratch))
        xml.dom.minidom.parse(str(feed))

    def test_a_second_release_extends_the_appcast(self):
        published = self.published()
        self.commit("0.2.0")
        items = appcast.read(self.released("--appcast", published))
        self.assertEqual([item.version for item in items], ["0.2.0", "0.1.0"])

    def test_a_version_that_is_not_newer_is_refused(self):
        published = self.published()
        for version in ["0.1.0", "0.1", "0.0.9"]:
            self.commit(version)
            self.assertIn("is not newer", self.refused("--key", self.key, "--appcast", published))
        self.assertEqual(self.log.read_text().split(), ["test", "package"], "nothing was built for nothing")

    def test_a_time_that_is_not_later_is_refused(self):
        published = self.published()
        self.commit("0.2.0", time=self.time)
        self.assertIn("is not later", self.refused("--key", self.key, "--appcast", published))

    def test_another_processor_takes_the_same_version(self):
        published = self.published()
        published.write_text(published.read_text().replace('processor="amd64"', 'processor="arm64"'))
        items = appcast.read(self.released("--appcast", published))
        self.assertEqual([(item.version, item.processor) for item in items], [("0.1.0", "arm64"), ("0.1.0", "amd64")])

    def test_the_namespace_of_the_feed_is_that_of_the_product(self):
        namespace = re.search(r'FEED_NAMESPACE "(.*)"', (ROOT / "product.cmake").read_text(encoding="utf-8")).group(1)
        self.assertIn(f'xmlns:quillery="{namespace}"', self.released("--first").read_text())

    def test_the_placeholder_for_the_key_is_refused(self):
        self.commit("0.1.0", public=signing.PLACEHOLDER)
        self.assertIn("placeholder", self.refused("--key", self.key, "--first"))

    def test_another_key_is_refused(self):
        other = self.scratch / "other.pem"
        signing.new_key(other)
        self.assertIn("not the one whose public half", self.refused("--key", other, "--first"))
        other.write_text("no key")
        self.assertIn("not an Ed25519 key", self.refused("--key", other, "--first"))
        self.assertIn("cannot be read", self.refused("--key", self.scratch / "none", "--first"))

    def test_a_changed_tree_is_refused(self):
        (self.tree / "new").write_text("")
        self.assertIn("not committed", self.refused("--key", self.key, "--first"))

    def test_a_version_without_changes_is_refused(self):
        for log in ["# Changes\n\n## Unreleased\n\n- Much.\n", "## 0.1.0\n\n## 0.0.1\n\n- First.\n"]:
            self.commit("0.1.0", log=log)
            self.assertIn("says nothing of version 0.1.0", self.refused("--key", self.key, "--first"))

    def test_a_failing_test_or_package_ends_it(self):
        for step in ["test", "package"]:
            self.assertIn(f"./dev {step} failed", self.refused("--key", self.key, "--first", failing=step))
        self.assertFalse((self.tree / "build/publish/appcast.xml").exists())

    def test_a_release_names_its_appcast(self):
        self.assertIn("--first", self.refused("--key", self.key))
        self.assertIn("--first", self.refused("--key", self.key, "--appcast", self.scratch / "none.xml"))

    def test_an_unsound_appcast_is_refused(self):
        published = self.published()
        text = published.read_text()
        self.commit("0.2.0")
        for sound, unsound, problem in [('edSignature="', 'edSignature="!', "not base64"),
                                        (re.search(r' sparkle:edSignature="[^"]*"', text).group(), "", "has 0 bytes"),
                                        ('url="https:', 'url="http:', "is not https"), ("<enclosure", "<other", "enclosure"),
                                        ("</rss>", "", "cannot be read"), ("<sparkle:version>0", "<sparkle:version>x", "version")]:
            self.assertIn(sound, text)
            published.write_text(text.replace(sound, unsound))
            self.assertIn(problem, self.refused("--key", self.key, "--appcast", published))

    def test_a_new_key_is_private_and_overwrites_nothing(self):
        path = self.scratch / "new.pem"
        result = self.run_tool("--new-key", path)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(stat.S_IMODE(path.stat().st_mode), 0o600)
        self.assertIn(signing.public_key(path.read_bytes()), result.stdout)
        self.assertIn("File exists", self.refused("--new-key", path))

    def test_a_signature_holds_for_its_file_and_key_only(self):
        file = self.scratch / "file"
        file.write_bytes(b"content")
        signature = signing.sign(file, self.key.read_bytes())
        self.assertTrue(signing.verifies(file, signature, self.public, self.scratch))
        other = self.scratch / "other.pem"
        signing.new_key(other)
        self.assertFalse(signing.verifies(file, signature, signing.public_key(other.read_bytes()), self.scratch))
        file.write_bytes(b"Content")
        self.assertFalse(signing.verifies(file, signature, self.public, self.scratch))

    def test_the_signature_is_that_of_the_standard(self):
        seed = bytes.fromhex("c5aa8df43f9f837bedb7442f31dcb7b166d38535076f094b85ce3a2e0b4458f7")  # RFC 8032, 7.1, TEST 3
        key = signing.openssl("pkey", "-inform", "DER", given=signing.PRIVATE_HEADER + seed)
        file = self.scratch / "file"
        file.write_bytes(bytes.fromhex("af82"))
        self.assertEqual(signing.decoded(signing.public_key(key), 32, "the key").hex(),
                         "fc51cd8e6218a1a38da47ed00230f0580816ed13ba3303ac5deb911548908025")
        self.assertTrue(signing.decoded(signing.sign(file, key), 64, "the signature").hex().startswith("6291d657deec24024827e69c"))

    def test_items_for_both_systems_stay_beside_each_other(self):
        published = appcast.read(self.published())
        mac = appcast.Item("0.1.0", "macos", "", "12.0", "https://example.com/a.dmg", 1, published[0].signature,
                           "application/x-apple-diskimage", "Notes.", datetime.datetime.now(datetime.timezone.utc))
        path = self.scratch / "both.xml"
        appcast.write(path, appcast.extended(published, mac), "Quillery", "https://example.com/")
        self.assertEqual([item.system for item in appcast.read(path)], ["macos", "linux"])

    def test_the_cask_has_the_version_and_the_checksum(self):
        package = self.scratch / "Quillery-0.1.0.dmg"
        package.write_bytes(b"image")
        cask = release.Tree(self.tree).cask(package)
        self.assertIn('version "0.1.0"', cask)
        self.assertIn("6105d6cc76af400325e94d588ce511be5bfdbb73b437dc51eca43917d7a43e3d", cask)
        self.assertNotIn("Application Support", cask, "the backups stay")


if __name__ == "__main__":
    unittest.main()
