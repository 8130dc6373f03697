// Initialisation, formats offered and refused, lock states.
#include "tests/conformance/module_fixture.h"

#include <limits>

using namespace published;

namespace
{
using StatesTest = ModuleFixture;

TEST_F(StatesTest, TheSizeTellsTheInitRecord)
{
    BYTE aData[128] = {};
    for (const UINT32 u32Size : {0U, 4U, 55U, 56U, 57U, 64U, 87U, 88U, 89U, 96U, ~0U})
        for (BYTE* const pData : {static_cast<BYTE*>(nullptr), aData})
        {
            const bool bTaken = pData != nullptr && (u32Size == 56 || u32Size == 88);
            const ComPtr<IObject> pObject = Create<IObject>(RENDER_EFX);
            EXPECT_EQ(pObject->Initialize(u32Size, pData), bTaken ? OK : BAD_ARGUMENT) << u32Size;
            EXPECT_EQ(pObject->Initialize(56, aData), bTaken ? ALREADY_INITIALIZED : OK);
        }
}

TEST_F(StatesTest, AnObjectForDiscoveryAnswersWhatItIsAsked)
{
    for (const CLSID* pClassID : CLASSES)
    {
        const ComPtr<IObject> pObject = CreateInitialized(*pClassID, true);
        CMediaType oType;
        IMediaType* pSupported = nullptr;
        EXPECT_EQ(pObject->IsInputFormatSupported(nullptr, &oType, &pSupported), OK);
        EXPECT_EQ(pSupported, &oType);
        pSupported->Release();
        UINT uEffects = 1;
        EXPECT_EQ(Query<IEffects2>(pObject.get(), EFFECTS_2)->GetEffectsList(nullptr, &uEffects, nullptr), OK);
        EXPECT_EQ(uEffects, 0U);
    }
}

TEST_F(StatesTest, FormatsAreTakenCorrectedOrRefused)
{
    constexpr FLOAT f32NoNumber = std::numeric_limits<FLOAT>::quiet_NaN();
    const Format oStereo{FLOAT_SAMPLES, 2, 4, 32, 48000, 0};
    const struct
    {
        const char* pName;
        Format oFormat;
        HRESULT hAnswer; // of the object that is asked alone
        HRESULT hLock;   // of the object that is locked with it all the same
    } aCases[] = {
        {"stereo", oStereo, OK, OK},
        {"least", {FLOAT_SAMPLES, 1, 4, 32, 10, 0}, OK, OK},
        {"most", {FLOAT_SAMPLES, 4096, 4, 32, 384000, 0}, OK, OK},
        {"16 bits", {FLOAT_SAMPLES, 2, 2, 16, 48000, 0}, NOT_AS_ASKED, FORMAT_NOT_SUPPORTED},
        {"24 of 32 bits", {FLOAT_SAMPLES, 2, 4, 24, 48000, 0}, NOT_AS_ASKED, FORMAT_NOT_SUPPORTED},
        {"another type", {OBJECT, 2, 4, 32, 48000, 0}, NOT_AS_ASKED, FORMAT_NOT_SUPPORTED},
        {"no channel", {FLOAT_SAMPLES, 0, 4, 32, 48000, 0}, FORMAT_NOT_SUPPORTED, FORMAT_NOT_SUPPORTED},
        {"too many channels", {FLOAT_SAMPLES, 4097, 4, 32, 48000, 0}, FORMAT_NOT_SUPPORTED, FORMAT_NOT_SUPPORTED},
        {"all channels", {FLOAT_SAMPLES, ~0U, 4, 32, 48000, 0}, FORMAT_NOT_SUPPORTED, FORMAT_NOT_SUPPORTED},
        {"too slow", {FLOAT_SAMPLES, 2, 4, 32, 9.5F, 0}, FORMAT_NOT_SUPPORTED, FORMAT_NOT_SUPPORTED},
        {"too fast", {FLOAT_SAMPLES, 2, 4, 32, 384001, 0}, FORMAT_NOT_SUPPORTED, FORMAT_NOT_SUPPORTED},
        {"backwards", {FLOAT_SAMPLES, 2, 4, 32, -48000, 0}, FORMAT_NOT_SUPPORTED, FORMAT_NOT_SUPPORTED},
        {"no rate", {FLOAT_SAMPLES, 2, 4, 32, f32NoNumber, 0}, FORMAT_NOT_SUPPORTED, FORMAT_NOT_SUPPORTED},
    };
    for (const auto& oCase : aCases)
    {
        SCOPED_TRACE(oCase.pName);
        const ComPtr<IObject> pObject = CreateInitialized(RENDER_OMFX);
        CConnection oConnection;
        oConnection.m_oType.m_oFormat = oCase.oFormat;
        IMediaType* pInput = nullptr;
        IMediaType* pOutput = nullptr;
        EXPECT_EQ(pObject->IsInputFormatSupported(nullptr, &oConnection.m_oType, &pInput), oCase.hAnswer);
        EXPECT_EQ(pObject->IsOutputFormatSupported(nullptr, &oConnection.m_oType, &pOutput), oCase.hAnswer);
        for (IMediaType* pSupported : {pInput, pOutput})
        {
            ASSERT_EQ(pSupported != nullptr, oCase.hAnswer == OK || oCase.hAnswer == NOT_AS_ASKED);
            EXPECT_EQ(pSupported == &oConnection.m_oType, oCase.hAnswer == OK);
            if (pSupported == nullptr)
                continue;
            Format oOffered{};
            EXPECT_EQ(pSupported->GetUncompressedAudioFormat(&oOffered), OK);
            EXPECT_EQ(oOffered.oType, FLOAT_SAMPLES);
            EXPECT_EQ(oOffered.dwValidBits, 32U);
            EXPECT_EQ(oOffered.dwChannels, oCase.oFormat.dwChannels);
            pSupported->Release();
        }
        EXPECT_EQ(oConnection.m_oType.m_uReferences, 1U);
        EXPECT_EQ(oConnection.Lock(*Query<IConfiguration>(pObject.get(), CONFIGURATION)), oCase.hLock);
    }
}

TEST_F(StatesTest, TheOtherSideDecidesWhatMustMatch)
{
    const ComPtr<IObject> pObject = CreateInitialized(RENDER_EFX);
    CMediaType oOpposite(2, 44100);
    CMediaType oRequested(6, 48000);
    IMediaType* pSupported = nullptr;
    ASSERT_EQ(pObject->IsInputFormatSupported(&oOpposite, &oRequested, &pSupported), NOT_AS_ASKED);
    Format oOffered{};
    EXPECT_EQ(pSupported->GetUncompressedAudioFormat(&oOffered), OK);
    EXPECT_EQ(oOffered.dwChannels, 2U);
    EXPECT_EQ(oOffered.f32Rate, 44100);
    EXPECT_EQ(pSupported->Release(), 0U);
    oRequested.m_oFormat.dwChannels = 4097; // the other side tells
    EXPECT_EQ(pObject->IsOutputFormatSupported(&oOpposite, &oRequested, &pSupported), NOT_AS_ASKED);
    EXPECT_EQ(pSupported->Release(), 0U);
    oOpposite.m_oFormat.dwContainerBytes = 2;
    EXPECT_EQ(pObject->IsOutputFormatSupported(&oOpposite, &oRequested, &pSupported), FORMAT_NOT_SUPPORTED);

    EXPECT_EQ(pObject->IsInputFormatSupported(nullptr, nullptr, &pSupported), NULL_POINTER);
    EXPECT_EQ(pObject->IsOutputFormatSupported(nullptr, &oRequested, nullptr), NULL_POINTER);
    oRequested.m_hResult = NULL_POINTER;
    EXPECT_EQ(pObject->IsOutputFormatSupported(nullptr, &oRequested, &pSupported), FORMAT_NOT_SUPPORTED);
    EXPECT_EQ(pSupported, nullptr);
}

TEST_F(StatesTest, LocksFollowTheLifeOfTheObject)
{
    BYTE aInit[88] = {};
    for (const CLSID* pClassID : CLASSES)
    {
        const ComPtr<IObject> pObject = Create<IObject>(*pClassID);
        const ComPtr<IConfiguration> pConfiguration = Query<IConfiguration>(pObject.get(), CONFIGURATION);
        CConnection oConnection(6, 44100);
        UINT32 u32Channels = 0;
        EXPECT_EQ(oConnection.Lock(*pConfiguration), NOT_INITIALIZED);
        EXPECT_EQ(pConfiguration->Unlock(), ALREADY_UNLOCKED);
        EXPECT_EQ(pObject->Initialize(sizeof(aInit), aInit), OK);
        EXPECT_EQ(pObject->GetInputChannelCount(&u32Channels), ALREADY_UNLOCKED);
        for (int iRound = 0; iRound < 2; ++iRound)
        {
            EXPECT_EQ(oConnection.Lock(*pConfiguration), OK);
            EXPECT_EQ(pObject->GetInputChannelCount(&u32Channels), OK);
            EXPECT_EQ(u32Channels, 6U);
            EXPECT_EQ(pObject->GetInputChannelCount(nullptr), NULL_POINTER);
            EXPECT_EQ(oConnection.Lock(*pConfiguration), LOCKED);
            EXPECT_EQ(pObject->Initialize(sizeof(aInit), aInit), ALREADY_INITIALIZED);
            EXPECT_EQ(pConfiguration->Unlock(), OK);
            EXPECT_EQ(pConfiguration->Unlock(), ALREADY_UNLOCKED);
        }
        EXPECT_EQ(oConnection.m_oType.m_uReferences, 1U);
    }
}

TEST_F(StatesTest, ConnectionsThatDontHoldAreRefused)
{
    const ComPtr<IObject> pObject = CreateInitialized(RENDER_OMFX);
    const ComPtr<IConfiguration> pConfiguration = Query<IConfiguration>(pObject.get(), CONFIGURATION);
    CConnection oGood;
    CConnection oOther(2, 44100);
    CConnection oEmpty;
    oEmpty.m_oDescriptor.pFormat = nullptr;
    CConnection oFailing;
    oFailing.m_oType.m_hResult = NULL_POINTER;
    Descriptor* aTwo[] = {&oGood.m_oDescriptor, &oGood.m_oDescriptor};
    Descriptor* pNone = nullptr;
    Descriptor** const ppGood = &oGood.m_pDescriptor;
    const struct
    {
        const char* pName;
        UINT32 u32Inputs;
        Descriptor** ppInputs;
        UINT32 u32Outputs;
        Descriptor** ppOutputs;
        HRESULT hResult;
    } aCases[] = {
        {"no inputs", 1, nullptr, 1, ppGood, MISSING},
        {"no outputs", 1, ppGood, 1, nullptr, MISSING},
        {"null input", 1, &pNone, 1, ppGood, MISSING},
        {"null output", 1, ppGood, 1, &pNone, MISSING},
        {"two inputs", 2, aTwo, 1, ppGood, BAD_CONNECTION_COUNT},
        {"count of none", 0, ppGood, 1, ppGood, BAD_CONNECTION_COUNT},
        {"two outputs", 1, ppGood, 2, aTwo, BAD_CONNECTION_COUNT},
        {"no format", 1, &oEmpty.m_pDescriptor, 1, ppGood, BAD_CONNECTION_FORMAT},
        {"format that fails", 1, ppGood, 1, &oFailing.m_pDescriptor, BAD_CONNECTION_FORMAT},
        {"two rates", 1, ppGood, 1, &oOther.m_pDescriptor, BAD_CONNECTION_FORMAT},
        {"good", 1, ppGood, 1, ppGood, OK},
    };
    for (const auto& oCase : aCases)
        EXPECT_EQ(pConfiguration->Lock(oCase.u32Inputs, oCase.ppInputs, oCase.u32Outputs, oCase.ppOutputs),
                  oCase.hResult)
            << oCase.pName;
}
} // namespace
