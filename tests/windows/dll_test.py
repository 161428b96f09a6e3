#!/usr/bin/python3
# dll_test.py VERSION DLL OBJECT...: what hosts, Windows and administrators see of the DLL itself.
# The objects are those of the library's own code. Debian's Python has python3-pefile.
import re
import sys
from pathlib import Path
from xml.etree import ElementTree

import pefile

EXPORTS = "GetHIDVersion GetHardwareId GetHardwareIdEx GetHardwareIdMod RecheckHardwareId"
SYSTEM_DLLS = "advapi32 iphlpapi kernel32 msvcrt ole32 oleaut32 setupapi shell32"


def expect(what, seen, wanted):
    if seen != wanted:
        sys.exit(f"{what}: {seen} instead of {wanted}")


version, path, *objects = sys.argv[1:]
dll = pefile.PE(path)
exports = [entry.name.decode() for entry in dll.DIRECTORY_ENTRY_EXPORT.symbols]
expect("exports", sorted(exports), EXPORTS.split())
imports = {entry.dll.decode().lower(): entry.imports for entry in dll.DIRECTORY_ENTRY_IMPORT}
expect("foreign DLLs", imports.keys() - {name + ".dll" for name in SYSTEM_DLLS.split()}, set())

flags = dll.OPTIONAL_HEADER
is_x64 = dll.PE_TYPE == pefile.OPTIONAL_HEADER_MAGIC_PE_PLUS
expect("random place", flags.IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE, True)
expect("random place in 64 bits", flags.IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA, is_x64)
expect("relocations", hasattr(dll, "DIRECTORY_ENTRY_BASERELOC"), True)
expect("data without execution", flags.IMAGE_DLLCHARACTERISTICS_NX_COMPAT, True)
expect("writable code", [section.Name for section in dll.sections if
                         section.IMAGE_SCN_MEM_WRITE and section.IMAGE_SCN_MEM_EXECUTE], [])
expect("symbols", dll.FILE_HEADER.NumberOfSymbols, 0)
# Without it the compiler's runtime would not hear of the end of a thread, and leak its memory.
expect("thread storage", hasattr(dll, "DIRECTORY_ENTRY_TLS"), True)

# The linker tells behind what it leaves out what it takes in. Streams alone would double the size.
taken = Path(path + ".map").read_text().partition("Linker script and memory map")[2]
expect("sections", ".text" in taken, True)
expect("streams", re.findall(r"basic_\w*(?:stream|buf)|\dlocale|ios_base|regex", taken), [])
expect("small", Path(path).stat().st_size <= 400_000, True)

# An object names what its code calls. A few have nothing on the stack that could run over.
bare = [name for name in objects if b"__stack_chk_fail" not in Path(name).read_bytes()]
expect("most objects guard the stack", len(bare) < len(objects) / 4, True)
# The compiler's own guard would load a cryptographic provider under the loader's lock.
names = [entry.name for entries in imports.values() for entry in entries]
expect("cryptography", [name for name in names if name.startswith(b"Crypt")], [])

resources = {kind.id: kind.directory.entries[0] for kind in dll.DIRECTORY_ENTRY_RESOURCE.entries}
manifest = resources[pefile.RESOURCE_TYPE["RT_MANIFEST"]]
expect("number of the manifest", manifest.id, 2)
place = manifest.directory.entries[0].data.struct
xml = ElementTree.fromstring(dll.get_data(place.OffsetToData, place.Size))
level = xml.find(".//{*}requestedExecutionLevel")
expect("manifest", level.attrib, {"level": "asInvoker", "uiAccess": "false"})
info = dll.VS_FIXEDFILEINFO[0]
numbers = (info.FileVersionMS >> 16, info.FileVersionMS & 0xFFFF, info.FileVersionLS >> 16)
expect("version", ".".join(map(str, numbers)), version)
texts = dll.FileInfo[0][0].StringTable[0].entries
expect("version texts", {texts[b"FileVersion"], texts[b"ProductVersion"]}, {version.encode()})
