// UTF-8, character by character.
#include "text/utf8.h"

namespace
{
constexpr char32_t REPLACEMENT = 0xFFFD;
constexpr char32_t STRAY_BYTE = 0xDC00;

struct CUtf8Form
{
    unsigned iLead;     // the first byte's fixed bits
    unsigned iLeadMask; // and which they are
    int iFollowing;
    char32_t iFirstCode;
};
constexpr CUtf8Form g_aForms[] = {
    {0x00, 0x80, 0, 0}, {0xC0, 0xE0, 1, 0x80}, {0xE0, 0xF0, 2, 0x800}, {0xF0, 0xF8, 3, 0x10000}};
} // namespace

bool IsScalar(char32_t iCode)
{
    return iCode < 0xD800 || (iCode > 0xDFFF && iCode <= 0x10FFFF);
}

void AppendUtf8(std::string& strText, char32_t iCode)
{
    if (iCode >= STRAY_BYTE + 0x80 && iCode <= STRAY_BYTE + 0xFF)
    {
        strText += static_cast<char>(iCode - STRAY_BYTE);
        return;
    }
    if (!IsScalar(iCode))
        iCode = REPLACEMENT;
    const CUtf8Form* pForm = &g_aForms[3];
    while (iCode < pForm->iFirstCode)
        --pForm;
    strText += static_cast<char>(pForm->iLead | (iCode >> (6 * pForm->iFollowing)));
    for (int iByte = pForm->iFollowing - 1; iByte >= 0; --iByte)
        strText += static_cast<char>(0x80 | ((iCode >> (6 * iByte)) & 0x3F));
}

bool TakeUtf8(std::string_view& strText, char32_t& iCode)
{
    const auto ByteAt = [&strText](size_t iIndex) { return static_cast<unsigned char>(strText[iIndex]); };
    for (const CUtf8Form& stForm : g_aForms)
    {
        const size_t iLength = static_cast<size_t>(stForm.iFollowing) + 1;
        if ((ByteAt(0) & stForm.iLeadMask) != stForm.iLead || strText.size() < iLength)
            continue;
        iCode = ByteAt(0) & ~stForm.iLeadMask & 0xFF;
        bool bGood = true;
        for (size_t iIndex = 1; iIndex < iLength; ++iIndex)
        {
            bGood = bGood && (ByteAt(iIndex) & 0xC0) == 0x80;
            iCode = iCode << 6 | (ByteAt(iIndex) & 0x3F);
        }
        if (!bGood || iCode < stForm.iFirstCode || !IsScalar(iCode))
            break;
        strText.remove_prefix(iLength);
        return true;
    }
    iCode = STRAY_BYTE + ByteAt(0);
    strText.remove_prefix(1);
    return false;
}
