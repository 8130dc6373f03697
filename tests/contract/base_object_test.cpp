// The processing object's base: life states, connection checks, format negotiation.
#include <baseaudioprocessingobject.h>

#include <gtest/gtest.h>

#include <memory>

namespace
{
struct Releaser
{
    void operator()(IUnknown* pUnknown) const { pUnknown->Release(); }
};
using MediaType = std::unique_ptr<IAudioMediaType, Releaser>;

constexpr GUID c_oPCM = {0x00000001, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

// Channels, container bytes, valid bits, rate.
UNCOMPRESSEDAUDIOFORMAT Format(DWORD dwChannels, float fRate, DWORD dwBytes = 4, DWORD dwBits = 32,
                               const GUID& oType = AUDIO_FORMAT_IEEE_FLOAT)
{
    return {oType, dwChannels, dwBytes, dwBits, fRate, 0};
}

MediaType MakeType(const UNCOMPRESSEDAUDIOFORMAT& oFormat)
{
    IAudioMediaType* pType = nullptr;
    EXPECT_EQ(CreateAudioMediaTypeFromUncompressedAudioFormat(&oFormat, &pType), S_OK);
    return MediaType(pType);
}

APO_REG_PROPERTIES Properties(int iFlags)
{
    APO_REG_PROPERTIES oProperties{};
    oProperties.Flags = static_cast<APO_FLAG>(iFlags);
    oProperties.u32MinInputConnections = oProperties.u32MaxInputConnections = 1;
    oProperties.u32MinOutputConnections = oProperties.u32MaxOutputConnections = 1;
    return oProperties;
}

class CTestObject : public CBaseAudioProcessingObject
{
public:
    explicit CTestObject(const APO_REG_PROPERTIES* pProperties) : CBaseAudioProcessingObject(pProperties) {}
    STDMETHOD(QueryInterface)(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHOD_(ULONG, AddRef)() override { return 1; }
    STDMETHOD_(ULONG, Release)() override { return 1; }
    STDMETHOD_(void, APOProcess)(UINT32, APO_CONNECTION_PROPERTY**, UINT32, APO_CONNECTION_PROPERTY**) override {}

    HRESULT Lock(IAudioMediaType* pInput, IAudioMediaType* pOutput, UINT32 u32Inputs = 1)
    {
        APO_CONNECTION_DESCRIPTOR oInput{APO_CONNECTION_BUFFER_TYPE_EXTERNAL, 0, 480, pInput, 0};
        APO_CONNECTION_DESCRIPTOR oOutput{APO_CONNECTION_BUFFER_TYPE_EXTERNAL, 0, 480, pOutput, 0};
        APO_CONNECTION_DESCRIPTOR* pInputs[] = {&oInput, &oInput};
        APO_CONNECTION_DESCRIPTOR* pOutputs[] = {&oOutput};
        return LockForProcess(u32Inputs, pInputs, 1, pOutputs);
    }
};
} // namespace

TEST(BaseObject, LivesThroughItsStates)
{
    const APO_REG_PROPERTIES oProperties = Properties(0xF);
    CTestObject oObject(&oProperties);
    const MediaType pStereo = MakeType(Format(2, 48000));
    const MediaType pFour = MakeType(Format(4, 48000));
    const MediaType pSlow = MakeType(Format(2, 44100));
    const MediaType pNarrow = MakeType(Format(2, 48000, 2, 16, c_oPCM));
    BYTE cData[8] = {};

    EXPECT_EQ(oObject.Lock(pStereo.get(), pStereo.get()), APOERR_NOT_INITIALIZED);
    EXPECT_EQ(oObject.Initialize(0, cData), E_INVALIDARG);
    EXPECT_EQ(oObject.Initialize(8, nullptr), E_INVALIDARG);
    EXPECT_EQ(oObject.Initialize(8, cData), S_OK);
    EXPECT_EQ(oObject.Initialize(8, cData), APOERR_ALREADY_INITIALIZED);
    EXPECT_EQ(oObject.UnlockForProcess(), APOERR_ALREADY_UNLOCKED);
    EXPECT_EQ(oObject.Lock(pStereo.get(), pStereo.get(), 2), APOERR_NUM_CONNECTIONS_INVALID);
    EXPECT_EQ(oObject.Lock(pStereo.get(), nullptr), APOERR_INVALID_CONNECTION_FORMAT);
    EXPECT_EQ(oObject.Lock(pStereo.get(), pFour.get()), APOERR_INVALID_CONNECTION_FORMAT);
    EXPECT_EQ(oObject.Lock(pStereo.get(), pSlow.get()), APOERR_INVALID_CONNECTION_FORMAT);
    EXPECT_EQ(oObject.Lock(pNarrow.get(), pNarrow.get()), APOERR_FORMAT_NOT_SUPPORTED);
    EXPECT_EQ(oObject.LockForProcess(1, nullptr, 1, nullptr), E_POINTER);

    ASSERT_EQ(oObject.Lock(pFour.get(), pFour.get()), S_OK);
    EXPECT_EQ(oObject.GetSamplesPerFrame(), 4U);
    EXPECT_EQ(oObject.Lock(pStereo.get(), pStereo.get()), APOERR_APO_LOCKED);
    EXPECT_EQ(oObject.UnlockForProcess(), S_OK);
    EXPECT_EQ(oObject.Lock(pStereo.get(), pStereo.get()), S_OK);
    EXPECT_EQ(oObject.GetSamplesPerFrame(), 2U);
}

TEST(BaseObject, NegotiatesFormats)
{
    const UNCOMPRESSEDAUDIOFORMAT oStereo = Format(2, 48000);
    const UNCOMPRESSEDAUDIOFORMAT oNarrow = Format(2, 48000, 2, 16, c_oPCM);
    const struct
    {
        const char* pWhat;
        int iFlags;
        UNCOMPRESSEDAUDIOFORMAT oRequested;
        const UNCOMPRESSEDAUDIOFORMAT* pOpposite;
        HRESULT hResult;
        UNCOMPRESSEDAUDIOFORMAT oSupported; // looked at if there is one
    } oCases[] = {
        {"as it should be", 0xF, oStereo, nullptr, S_OK, oStereo},
        {"matches", 0xF, oStereo, &oStereo, S_OK, oStereo},
        {"most", 0xF, Format(4096, 384000), nullptr, S_OK, Format(4096, 384000)},
        {"too many channels", 0xF, Format(4097, 48000), nullptr, APOERR_FORMAT_NOT_SUPPORTED, {}},
        {"too fast", 0xF, Format(2, 384001), nullptr, APOERR_FORMAT_NOT_SUPPORTED, {}},
        {"16 bits", 0xF, oNarrow, nullptr, S_FALSE, oStereo},
        {"16 bits opposite", 0xF, oStereo, &oNarrow, APOERR_FORMAT_NOT_SUPPORTED, {}},
        {"24 valid bits", 0xF, Format(2, 48000, 4, 24), nullptr, S_FALSE, oStereo},
        {"other rate", 0xF, Format(2, 44100), &oStereo, S_FALSE, oStereo},
        {"other channels", 0xF, Format(6, 48000), &oStereo, S_FALSE, oStereo},
        {"other channels, free", APO_FLAG_FRAMESPERSECOND_MUST_MATCH, Format(6, 48000), &oStereo, S_OK,
         Format(6, 48000)},
        {"too many, but the other side tells", 0xF, Format(4097, 48000), &oStereo, S_FALSE, oStereo},
    };
    for (const auto& oCase : oCases)
    {
        const APO_REG_PROPERTIES oProperties = Properties(oCase.iFlags);
        CTestObject oObject(&oProperties);
        const MediaType pRequested = MakeType(oCase.oRequested);
        const MediaType pOpposite = oCase.pOpposite != nullptr ? MakeType(*oCase.pOpposite) : nullptr;
        for (const bool bInput : {true, false})
        {
            IAudioMediaType* pFound = nullptr;
            const HRESULT hResult = bInput
                                        ? oObject.IsInputFormatSupported(pOpposite.get(), pRequested.get(), &pFound)
                                        : oObject.IsOutputFormatSupported(pOpposite.get(), pRequested.get(), &pFound);
            const MediaType pSupported(pFound);
            EXPECT_EQ(hResult, oCase.hResult) << oCase.pWhat;
            EXPECT_EQ(pSupported == nullptr, FAILED(oCase.hResult)) << oCase.pWhat;
            EXPECT_EQ(pSupported == pRequested, oCase.hResult == S_OK) << oCase.pWhat;
            DWORD dwEqual = 0;
            if (pSupported != nullptr)
            {
                EXPECT_EQ(pSupported->IsEqual(MakeType(oCase.oSupported).get(), &dwEqual), S_OK) << oCase.pWhat;
            }
        }
    }
}

TEST(BaseObject, RefusesWaveFormatsThatClaimMoreThanTheyAre)
{
    WAVEFORMATEXTENSIBLE oWave{};
    oWave.Format = {WAVE_FORMAT_EXTENSIBLE, 2, 48000, 192000, 4, 16, 0};
    oWave.SubFormat = AUDIO_FORMAT_IEEE_FLOAT;
    const auto fnMake = [&](UINT32 u32Size)
    {
        IAudioMediaType* pType = nullptr;
        const HRESULT hResult = CreateAudioMediaType(&oWave.Format, u32Size, &pType);
        const MediaType pOwner(pType);
        return hResult;
    };
    EXPECT_EQ(fnMake(sizeof(oWave)), E_INVALIDARG);
    oWave.Format.cbSize = 22;
    EXPECT_EQ(fnMake(sizeof(WAVEFORMATEX)), E_INVALIDARG);
    EXPECT_EQ(fnMake(sizeof(WAVEFORMATEX) - 1), E_INVALIDARG);
    EXPECT_EQ(fnMake(sizeof(oWave)), S_OK);
}
