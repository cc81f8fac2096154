#!/usr/bin/env python3
"""A .reg file exported by the Linux build imports under Wine (its regedit and the Windows build's
utl.exe) with the same values, and one exported under Wine imports on Linux: each side's export of
what it imported must equal the other side's file byte for byte."""
import argparse
import os
import random
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path


def run(command, env):
    result = subprocess.run(command, capture_output=True, env=env, timeout=300)
    if result.returncode != 0:
        raise AssertionError(f"{command} failed ({result.returncode}): {result.stderr.decode(errors='replace')}")
    return result.stdout


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--utl", required=True)
    parser.add_argument("--windows-build", default="")
    args = parser.parse_args()
    if not args.windows_build:
        print("SKIP: no Windows build named (UTIL_WINDOWS_BUILD_DIR)")
        return 0
    build = Path(args.windows_build)
    wine = shutil.which("wine64") or "/usr/lib/wine/wine64"
    wine_env = dict(os.environ, WINEPREFIX=str(build / "wineprefix"), WINEDEBUG="-all",
                    WINEDLLOVERRIDES="winedbg.exe,winemenubuilder.exe=d")
    windows_utl = [wine, str(build / "bin" / "utl.exe")]
    key = f"HKEY_CURRENT_USER\\Software\\UtilInterchange-{random.randrange(1 << 30)}"
    with tempfile.TemporaryDirectory() as folder:
        folder = Path(folder)
        linux_env = dict(os.environ, UTIL_REGISTRY_DIR=str(folder / "store"))
        linux_utl = [args.utl]
        try:
            # Linux -> Wine: every type, a sub-key, text beyond ASCII.
            # In name order: Wine lists values sorted by name, Windows and the store in the order
            # they were made; so both agree when the two orders are the same.
            for value in [["/ve", "/d", "default"],
                          ["/v", "Big", "/t", "REG_QWORD", "/d", "0x0102030405060708"],
                          ["/v", "Bin", "/t", "REG_BINARY", "/d", "00ff" * 40],
                          ["/v", "Exp", "/t", "REG_EXPAND_SZ", "/d", "%TEMP%\\x"],
                          ["/v", "Multi", "/t", "REG_MULTI_SZ", "/d", "one\\0two"],
                          ["/v", "Num", "/t", "REG_DWORD", "/d", "0xdeadbeef"],
                          ["/v", "Text", "/t", "REG_SZ", "/d", "gr\u00fc\u00df \u4e2d \U0001F600"]]:
                run(linux_utl + ["reg", "add", key] + value, linux_env)
            run(linux_utl + ["reg", "add", key + "\\Sub", "/v", "n", "/t", "REG_NONE", "/d", ""], linux_env)
            from_linux = folder / "linux.reg"
            run(linux_utl + ["reg", "export", key, str(from_linux)], linux_env)
            back = folder / "wine-utl.reg"
            run(windows_utl + ["reg", "import", str(from_linux)], wine_env)
            run(windows_utl + ["reg", "export", key, str(back)], wine_env)
            if back.read_bytes() != from_linux.read_bytes():
                print(from_linux.read_bytes().decode("utf-16"), back.read_bytes().decode("utf-16"))
            assert back.read_bytes() == from_linux.read_bytes(), "utl.exe under Wine changed the file"
            run(windows_utl + ["reg", "delete", key], wine_env)
            run([wine, "regedit", "/S", str(from_linux)], wine_env)
            back_regedit = folder / "wine-regedit.reg"
            run(windows_utl + ["reg", "export", key, str(back_regedit)], wine_env)
            assert back_regedit.read_bytes() == from_linux.read_bytes(), "Wine's regedit read other values"
            # Wine -> Linux.
            run(windows_utl + ["reg", "add", key + "\\FromWine", "/v", "w", "/t", "REG_DWORD", "/d", "7"], wine_env)
            from_wine = folder / "wine.reg"
            run(windows_utl + ["reg", "export", key, str(from_wine)], wine_env)
            run(linux_utl + ["reg", "delete", key], linux_env)
            run(linux_utl + ["reg", "import", str(from_wine)], linux_env)
            again = folder / "linux-again.reg"
            run(linux_utl + ["reg", "export", key, str(again)], linux_env)
            assert again.read_bytes() == from_wine.read_bytes(), "the Linux store changed Wine's file"
        finally:
            subprocess.run(windows_utl + ["reg", "delete", key], capture_output=True, env=wine_env, timeout=120)
    print("OK")
    return 0


if __name__ == "__main__":
    sys.exit(main())
