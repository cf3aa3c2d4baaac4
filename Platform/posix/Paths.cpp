// Turning the callers' paths into those of the system: here and nowhere else backslashes become slashes.
// A byte that looks like a backslash may be the second of a double-byte character, and then it stays.

#include "Platform/posix/PosixLayer.h"

#include <cstring>
#include <unistd.h>

namespace {

/// Bytes of the UTF-8 character that starts at p; 0: there is none. Reads nothing behind a terminating zero,
/// which is a character of one byte.
int Utf8Length(const unsigned char* p)
{
    if (p[0] < 0x80)
        return 1;
    const int nLength = p[0] >= 0xF0 ? 4 : p[0] >= 0xE0 ? 3 : 2;
    if (p[0] < 0xC2 || p[0] > 0xF4)
        return 0;
    for (int i = 1; i < nLength; ++i)
        if ((p[i] & 0xC0) != 0x80)
            return 0;
    // Overlong forms, halves of surrogate pairs, and numbers above the last character.
    const bool bForbidden = (p[0] == 0xE0 && p[1] < 0xA0) || (p[0] == 0xED && p[1] > 0x9F) ||
                            (p[0] == 0xF0 && p[1] < 0x90) || (p[0] == 0xF4 && p[1] > 0x8F);
    return bForbidden ? 0 : nLength;
}

bool IsUtf8(const unsigned char* p)
{
    while (*p != 0) {
        const int nLength = Utf8Length(p);
        if (nLength == 0)
            return false;
        p += nLength;
    }
    return true;
}

/// Whether a byte is the first of a double-byte character of code page 932.
bool IsLeadByte(unsigned char c)
{
    return (c >= 0x81 && c <= 0x9F) || (c >= 0xE0 && c <= 0xFC);
}

const unsigned char* Bytes(const char* psz)
{
    return reinterpret_cast<const unsigned char*>(psz);
}

} // namespace

namespace platform::posix {

CharacterSet::CharacterSet(const char* pszText) : m_bUtf8(IsUtf8(Bytes(pszText))) {}

int CharacterSet::Length(const char* pCharacter) const
{
    const unsigned char* p = Bytes(pCharacter);
    return m_bUtf8 ? Utf8Length(p) : IsLeadByte(p[0]) && p[1] != 0 ? 2 : 1;
}

void BackslashesToSlashes(char* pszPath)
{
    const CharacterSet set(pszPath);
    for (char* p = pszPath; *p != 0; p += set.Length(p))
        if (*p == '\\')
            *p = '/';
}

NativePath::NativePath(LPCSTR pszPath) : m_szPath{}, m_bValid(false)
{
    const std::size_t nLength = pszPath ? std::strlen(pszPath) : 0;
    if (!pszPath || nLength >= sizeof m_szPath) {
        FailErrno(pszPath ? ENAMETOOLONG : EINVAL);
        return;
    }
    std::memcpy(m_szPath, pszPath, nLength + 1);
    BackslashesToSlashes(m_szPath);
    m_bValid = true;
}

bool NativePath::EndsInSlash() const
{
    const std::size_t nLength = std::strlen(m_szPath);
    return nLength != 0 && m_szPath[nLength - 1] == '/';
}

std::string FromRoot(const char* pszPath)
{
    char szCurrent[PATH_MAX];
    if (pszPath[0] == '/' || !getcwd(szCurrent, sizeof szCurrent))
        return pszPath;
    return std::string(szCurrent) + "/" + pszPath;
}

} // namespace platform::posix
