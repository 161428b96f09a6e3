#!/usr/bin/python3
"""empty_dll.py DLL TRIPLE EMPTY: builds the DLL EMPTY, which imports what DLL imports and does nothing.

What it is compared with then pays for its own code alone and not for what Windows loads with it."""
import pathlib
import subprocess
import sys
import tempfile

import pefile


def import_library(entry, names, triple, work):
    """The library through which a linker finds `names` in one DLL."""
    definition = work / (entry.dll.decode() + ".def")
    definition.write_text(f"LIBRARY {entry.dll.decode()}\nEXPORTS\n" + "\n".join(names) + "\n")
    library = definition.with_suffix(".a")
    subprocess.run([f"{triple}-dlltool", "-d", definition, "-l", library], check=True)
    return library


def source_of(names):
    """The only function refers to each import, so that the linker keeps all of them."""
    declared = "".join(f"__declspec(dllimport) void {name}(void);\n" for name in sorted(names))
    listed = "".join(f"{name}, " for name in sorted(names))
    return (f"{declared}__declspec(dllexport) void (*imports(int i))(void) {{\n"
            f"  void (*all[])(void) = {{{listed}0}};\n  return all[i];\n}}\n"
            "int __stdcall entry(void* a, int b, void* c) { return 1; }\n")


def build(dll, triple, empty, work):
    seen, libraries = set(), []
    for entry in pefile.PE(dll).DIRECTORY_ENTRY_IMPORT:
        names = {item.name.decode() for item in entry.imports} - seen
        seen |= names
        libraries.append(import_library(entry, sorted(names), triple, work))
    source = work / "empty.c"
    source.write_text(source_of(seen))
    entry = "_entry@12" if triple.startswith("i686") else "entry"
    subprocess.run([f"{triple}-gcc", "-Os", "-fno-builtin", "-w", "-shared", "-nostdlib", "-s",
                    f"-Wl,-e,{entry}", source, *libraries, "-o", empty], check=True)


with tempfile.TemporaryDirectory() as folder:
    build(*sys.argv[1:], pathlib.Path(folder))
