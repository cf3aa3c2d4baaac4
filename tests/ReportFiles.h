#pragma once
// What reports are compared with: files written by hand in UTF-8, in code page 932 by a conversion that knows
// nothing of the library.

#include "StandardLibrary.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <iconv.h>
#endif

namespace fs = std::filesystem;

/// tests/expected: ctest names it, since a compiler's cache may have seen this source under another path.
inline const char* const kGivenFolder = std::getenv("MM_EXPECTED_FILES");
inline const fs::path kExpectedFiles =
    kGivenFolder ? fs::path(kGivenFolder) : fs::absolute(__FILE__).parent_path() / "expected";

/// A folder of its own for what a test writes: its "run" is the current folder for a while.
struct RunFolder
{
    RunFolder() { fs::create_directories(top / "run"), fs::current_path(top / "run"); }
    ~RunFolder() { fs::current_path(before), fs::remove_all(top); }
    const fs::path before = fs::current_path();
    const fs::path top = fs::temp_directory_path() / ("reports" + std::to_string(std::random_device{}()));
};

inline std::string FileBytes(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// In code page 932, as far as the text can be converted.
#if defined(_WIN32)
inline constexpr const char kLogLineEnd[] = "\r\n";

inline std::string Cp932(const std::string& sUtf8)
{
    std::wstring sWide(sUtf8.size(), L'\0');
    std::string s(2 * sUtf8.size(), '\0');
    const int nIn = static_cast<int>(sUtf8.size());
    const int nWide = MultiByteToWideChar(CP_UTF8, 0, sUtf8.data(), nIn, sWide.data(), nIn);
    const int nOut = WideCharToMultiByte(932, 0, sWide.data(), nWide, s.data(), 2 * nIn, nullptr, nullptr);
    return s.substr(0, static_cast<std::size_t>(nOut));
}
#else
inline constexpr const char kLogLineEnd[] = "\n";

inline std::string Cp932(std::string sText)
{
    std::string s(sText.size(), '\0');
    std::size_t nIn = s.size(), nOut = s.size();
    char *pIn = sText.data(), *pOut = s.data();
    const iconv_t convert = iconv_open("CP932", "UTF-8");
    iconv(convert, &pIn, &nIn, &pOut, &nOut);
    iconv_close(convert);
    return s.substr(0, s.size() - nOut);
}
#endif

/// A file of tests/expected in code page 932, its lines ended as those of a log or as those of a
/// table, "\r\n".
inline std::string Expected(const char* pszName, const char* pszLineEnd = kLogLineEnd)
{
    return std::regex_replace(Cp932(FileBytes(kExpectedFiles / pszName)), std::regex("\n"), pszLineEnd);
}
