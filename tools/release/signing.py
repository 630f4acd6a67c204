"""Ed25519 keys and signatures of releases, by OpenSSL 3.

A key is a PEM file, or on a Mac an item of the keychain. The public key and a signature are in base64, as Sparkle has them
in an application's information file and in an appcast.
"""
import base64
import binascii
import os
import pathlib
import subprocess

KEY_SIZE = 32
SIGNATURE_SIZE = 64
# What comes before the 32 bytes of a key in DER (RFC 8410).
PUBLIC_HEADER = bytes.fromhex("302a300506032b6570032100")
PRIVATE_HEADER = bytes.fromhex("302e020100300506032b657004220420")
PLACEHOLDER = base64.b64encode(bytes(KEY_SIZE)).decode()
KEYCHAIN_SERVICE = "https://sparkle-project.org"  # where Sparkle's own tools keep a key


class Refusal(Exception):
    """What keeps a release from being made, as a sentence."""


def openssl(*arguments, given=None):
    """Runs OpenSSL. Returns its output; None if it fails."""
    try:
        result = subprocess.run(["openssl", *map(str, arguments)], input=given, capture_output=True, check=False)
    except FileNotFoundError as error:
        raise Refusal("openssl is not installed") from error
    return result.stdout if result.returncode == 0 else None


def new_key(path):
    """Makes a key pair. Writes the private key to a new file that only its owner can read."""
    key = openssl("genpkey", "-algorithm", "ed25519")
    if key is None:
        raise Refusal("openssl cannot make Ed25519 keys; version 3 can")
    try:
        descriptor = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_EXCL, 0o600)
    except OSError as error:
        raise Refusal(f"the key was not written to {path}: {error.strerror}") from error
    with os.fdopen(descriptor, "wb") as file:
        file.write(key)


def key_of_file(path):
    """The private key in a file, as PEM."""
    try:
        return pathlib.Path(path).read_bytes()
    except OSError as error:
        raise Refusal(f"the key {path} cannot be read: {error.strerror}") from error


def key_of_keychain(account):
    """The private key of an account in the keychain of a Mac, as PEM. Sparkle's tools store 32 bytes in base64."""
    words = ["security", "find-generic-password", "-s", KEYCHAIN_SERVICE, "-a", account, "-w"]
    try:
        seed = subprocess.run(words, capture_output=True, text=True, check=True).stdout
    except (FileNotFoundError, subprocess.CalledProcessError) as error:
        raise Refusal(f"the keychain has no key of the account {account}") from error
    key = openssl("pkey", "-inform", "DER", given=PRIVATE_HEADER + decoded(seed, KEY_SIZE, "the key in the keychain"))
    if key is None:
        raise Refusal("the key in the keychain is not an Ed25519 key")
    return key


def decoded(text, size, name):
    try:
        data = base64.b64decode(text.strip(), validate=True)
    except binascii.Error as error:
        raise Refusal(f"{name} is not base64") from error
    if len(data) != size:
        raise Refusal(f"{name} has {len(data)} bytes, not {size}")
    return data


def public_key(key):
    """The public half of a private key."""
    der = openssl("pkey", "-pubout", "-outform", "DER", given=key)
    if der is None or not der.startswith(PUBLIC_HEADER):
        raise Refusal("the key is not an Ed25519 key")
    return base64.b64encode(der[len(PUBLIC_HEADER):]).decode()


def require_key(public):
    """Refuses a public key that nobody can sign for."""
    if public == PLACEHOLDER:
        raise Refusal("product.cmake still has the placeholder for the public key; ./dev release --new-key makes a pair")
    decoded(public, KEY_SIZE, "the public key in product.cmake")


def sign(path, key):
    """The signature of a file."""
    signature = openssl("pkeyutl", "-sign", "-rawin", "-in", path, "-inkey", "/dev/stdin", given=key)
    if signature is None:
        raise Refusal(f"openssl did not sign {path}")
    return base64.b64encode(signature).decode()


def verifies(path, signature, public, scratch):
    """True if a signature is of this file and by this key. `scratch` is a folder for temporary files."""
    key, signed = scratch / "key", scratch / "signature"
    key.write_bytes(PUBLIC_HEADER + decoded(public, KEY_SIZE, "the public key"))
    signed.write_bytes(decoded(signature, SIGNATURE_SIZE, "the signature"))
    return openssl("pkeyutl", "-verify", "-rawin", "-in", path, "-pubin", "-keyform", "DER", "-inkey", key,
                   "-sigfile", signed) is not None
