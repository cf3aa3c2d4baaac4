// Standard streams on POSIX systems.

#include "system/Console.h"

#include <unistd.h>

namespace os {

void Print(std::FILE* pStream, const std::string& szText)
{
    std::fputs(szText.c_str(), pStream);
}

bool IsTerminal(std::FILE* pStream)
{
    return isatty(fileno(pStream)) == 1;
}

} // namespace os
