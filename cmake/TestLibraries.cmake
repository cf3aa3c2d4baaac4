# GoogleTest: the package, or its sources for a target that it is not packaged for.
if(NOT MM_HEADERS_ONLY)
    find_package(GTest REQUIRED)
else()
    set(MM_GOOGLETEST_SOURCES /usr/src/googletest CACHE PATH "Sources of GoogleTest")
    set(INSTALL_GTEST OFF)
    set(BUILD_SHARED_LIBS OFF)
    add_subdirectory(${MM_GOOGLETEST_SOURCES} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
    foreach(MM_LIBRARY gtest gmock gmock_main)
        if(NOT TARGET GTest::${MM_LIBRARY})
            add_library(GTest::${MM_LIBRARY} ALIAS ${MM_LIBRARY})
        endif()
    endforeach()
endif()
include(GoogleTest)
if(CMAKE_CROSSCOMPILING)
    set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST) # building must not need what runs the programs
endif()

# What every test program links. Optimising them would cost more than it saves; their warnings are ours.
add_library(mm_tests INTERFACE)
target_compile_options(mm_tests INTERFACE $<$<CONFIG:Release>:-O1>)
target_link_libraries(mm_tests INTERFACE GTest::gmock_main mm_warnings)
