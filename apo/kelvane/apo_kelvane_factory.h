// The class factory of both variants, and their registration records.
#pragma once

#include "apo/base/apo_base_factory.h"

// A variant's registration record; reads as the platform's pointer to it.
class CKelvaneRegProperties
{
public:
    // Texts of up to 255 characters.
    constexpr CKelvaneRegProperties(const CLSID& oClassID, const WCHAR* pFriendlyName, const WCHAR* pCopyrightInfo)
    {
        m_oProperties.clsid = oClassID;
        m_oProperties.Flags =
            static_cast<APO_FLAG>(APO_FLAG_INPLACE | APO_FLAG_SAMPLESPERFRAME_MUST_MATCH |
                                  APO_FLAG_FRAMESPERSECOND_MUST_MATCH | APO_FLAG_BITSPERSAMPLE_MUST_MATCH);
        CopyText(m_oProperties.szFriendlyName, pFriendlyName);
        CopyText(m_oProperties.szCopyrightInfo, pCopyrightInfo);
        m_oProperties.u32MajorVersion = 1;
        m_oProperties.u32MinInputConnections = 1;
        m_oProperties.u32MaxInputConnections = 1;
        m_oProperties.u32MinOutputConnections = 1;
        m_oProperties.u32MaxOutputConnections = 1;
        m_oProperties.u32MaxInstances = 0xFFFFFFFF;
        m_oProperties.u32NumAPOInterfaces = 1;
        m_oProperties.iidAPOInterfaceList[0] = IID_IAudioProcessingObject;
    }

    operator const APO_REG_PROPERTIES*() const { return &m_oProperties; }

private:
    static constexpr size_t iTextLen = 256;

    static constexpr void CopyText(WCHAR (&aField)[iTextLen], const WCHAR* pText)
    {
        for (size_t i = 0; i < iTextLen - 1 && pText[i] != 0; ++i)
            aField[i] = pText[i];
    }

    APO_REG_PROPERTIES m_oProperties{};
};

class CKelvaneClassFactory final : public APOClassFactory
{
public:
    ~CKelvaneClassFactory() override = default;

    static const CKelvaneRegProperties KelvanePostEFX_Property;
    static const CKelvaneRegProperties KelvanePostOMFX_Property;

protected:
    CBaseAPO* CreateAPOInstance(IUnknown* pUnkOuter) override;
};
