#pragma once
// The process identifiers of the tool's steps, as the library's reports name them.

/// Each holds a function, a category and a processing step. The library names the most specific part that it
/// knows.
enum ProcessId : int
{
    kIpRead = 0x00008000,    ///< image reading
    kIpWrite = 0x00008100,   ///< image writing
    kIpOther = 0x00070000,   ///< other
    kIpSharpen = 0x00041300, ///< image correction, sharpness
    kIpSmooth = 0x00046600,  ///< image correction, soft filter
    kIpEnlarge = 0x00044200, ///< image correction, enlargement and reduction
};
