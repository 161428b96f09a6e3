#!/usr/bin/env python3
"""Prints the id of this PC: device_id.py [FORMAT [LIBRARY]]

LIBRARY is the path of deviceid.dll or libdeviceid.so, built for as many bits as this Python. Without
it the loader's folders are searched.
"""
import ctypes
import os
import sys

ID_SIZE, LOG_SIZE = 41, 65536  # what deviceid.h calls DEVICEID_ID_SIZE and DEVICEID_LOG_SIZE


def get_device_id(library, version):
    """The result, the id and the log of one call. The id is a text if the result is 0."""
    call = ctypes.CDLL(library).GetHardwareId  # CDLL means cdecl, on Windows too
    call.argtypes = [ctypes.c_char_p, ctypes.c_uint32, ctypes.c_char_p, ctypes.c_char_p,
                     ctypes.c_uint32]
    call.restype = ctypes.c_int
    device_id = ctypes.create_string_buffer(ID_SIZE)
    log = ctypes.create_string_buffer(LOG_SIZE)
    result = call(device_id, ID_SIZE, version.encode(), log, LOG_SIZE)
    # The log may hold bytes that are no UTF-8: names of devices come as the system has them.
    return result, device_id.value.decode(), log.value.decode(errors="replace")


def main():
    version = sys.argv[1] if len(sys.argv) > 1 else "2.0"
    default = "deviceid.dll" if os.name == "nt" else "libdeviceid.so"
    try:
        result, device_id, _ = get_device_id(*(sys.argv[2:3] or [default]), version)
    except (OSError, AttributeError) as failure:
        sys.exit(f"device_id.py: {failure}")
    if result != 0:
        sys.exit(f'device_id.py: result {result} for format "{version}"')
    print(device_id)


main()
