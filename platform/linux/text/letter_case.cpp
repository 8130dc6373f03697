// Letter case of wide text, the same under every locale of the program.
#include <windows.h>

#include <cwctype>
#include <locale.h>

namespace
{
using Convert = wint_t (*)(wint_t, locale_t);

// All of the system's letters; those of ASCII where it lacks the locale.
locale_t AllLetters()
{
    static const locale_t s_oAll = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    static const locale_t s_oLetters = s_oAll != nullptr ? s_oAll : newlocale(LC_CTYPE_MASK, "C", nullptr);
    return s_oLetters;
}

LPWSTR ConvertText(LPWSTR pText, Convert fConvert)
{
    const locale_t oLetters = AllLetters();
    for (LPWSTR pLetter = pText; *pLetter != 0; ++pLetter)
        *pLetter = static_cast<WCHAR>(fConvert(static_cast<wint_t>(*pLetter), oLetters));
    return pText;
}
} // namespace

LPWSTR CharUpperW(LPWSTR lpsz)
{
    return ConvertText(lpsz, towupper_l);
}

LPWSTR CharLowerW(LPWSTR lpsz)
{
    return ConvertText(lpsz, towlower_l);
}
