// The only road to the registry: whole paths in, error codes out, every failure logged.
#pragma once

#include "audioapi/audio_api_log.h"

#include <audioenginebaseapo.h>
#include <windows.h>

#include <string>
#include <type_traits>
#include <vector>

class CAudioWorkerEvent;

// Operations without state, from any thread. A path is the root key's name, a backslash and the subpath. Codes are the
// platform's error codes, 0 for success. Only the watch operations leave a key open; it is the caller's.
class CAudioREG
{
public:
    static HKEY GetRegHeadKey(const std::string& strRegHead);
    static DWORD OpenRegKey(const std::string& strPath, REGSAM iRights, HKEY& khHandle);

    // Reads of up to 1024 bytes, without a look at the value's type; the out value stays as it was on failure.
    // The first four bytes as a number, into a 32-bit integer or a shared one.
    template <class T> static DWORD ReadRegValue(const std::string& strPath, const std::string& strKeyName, T& tValue)
    {
        static_assert(sizeof(T) == 4 && std::is_integral<decltype(+tValue)>::value, "the number form reads 32 bits");
        DWORD dwValue = 0;
        const DWORD dwResult = ReadRegNumber(AUDIO_LOG_SITE, strPath, strKeyName, dwValue);
        if (dwResult == 0)
            tValue = static_cast<decltype(+tValue)>(dwValue);
        return dwResult;
    }
    // The text up to its first zero byte.
    static DWORD ReadRegValue(const std::string& strPath, const std::string& strKeyName, std::string& strValue);
    // All bytes as upper-case hexadecimal text.
    static DWORD ReadRegBinary(const std::string& strPath, const std::string& strKeyName, std::string& strValue);

    // The two-argument forms take the value name from the end of the path.
    static DWORD WriteRegValue(const std::string& strPath, const std::string& strKeyName, const std::string& strWValue);
    static DWORD WriteRegValue(const std::string& strPath, const std::string& strKeyName, DWORD dWValue);
    static DWORD WriteRegValue(const std::string& strPath, const std::string& strWValue);
    static DWORD WriteRegValue(const std::string& strPath, DWORD dWValue);
    static DWORD DeleteRegValue(const std::string& strPath, const std::string& strKeyName);

    static void CreateRegKey(const std::string& strPath);
    static void DeleteRegKey(const std::string& strPath);
    // Whether the value named at the end of the path exists.
    static bool RegKeyExists(const std::string& strPath);
    // Whether the key exists.
    static bool RegPathExists(const std::string& strPath);
    // The names of the key's subkeys.
    static std::vector<std::string> RegEnumKeyName(const std::string& strPath);

    // Opens the key and arms a watch on its whole subtree; a null event is created first. On failure both are closed
    // and nulled.
    static DWORD RegNotifyStart(const std::string& strPath, HKEY& hKey, CAudioWorkerEvent& pEventHandle);
    // Takes the event back and arms the watch again: before the key is read, so that no change is missed.
    static void RegNotifyReset(HKEY hKey, HANDLE hEvent);
    // Closes and nulls what is set.
    static void RegNotifyClose(HKEY& hKey, CAudioWorkerEvent& hEvent);

    // Writes the class's keys, the platform's and the COM server's. The platform's result, or AUDIO_BAD_DATA without a
    // record.
    static HRESULT RegisterAudioAPO(const APO_REG_PROPERTIES* pAPOReg, const std::string& strClassName,
                                    const std::string& strModuleName);
    // Removes them.
    static HRESULT UnregisterAudioAPO(REFCLSID sApoGUID);

private:
    static DWORD ReadRegNumber(const AudioLogSite& oSite, const std::string& strPath, const std::string& strKeyName,
                               DWORD& dwValue);
};
