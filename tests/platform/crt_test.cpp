// Checked copies: a table of their published results.
#include <windows.h>

#include <gtest/gtest.h>

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
