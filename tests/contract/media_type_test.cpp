// Media types built of wave formats.
#include <baseaudioprocessingobject.h>

#include <gtest/gtest.h>

TEST(MediaType, RefusesWaveFormatsThatClaimMoreThanTheyAre)
{
    WAVEFORMATEXTENSIBLE oWave{};
    oWave.Format = {WAVE_FORMAT_EXTENSIBLE, 2, 48000, 192000, 4, 16, 0};
    oWave.SubFormat = AUDIO_FORMAT_IEEE_FLOAT;
    const auto fnMake = [&](UINT32 u32Size)
    {
        IAudioMediaType* pType = nullptr;
        const HRESULT hResult = CreateAudioMediaType(&oWave.Format, u32Size, &pType);
        if (pType != nullptr)
            pType->Release();
        return hResult;
    };
    EXPECT_EQ(fnMake(sizeof(oWave)), E_INVALIDARG);
    oWave.Format.cbSize = 22;
    EXPECT_EQ(fnMake(sizeof(WAVEFORMATEX)), E_INVALIDARG);
    EXPECT_EQ(fnMake(sizeof(WAVEFORMATEX) - 1), E_INVALIDARG);
    EXPECT_EQ(fnMake(sizeof(oWave)), S_OK);
}
