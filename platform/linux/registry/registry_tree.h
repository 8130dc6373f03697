// The registry's content: keys by their whole path, and what differs between two states of it.
#pragma once

#include <windows.h>

#include <map>
#include <string>
#include <vector>

// Names compare without case. Folds ASCII letters only.
std::string FoldName(const std::string& strName);

// A whole path from the root's name on, without empty parts. HKEY_CLASSES_ROOT becomes the key that it is a view of.
// Empty if the root is unknown.
std::string CanonicalPath(const std::string& strPath);

// Why no key can have that canonical path: it lies more than 512 levels below its root, or a name is longer than 255
// characters. Null if it can.
const char* PathFault(const std::string& strPath);

// Whether the type holds text: REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ.
bool IsTextType(DWORD dwType);

// Whether a path or a value's name holds what the file's lines can't.
bool HasControls(const std::string& strName);

struct RegistryValue
{
    std::string strName; // empty for the default value
    DWORD dwType = REG_NONE;
    std::vector<BYTE> vecData; // text types as UTF-8, with the zeros they were set with
    std::string strComment;    // lines of the file that stand before it
};

struct RegistryKey
{
    std::string strPath; // canonical, spelt as it was created
    std::string strComment;
    std::map<std::string, RegistryValue> mapValues; // by folded name
};

class CRegistryTree
{
public:
    // The roots, and the key behind HKEY_CLASSES_ROOT, always exist.
    CRegistryTree();

    // All take canonical paths in any case.
    const RegistryKey* Find(const std::string& strPath) const;
    RegistryKey& Create(const std::string& strPath); // with the keys above it
    // Removes it with all below it; what always exists is emptied instead. Gives the comments that stood there.
    std::string Remove(const std::string& strPath);
    bool HasSubkeys(const std::string& strPath) const;
    // Name of the subkey with that index, in order of names. False behind the last.
    bool SubkeyName(const std::string& strPath, size_t iIndex, std::string& strName) const;
    bool IsBuiltIn(const std::string& strPath) const;

    const std::map<std::string, RegistryKey>& Keys() const { return m_mapKeys; }

    std::string m_strHeadComment; // lines of the file before the first key
    std::string m_strTailComment; // and behind the last value

private:
    std::map<std::string, RegistryKey> m_mapKeys; // by folded path; a key's parents are in it too
};

// One change, as a watch sees it.
struct RegistryChange
{
    std::string strPath;   // folded path of the key in which a subkey or value came, went or changed
    bool bDeleted = false; // it is gone itself
};

std::vector<RegistryChange> DiffRegistry(const CRegistryTree& oOld, const CRegistryTree& oNew);
