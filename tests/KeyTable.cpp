// The key table: what names are found by, what values read as, and the bytes of its text.

#include "MemoryManager/MemoryManager.h"
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>

#if defined(_WIN32) // whose code page is taken to be 932: in it, two bytes of those names are one character
constexpr int kNotUtf8 = 13;
#else
constexpr int kNotUtf8 = 9;
#endif

// clang-format off
// Finds and becomes: numbers of the kept names that are the same, 0 for none.
struct KeyName { std::string sGiven, sKept; int nFinds, nBecomes; };
const std::string kLong(255, 'x'), kMaximum = "\x8D\xC5\x91\xE5\x8Eg\x97p\x83\x81\x83\x82\x83\x8A\x97\xCA";
const std::vector<KeyName> kNames = { // second bytes of 0x5C and 0x41 among them; "ac" and "ba" have one hash
    {"Alpha [9]", "Alpha [9]", 1, 1}, {"aLPHA [9]", "aLPHA [9]", 1, 1}, {" \tAlpha [9] ", "Alpha [9]", 0, 1},
    {kLong, kLong, 2, 2}, {kLong + "y", kLong, 0, 2}, {" " + kLong, kLong.substr(1), 0, 3},
    {"\x83\x5C", "\x83\x5C", 4, 4}, {"\x83\x7C", "\x83\x7C", 5, 5}, {"\x83\x41", "\x83\x41", 6, 6},
    {"\x83\x61", "\x83\x61", 7, 7}, {"A\x83\x61", "A\x83\x61", 8, 8}, {"a\x83\x61", "a\x83\x61", 8, 8},
    {"\xC3\x89t", "\xC3\x89t", 9, 9}, {"\xC3\x89T", "\xC3\x89T", kNotUtf8, kNotUtf8}, {"ac", "ac", 10, 10},
    {"ba", "ba", 11, 11}, {"", "", 12, 12}, {" \t", "", 0, 12}};
const std::vector<std::pair<std::string, int>> kValues = { // and the number that each reads as
    {"  \"42\" ", 42}, {"abc", 0}, {"", 0}, {" ", 0}, {"\"", 0}, {"\"\"7\"", 0}, {"-7 of 9", -7}, {"\t+12", 12},
    {"2147483648", 2147483647}, {"-99999999999", -2147483647 - 1}, {"\" 5", 5}, {std::string(70000, '0') + "8", 8}};
// clang-format on

// The entry that a name finds, by comparing numbers; else a new one.
template <class List> static auto& Entry(List& list, const KeyName& name)
{
    for (auto& entry : list)
        if (name.nFinds != 0 && entry.first->nBecomes == name.nFinds)
            return entry.second;
    return list.emplace_back().first = &name, list.back().second;
}

struct KeyTable : testing::Test
{
    ~KeyTable() override { std::filesystem::remove(m_sPath); }
    // What the file holds after the table was appended to it.
    std::string Flush()
    {
        const int nDone = m_table.FlushData(m_sPath.c_str());
        std::ifstream file(m_sPath, std::ios::binary);
        return !nDone || !file ? "none" : std::string(std::istreambuf_iterator<char>(file), {});
    }
    CWorkTableList m_table;
    const std::string m_sPath = testing::TempDir() + "keys" + std::to_string(std::random_device{}());
};

TEST_F(KeyTable, KeepsWhatWasWrittenLastWhateverTheNames)
{
    std::mt19937 random(20);
    std::vector<std::pair<const KeyName*, std::vector<std::pair<const KeyName*, std::string>>>> model;
    for (int i = 0; i < 4000; ++i) {
        const KeyName &in = kNames[random() % kNames.size()], &key = kNames[random() % kNames.size()];
        const auto& [sText, nRead] = kValues[random() % kValues.size()];
        const char *pszIn = in.sGiven.c_str(), *pszKey = key.sGiven.c_str();
        const bool bKey = *pszKey != '\0', bNumber = random() % 9 == 0;
        auto& keys = Entry(model, in);
        if (random() % 40 == 0 && in.nFinds && m_table.KeyWriteString(pszIn, nullptr, "none"))
            keys.clear();
        EXPECT_EQ(bKey, bNumber ? m_table.KeyWriteInt(pszIn, pszKey, nRead)
                                : m_table.KeyWriteString(pszIn, pszKey, sText.c_str()));
        EXPECT_EQ(bKey && key.nFinds && in.nFinds ? nRead : i, m_table.KeyReadInt(pszIn, pszKey, i)) << i;
        if (bKey)
            Entry(keys, key) = bNumber ? std::to_string(nRead) : sText;
    }
    std::string sExpected;
    for (const auto& [pSection, keys] : model) {
        sExpected += keys.empty() ? "" : "[" + pSection->sKept + "]\r\n";
        for (const auto& [pKey, sValue] : keys)
            sExpected += pKey->sKept.empty() ? "" : pKey->sKept + "\t=\t" + sValue + "\r\n";
        sExpected += keys.empty() ? "" : "\r\n";
    }
    EXPECT_TRUE(Flush() == sExpected);
}

TEST_F(KeyTable, AppendsItsSectionsAsTextButNeverTheMaximum)
{
    // clang-format off
    const std::tuple<const char*, std::string, const char*> writes[] = {
        {"maximum", kMaximum, "7"}, {"\x89\xE6\x91\x9C", "\x93\xFC\x97\xCD[1]\x81Gp", "1048576"},
        {"forced", kMaximum + "\x81i\x8B\xAD\x90\xA7\x83I\x83\x93\x83\x81\x83\x82\x83\x8A\x81j", "8"},
        {"other bracket", kMaximum + "\x81j", "9"}, {"no lead byte", kMaximum + "(", "1"},
        {"second", "key", nullptr}, {"second", kMaximum, "2"}, {"\x89\xE6\x91\x9C", "\x8F\xF3", "\x83I "},
        {"cleared", "key", "3"}, {"blank first", " ", "4"}, {"blank first", kMaximum, "5"}};
    const std::string sText =
        "[\x89\xE6\x91\x9C]\r\n\x93\xFC\x97\xCD[1]\x81Gp\t=\t1048576\r\n\x8F\xF3\t=\t\x83I \r\n\r\n"
        "[no lead byte]\r\n" + kMaximum + "(\t=\t1\r\n\r\n[second]\r\nkey\t=\t\r\n" + kMaximum + "\t=\t2\r\n\r\n"
        "[blank first]\r\n" + kMaximum + "\t=\t5\r\n\r\n";
    // clang-format on
    EXPECT_EQ(7, m_table.KeyWriteInt(nullptr, "key", 1) + m_table.KeyReadInt(nullptr, "key", 7));
    EXPECT_TRUE(Flush() == "none" && !std::filesystem::exists(m_sPath)) << "there was never a section";
    EXPECT_EQ("", m_table.KeyWriteInt("cleared", nullptr, 1) ? Flush() : "none") << "a section without keys";
    for (const auto& [pszSection, sKey, pszValue] : writes)
        EXPECT_EQ(1, m_table.KeyWriteString(pszSection, sKey.c_str(), pszValue)) << pszSection;
    EXPECT_EQ(9, m_table.KeyWriteInt("CLEARED", nullptr, 0) + m_table.KeyReadInt("second", nullptr, 8));
    EXPECT_EQ(7, m_table.KeyReadInt("maximum", kMaximum.c_str(), -1)) << "it can be read all the same";
    std::ofstream(m_sPath) << "before";
    EXPECT_EQ("before" + sText + sText, (Flush(), Flush()));
    EXPECT_EQ(0, m_table.FlushData((m_sPath + "none/text").c_str()));
}
