// The registry's content: keys by their whole path, and what differs between two states of it.
#include "registry/registry_tree.h"

#include <algorithm>
#include <utility>

namespace
{
const char* const c_strBuiltInKeys[] = {
    "HKEY_CURRENT_CONFIG",          "HKEY_CURRENT_USER",
    "HKEY_LOCAL_MACHINE",           "HKEY_USERS",
    "HKEY_LOCAL_MACHINE\\SOFTWARE", "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes",
};
constexpr int c_iMostLevels = 512;
constexpr int c_iLongestName = 255;
const char c_strClassesView[] = "hkey_classes_root";
const char c_strClassesKey[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes";

std::string ParentPath(const std::string& strPath)
{
    const size_t iEnd = strPath.rfind('\\');
    return iEnd == std::string::npos ? std::string() : strPath.substr(0, iEnd);
}

bool SameValues(const RegistryKey& oOne, const RegistryKey& oOther)
{
    const auto bSame = [](const auto& oLeft, const auto& oRight)
    {
        return oLeft.first == oRight.first && oLeft.second.dwType == oRight.second.dwType &&
               oLeft.second.vecData == oRight.second.vecData;
    };
    return oOne.mapValues.size() == oOther.mapValues.size() &&
           std::equal(oOne.mapValues.begin(), oOne.mapValues.end(), oOther.mapValues.begin(), bSame);
}
} // namespace

std::string FoldName(const std::string& strName)
{
    std::string strFolded = strName;
    for (char& c : strFolded)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return strFolded;
}

std::string CanonicalPath(const std::string& strPath)
{
    std::string strResult;
    for (size_t iStart = 0; iStart < strPath.size();)
    {
        const size_t iEnd = std::min(strPath.find('\\', iStart), strPath.size());
        const std::string strPart = strPath.substr(iStart, iEnd - iStart);
        iStart = iEnd + 1;
        if (strPart.empty())
            continue;
        if (strResult.empty())
            strResult = FoldName(strPart) == c_strClassesView ? c_strClassesKey : strPart;
        else
            strResult += '\\' + strPart;
    }
    const std::string strRoot = FoldName(strResult.substr(0, strResult.find('\\')));
    const auto bIsRoot = [&](const char* pKey) { return FoldName(pKey) == strRoot; };
    return std::any_of(std::begin(c_strBuiltInKeys), std::end(c_strBuiltInKeys), bIsRoot) ? strResult : "";
}

const char* PathFault(const std::string& strPath)
{
    int iLevels = 0;
    int iCharacters = 0; // of the current name
    for (const char c : strPath)
    {
        iLevels += c == '\\';
        if (c == '\\')
            iCharacters = 0;
        else if ((c & 0xC0) != 0x80) // no byte that continues a character
            ++iCharacters;
        if (iCharacters > c_iLongestName)
            return "a key's name is longer than 255 characters";
    }
    return iLevels > c_iMostLevels ? "the key lies more than 512 levels deep" : nullptr;
}

bool IsTextType(DWORD dwType)
{
    return dwType == REG_SZ || dwType == REG_EXPAND_SZ || dwType == REG_MULTI_SZ;
}

bool HasControls(const std::string& strName)
{
    return std::any_of(strName.begin(), strName.end(), [](char c) { return c > 0 && c < 0x20; });
}

CRegistryTree::CRegistryTree()
{
    for (const char* pKey : c_strBuiltInKeys)
        Create(pKey);
}

const RegistryKey* CRegistryTree::Find(const std::string& strPath) const
{
    const auto it = m_mapKeys.find(FoldName(strPath));
    return it == m_mapKeys.end() ? nullptr : &it->second;
}

RegistryKey& CRegistryTree::Create(const std::string& strPath)
{
    const std::string strFolded = FoldName(strPath);
    const auto it = m_mapKeys.find(strFolded);
    if (it != m_mapKeys.end())
        return it->second;
    // Above it spell as those keys are spelt already.
    const size_t iNameStart = strPath.rfind('\\');
    RegistryKey& oKey = m_mapKeys[strFolded];
    oKey.strPath = iNameStart == std::string::npos
                       ? strPath
                       : Create(strPath.substr(0, iNameStart)).strPath + strPath.substr(iNameStart);
    return oKey;
}

std::string CRegistryTree::Remove(const std::string& strPath)
{
    const std::string strFolded = FoldName(strPath);
    const std::string strBelow = strFolded + '\\';
    std::string strComments;
    // Names that only begin like the key's may stand between it and what is below it.
    for (auto it = m_mapKeys.lower_bound(strFolded);
         it != m_mapKeys.end() && it->first.compare(0, strFolded.size(), strFolded) == 0;)
    {
        const auto itKey = it++;
        if (itKey->first != strFolded && itKey->first.compare(0, strBelow.size(), strBelow) != 0)
            continue;
        strComments += std::exchange(itKey->second.strComment, "");
        for (const auto& oValue : itKey->second.mapValues)
            strComments += oValue.second.strComment;
        itKey->second.mapValues.clear();
        if (!IsBuiltIn(itKey->first))
            m_mapKeys.erase(itKey);
    }
    return strComments;
}

bool CRegistryTree::HasSubkeys(const std::string& strPath) const
{
    std::string strName;
    return SubkeyName(strPath, 0, strName);
}

bool CRegistryTree::SubkeyName(const std::string& strPath, size_t iIndex, std::string& strName) const
{
    const std::string strBelow = FoldName(strPath) + '\\';
    size_t iFound = 0;
    for (auto it = m_mapKeys.lower_bound(strBelow);
         it != m_mapKeys.end() && it->first.compare(0, strBelow.size(), strBelow) == 0; ++it)
    {
        if (it->first.find('\\', strBelow.size()) != std::string::npos || iFound++ != iIndex)
            continue;
        strName = it->second.strPath.substr(it->second.strPath.rfind('\\') + 1);
        return true;
    }
    return false;
}

bool CRegistryTree::IsBuiltIn(const std::string& strPath) const
{
    const auto bIsIt = [strFolded = FoldName(strPath)](const char* pKey) { return FoldName(pKey) == strFolded; };
    return std::any_of(std::begin(c_strBuiltInKeys), std::end(c_strBuiltInKeys), bIsIt);
}

std::vector<RegistryChange> DiffRegistry(const CRegistryTree& oOld, const CRegistryTree& oNew)
{
    std::vector<RegistryChange> vecChanges;
    for (const auto& [strPath, oKey] : oOld.Keys())
    {
        const RegistryKey* pNewKey = oNew.Find(strPath);
        if (pNewKey == nullptr)
        {
            vecChanges.push_back({ParentPath(strPath), false});
            vecChanges.push_back({strPath, true});
        }
        else if (!SameValues(oKey, *pNewKey))
            vecChanges.push_back({strPath, false});
    }
    for (const auto& oKey : oNew.Keys())
        if (oOld.Find(oKey.first) == nullptr)
            vecChanges.push_back({ParentPath(oKey.first), false});
    return vecChanges;
}
