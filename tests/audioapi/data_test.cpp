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
    const FLOAT32 fParam[] = {1.5F, -2.0F, 3.25F};
    PutFile("C:\\p\\float.bin", std::string(reinterpret_cast<const char*>(fParam), sizeof(fParam)));
    PutFile("C:\\p\\byte.bin", "abc");

    std::unique_ptr<FLOAT32[]> pFloat;
    CAudioDATA::ReadBinFileParam("C:\\p\\x\\..\\float.bin", 3, pFloat);
    ASSERT_NE(pFloat, nullptr);
    EXPECT_EQ(std::memcmp(pFloat.get(), fParam, sizeof(fParam)), 0);
    std::unique_ptr<BYTE[]> pByte;
    CAudioDATA::ReadBinFileParam("C:\\p\\byte.bin", 3, pByte);
    ASSERT_NE(pByte, nullptr);
    EXPECT_EQ(pByte[2], 'c');
    EXPECT_EQ(CountLog("Read file param failed!"), 0U);

    for (const INT32 iLen : {2, 4})
    {
        CAudioDATA::ReadBinFileParam("C:\\p\\float.bin", iLen, pFloat);
        EXPECT_EQ(pFloat, nullptr) << iLen;
        CAudioDATA::ReadBinFileParam("C:\\p\\byte.bin", iLen, pByte);
        EXPECT_EQ(pByte, nullptr) << iLen;
    }
    CAudioDATA::ReadBinFileParam("C:\\p\\none.bin", 3, pByte);
    EXPECT_EQ(CountLog("bfFileSize / static_cast<long>(sizeof(float)) != static_cast<long>(bfParamSize)"), 2U);
    EXPECT_EQ(CountLog("Read file param failed! Path:C:\\p\\none.bin"), 1U);
    EXPECT_EQ(CountLog("3842006 ReadRECBinFileParam Fail!"), 3U);
}
} // namespace
