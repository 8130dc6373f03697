// Channel arrays, block lengths, silence and parameter files.
#include "audioapi/audio_api_data.h"
#include "tests/support/logged_machine_test.h"

#include <cstring>
#include <limits>
#include <set>

namespace
{
TEST(DataTest, BlockLengthsAndRates)
{
    const struct
    {
        INT32 iDataLen, iChannel, iSampleRate, iAligned;
    } ALIGN[] = {
        {3762, 2, 48000, 2880}, {882, 2, 44100, 882}, {881, 2, 44100, 0}, {2645, 2, 22050, 1764},
        {882, 2, 22050, 882},   {100, 0, 48000, 0},   {0, 2, 48000, 0},   {1121, 2, 16000, 960},
    };
    for (const auto& oCase : ALIGN)
        EXPECT_EQ(CAudioDATA::AlignProcessDataLen(oCase.iDataLen, oCase.iChannel, oCase.iSampleRate), oCase.iAligned);
    EXPECT_EQ(CAudioDATA::CalcReSampleLen(440, 44100, 48000), 478);
    EXPECT_EQ(CAudioDATA::CalcReSampleLen(1000000, 44100, 48000), 1088435); // the product is beyond 32 bits
    EXPECT_EQ(CAudioDATA::CalcReSampleLen(std::numeric_limits<INT32>::max(), 16000, 48000), 0);
    EXPECT_EQ(CAudioDATA::CalcReSampleLen(441, 0, 48000), 0);
}

TEST(DataTest, SilenceIsAMeanMagnitude)
{
    EXPECT_TRUE(CAudioDATA::IsNearZeroEnergy(nullptr, 4));
    const FLOAT32 fBelow[] = {1.5258e-5F, -1.5258e-5F};
    const FLOAT32 fLimit[] = {1.5259e-5F, -1.5259e-5F}; // opposite signs must not cancel
    EXPECT_TRUE(CAudioDATA::IsNearZeroEnergy(fBelow, 2));
    EXPECT_FALSE(CAudioDATA::IsNearZeroEnergy(fLimit, 2));
    const FLOAT32 fPeak[] = {0.0F, 0.0F, 0.0F, 1e-4F}; // mean 2.5e-5
    EXPECT_FALSE(CAudioDATA::IsNearZeroEnergy(fPeak, 4));
}

TEST(DataTest, RandomValuesDiffer)
{
    std::set<UINT32> oValues;
    for (int i = 0; i < 100; ++i)
        oValues.insert(CAudioDATA::GenerateRandom());
    EXPECT_GT(oValues.size(), 1U);
}

using DataLogTest = LoggedMachineTest;

TEST_F(DataLogTest, PointerArraysAreZeroedAndRefuseBadSizes)
{
    StartLog();
    FLOAT32* ppData[3] = {};
    ASSERT_EQ(CAudioDATA::AllocatePointerArray(ppData, 3, 240), 0);
    ppData[2][239] = 1.0F;
    ASSERT_EQ(CAudioDATA::AllocatePointerArray(ppData, 3, 480), 0); // takes the place of the first
    for (FLOAT32* pData : ppData)
        EXPECT_EQ(std::count(pData, pData + 480, 0.0F), 480);
    EXPECT_EQ(CAudioDATA::AllocatePointerArray(ppData, 0, 240), static_cast<INT32>(0x80E7000E));
    CAudioDATA::ReleasePointerArray(ppData, 3);
    EXPECT_EQ(ppData[1], nullptr);
    const FLOAT32* ppConst[1] = {};
    EXPECT_EQ(CAudioDATA::AllocatePointerArrayConst(ppConst, 1, -1), static_cast<INT32>(0x80E7000E));
    EXPECT_EQ(CountLog("(iChannelCount <= 0 || iFrameLen <= 0)"), 2U);
}

TEST_F(DataLogTest, ParameterFilesHaveExactlyTheirSize)
{
    StartLog();
    PutFile("C:\\p\\param.bin", "abcdefghijkl");
    std::unique_ptr<FLOAT32[]> pFloat;
    std::unique_ptr<BYTE[]> pByte;
    for (const INT32 iLen : {2, 3, 4, 11, 12, 13})
    {
        CAudioDATA::ReadBinFileParam("C:\\p\\x\\..\\param.bin", iLen, pFloat);
        CAudioDATA::ReadBinFileParam("C:\\p\\param.bin", iLen, pByte);
        ASSERT_EQ(pFloat != nullptr, iLen == 3) << iLen;
        ASSERT_EQ(pByte != nullptr, iLen == 12) << iLen;
        EXPECT_TRUE(pFloat == nullptr || std::memcmp(pFloat.get(), "abcdefghijkl", 12) == 0);
        EXPECT_TRUE(pByte == nullptr || std::memcmp(pByte.get(), "abcdefghijkl", 12) == 0);
    }
    EXPECT_EQ(CountLog("bfFileSize / static_cast<long>(sizeof(float)) != static_cast<long>(bfParamSize)"), 5U);
    for (const INT32 iLen : {0, -1})
        CAudioDATA::ReadBinFileParam("C:\\p\\param.bin", iLen, pByte);
    EXPECT_EQ(CountLog("iParaLength <= 0"), 2U);
    CAudioDATA::ReadBinFileParam("C:\\p\\none.bin", 3, pByte);
    EXPECT_EQ(CountLog("Read file param failed! Path:C:\\p\\none.bin"), 1U);
    EXPECT_EQ(FindLog("3842006 ReadRECBinFileParam Fail!").at(5).strFunction, "ReadBinFileParam");
    EXPECT_EQ(CountLog("3842005 ReadVQEBinFileParam Fail!"), 5U);
    EXPECT_EQ(CountLog("3841093 ReadZvVABinFileParam Fail!"), 5U);
}
} // namespace
