// The library's memory and its calls.
#include "apo/kelvane/engine/apo_kelvane_instance.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

int CKelvaneInstance::AudioKelvaneGetSize()
{
    const int iResult = AllocateMemory();
    if (iResult != 0)
        Release();
    return iResult;
}

int CKelvaneInstance::AllocateMemory()
{
    m_pMemSize.Allocate(sizeof(KelvaneMemSize));
    if (AUDIO_MISSING(m_pMemSize, AUDIO_NO_INSTANCE))
        return AUDIO_NO_INSTANCE;
    *m_pMemSize = {};
    if (const int iResult = AUDIO_CHECK(m_fAudioKelvaneGetSize(m_pMemSize)))
        return iResult;
    if (AUDIO_FAIL_IF((m_pMemSize->iRunBufSize <= 0), AUDIO_BAD_SIZE))
        return AUDIO_BAD_SIZE;
    m_pRunBuf.Allocate(m_pMemSize->iRunBufSize);
    if (AUDIO_MISSING(m_pRunBuf, AUDIO_NO_INSTANCE))
        return AUDIO_NO_INSTANCE;
    if (AUDIO_FAIL_IF((m_pMemSize->iScratchSize <= 0), AUDIO_BAD_SIZE))
        return AUDIO_BAD_SIZE;
    m_pScratchBuf.Allocate(m_pMemSize->iScratchSize);
    return AUDIO_MISSING(m_pScratchBuf, AUDIO_NO_INSTANCE) ? AUDIO_NO_INSTANCE : 0;
}

void CKelvaneInstance::Release()
{
    m_pMemSize.Release();
    m_pRunBuf.Release();
    m_pScratchBuf.Release();
}

int CKelvaneInstance::CheckMemory() const
{
    return AUDIO_MISSING(m_pRunBuf, AUDIO_NO_INSTANCE) || AUDIO_MISSING(m_pScratchBuf, AUDIO_NO_INSTANCE)
               ? AUDIO_NO_INSTANCE
               : 0;
}

int CKelvaneInstance::AudioKelvaneInit()
{
    if (const int iResult = CheckMemory())
        return iResult;
    return AUDIO_CHECK(m_fAudioKelvaneInit(m_pRunBuf, m_pScratchBuf));
}

int CKelvaneInstance::SetPara(const KelvaneStruParam* pStruParam)
{
    return AUDIO_CHECK(m_fAudioKelvaneSetPara(m_pRunBuf, m_pScratchBuf, pStruParam));
}

int CKelvaneInstance::GetPara(KelvaneStruParam& pStruParam)
{
    return AUDIO_CHECK(m_fAudioKelvaneGetPara(m_pRunBuf, &pStruParam));
}

// The record's name is the one that the failure line carries.
int CKelvaneInstance::Apply(KelvaneDataStruct* m_pDataStruct)
{
    return AUDIO_CHECK(m_fAudioKelvaneApply(m_pRunBuf, m_pScratchBuf, m_pDataStruct));
}

int CKelvaneInstance::SetTemperature(INT32 iTemperature)
{
    return AUDIO_CHECK(m_fAudioKelvaneTemperature(m_pRunBuf, iTemperature));
}

bool CKelvaneInstance::HasTemperature() const
{
    return !AUDIO_MISSING(m_fAudioKelvaneTemperature, AUDIO_NO_HANDLE);
}

bool CKelvaneInstance::HasBatteryInfo() const
{
    return !AUDIO_MISSING(m_fAudioKelvaneSetBatteryInfo, AUDIO_NO_HANDLE);
}
