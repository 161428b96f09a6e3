#!/usr/bin/python3
"""empty_dll.py DLL TRIPLE FOLDER: builds FOLDER/empty.dll, which imports what DLL imports and does
nothing."""
import pathlib
import subprocess
import sys

import pefile

dll, triple, folder = sys.argv[1:]
folder = pathlib.Path(folder)
names, libraries = set(), []
for entry in pefile.PE(dll).DIRECTORY_ENTRY_IMPORT:
    imports = [item.name.decode() for item in entry.imports if item.name.decode() not in names]
    names.update(imports)
    definition = folder / (entry.dll.decode() + ".def")
    definition.write_text(f"LIBRARY {entry.dll.decode()}\nEXPORTS\n" + "\n".join(imports) + "\n")
    library = folder / f"lib{entry.dll.decode()}.a"
    subprocess.run([f"{triple}-dlltool", "-d", definition, "-l", library], check=True)
    libraries.append(library)
declared = "".join(f"__declspec(dllimport) void {name}(void);\n" for name in sorted(names))
listed = "".join(f"{name}, " for name in sorted(names))
source = folder / "empty.c"
source.write_text(f"{declared}__declspec(dllexport) void (*imports(int i))(void) {{\n"
                  f"  void (*all[])(void) = {{{listed}0}};\n  return all[i];\n}}\n"
                  "int __stdcall entry(void* a, int b, void* c) { return 1; }\n")
entry = "_entry@12" if triple.startswith("i686") else "entry"
subprocess.run([f"{triple}-gcc", "-Os", "-fno-builtin", "-w", "-shared", "-nostdlib", "-s",
                f"-Wl,-e,{entry}", source, *libraries, "-o", folder / "empty.dll"], check=True)
