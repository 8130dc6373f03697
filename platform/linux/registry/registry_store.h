// The registry's file: read when it changed, written whole and at once under a lock that all processes honour.
#pragma once

#include "registry/regfile.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <vector>

// Not locked: its owner does that.
class CRegistryStore
{
public:
    explicit CRegistryStore(const std::string& strFolder);

    const CRegistryTree& Tree() const { return m_oTree; }
    const std::string& File() const { return m_strFile; }
    const std::vector<RegistryFileError>& Errors() const { return m_vecErrors; }

    // Reads the file again if it isn't the one that was read last, or in any case if told to, and appends what changed.
    void Refresh(bool bForce, std::vector<RegistryChange>& vecChanges);

    // Lets the function change the tree as it stands in the file, and writes the file if it did. A code from the
    // function leaves all as it was. Gives that code, or the one of the write that failed.
    LSTATUS Update(const std::function<LSTATUS(CRegistryTree&)>& fnChange, std::vector<RegistryChange>& vecChanges);

    // The file is gone or empty, as it is for a moment while an editor saves. The last content holds until that has
    // lasted for c_iDoubtMs; the caller should refresh again then.
    bool IsInDoubt() const { return m_oDoubtSince.has_value(); }
    static constexpr int c_iDoubtMs = 100;

private:
    // What tells one state of the file from another. All zero: no file.
    struct Stamp
    {
        dev_t iDevice = 0;
        ino_t iNode = 0;
        off_t iSize = 0;
        time_t iSeconds = 0;
        long iNanoseconds = 0;

        bool operator==(const Stamp& oOther) const;
    };

    static Stamp StampOf(const struct stat& oStat);
    bool BelieveEmpty(const Stamp& oStamp);
    void Read(bool bExists, bool bFile, std::vector<RegistryChange>& vecChanges);
    LSTATUS WriteFile(const CRegistryTree& oTree, Stamp& oStamp) const;

    std::string m_strFile;
    CRegistryTree m_oTree;
    std::vector<RegistryFileError> m_vecErrors;
    bool m_bLoaded = false;
    bool m_bUnreadable = false; // there is a file, but its content is unknown: it must not be overwritten
    Stamp m_oStamp;             // of what was read last
    std::optional<std::chrono::steady_clock::time_point> m_oDoubtSince;
};
