// Text helpers against tables of cases.
#include "audioapi/audio_api_string.h"
#include "tests/support/logged_machine_test.h"

#include <limits>

namespace
{
using Pieces = std::vector<std::string>;

struct TextCase
{
    const char* pFirst;
    const char* pSecond;
    const char* pResult;
};

TEST(StringTest, SplitDropsEmptyPiecesAndTrims)
{
    const struct
    {
        const char* pText;
        const char* pDelimiter;
        Pieces vecPieces;
    } CASE[] = {
        {"a,,b", ",", {"a", "b"}},       {"", ",", {}},        {"abc", ",", {"abc"}},
        {",,a, ,b,", ",", {"a", "b"}},   {" \r\n\t", ",", {}}, {"a::b:c", "::", {"a", "b:c"}},
        {"a\vb ,c", ",", {"a\vb", "c"}}, {"abc", "", {"abc"}},
    };
    for (const auto& oCase : CASE)
        EXPECT_EQ(CAudioSTR::Split(oCase.pText, oCase.pDelimiter), oCase.vecPieces) << oCase.pText;
}

TEST(StringTest, SidesOfADelimiter)
{
    const struct
    {
        const char* pText;
        const char* pDelimiter;
        INT32 iMode;
        const char* pLeft;  // of LeftOf
        const char* pRight; // of RightOf
        Pieces vecPair;     // of SplitPair
    } CASE[] = {
        {"a = b = c", "=", 0, "a", "b = c", {"a", "b = c"}}, {"a = b = c", "=", 1, "a = b", "c", {"a = b", "c"}},
        {"{1,2}", "}", 1, "{1,2", "", {"{1,2", ""}},         {"{1,2", "{", 1, "", "1,2", {"", "1,2"}},
        {" HKEY_X ", "\\", 0, "HKEY_X", "HKEY_X", {"", ""}}, {"a->b->c", "->", 1, "a->b", "c", {"a->b", "c"}},
    };
    for (const auto& oCase : CASE)
    {
        EXPECT_EQ(CAudioSTR::LeftOf(oCase.pText, oCase.pDelimiter, oCase.iMode), oCase.pLeft) << oCase.pText;
        EXPECT_EQ(CAudioSTR::RightOf(oCase.pText, oCase.pDelimiter, oCase.iMode), oCase.pRight) << oCase.pText;
        Pieces vecPair{"old", "old"};
        CAudioSTR::SplitPair(oCase.pText, vecPair[0], vecPair[1], oCase.pDelimiter, oCase.iMode);
        EXPECT_EQ(vecPair, oCase.vecPair) << oCase.pText;
    }
    EXPECT_EQ(CAudioSTR::TrimDelimiter(" \\\\C:\\TOOLS\\\\ ", "\\"), "C:\\TOOLS");
}

TEST(StringTest, KeyValueReadsTheFirstPlaceOfTheKeyOnly)
{
    const TextCase CASE[] = {
        {"Mode: 3 ,Type:4", "Mode", "3"}, {"Mode:3,Type:4", "Type", "4"}, {"Mode:3", "Other", ""},
        {"Modes:3,Mode:4", "Mode", ""},   {"Mode,Type:4", "Mode", ""},    {"Type:a:b", "Type", "a:b"},
    };
    for (const TextCase& oCase : CASE)
        EXPECT_EQ(CAudioSTR::GetKeyValue(oCase.pFirst, oCase.pSecond, ","), oCase.pResult) << oCase.pFirst;
}

TEST(StringTest, LettersOfEveryAlphabetHaveTwoCases)
{
    EXPECT_EQ(CAudioSTR::ToUpper(std::wstring(L"j\u00FCrgen.\u0436 9")), L"J\u00DCRGEN.\u0416 9");
    EXPECT_EQ(CAudioSTR::ToLower(std::wstring(L"J\u00DCRGEN.\u0416 9")), L"j\u00FCrgen.\u0436 9");
    EXPECT_EQ(CAudioSTR::ToUpper(std::wstring()), L"");
    EXPECT_EQ(CAudioSTR::ToLower(std::string("{AZ-\xC3\x9C}")), "{az-\xC3\x9C}") << "narrow: of ASCII alone";
}

TEST(StringTest, VersionsCompareNumberByNumber)
{
    const TextCase CASE[] = {
        {"1.2.10", "1.2.9", "1.2.10"}, {"1.9", "1.10", "1.10"}, {"1.2.0", "1.2", "1.2.0"}, {"", "0", "0"},
        {"1.02", "1.2", "1.2"},        {"1.2", "1.02", "1.02"}, {"2.x", "2.1", "2.1"},
    };
    for (const TextCase& oCase : CASE)
        EXPECT_EQ(CAudioSTR::GetMaxVersion(oCase.pFirst, oCase.pSecond, "."), oCase.pResult) << oCase.pFirst;
}

TEST(StringTest, NumbersAreReadAsAStreamReadsThem)
{
    const struct
    {
        const char* pText;
        INT32 iNumber;
        float fNumber;
    } CASE[] = {
        {"2a", 2, 2.0F},   {"abc", 0, 0.0F}, {"", 0, 0.0F},        {" -17.5 dB", -17, -17.5F}, {"+8", 8, 8.0F},
        {"0x10", 0, 0.0F}, {"- 5", 0, 0.0F}, {"1.5e2", 1, 150.0F}, {"inf", 0, 0.0F},
    };
    for (const auto& oCase : CASE)
    {
        EXPECT_EQ(CAudioSTR::ToInt(oCase.pText), oCase.iNumber) << oCase.pText;
        const std::string strText = oCase.pText;
        EXPECT_EQ(CAudioSTR::ToInt(std::wstring(strText.begin(), strText.end())), oCase.iNumber) << oCase.pText;
        EXPECT_EQ(CAudioSTR::ToFloat(oCase.pText), oCase.fNumber) << oCase.pText;
    }
    EXPECT_EQ(CAudioSTR::ToInt("99999999999"), std::numeric_limits<INT32>::max());
    EXPECT_EQ(CAudioSTR::FloatToString(-65.25F), "-65.25");
    EXPECT_EQ(CAudioSTR::FloatToString(1234567.0F), "1.23457e+06");
}

using StringLogTest = LoggedMachineTest;

TEST_F(StringLogTest, RefusedTextsAreLoggedAndEmpty)
{
    StartLog();
    EXPECT_EQ(CAudioSTR::ToString(std::wstring(L"\u00FCs"), CP_UTF8), "\xC3\xBCs");
    EXPECT_EQ(CAudioSTR::ToWString("\xC3\xBCs", CP_UTF8), L"\u00FCs");
    EXPECT_EQ(CAudioSTR::ToWString("", CP_UTF8), L"");
    constexpr UINT NO_CODE_PAGE = 4711;
    EXPECT_EQ(CAudioSTR::ToString(std::wstring(L"a"), NO_CODE_PAGE), "");
    EXPECT_EQ(CAudioSTR::ToWString("a", NO_CODE_PAGE), L"");
    EXPECT_EQ(CountLog("Turn wstring to string faild! CodePage[4711]"), 1U);
    EXPECT_EQ(CountLog("Turn string to wstring faild! CodePage[4711]"), 1U);

    EXPECT_EQ(CAudioSTR::FormatPathString("C:\\a\\.\\b\\..\\c"), "C:\\a\\c");
    EXPECT_EQ(CAudioSTR::FormatPathString("C:\\a\\b\\..\\..\\..\\.c"), "C:\\.c");
    const std::string strLong = "C:\\" + std::string(400, 'x');
    EXPECT_EQ(CAudioSTR::FormatPathString(strLong), strLong);
    EXPECT_EQ(CountLog("PathCanonicalizeA(strPathBuffer, strPath.c_str())"), 1U);
}
} // namespace
