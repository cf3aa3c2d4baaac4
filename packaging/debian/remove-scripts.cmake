# CPack adds scripts that call ldconfig to every package with a library; the trigger does that already.
foreach(PACKAGE IN LISTS CPACK_PACKAGE_FILES)
    if(PACKAGE MATCHES "\\.deb$")
        set(FOLDER ${PACKAGE}.d)
        execute_process(COMMAND dpkg-deb --raw-extract ${PACKAGE} ${FOLDER} COMMAND_ERROR_IS_FATAL ANY)
        file(REMOVE ${FOLDER}/DEBIAN/postinst ${FOLDER}/DEBIAN/postrm)
        execute_process(COMMAND dpkg-deb --build --root-owner-group ${FOLDER} ${PACKAGE}
            OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
        file(REMOVE_RECURSE ${FOLDER})
    endif()
endforeach()
