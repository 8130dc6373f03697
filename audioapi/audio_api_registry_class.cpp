// The registration of a processing object's class, with the platform and as a COM server.
#include "audioapi/audio_api_registry.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_string.h"

#include <baseaudioprocessingobject.h>

namespace
{
struct ClassPaths
{
    std::string strClass;
    std::string strServer;
};

ClassPaths MakeClassPaths(REFCLSID stGuid)
{
    const std::string strClass = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\" + CAudioSTR::GuidToString(stGuid);
    return {strClass, strClass + "\\InprocServer32"};
}

// Writes the key's default value, into a new key if need be.
void WriteDefaultValue(const std::string& strPath, const std::string& strValue)
{
    if (!CAudioREG::RegPathExists(strPath))
        CAudioREG::CreateRegKey(strPath);
    CAudioREG::WriteRegValue(strPath, "", strValue);
}
} // namespace

HRESULT CAudioREG::RegisterAudioAPO(const APO_REG_PROPERTIES* pAPOReg, const std::string& strClassName,
                                    const std::string& strModuleName)
{
    if (AUDIO_MISSING(pAPOReg, AUDIO_BAD_DATA))
        return AUDIO_BAD_DATA;
    const HRESULT hrResult = RegisterAPO(pAPOReg);
    if (FAILED(hrResult))
    {
        UnregisterAPO(pAPOReg->clsid);
        return hrResult;
    }
    const ClassPaths oPaths = MakeClassPaths(pAPOReg->clsid);
    WriteDefaultValue(oPaths.strClass, strClassName);
    WriteDefaultValue(oPaths.strServer, strModuleName);
    WriteRegValue(oPaths.strServer, "ThreadingMode", std::string("Both"));
    return hrResult;
}

HRESULT CAudioREG::UnregisterAudioAPO(REFCLSID sApoGUID)
{
    const ClassPaths oPaths = MakeClassPaths(sApoGUID);
    if (RegPathExists(oPaths.strServer))
        DeleteRegKey(oPaths.strServer);
    if (RegPathExists(oPaths.strClass))
        DeleteRegKey(oPaths.strClass);
    return AUDIO_CHECK(UnregisterAPO(sApoGUID));
}
