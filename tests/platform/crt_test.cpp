// Checked copies, scanning and text conversion: tables of their published results.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>

TEST(CheckedCopyTest, RefusesWhatDoesNotFit)
{
    char aSource[] = "abcdef";
    const struct
    {
        bool bDest;
        size_t sizeDest;
        bool bSource;
        size_t sizeCount;
        errno_t iResult;
        const char* pMoved;  // what memmove_s leaves
        const char* pCopied; // what memcpy_s leaves
    } aCases[] = {
        {true, 4, true, 4, 0, "abcd", "abcd"},       {true, 4, true, 5, 34, "....", "\0\0\0\0"},
        {true, 4, false, 2, 22, "....", "\0\0\0\0"}, {false, 4, true, 2, 22, "....", "...."},
        {false, 0, false, 0, 0, "....", "...."},     {true, 0, true, 1, 34, "....", "...."},
    };
    for (const auto& stCase : aCases)
    {
        char aMoved[] = "....";
        char aCopied[] = "....";
        const char* const pSource = stCase.bSource ? aSource : nullptr;
        EXPECT_EQ(memmove_s(stCase.bDest ? aMoved : nullptr, stCase.sizeDest, pSource, stCase.sizeCount),
                  stCase.iResult);
        EXPECT_EQ(memcpy_s(stCase.bDest ? aCopied : nullptr, stCase.sizeDest, pSource, stCase.sizeCount),
                  stCase.iResult);
        EXPECT_STREQ(aMoved, stCase.pMoved);
        EXPECT_STREQ(aCopied, stCase.pCopied);
    }
    EXPECT_EQ(memmove_s(aSource + 1, 5, aSource, 5), 0);
    EXPECT_STREQ(aSource, "aabcde");
}

TEST(ScanTest, ReadsThePlatformsWidths)
{
    const struct
    {
        const char* pText;
        int iResult;
        unsigned long long iValue;
    } aWide[] = {
        {"0xFFFFFFFF00000001", 1, 0xFFFFFFFF00000001ULL}, {"0x1g", 1, 1}, {"0xzz", 0, 7}, {"", -1, 7}, {"12", 0, 7}};
    for (const auto& stCase : aWide)
    {
        unsigned long long iValue = 7;
        EXPECT_EQ(sscanf_s(stCase.pText, "0x%I64x", &iValue), stCase.iResult) << stCase.pText;
        EXPECT_EQ(iValue, stCase.iValue) << stCase.pText;
    }
    short aShorts[3] = {0, 0, 99};
    EXPECT_EQ(sscanf_s("0xffff", "0x%hx", &aShorts[1]), 1);
    EXPECT_EQ(aShorts[1], -1);
    EXPECT_EQ(aShorts[2], 99);
}

TEST(TextTest, ConvertsBothWaysAndTellsWhatIsNoText)
{
    const struct
    {
        std::string strNarrow;
        std::wstring strWide;
        bool bValid;
    } aCases[] = {
        {"a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x94\x8A", L"a\u00E9\u20AC\U0001F50A", true},
        {"x\xFF", L"x\uFFFD", false},
        {"\xC0\x80y", L"\uFFFD\uFFFDy", false},         // overlong
        {"\xED\xA0\x80", L"\uFFFD\uFFFD\uFFFD", false}, // half of a pair
        {"\xE2\x82", L"\uFFFD\uFFFD", false},           // cut off
    };
    for (const auto& stCase : aCases)
    {
        const int iNarrow = static_cast<int>(stCase.strNarrow.size());
        const int iWide = static_cast<int>(stCase.strWide.size());
        std::wstring strWide(stCase.strWide.size(), L'?');
        EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, stCase.strNarrow.data(), iNarrow, nullptr, 0), iWide);
        EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, stCase.strNarrow.data(), iNarrow, strWide.data(), iWide), iWide);
        EXPECT_EQ(strWide, stCase.strWide);
        if (!stCase.bValid)
            continue;
        std::string strNarrow(stCase.strNarrow.size(), '?');
        EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, strWide.data(), iWide, strNarrow.data(), iNarrow, nullptr, nullptr),
                  iNarrow);
        EXPECT_EQ(strNarrow, stCase.strNarrow);
    }
    char aRoom[3] = {};
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"ab", -1, aRoom, 3, nullptr, nullptr), 3);
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"abc", -1, aRoom, 3, nullptr, nullptr), 0);
}
