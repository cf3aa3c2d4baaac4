# What `cmake --install` installs, in the components Runtime, Development and Tools. The installed tree can be moved as
# a whole. A shared and a static build can share a prefix: only the library and MemoryManager-<kind>.cmake differ.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

get_target_property(MM_LIBRARY_TYPE MemoryManager TYPE)
if(MM_LIBRARY_TYPE STREQUAL SHARED_LIBRARY)
    set(MM_KIND shared)
else()
    set(MM_KIND static)
endif()
# Headers get a folder of their own, as "Platform" is too general a name for a shared include folder.
set(MM_INSTALL_HEADERS ${CMAKE_INSTALL_INCLUDEDIR}/MemoryManager-${PROJECT_VERSION_MAJOR})
set(MM_INSTALL_CMAKE ${CMAKE_INSTALL_LIBDIR}/cmake/MemoryManager)
set(MM_INSTALL_PKGCONFIG ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The library
set_target_properties(MemoryManager PROPERTIES EXPORT_NAME ${MM_KIND})
install(TARGETS MemoryManager EXPORT MemoryManager
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development
    INCLUDES DESTINATION ${MM_INSTALL_HEADERS})

# The public headers
if(WIN32)
    set(MM_TYPES windows/WindowsTypes.h)
else()
    set(MM_TYPES posix/PosixTypes.h)
endif()
foreach(HEADER
        MemoryManager/BaseBuffer.h
        MemoryManager/CImageCtrl.h
        MemoryManager/CImageCtrlIO.h
        MemoryManager/CImageObj.h
        MemoryManager/CImageObjIO.h
        MemoryManager/CWorkTableList.h
        MemoryManager/ErrorLogFolder.h
        MemoryManager/Export.h
        MemoryManager/ExternalImage.h
        MemoryManager/ImageRecord.h
        MemoryManager/ImgObjUty.h
        MemoryManager/LogStack.h
        MemoryManager/MemoryManager.h
        MemoryManager/MemoryRequest.h
        MemoryManager/ParameterRecords.h
        MemoryManager/ReportTextList.h
        MemoryManager/ResultCodes.h
        Platform/PlatformTypes.h
        Platform/${MM_TYPES})
    get_filename_component(FOLDER ${HEADER} DIRECTORY)
    install(FILES ${HEADER} DESTINATION ${MM_INSTALL_HEADERS}/${FOLDER} COMPONENT Development)
endforeach()
install(FILES ${PROJECT_BINARY_DIR}/include/MemoryManager/Version.h
    DESTINATION ${MM_INSTALL_HEADERS}/MemoryManager COMPONENT Development)

# Files for find_package and pkg-config
if(WIN32)
    set(MM_RUNTIME_FILE ${CMAKE_INSTALL_BINDIR}/MemoryManager.dll)
else()
    set(MM_RUNTIME_FILE ${CMAKE_INSTALL_LIBDIR}/libMemoryManager.so.${PROJECT_VERSION})
endif()
set(MM_TOOL_FILE ${CMAKE_INSTALL_BINDIR}/imgband${CMAKE_EXECUTABLE_SUFFIX})
configure_package_config_file(cmake/MemoryManagerConfig.cmake.in ${PROJECT_BINARY_DIR}/MemoryManagerConfig.cmake
    INSTALL_DESTINATION ${MM_INSTALL_CMAKE})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/MemoryManagerConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
file(RELATIVE_PATH MM_PREFIX_FROM_PKGCONFIG /${MM_INSTALL_PKGCONFIG} /)
configure_file(cmake/MemoryManager.pc.in ${PROJECT_BINARY_DIR}/MemoryManager.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/MemoryManagerConfig.cmake ${PROJECT_BINARY_DIR}/MemoryManagerConfigVersion.cmake
    DESTINATION ${MM_INSTALL_CMAKE} COMPONENT Development)
install(EXPORT MemoryManager NAMESPACE MemoryManager:: FILE MemoryManager-${MM_KIND}.cmake
    DESTINATION ${MM_INSTALL_CMAKE} COMPONENT Development)
install(FILES ${PROJECT_BINARY_DIR}/MemoryManager.pc DESTINATION ${MM_INSTALL_PKGCONFIG} COMPONENT Development)

# The tool. Unless the system's loader searches the library's folder, the tool finds it by a path relative to itself.
if(TARGET imgband)
    if(NOT WIN32 AND NOT CMAKE_INSTALL_FULL_LIBDIR IN_LIST CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES)
        file(RELATIVE_PATH MM_LIBRARY_FROM_TOOL /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
        set_target_properties(imgband PROPERTIES INSTALL_RPATH $ORIGIN/${MM_LIBRARY_FROM_TOOL})
    endif()
    install(TARGETS imgband RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Tools)
    if(NOT WIN32)
        configure_file(packaging/imgband.1.in ${PROJECT_BINARY_DIR}/imgband.1 @ONLY)
        execute_process(COMMAND gzip -9nkf ${PROJECT_BINARY_DIR}/imgband.1 COMMAND_ERROR_IS_FATAL ANY)
        install(FILES ${PROJECT_BINARY_DIR}/imgband.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT Tools)
    endif()
endif()
