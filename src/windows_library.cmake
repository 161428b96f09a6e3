# The DLL. Hosts load it alone: the compiler's own libraries go into it.
set(bits x64)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(bits x86)
endif()
set(script ${CMAKE_CURRENT_SOURCE_DIR}/platform/windows/runtime_imports_${bits}.ld)
set_property(TARGET deviceid APPEND PROPERTY LINK_DEPENDS ${script})
target_sources(deviceid_objects PRIVATE platform/windows/library_entry.cc
                                        platform/windows/runtime_handles.cc)
target_link_options(deviceid PRIVATE
  -static -s -Wl,--dynamicbase,--nxcompat$<$<STREQUAL:${bits},x64>:,--high-entropy-va>
  -Wl,--gc-sections,-Map=$<TARGET_FILE:deviceid>.map
  -Wl,--wrap=__gthr_win32_mutex_destroy ${script})
windows_resource(deviceid deviceid.dll "Stable id of a PC" VFT_DLL 2)
set_target_properties(deviceid PROPERTIES PREFIX "" IMPORT_PREFIX "" IMPORT_SUFFIX .lib)

# The import library of GNU ld holds code that Microsoft's linker refuses in 32-bit programs.
find_program(DEVICEID_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
if(DEVICEID_DLLTOOL)
  list(JOIN exports "\n" exports)
  file(CONFIGURE OUTPUT deviceid.def CONTENT "LIBRARY deviceid.dll\nEXPORTS\n${exports}\n" @ONLY)
  set(machine_x86 i386)
  set(machine_x64 i386:x86-64)
  add_custom_command(TARGET deviceid POST_BUILD VERBATIM
    COMMAND ${DEVICEID_DLLTOOL} -m ${machine_${bits}} -D deviceid.dll
            -d ${CMAKE_CURRENT_BINARY_DIR}/deviceid.def -l $<TARGET_LINKER_FILE:deviceid>)
elseif(DEVICEID_INSTALL)
  message(FATAL_ERROR "llvm-dlltool is missing, which makes the import library for other compilers")
endif()
