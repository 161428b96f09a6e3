# cpack runs this after making an archive.
execute_process(COMMAND python3 ${CMAKE_CURRENT_LIST_DIR}/../tools/repack.py ${CPACK_PACKAGE_FILES}
                COMMAND_ERROR_IS_FATAL ANY)
