#pragma once
// Every result code of the library. One list makes the constants and their texts.

#include "Platform/PlatformTypes.h"

// clang-format off
#define MM_RESULT_LIST(X)                                                                              \
    X(MM_SUCCESS,                  0, "success")                                                       \
    X(MM_NO_MEMORY,                1, "memory could not be allocated, or a file mapping not be made")  \
    X(MM_BAD_ARGUMENT,            18, "argument unsupported or out of range")                          \
    X(MM_UNKNOWN_MODE,            33, "unknown band access mode or access type")                       \
    X(MM_FILE_ACCESS,             49, "file access failed")                                            \
    X(MM_STORE_VIEW,              65, "the view of a whole temporary file could not be mapped")        \
    X(MM_STORE_NOT_MAPPED,        66, "nothing of a temporary file could be mapped")                   \
    X(MM_NO_MAPPING,              67, "the whole external image is wanted but has no mapping")         \
    X(MM_EXTERNAL_VIEW,           68, "the view of a whole external image could not be mapped")        \
    X(MM_NO_BAND_ADDRESS,         69, "the store gave no address for the band")                        \
    X(MM_IO_RANGE_ADDRESS,        70, "the external image gave no address for the lines")              \
    X(MM_IO_BUFFER_ADDRESS,       71, "the external image gave no address for the band")               \
    X(MM_STORE_UNMAP,             81, "a view of a temporary file could not be released")              \
    X(MM_EXTERNAL_UNMAP,          82, "a view of an external image could not be released")             \
    X(MM_TOO_MANY_OUTPUTS,        88, "more than one output image in a memory request")                \
    X(MM_RATIO_ZERO,              89, "an image that must be banded has ratio 0")                      \
    X(MM_LINE_OUTSIDE,            97, "band line outside the image")                                   \
    X(MM_RANGE_REVERSED,          98, "first band line after the last")                                \
    X(MM_BLOCK_TOP,               99, "top line of the block outside the image")                       \
    X(MM_BLOCK_BOTTOM,           100, "bottom line of the block outside the image")                    \
    X(MM_BLOCK_LEFT,             101, "left pixel of the block outside the image")                     \
    X(MM_BLOCK_RIGHT,            102, "right pixel of the block outside the image")                    \
    X(MM_UNBLOCK_TOP,            103, "top line of the block written back outside the image")          \
    X(MM_UNBLOCK_BOTTOM,         104, "bottom line of the block written back outside the image")       \
    X(MM_UNBLOCK_LEFT,           105, "left pixel of the block written back outside the image")        \
    X(MM_UNBLOCK_RIGHT,          106, "right pixel of the block written back outside the image")       \
    X(MM_IO_LINE_OUTSIDE,        107, "band line outside the external image")                          \
    X(MM_IO_RANGE_REVERSED,      108, "first line of an external band after the last")                 \
    X(MM_NO_SUCH_DIRECTION,      113, "band direction neither downward nor upward")                    \
    X(MM_BAD_FRAME_SIZE,         114, "frame size below 0 or above the side margin")                   \
    X(MM_BAD_RATIO,              115, "negative ratio")                                                \
    X(MM_BAD_FRAME_MODE,         116, "frame mode unknown, or colour mode without a colour")           \
    X(MM_BAD_BAND_HEIGHT,        117, "band height below 0 or above the current one")                  \
    X(MM_IO_NO_SUCH_DIRECTION,   118, "direction of an external band neither downward nor upward")
// clang-format on

/// The values that operations return as DWORD.
enum MM_RESULT : DWORD
{
#define MM_RESULT_CONSTANT(name, code, text) name = code,
    MM_RESULT_LIST(MM_RESULT_CONSTANT)
#undef MM_RESULT_CONSTANT
};

/// The meaning of a result code in a few words; "unknown result code" for any other number. A constant text.
/// Any thread.
inline const char* MM_ResultText(DWORD nResult)
{
    switch (nResult) {
#define MM_RESULT_TEXT(name, code, text)                                                                     \
    case code:                                                                                               \
        return text;
        MM_RESULT_LIST(MM_RESULT_TEXT)
#undef MM_RESULT_TEXT
    default:
        return "unknown result code";
    }
}
