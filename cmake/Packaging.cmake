# Packages with CPack, from what Install.cmake installs: three Debian packages, or one archive of everything.
# scripts/package.sh makes them all; docs/packages.md says what is in each.
set(CPACK_PACKAGE_NAME memorymanager)
set(CPACK_PACKAGE_VENDOR "The MemoryManager authors")
set(CPACK_PACKAGE_CONTACT "MemoryManager developers <developers@example.org>")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

if(WIN32)
    include(CPack)
else()
    include(cmake/DebianPackages.cmake)
endif()
