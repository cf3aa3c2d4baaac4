#pragma once
// The host's stack of timed log entries.

/// One entry of the stack. The host passes the address of its pointer to the next free entry. A transfer
/// pushes two entries when it starts and two when it succeeds, moves the pointer behind them, and sets
/// nLogCode of the entry there to 0, the end mark: the host provides room for five.
struct T_LOG_STACK_tag
{
    int nLogCode;           ///< 50 start, 66 end, 32768 image reading, 33024 image writing, 0 end mark
    const char* pszLogText; ///< constant text, code page 932; the library's, never freed
    int nLogData1;          ///< for 50 and 66 the performance counter's low 32 bits, else the image's width
    int nLogData2;          ///< for 50 and 66 its high 32 bits, else the image's height
    int nLogData3;          ///< not written
};
