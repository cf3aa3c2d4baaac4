#pragma once
// The host's stack of timed log entries.

/// One entry. The host passes the address of a pointer to the next free entry and provides room: a transfer
/// pushes up to four entries and sets nLogCode of the one behind them to 0, the end mark.
struct T_LOG_STACK_tag
{
    int nLogCode;           ///< 50 start, 66 end, 32768 image read, 33024 image write, 0 end of the stack
    const char* pszLogText; ///< constant text, code page 932; the library's, never freed
    int nLogData1;          ///< counter's low word (50, 66), or the image's width
    int nLogData2;          ///< counter's high word, or the image's height
    int nLogData3;          ///< not written
};
