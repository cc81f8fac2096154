#!/usr/bin/env python3
"""The libraries export the interface and nothing else, and both builds export the same names."""
import argparse
import re
import subprocess
import sys
import unittest
from pathlib import Path

ARGS = None
INTERFACE = re.compile(r"^(DE|PxsLog|ZNPROCESS|ProductAdapt|qda|ZnXMLDocument|ZnXmlElement|ZnXmlAttribute|CommonCfgMgr|SystemInfo)(::|$)")
INTERNAL = re.compile(r"(::detail::|linux_impl|\(anonymous namespace\))")
# The one internal symbol libUtil.so exports on purpose: the entry of the fault-injection tests
# into the Linux substitutes' system-call table (platform/linux/system_calls.h). Util.dll has no
# counterpart.
LINUX_TEST_HOOKS = {"DE::detail::linux_impl::SystemCallTestHooks()"}


def demangle(names):
    out = subprocess.run(["c++filt"], input="\n".join(names), capture_output=True, text=True, check=True)
    return out.stdout.splitlines()


def linux_exports(library):
    out = subprocess.run(["nm", "-D", "--defined-only", library], capture_output=True, text=True, check=True)
    return demangle([line.split()[-1] for line in out.stdout.splitlines() if line.strip()])


def windows_exports(dll):
    out = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", dll], capture_output=True, text=True, check=True)
    table = out.stdout.split("[Ordinal/Name Pointer] Table", 1)[1]
    names = []
    for line in table.splitlines()[1:]:
        match = re.match(r"\s*\[\s*\d+\]\s+(\S+)", line)
        if not match:
            break
        names.append(match.group(1))
    return demangle(names)


def function_names(symbols):
    """Qualified names without parameter lists: parameter types differ by platform (DWORD is
    unsigned long on Windows, va_list is char*), the names must not."""
    names = set()
    for symbol in symbols:
        if symbol.startswith(("typeinfo", "vtable")):
            continue
        names.add(symbol.split("(", 1)[0].replace("[abi:cxx11]", ""))
    return names


class Exports(unittest.TestCase):
    def test_linux_library_exports_the_interface_only(self):
        symbols = linux_exports(ARGS.library)
        self.assertGreater(len(symbols), 50)
        for symbol in set(symbols) - LINUX_TEST_HOOKS:
            name = re.sub(r"^(typeinfo name for|typeinfo for|vtable for) ", "", symbol)
            self.assertRegex(name, INTERFACE, symbol)
            self.assertNotRegex(symbol, INTERNAL, symbol)

    def test_both_builds_export_the_same_names(self):
        dll = Path(ARGS.windows_build) / "bin" / "Util.dll"
        if not ARGS.windows_build or not dll.exists():
            self.skipTest("no Windows build named (UTIL_WINDOWS_BUILD_DIR)")
        linux = function_names(set(linux_exports(ARGS.library)) - LINUX_TEST_HOOKS)
        windows = function_names(windows_exports(str(dll)))
        self.assertEqual(sorted(linux - windows), [], "exported by libUtil.so only")
        self.assertEqual(sorted(windows - linux), [], "exported by Util.dll only")


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--library", required=True)
    parser.add_argument("--windows-build", default="")
    ARGS, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0]] + rest, verbosity=2)
