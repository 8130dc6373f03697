// The slots that another binary calls: each operation stands where the published order has it.
#include <baseaudioprocessingobject.h>

#include <gtest/gtest.h>

#include <string>

namespace
{
// Notes which operation was reached. One body serves QueryInterface, AddRef and Release of all interfaces.
class CSlotRecorder : public CBaseAudioProcessingObject, public IAudioSystemEffects2, public IClassFactory
{
public:
    CSlotRecorder() : CBaseAudioProcessingObject(nullptr) {}

    STDMETHOD(QueryInterface)(REFIID, void**) override { return Note("QueryInterface"); }
    STDMETHOD_(ULONG, AddRef)() override { return Note("AddRef"); }
    STDMETHOD_(ULONG, Release)() override { return Note("Release"); }
    STDMETHOD(Reset)() override { return Note("Reset"); }
    STDMETHOD(GetLatency)(HNSTIME*) override { return Note("GetLatency"); }
    STDMETHOD(GetRegistrationProperties)(APO_REG_PROPERTIES**) override { return Note("GetRegistrationProperties"); }
    STDMETHOD(Initialize)(UINT32, BYTE*) override { return Note("Initialize"); }
    STDMETHOD(IsInputFormatSupported)(IAudioMediaType*, IAudioMediaType*, IAudioMediaType**) override
    {
        return Note("IsInputFormatSupported");
    }
    STDMETHOD(IsOutputFormatSupported)(IAudioMediaType*, IAudioMediaType*, IAudioMediaType**) override
    {
        return Note("IsOutputFormatSupported");
    }
    STDMETHOD(GetInputChannelCount)(UINT32*) override { return Note("GetInputChannelCount"); }
    STDMETHOD_(void, APOProcess)(UINT32, APO_CONNECTION_PROPERTY**, UINT32, APO_CONNECTION_PROPERTY**) override
    {
        Note("APOProcess");
    }
    STDMETHOD_(UINT32, CalcInputFrames)(UINT32) override { return Note("CalcInputFrames"); }
    STDMETHOD_(UINT32, CalcOutputFrames)(UINT32) override { return Note("CalcOutputFrames"); }
    STDMETHOD(LockForProcess)(UINT32, APO_CONNECTION_DESCRIPTOR**, UINT32, APO_CONNECTION_DESCRIPTOR**) override
    {
        return Note("LockForProcess");
    }
    STDMETHOD(UnlockForProcess)() override { return Note("UnlockForProcess"); }
    STDMETHOD(GetEffectsList)(LPGUID*, UINT*, HANDLE) override { return Note("GetEffectsList"); }
    STDMETHOD(CreateInstance)(IUnknown*, REFIID, void**) override { return Note("CreateInstance"); }
    STDMETHOD(LockServer)(BOOL) override { return Note("LockServer"); }

    std::string m_strReached;

private:
    int Note(const char* pName)
    {
        m_strReached = pName;
        return 0;
    }
};

// Calls a slot as a caller in another language would: through the table, all arguments as pointers' widths.
void CallSlot(void* pInterface, size_t iSlot)
{
    typedef UINT_PTR(STDMETHODCALLTYPE * SlotCall)(void*, void*, void*, void*, void*);
    SlotCall pCall = (*static_cast<SlotCall**>(pInterface))[iSlot];
    pCall(pInterface, nullptr, nullptr, nullptr, nullptr);
}
} // namespace

TEST(SlotContract, OperationsStandInPublishedOrder)
{
    CSlotRecorder oRecorder;
    const struct
    {
        const char* pInterfaceName;
        void* pInterface;
        std::vector<const char*> vecBehindUnknown;
    } oInterfaces[] = {
        {"IAudioProcessingObject",
         static_cast<IAudioProcessingObject*>(&oRecorder),
         {"Reset", "GetLatency", "GetRegistrationProperties", "Initialize", "IsInputFormatSupported",
          "IsOutputFormatSupported", "GetInputChannelCount"}},
        {"IAudioProcessingObjectRT",
         static_cast<IAudioProcessingObjectRT*>(&oRecorder),
         {"APOProcess", "CalcInputFrames", "CalcOutputFrames"}},
        {"IAudioProcessingObjectConfiguration",
         static_cast<IAudioProcessingObjectConfiguration*>(&oRecorder),
         {"LockForProcess", "UnlockForProcess"}},
        {"IAudioSystemEffects2", static_cast<IAudioSystemEffects2*>(&oRecorder), {"GetEffectsList"}},
        {"IClassFactory", static_cast<IClassFactory*>(&oRecorder), {"CreateInstance", "LockServer"}},
    };
    for (const auto& oInterface : oInterfaces)
    {
        std::vector<const char*> vecSlots = {"QueryInterface", "AddRef", "Release"};
        vecSlots.insert(vecSlots.end(), oInterface.vecBehindUnknown.begin(), oInterface.vecBehindUnknown.end());
        for (size_t i = 0; i < vecSlots.size(); i++)
        {
            oRecorder.m_strReached.clear();
            CallSlot(oInterface.pInterface, i);
            EXPECT_EQ(oRecorder.m_strReached, vecSlots[i]) << oInterface.pInterfaceName << " slot " << i;
        }
    }
}
