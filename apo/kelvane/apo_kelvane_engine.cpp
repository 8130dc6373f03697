// The constants of the protection engines.
#include "apo/kelvane/apo_kelvane_engine.h"

CKelvaneEngine::CKelvaneEngine()
{
    m_oStream.m_iStandardFrameLen = AUDIO_KELVANE_FRAME_LEN;
    m_oInput.SetLimits(200, 16);
    m_oOutput.SetLimits(100, 8);
}

CKelvaneEngine::~CKelvaneEngine() = default;
