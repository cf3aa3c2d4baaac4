// The key table against a plain model: what was written last is what is read and what the text says, whatever
// else was written.

#include "fuzz/Fuzzing.h"

/// A name as the table compares it; empty for one that it cuts or trims, and for one in a code page.
static std::string Compared(const char* pszName)
{
    std::string szName(pszName);
    bool bPlain = szName.size() < MM_TABLE_NAME;
    for (char& ch : szName) {
        bPlain = bPlain && ch > ' ' && ch < 0x7F;
        ch = char(std::tolower(BYTE(ch)));
    }
    return bPlain ? szName : "";
}

bool fuzz::Run(Input& input)
{
    std::map<std::pair<std::string, std::string>, int> model;
    CWorkTableList table;
    bool bOthers = false; // were written; one of them hides its section from the text
    while (input.remaining_bytes() > 0) {
        const std::string szSection = input.ConsumeRandomLengthString(300);
        const std::string szKey = input.ConsumeRandomLengthString(300);
        const int nKind = input.UpTo(3), nValue = input.ConsumeIntegral<int>();
        const std::pair names(Compared(szSection.c_str()), Compared(szKey.c_str()));
        const bool bPlain = !names.first.empty() && !names.second.empty();
        bOthers = bOthers || !bPlain;
        if (nKind == 0 && table.KeyWriteString(szSection.c_str(), szKey.c_str(), szSection.c_str()) == 1)
            model.erase(names);
        else if (nKind == 1 && table.KeyWriteInt(szSection.c_str(), nullptr, 0) == 1)
            std::erase_if(model, [&](const auto& entry) { return entry.first.first == names.first; });
        else if (nKind > 1 && table.KeyWriteInt(szSection.c_str(), szKey.c_str(), nValue) == 1 && bPlain)
            model[names] = nValue;
    }
    static const std::string szPath = std::filesystem::temp_directory_path() / "table.txt";
    std::filesystem::remove(szPath);
    table.FlushData(szPath.c_str());
    std::ifstream file(szPath, std::ios::binary);
    const std::string szText(std::istreambuf_iterator<char>(file), {});
    for (const auto& [names, nValue] : model) {
        const std::string szLine = names.second + "\t=\t" + std::to_string(nValue) + "\r\n";
        assert(table.KeyReadInt(names.first.c_str(), names.second.c_str(), ~nValue) == nValue);
        assert(bOthers || strcasestr(szText.c_str(), szLine.c_str()));
    }
    return true;
}
