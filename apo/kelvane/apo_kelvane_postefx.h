// The one concrete processing object; its registration record tells the worker variant from the inline one.
#pragma once

#include "apo/kelvane/apo_kelvane_efx.h"

class CKelvanePostEFX : public CKelvaneEFX
{
public:
    CKelvanePostEFX(IUnknown* pUnkOuter, const APO_REG_PROPERTIES* pProperties);

    // Starts the algorithm first; a failed start leaves the stream open, bypassed or silent.
    STDMETHODIMP LockForProcess(UINT32 u32NumInputConnections, APO_CONNECTION_DESCRIPTOR** ppInputConnections,
                                UINT32 u32NumOutputConnections,
                                APO_CONNECTION_DESCRIPTOR** ppOutputConnections) override;

protected:
    ~CKelvanePostEFX() override;
    int GetRenderMode() override;

private:
    // Leaves none without memory.
    void MakeEngine();

    const bool m_bInline; // the algorithm runs in the caller's thread
};
