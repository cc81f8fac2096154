#!/usr/bin/env python3
"""utl against references: Python's codecs for the conversions, base64/binascii for the
encodings, and the Windows build of utl (under Wine) for byte-for-byte agreement; and the
libraries' exports: the interface only, the same names in both builds."""
import argparse
import base64
import binascii
import itertools
import os
import random
import re
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ARGS = None
SAMPLES = ["Gr\u00fc\u00dfe \u20ac \u00bd", "\u4e2d\u6587\u6d4b\u8bd5", "plain ASCII", "\U0001F600 smile", ""]


def run(command, data=b"", env=None, ok=True):
    result = subprocess.run(command, input=data, capture_output=True, env=env, timeout=120)
    if ok and result.returncode != 0:
        raise AssertionError(f"{command} failed ({result.returncode}): {result.stderr.decode(errors='replace')}")
    return result


def linux_env(codepage):
    env = dict(os.environ)
    env["UTIL_ANSI_CODEPAGE"] = codepage
    return env


def utl(args, data=b"", codepage="CP1252", ok=True):
    return run([ARGS.utl] + args, data, linux_env(codepage), ok)


def windows_file(name):
    """A program or library of the Windows build named on the command line; skips the test without one."""
    path = Path(ARGS.windows_build) / "bin" / name
    if not (ARGS.windows_build and path.exists()):
        raise unittest.SkipTest("no Windows build named (UTIL_WINDOWS_BUILD_DIR)")
    return path


def windows_utl(args, data=b"", locale="en_US.UTF-8"):
    env = dict(os.environ)
    env.update(WINEPREFIX=str(Path(ARGS.windows_build) / "wineprefix"), WINEDEBUG="-all", LANG=locale,
               LC_ALL=locale, WINEDLLOVERRIDES="winedbg.exe,winemenubuilder.exe=d")
    wine = shutil.which("wine64") or "/usr/lib/wine/wine64"
    return run([wine, str(windows_file("utl.exe"))] + args, data, env)


def ill_formed_utf8_corpus():
    """Every one- to three-byte sequence over bytes that sit on the decoder's boundaries, then
    random bytes: each byte stream must decode the same way in both builds."""
    edges = [0x41, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xED,
             0xEE, 0xEF, 0xF0, 0xF1, 0xF4, 0xF5, 0xFF]
    out = bytearray()
    for a in edges:
        for b in edges:
            for c in edges:
                out += bytes([a, b, c, 0x0A])
    rng = random.Random(1234)
    out += bytes(rng.randrange(256) for _ in range(100000))
    return bytes(out)


class ToolAgainstPython(unittest.TestCase):
    def test_utf8_to_utf16_and_back(self):
        for text in SAMPLES:
            utf8 = text.encode("utf-8")
            self.assertEqual(utl(["convert", "utf8", "utf16"], utf8).stdout, text.encode("utf-16-le"))
            self.assertEqual(utl(["convert", "utf16", "utf8"], text.encode("utf-16-le")).stdout, utf8)

    def test_ansi_pages(self):
        for codepage, codec, text in [("CP1252", "cp1252", SAMPLES[0]), ("CP936", "gbk", SAMPLES[1]),
                                      ("GB18030", "gb18030", SAMPLES[1] + "\U0001F600")]:
            ansi = text.encode(codec)
            self.assertEqual(utl(["convert", "utf8", "ansi"], text.encode(), codepage).stdout, ansi, codepage)
            self.assertEqual(utl(["convert", "ansi", "utf8"], ansi, codepage).stdout, text.encode(), codepage)

    def test_base64_and_hex(self):
        rng = random.Random(7)
        for size in [0, 1, 2, 3, 4, 5, 57, 1000]:
            data = bytes(rng.randrange(256) for _ in range(size))
            encoded = base64.b64encode(data)
            self.assertEqual(utl(["base64", "encode"], data).stdout, encoded + b"\n")
            self.assertEqual(utl(["base64", "decode"], encoded).stdout, data)
            self.assertEqual(utl(["hex", "encode"], data).stdout, binascii.hexlify(data).upper() + b"\n")
            self.assertEqual(utl(["hex", "decode"], binascii.hexlify(data)).stdout, data)

    def test_bad_arguments_give_usage_and_exit_2(self):
        for args in [[], ["no-such-command"], ["convert", "utf8"], ["convert", "utf7", "utf8", "x"],
                     ["base64", "sideways"], ["time-format"], ["time-convert", "timet", "soon"]]:
            result = utl(args, ok=False)
            self.assertEqual(result.returncode, 2, args)
            self.assertIn(b"usage", result.stderr, args)
        self.assertEqual(utl(["hex", "decode", "abc"], ok=False).returncode, 1)


class HiveFilesAgainstSqlite(unittest.TestCase):
    """reg save writes an SQLite database Python's sqlite3 reads (names and data as UTF-16LE
    blobs); reg load serves it as a key, reg unload takes it away."""

    def test_save_load_unload(self):
        if os.geteuid() != 0:
            self.skipTest("loading a hive needs root")
        with tempfile.TemporaryDirectory() as folder:
            env = dict(os.environ, UTIL_REGISTRY_DIR=os.path.join(folder, "store"))
            hive = os.path.join(folder, "saved.hiv")
            run([ARGS.utl, "reg", "add", "HKLM\\Software\\Demo\\Sub", "/v", "Gr\u00fc\u00dfe", "/t", "REG_DWORD",
                 "/d", "0x01020304"], env=env)
            run([ARGS.utl, "reg", "save", "HKLM\\Software\\Demo", hive], env=env)
            self.assertEqual(1, run([ARGS.utl, "reg", "save", "HKLM\\Software\\Demo", hive], env=env, ok=False).returncode)
            with sqlite3.connect(hive) as db:
                rows = db.execute("SELECT k.name, v.name, v.type, v.data FROM vals v JOIN keys k ON k.id = v.key").fetchall()
            self.assertEqual([("Sub".encode("utf-16-le"), "Gr\u00fc\u00dfe".encode("utf-16-le"), 4,
                               bytes([4, 3, 2, 1]))], [tuple(bytes(c) if isinstance(c, bytes) else c for c in r) for r in rows])
            run([ARGS.utl, "reg", "load", "HKLM\\Offline", hive], env=env)
            text = run([ARGS.utl, "reg", "query", "hklm\\offline\\sub"], env=env).stdout.decode("utf-8")
            self.assertIn('"Gr\u00fc\u00dfe"=dword:01020304', text)
            run([ARGS.utl, "reg", "unload", "HKLM\\Offline"], env=env)
            self.assertEqual(1, run([ARGS.utl, "reg", "query", "HKLM\\Offline"], env=env, ok=False).returncode)


class ToolAgainstWindowsBuild(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        windows_file("utl.exe")

    def test_conversions_agree_byte_for_byte(self):
        corpus = ill_formed_utf8_corpus()
        self.assertEqual(windows_utl(["convert", "utf8", "utf16"], corpus).stdout,
                         utl(["convert", "utf8", "utf16"], corpus).stdout)
        wide = "".join(SAMPLES).encode("utf-16-le") + b"\x00\xd8x\x00"  # a lone surrogate too
        for target in ["utf8", "ansi"]:
            self.assertEqual(windows_utl(["convert", "utf16", target], wide).stdout,
                             utl(["convert", "utf16", target], wide).stdout, target)
        ansi_bytes = bytes(range(1, 256))
        self.assertEqual(windows_utl(["convert", "ansi", "utf16"], ansi_bytes).stdout,
                         utl(["convert", "ansi", "utf16"], ansi_bytes).stdout)

    def test_record_files_agree(self):
        # The same SimpleFileItem list from both builds (a folder with backslashes and a Latin-1
        # letter, CJK names, one outside the BMP): identical bytes, and each build reads the other's.
        # Wine reads arguments in the locale's character set: C.UTF-8 is the UTF-8 locale every
        # system has.
        names = ["plain.txt", "\u4e2d\u6587.doc", "smile-\U0001F600.png", "x"]
        with tempfile.TemporaryDirectory() as folder:
            ours, theirs = os.path.join(folder, "linux.rec"), os.path.join(folder, "windows.rec")
            utl(["record-make", ours, "C:\\Data\\caf\u00e9\\sub"] + names)
            windows_utl(["record-make", theirs, "C:\\Data\\caf\u00e9\\sub"] + names, locale="C.UTF-8")
            self.assertEqual(Path(ours).read_bytes(), Path(theirs).read_bytes())
            dump = utl(["record-dump", theirs]).stdout
            self.assertEqual(dump, windows_utl(["record-dump", ours], locale="C.UTF-8").stdout)
            self.assertIn(b"4 item(s)", dump)
            self.assertIn(names[2].encode(), dump)

    def test_double_byte_page_agrees(self):
        text = (SAMPLES[1] + "\u20ac abc").encode("utf-8")
        self.assertEqual(windows_utl(["convert", "utf8", "ansi"], text, "zh_CN.UTF-8").stdout,
                         utl(["convert", "utf8", "ansi"], text, "CP936").stdout)


# Exported names: the interface's namespaces and classes, never internals; libUtil.so's one
# internal export is the fault-injection tests' entry into the system-call table
# (platform/linux/system_calls.h), which Util.dll has no counterpart of.
INTERFACE = re.compile(r"^(DE|PxsLog|ZNPROCESS|ProductAdapt|qda|ZnXMLDocument|ZnXmlElement|ZnXmlAttribute|CommonCfgMgr|SystemInfo)(::|$)")
INTERNAL = re.compile(r"(::detail::|linux_impl|\(anonymous namespace\))")
LINUX_TEST_HOOKS = {"DE::detail::linux_impl::SystemCallTestHooks()"}


def demangle(names):
    return run(["c++filt"], "\n".join(names).encode()).stdout.decode().splitlines()


def linux_exports():
    lines = run(["nm", "-D", "--defined-only", ARGS.library]).stdout.decode().splitlines()
    return set(demangle([line.split()[-1] for line in lines if line.strip()])) - LINUX_TEST_HOOKS


def function_names(symbols):
    """Qualified names without parameter lists: parameter types differ by platform (DWORD is
    unsigned long on Windows, va_list is char*), the names must not."""
    return {symbol.split("(", 1)[0].replace("[abi:cxx11]", "") for symbol in symbols
            if not symbol.startswith(("typeinfo", "vtable"))}


class Exports(unittest.TestCase):
    def test_linux_library_exports_the_interface_only(self):
        symbols = linux_exports()
        self.assertGreater(len(symbols), 50)
        for symbol in symbols:
            name = re.sub(r"^(typeinfo name for|typeinfo for|vtable for) ", "", symbol)
            self.assertRegex(name, INTERFACE, symbol)
            self.assertNotRegex(symbol, INTERNAL, symbol)

    def test_both_builds_export_the_same_names(self):
        table = run(["x86_64-w64-mingw32-objdump", "-p", str(windows_file("Util.dll"))]).stdout.decode()
        rows = table.split("[Ordinal/Name Pointer] Table", 1)[1].splitlines()[1:]
        matches = itertools.takewhile(bool, (re.match(r"\s*\[\s*\d+\]\s+(\S+)", row) for row in rows))
        linux, windows = function_names(linux_exports()), function_names(demangle([m.group(1) for m in matches]))
        self.assertEqual(sorted(linux - windows), [], "exported by libUtil.so only")
        self.assertEqual(sorted(windows - linux), [], "exported by Util.dll only")


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--utl", required=True)
    parser.add_argument("--library", required=True)
    parser.add_argument("--windows-build", default="")
    ARGS, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0]] + rest, verbosity=2)
