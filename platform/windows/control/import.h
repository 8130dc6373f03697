// An import of this program that is led through a function of ours: refused as told, else by the way it is given.
#pragma once

#include <windows.h>

#include <type_traits>

// Whether this call of the function is one that fails; with the error code as the platform leaves it.
bool IsRefused(const char* pCall, DWORD& dwError);
// Counts a call that may wait for the calling thread.
void CountCallThatMayWait();

template <template <class> class TWay, class TName, class F> struct Import;
template <template <class> class TWay, class TName, class R, class... A> struct Import<TWay, TName, R (*)(A...)>
{
    static R Call(A... oArguments)
    {
        using Function = R (*)(A...);
        static const auto fnReal = reinterpret_cast<Function>(
            reinterpret_cast<void (*)()>(GetProcAddress(LoadLibraryA(TName::pModule), TName::pCall)));
        DWORD dwError = 0;
        if constexpr (!std::is_void_v<R>)
            if (IsRefused(TName::pCall, dwError))
                return Fail<R>(dwError);
        return TWay<Function>::Call(fnReal, oArguments...);
    }

private:
    template <class T> static T Fail(DWORD dwError)
    {
        if constexpr (TName::bResult)
            return static_cast<T>(dwError);
        SetLastError(dwError);
        return (T)TName::iFailed; // an integer, a pointer or a handle
    }
};

// The linker takes these for the entries of the import table. iFailed is the call's value when refused; a call with
// bResult gives the error itself.
#define IMPORT(way, module, name, failed, result)                                                                      \
    namespace                                                                                                          \
    {                                                                                                                  \
    struct name##Name                                                                                                  \
    {                                                                                                                  \
        static constexpr const char* pModule = module;                                                                 \
        static constexpr const char* pCall = #name;                                                                    \
        static constexpr long long iFailed = failed;                                                                   \
        static constexpr bool bResult = result;                                                                        \
    };                                                                                                                 \
    }                                                                                                                  \
    extern "C"                                                                                                         \
    {                                                                                                                  \
        decltype(&name) __imp_##name = Import<way, name##Name, decltype(&name)>::Call;                                 \
    }
