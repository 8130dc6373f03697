// The controller's method: the way to it through management instrumentation, and one call of it.
#pragma once

#include <windows.h>

#include <wbemidl.h>

#include <atomic>

// An interface pointer that gives its reference back.
template <class T> class CKelvaneComPointer
{
public:
    CKelvaneComPointer() = default;
    ~CKelvaneComPointer() { Release(); }
    CKelvaneComPointer(const CKelvaneComPointer&) = delete;
    CKelvaneComPointer& operator=(const CKelvaneComPointer&) = delete;

    operator T*() const { return m_pInterface; }
    T* operator->() const { return m_pInterface; }
    // Where a call stores a new reference; what is held goes first.
    T** operator&()
    {
        Release();
        return &m_pInterface;
    }
    void Release()
    {
        if (m_pInterface != nullptr)
            m_pInterface->Release();
        m_pInterface = nullptr;
    }

private:
    T* m_pInterface = nullptr;
};

// A text in the form of automation values; null without memory.
class CKelvaneText
{
public:
    explicit CKelvaneText(const wchar_t* pText) : m_pText(SysAllocString(pText)) {}
    ~CKelvaneText() { Release(); }
    CKelvaneText(const CKelvaneText&) = delete;
    CKelvaneText& operator=(const CKelvaneText&) = delete;

    operator BSTR() const { return m_pText; }
    void Release()
    {
        SysFreeString(m_pText);
        m_pText = nullptr;
    }

private:
    BSTR m_pText;
};

inline constexpr ULONG WMI_INPUT_BUFF_LENGTH = 64;   // bytes
inline constexpr ULONG WMI_OUTPUT_BUFF_LENGTH = 256; // bytes
inline constexpr size_t WMI_ERRORCODE_LOCATION = 0;  // in the output; 0 there is success

// Codes as CKelvaneWMI's; words come checked. One thread alone, from Connect to Disconnect: it enters the apartment
// that the interface pointers live in. Any call may take for ever.
class CKelvaneWMIMethod
{
public:
    CKelvaneWMIMethod();
    CKelvaneWMIMethod(const CKelvaneWMIMethod&) = delete;
    CKelvaneWMIMethod& operator=(const CKelvaneWMIMethod&) = delete;

    HRESULT Connect();
    // Gives back what Connect got, and leaves the apartment if that was entered.
    void Disconnect();
    HRESULT QueryTemperature(const INT64& ulCmd, INT32& iTemperature);
    HRESULT SetECTemperature(const INT64& ulCmd);
    // Puts the word into the method's input, in the form that the firmware takes.
    HRESULT PutCommond(const INT64& ulCmd);

    // The platform call that may take for ever and was begun last, as the log names it. Any thread.
    const char* GetStep() const { return m_pStep; }

private:
    HRESULT ConnectNamespace();
    HRESULT PutByteArray(const INT64& ulCmd, HRESULT hTextResult);
    HRESULT ExecuteCommond(const INT64& ulCmd, BYTE (&uOutValue)[WMI_OUTPUT_BUFF_LENGTH]);
    HRESULT ReadOutput(IWbemClassObject* pOutParams, BYTE (&uOutValue)[WMI_OUTPUT_BUFF_LENGTH]);

    CKelvaneComPointer<IWbemLocator> m_pLocator;
    CKelvaneComPointer<IWbemServices> m_pServices;
    CKelvaneComPointer<IWbemClassObject> m_pObject;
    CKelvaneComPointer<IWbemClassObject> m_pObjectInst; // the method's input, reused for every call
    CKelvaneComPointer<IWbemClassObject> m_pDefinition; // the input's class
    CKelvaneText m_pWmiRootName;
    CKelvaneText m_pWmiClassName;
    CKelvaneText m_pWmiMethodName;
    CKelvaneText m_pWmiObjectName;
    bool m_bComEntered = false;
    std::atomic<const char*> m_pStep{"Connect()"};
};
