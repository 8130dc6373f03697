// The slots that another binary calls: each operation stands where the published order has it.
#include "tests/contract/slot_of.h"

#include <baseaudioprocessingobject.h>

#include <gtest/gtest.h>

TEST(SlotContract, OperationsStandInPublishedOrder)
{
    EXPECT_EQ(SlotOf(&IUnknown::AddRef), 1U);
    EXPECT_EQ(SlotOf(&IUnknown::Release), 2U);
    EXPECT_EQ(SlotOf(&IAudioProcessingObject::Reset), 3U);
    EXPECT_EQ(SlotOf(&IAudioProcessingObject::GetLatency), 4U);
    EXPECT_EQ(SlotOf(&IAudioProcessingObject::GetRegistrationProperties), 5U);
    EXPECT_EQ(SlotOf(&IAudioProcessingObject::Initialize), 6U);
    EXPECT_EQ(SlotOf(&IAudioProcessingObject::IsInputFormatSupported), 7U);
    EXPECT_EQ(SlotOf(&IAudioProcessingObject::IsOutputFormatSupported), 8U);
    EXPECT_EQ(SlotOf(&IAudioProcessingObject::GetInputChannelCount), 9U);
    EXPECT_EQ(SlotOf(&IAudioProcessingObjectRT::APOProcess), 3U);
    EXPECT_EQ(SlotOf(&IAudioProcessingObjectRT::CalcInputFrames), 4U);
    EXPECT_EQ(SlotOf(&IAudioProcessingObjectRT::CalcOutputFrames), 5U);
    EXPECT_EQ(SlotOf(&IAudioProcessingObjectConfiguration::LockForProcess), 3U);
    EXPECT_EQ(SlotOf(&IAudioProcessingObjectConfiguration::UnlockForProcess), 4U);
    EXPECT_EQ(SlotOf(&IAudioSystemEffects2::GetEffectsList), 3U);
    EXPECT_EQ(SlotOf(&IClassFactory::CreateInstance), 3U);
    EXPECT_EQ(SlotOf(&IClassFactory::LockServer), 4U);
}
