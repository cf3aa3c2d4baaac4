# The Debian packages libmemorymanager1, libmemorymanager-dev and imgband for CPack: names, control files, documents.

# The newest entry of the Debian changelog is this version's, and names the package's revision.
set(MM_DEBIAN ${PROJECT_SOURCE_DIR}/packaging/debian)
file(STRINGS ${MM_DEBIAN}/changelog MM_NEWEST_ENTRY LIMIT_COUNT 1)
if(NOT MM_NEWEST_ENTRY MATCHES "^memorymanager \\(([0-9.]+)-([0-9]+)\\)" OR NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
    message(FATAL_ERROR "packaging/debian/changelog: the newest entry is not of version ${PROJECT_VERSION}")
endif()
set(MM_DEBIAN_VERSION ${CMAKE_MATCH_1}-${CMAKE_MATCH_2})
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_2})

# Control files beside `control`. CPack's scripts that call ldconfig are replaced by the trigger.
set(MM_RUNTIME_PACKAGE libmemorymanager${PROJECT_VERSION_MAJOR})
configure_file(${MM_DEBIAN}/shlibs.in ${PROJECT_BINARY_DIR}/debian/shlibs @ONLY)
configure_file(${MM_DEBIAN}/triggers ${PROJECT_BINARY_DIR}/debian/triggers COPYONLY)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
    ${PROJECT_BINARY_DIR}/debian/shlibs ${PROJECT_BINARY_DIR}/debian/triggers)
set(CPACK_POST_BUILD_SCRIPTS ${MM_DEBIAN}/remove-scripts.cmake)

# Every package has its documents in a folder of its own name; nothing else installs them.
configure_file(${MM_DEBIAN}/changelog ${PROJECT_BINARY_DIR}/debian/changelog.Debian COPYONLY)
execute_process(COMMAND gzip -9nkf ${PROJECT_BINARY_DIR}/debian/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)
function(mm_debian_documents group package)
    install(FILES ${MM_DEBIAN}/copyright ${PROJECT_BINARY_DIR}/debian/changelog.Debian.gz
        DESTINATION share/doc/${package} COMPONENT ${group}_documents EXCLUDE_FROM_ALL)
    install(FILES ${MM_DEBIAN}/lintian-overrides
        DESTINATION share/lintian/overrides RENAME ${package} COMPONENT ${group}_documents EXCLUDE_FROM_ALL)
endfunction()
mm_debian_documents(library ${MM_RUNTIME_PACKAGE})
mm_debian_documents(development libmemorymanager-dev)
mm_debian_documents(tool imgband)
set(MM_NOTICES "" CACHE FILEPATH "Licences of what is compiled into the tool, for its package")
if(MM_NOTICES)
    install(FILES ${MM_NOTICES} DESTINATION share/doc/imgband COMPONENT tool_documents EXCLUDE_FROM_ALL)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/MemoryManager)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${MM_RUNTIME_PACKAGE})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "shared library for very large images inside a fixed memory budget
An image lives in committed memory or in a temporary file, and a processing
step sees it band by band. A planner divides one memory budget of the process
among all images of a step. Bitmaps and raw images are converted on the way.

This package contains the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libmemorymanager-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${MM_RUNTIME_PACKAGE} (= ${MM_DEBIAN_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "development files of MemoryManager
The library MemoryManager processes very large raster images inside a fixed
memory budget.

This package contains the headers, the static library, and what CMake and
pkg-config need to find them.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME imgband)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${MM_RUNTIME_PACKAGE} (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOL_DESCRIPTION "converts and filters very large pictures inside a memory budget
imgband converts, filters and enlarges bitmaps and raw pictures that are far
larger than the memory it may use, and reports where the memory went.")

# Each package is a group of components.
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
include(CPack)
foreach(MM_GROUP library development tool)
    cpack_add_component_group(${MM_GROUP})
    cpack_add_component(${MM_GROUP}_documents GROUP ${MM_GROUP})
endforeach()
cpack_add_component(Runtime GROUP library)
cpack_add_component(Development GROUP development)
cpack_add_component(Tools GROUP tool)
