# The libraries that tool and tests use: nlohmann_json, CLI11 and fmt.
#
# MM_HEADERS_ONLY: for a target that these libraries are not packaged for. Their headers are the same for every
# target; they are put apart from the machine's other headers, which are not.
if(NOT MM_HEADERS_ONLY)
    find_package(CLI11 REQUIRED)
    find_package(nlohmann_json REQUIRED)
    find_package(fmt REQUIRED)
    return()
endif()

function(mm_header_library name header)
    find_path(MM_${name}_HEADERS ${header} PATHS /usr/include REQUIRED NO_CMAKE_FIND_ROOT_PATH)
    get_filename_component(folder ${header} DIRECTORY)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/headers)
    file(CREATE_LINK ${MM_${name}_HEADERS}/${folder} ${PROJECT_BINARY_DIR}/headers/${folder} SYMBOLIC)
    add_library(${name}::${name} INTERFACE IMPORTED GLOBAL)
    target_include_directories(${name}::${name} SYSTEM INTERFACE ${PROJECT_BINARY_DIR}/headers)
endfunction()

mm_header_library(CLI11 CLI/CLI.hpp)
mm_header_library(nlohmann_json nlohmann/json.hpp)
mm_header_library(fmt fmt/format.h)
target_compile_definitions(fmt::fmt INTERFACE FMT_HEADER_ONLY)
