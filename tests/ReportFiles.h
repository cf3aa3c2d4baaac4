#pragma once
// What reports are compared with: files written by hand in UTF-8, in code page 932 by a conversion that knows
// nothing of the library.

#include <filesystem>
#include <fstream>
#include <iconv.h>
#include <iterator>
#include <random>
#include <regex>
#include <string>

namespace fs = std::filesystem;

inline const fs::path kExpectedFiles = fs::absolute(__FILE__).parent_path() / "expected";

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

/// A file of tests/expected in code page 932, its lines ended as those of a log or, with "\r\n", of a table.
inline std::string Expected(const char* pszName, const char* pszLineEnd = "\n")
{
    return std::regex_replace(Cp932(FileBytes(kExpectedFiles / pszName)), std::regex("\n"), pszLineEnd);
}
