#pragma once
// The standard streams.
//
// The main thread uses this. Failed writes show in the stream's own error state.

#include <cstdio>
#include <string>

namespace os {

/// Writes UTF-8 to a standard stream; a console shows it whatever its code page is.
void Print(std::FILE* pStream, const std::string& szText);

/// Whether what is written to a stream appears on a terminal that knows escape sequences.
bool IsTerminal(std::FILE* pStream);

} // namespace os
