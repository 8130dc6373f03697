// From the models' figures to words.
#include "protection/kelvane_state_words.h"

#include <algorithm>
#include <cmath>

void CKelvaneStateWords::Set(KelvaneState eState, int iChannel, double f64Value)
{
    const int iState = static_cast<int>(eState);
    const double f64Word = std::clamp(f64Value * KELVANE_STATES[iState].iDivisor, -32768.0, 32767.0);
    m_sWords[iState][iChannel].store(static_cast<int16_t>(std::lround(f64Word)), std::memory_order_relaxed);
}

void CKelvaneStateWords::Put(KelvaneStruParam& oStruParam) const
{
    int16_t* const pWords = reinterpret_cast<int16_t*>(&oStruParam);
    for (int iState = 0; iState < KELVANE_STATE_COUNT; ++iState)
        for (int i = 0; i < (KELVANE_STATES[iState].bPerSpeaker ? KELVANE_MAX_CHANNELS : 1); ++i)
            pWords[KELVANE_STATES[iState].iWord + i] = m_sWords[iState][i].load(std::memory_order_relaxed);
}

void CKelvaneStateWords::SetSpeaker(const Protector& oProtector, int iChannel, bool bRuns)
{
    const Protector::Speaker& oSpeaker = oProtector.oSpeakers[iChannel];
    const Chain& oChain = oProtector.Heard();
    const ChannelPair& oPair = oChain.oPairs[iChannel / 2];
    const SpeakerConstants& oConstants = oChain.oSpeakers[iChannel].oConstants;
    const CoilModel& oCoil = oSpeaker.oHeat.oLikely;
    Set(KelvaneState::COIL_TEMPERATURE, iChannel, oCoil.f64CoilC);
    Set(KelvaneState::MAGNET_TEMPERATURE, iChannel, oCoil.f64MagnetC);
    Set(KelvaneState::COIL_RESISTANCE, iChannel,
        oConstants.f64ResistanceOhm * oConstants.ResistanceRatio(oCoil.f64CoilC));
    Set(KelvaneState::COIL_POWER, iChannel, oSpeaker.oHeat.f64MeanW);
    Set(KelvaneState::ALLOWED_POWER, iChannel, oSpeaker.oHeat.f64AllowedW);
    Set(KelvaneState::DISPLACEMENT, iChannel, bRuns ? 100.0 * oProtector.f64Displacement[iChannel] : 0.0);
    if (!bRuns)
        return;
    Set(KelvaneState::HEAT_GAIN, iChannel, oSpeaker.oHeat.f64Gain);
    Set(KelvaneState::EXCURSION_GAIN, iChannel, oPair.DeepGain(iChannel % 2));
    Set(KelvaneState::CEILING_GAIN, iChannel, oPair.oCeilings[iChannel % 2].Gain());
}

void CKelvaneStateWords::SetGains(int iChannel, double f64Gain)
{
    for (const KelvaneState eState :
         {KelvaneState::HEAT_GAIN, KelvaneState::EXCURSION_GAIN, KelvaneState::CEILING_GAIN})
        Set(eState, iChannel, f64Gain);
}
