// The values that travel to the embedded controller and back.
#include <windows.h>

#include <oleauto.h>

#include <gtest/gtest.h>

TEST(AutomationValues, ArraysAndTextsKeepTheirBoundsAndLocks)
{
    SAFEARRAYBOUND aBounds[] = {{3, 1}, {4, -1}};
    SAFEARRAY* const pArray = SafeArrayCreate(VT_I4, 2, aBounds);
    ASSERT_NE(pArray, nullptr);
    LONG lLow = 0;
    LONG lHigh = 0;
    EXPECT_EQ(SafeArrayGetLBound(pArray, 2, &lLow), S_OK);
    EXPECT_EQ(SafeArrayGetUBound(pArray, 2, &lHigh), S_OK);
    EXPECT_EQ(lLow, -1);
    EXPECT_EQ(lHigh, 2);
    EXPECT_EQ(SafeArrayGetUBound(pArray, 3, &lHigh), DISP_E_BADINDEX);
    void* pData = nullptr;
    ASSERT_EQ(SafeArrayAccessData(pArray, &pData), S_OK);
    static_cast<LONG*>(pData)[11] = 5;
    EXPECT_EQ(SafeArrayDestroy(pArray), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnaccessData(pArray), S_OK);
    EXPECT_EQ(SafeArrayUnaccessData(pArray), E_UNEXPECTED);
    EXPECT_EQ(SafeArrayDestroy(pArray), S_OK);
    SAFEARRAYBOUND aHuge[] = {{0xFFFFFFFF, 0}, {0xFFFFFFFF, 0}};
    EXPECT_EQ(SafeArrayCreate(VT_I8, 2, aHuge), nullptr);
    EXPECT_EQ(SafeArrayCreate(VT_BSTR, 1, aBounds), nullptr);
    SAFEARRAY* const pEmpty = SafeArrayCreateVector(VT_UI1, 0, 0);
    ASSERT_EQ(SafeArrayAccessData(pEmpty, &pData), S_OK);
    EXPECT_EQ(pData, nullptr);
    EXPECT_EQ(SafeArrayUnaccessData(pEmpty), S_OK);
    EXPECT_EQ(SafeArrayDestroy(pEmpty), S_OK);

    VARIANT oText{};
    oText.vt = VT_BSTR;
    oText.bstrVal = SysAllocStringLen(L"ab\0cd", 5);
    VARIANT oCopy{};
    EXPECT_EQ(VariantCopy(&oCopy, &oText), S_OK);
    EXPECT_EQ(VariantClear(&oText), S_OK);
    EXPECT_EQ(oText.vt, VT_EMPTY);
    EXPECT_EQ(SysStringLen(oCopy.bstrVal), 5U);
    EXPECT_EQ(oCopy.bstrVal[4], L'd');
    EXPECT_EQ(VariantClear(&oCopy), S_OK);
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
}
