// The one writer of the record files of debug mode.
#include "apo/kelvane/apo_kelvane_manager.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_time.h"

#include <cstdio>

// The date is taken for every line, so that a day's lines are one file.
void CKelvaneManager::PrintSmartDebugLog(const char* strFile, const char* strText, const int& iOffload) const
{
    if (m_iDebugMode != 1)
        return;
    const DWORD dwAttributes = GetFileAttributesA(CAudioSTR::FormatPathString(AUDIO_VOICE_LOG_DIR).c_str());
    if (dwAttributes == INVALID_FILE_ATTRIBUTES || (dwAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
        return;
    const std::string strDate = CAudioSTR::LeftOf(CAudioTIME::GetStrTime(AUDIO_FILE_TIME_FORMAT), "_");
    const std::string strName = CAudioSTR::FormatPathString(
        std::string(strFile) + (iOffload != 0 ? AUDIO_OFFLOAD_PREFIX : "") + strDate + AUDIO_TXT_SUFFIX);
    FILE* pFile = nullptr;
    const int iResult = fopen_s(&pFile, strName.c_str(), "at+");
    if (iResult != 0)
    {
        AUDIOLOG_ERROR(iResult, "open file failed! FileName:" + strName);
        return;
    }
    fprintf(pFile, "%s\n", strText);
    fclose(pFile);
}
