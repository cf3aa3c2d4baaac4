// The key table: what names are found by, what values read as, and the bytes of its text.

#include "ReportFiles.h"
#include "SameBytes.h"

#include "MemoryManager/MemoryManager.h"

#if defined(_WIN32) // whose code page is taken to be 932: in it, two bytes of those names are one character
constexpr int kNotUtf8 = 13;
#else
constexpr int kNotUtf8 = 9;
#endif

struct KeyName
{
    std::string sGiven;
    int nFinds, nBecomes = nFinds; ///< numbers of the kept names that are the same, 0 for none
    std::string sKept = sGiven;
};
const std::string kLong(255, 'x'), kLonger = kLong + "y", kLate = " " + kLong, kCut(254, 'x');
const std::string kMaximum = "\x8D\xC5\x91\xE5\x8Eg\x97p\x83\x81\x83\x82\x83\x8A\x97\xCA";
const KeyName kNames[] = {
    // second bytes of 0x5C and 0x41 are among them; "ac" and "ba" have one hash
    {"A [9]", 1}, {"\x83\x5C", 4}, {"\xC3\x89T", kNotUtf8}, {" \tA [9] ", 0, 1, "A [9]"},
    {"a [9]", 1}, {"\x83\x7C", 5}, {"A\x83\x61", 8},        {kLonger, 0, 2, kLong},
    {kLong, 2},   {"\x83\x41", 6}, {"a\x83\x61", 8},        {kLate, 0, 3, kCut},
    {"ac", 10},   {"\x83\x61", 7}, {"\xC3\x89t", 9},        {" \t", 0, 12, ""},
    {"ba", 11},   {"", 12}};
const std::string kEightAtTheEnd = std::string(70000, '0') + "8";
const std::pair<std::string, int> kValues[] = {
    // and the number that each reads as
    {"-99999999999", INT_MIN}, {"  \"42\" ", 42}, {"\t+12", 12}, {"", 0},
    {"2147483648", INT_MAX},   {"-7 of 9", -7},   {"abc", 0},    {" ", 0},
    {kEightAtTheEnd, 8},       {"\"\"7\"", 0},    {"\" 5", 5},   {"\"", 0}};

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
    // What the file holds after the table was appended to it.
    std::string Flush()
    {
        const bool bDone = m_table.FlushData("keys") == 1;
        return bDone && fs::exists("keys") ? FileBytes("keys") : "none";
    }
    CWorkTableList m_table;
    const RunFolder m_folder;
};

TEST_F(KeyTable, KeepsWhatWasWrittenLastWhateverTheNames)
{
    std::mt19937 random(20);
    std::vector<std::pair<const KeyName*, std::vector<std::pair<const KeyName*, std::string>>>> model;
    for (int i = 0; i < 4000; ++i) {
        const KeyName &in = kNames[random() % std::size(kNames)], &key = kNames[random() % std::size(kNames)];
        const auto& [sText, nRead] = kValues[random() % std::size(kValues)];
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
    EXPECT_TRUE(SameBytes(sExpected, Flush()));
}

TEST_F(KeyTable, AppendsItsSectionsAsTextButNeverTheMaximum)
{
    const std::string sForced = kMaximum + "\x81i\x8B\xAD\x90\xA7\x83I\x83\x93\x83\x81\x83\x82\x83\x8A\x81j";
    const std::string sOther = kMaximum + "\x81j", sAscii = kMaximum + "(";
    const std::tuple<const char*, std::string, const char*> writes[] = {
        {"maximum", kMaximum, "7"},    {"\x89\xE6\x91\x9C", "\x93\xFC\x97\xCD[1]\x81Gp", "1048576"},
        {"forced", sForced, "8"},      {"other bracket", sOther, "9"},
        {"no lead byte", sAscii, "1"}, {"second", "key", nullptr},
        {"second", kMaximum, "2"},     {"\x89\xE6\x91\x9C", "\x8F\xF3", "\x83I "},
        {"cleared", "key", "3"},       {"blank first", " ", "4"},
        {"blank first", kMaximum, "5"}};
    const std::string sText = "[\x89\xE6\x91\x9C]\r\n\x93\xFC\x97\xCD[1]\x81Gp\t=\t1048576\r\n"
                              "\x8F\xF3\t=\t\x83I \r\n\r\n[no lead byte]\r\n" +
                              kMaximum + "(\t=\t1\r\n\r\n[second]\r\nkey\t=\t\r\n" + kMaximum +
                              "\t=\t2\r\n\r\n[blank first]\r\n" + kMaximum + "\t=\t5\r\n\r\n";
    EXPECT_EQ(0, m_table.KeyWriteInt(nullptr, "key", 1));
    EXPECT_EQ(7, m_table.KeyReadInt(nullptr, "key", 7));
    EXPECT_EQ("none", Flush()) << "there was never a section";
    EXPECT_FALSE(fs::exists("keys"));
    EXPECT_EQ(1, m_table.KeyWriteInt("cleared", nullptr, 1));
    EXPECT_EQ("", Flush()) << "a section without keys";
    for (const auto& [pszSection, sKey, pszValue] : writes)
        EXPECT_EQ(1, m_table.KeyWriteString(pszSection, sKey.c_str(), pszValue)) << pszSection;
    EXPECT_EQ(1, m_table.KeyWriteInt("CLEARED", nullptr, 0));
    EXPECT_EQ(8, m_table.KeyReadInt("second", nullptr, 8));
    EXPECT_EQ(7, m_table.KeyReadInt("maximum", kMaximum.c_str(), -1)) << "it can be read all the same";
    std::ofstream("keys") << "before";
    Flush();
    EXPECT_EQ("before" + sText + sText, Flush()) << "it appends";
    EXPECT_EQ(0, m_table.FlushData("none/text"));
}
