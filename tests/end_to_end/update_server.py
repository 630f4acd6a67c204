"""A maker of updates: a key, packages, a feed, and a web server on this machine that has them."""
import contextlib
import dataclasses
import datetime
import http.server
import pathlib
import shutil
import subprocess
import sys
import tempfile
import threading

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools/release"))
import appcast
import signing

CONTROL = """Package: quillery
Version: {version}-1
Architecture: {processor}
Maintainer: Test <test@quillery.example.com>
Description: a test
"""
PROCESSOR = subprocess.run(["dpkg", "--print-architecture"], capture_output=True, text=True, check=True).stdout.strip()


def tree_of(installation, program, target):
    """Copies an installation, with another program in its place, to a folder."""
    shutil.copytree(installation, target, ignore=shutil.ignore_patterns("quillery.debug"), copy_function=shutil.copy2)
    shutil.copy2(program, target / "bin/quillery")


def packed(tree, version):
    """A Debian package of a folder for a version. Its content is not compressed, because that takes longer."""
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        (tree / "DEBIAN").mkdir()
        (tree / "DEBIAN/control").write_text(CONTROL.format(version=version, processor=PROCESSOR), encoding="utf-8")
        command = ["dpkg-deb", "--root-owner-group", "-Znone", "--build", str(tree), str(scratch / "package")]
        subprocess.run(command, check=True, capture_output=True)
        shutil.rmtree(tree / "DEBIAN")
        return (scratch / "package").read_bytes()


@dataclasses.dataclass
class Offer:
    """What the server has: a feed with one item, and the bytes that it sends for the package. Attacks change it."""
    version: str
    package: bytes
    signature: str
    address: str
    length: int = 0
    notes: str = "Sorts faster."
    feed: bytes = b""

    def __post_init__(self):
        self.length = self.length or len(self.package)
        self.feed = self.feed or self.made_feed()

    def made_feed(self):
        item = appcast.Item(
            version=self.version, system="linux", processor=PROCESSOR, minimum_system="12", address=self.address,
            length=self.length, signature=self.signature, media_type="application/vnd.debian.binary-package",
            notes=self.notes, date=datetime.datetime.fromtimestamp(1795219200, datetime.timezone.utc))
        with tempfile.NamedTemporaryFile() as file:
            appcast.write(pathlib.Path(file.name), [item], "Quillery", "https://quillery.example.com/")
            return file.read()


class UpdateServer(contextlib.ExitStack):
    """Serves `offer` at /feed and /package. What differs from that is in `replies`: functions of the request's handler,
    by path. `requests` are the paths that were asked for."""

    def __init__(self):
        super().__init__()
        self.requests = []
        self.replies = {}
        self.offer = None
        self.scratch = pathlib.Path(self.enter_context(tempfile.TemporaryDirectory(prefix="quillery-maker-")))
        self.key = self.new_key("key")
        server = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                server.requests.append(self.path)
                with contextlib.suppress(BrokenPipeError, ConnectionResetError):  # the program may have enough
                    server.replies.get(self.path, server.usual)(self)

            def log_message(self, *arguments):
                pass

        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.server.daemon_threads = True
        threading.Thread(target=self.server.serve_forever, kwargs={"poll_interval": 0.05}, daemon=True).start()
        self.callback(self.server.shutdown)

    def new_key(self, name):
        signing.new_key(self.scratch / name)
        return signing.key_of_file(self.scratch / name)

    def address(self, path):
        return f"http://127.0.0.1:{self.server.server_port}{path}"

    def environment(self):
        return {"QUILLERY_TEST_FEED": self.address("/feed"), "QUILLERY_TEST_KEY": signing.public_key(self.key)}

    def signature(self, package, key=None):
        path = self.scratch / "signed"
        path.write_bytes(package)
        return signing.sign(path, key or self.key)

    def offered(self, version, package, **changes):
        """Offers a version with a package, signed by the maker unless the changes say otherwise."""
        signature = changes.pop("signature", None) or self.signature(package)
        self.replies = {}
        self.offer = Offer(version, package, signature, self.address("/package"), **changes)

    def usual(self, handler):
        send(handler, self.offer.feed if handler.path == "/feed" else self.offer.package)


def send(handler, content, length=None):
    """Sends a body; `length` is what the server claims its length to be."""
    handler.send_response(200)
    handler.send_header("Content-Length", str(len(content) if length is None else length))
    handler.end_headers()
    handler.wfile.write(content)


def send_without_end(handler):
    handler.send_response(200)
    handler.end_headers()
    while True:
        handler.wfile.write(b"<!-- more -->" * 10000)


def redirect_to(address):
    def reply(handler):
        handler.send_response(302)
        handler.send_header("Location", address)
        handler.end_headers()
    return reply
