// The library's live state as text, for the record file of debug mode.
#pragma once

#include "apo/kelvane/engine/apo_kelvane_instance.h"
#include "apo/kelvane/engine/apo_kelvane_power.h"
#include "apo/kelvane/engine/apo_kelvane_set_choice.h"

#include <string>

// On the thread that reads the power status.
class CKelvaneStateReport
{
public:
    CKelvaneStateReport(CKelvaneInstance& oInstance, const CKelvaneSetChoice& oChoice, const CKelvanePower& oPower)
        : m_oInstance(oInstance), m_oChoice(oChoice), m_oPower(oPower)
    {
    }

    // A line of it, empty outside debug mode.
    std::string AudioSmartPrintPara();
    // The lines gathered, and their way into the record file; 0. iOffload is nonzero for an engine in inline mode.
    int AudioSmartGatherPara();
    int AudioSmartRecordPara(int iOffload);
    void Clear() { m_strStates.clear(); }

private:
    std::string PrintSingleItemPara(const KelvaneStruParam& pStruParam) const;

    CKelvaneInstance& m_oInstance;
    const CKelvaneSetChoice& m_oChoice;
    const CKelvanePower& m_oPower;
    std::string m_strStates; // gathered since the last record
};
