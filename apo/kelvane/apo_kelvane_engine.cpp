// The constants of the protection engines.
#include "apo/kelvane/apo_kelvane_engine.h"

CKelvaneEngine::CKelvaneEngine()
{
    m_iStandardFrameLen = AUDIO_KELVANE_FRAME_LEN;
    m_iInputQueueHigh = 200;
    m_iInputQueueLow = 16;
    m_iOutputQueueHigh = 100;
    m_iOutputQueueLow = 8;
}

CKelvaneEngine::~CKelvaneEngine() = default;
