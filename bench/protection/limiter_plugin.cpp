// Opens a plugin, connects its ports, runs it.
#include "bench/protection/limiter_plugin.h"

#if __has_include(<ladspa.h>)

#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <ladspa.h>

namespace
{
constexpr const char* FOLDER = "/usr/lib/ladspa";
constexpr unsigned long RATE = 48000;

float DefaultOf(const LADSPA_PortRangeHint& oHint)
{
    const auto fnBetween = [&](float f32High)
    { return oHint.LowerBound + (oHint.UpperBound - oHint.LowerBound) * f32High; };
    switch (oHint.HintDescriptor & LADSPA_HINT_DEFAULT_MASK)
    {
    case LADSPA_HINT_DEFAULT_MINIMUM:
        return oHint.LowerBound;
    case LADSPA_HINT_DEFAULT_LOW:
        return fnBetween(0.25f);
    case LADSPA_HINT_DEFAULT_MIDDLE:
        return fnBetween(0.5f);
    case LADSPA_HINT_DEFAULT_HIGH:
        return fnBetween(0.75f);
    case LADSPA_HINT_DEFAULT_MAXIMUM:
        return oHint.UpperBound;
    case LADSPA_HINT_DEFAULT_1:
        return 1.0f;
    case LADSPA_HINT_DEFAULT_100:
        return 100.0f;
    case LADSPA_HINT_DEFAULT_440:
        return 440.0f;
    default:
        return 0.0f;
    }
}

class CPlugin : public CLimiterPlugin
{
public:
    CPlugin(const LADSPA_Descriptor& oDescriptor, const std::map<std::string, float>& mapControls)
        : m_oDescriptor(oDescriptor),
          m_hInstance(oDescriptor.instantiate(&oDescriptor, RATE)),
          m_vecControls(oDescriptor.PortCount)
    {
        for (unsigned long i = 0; i < oDescriptor.PortCount; ++i)
        {
            const LADSPA_PortDescriptor iKind = oDescriptor.PortDescriptors[i];
            if (LADSPA_IS_PORT_AUDIO(iKind))
            {
                (LADSPA_IS_PORT_INPUT(iKind) ? m_vecIn : m_vecOut).push_back(i);
                continue;
            }
            const auto itGiven = mapControls.find(oDescriptor.PortNames[i]);
            m_vecControls[i] =
                itGiven != mapControls.end() ? itGiven->second : DefaultOf(oDescriptor.PortRangeHints[i]);
            oDescriptor.connect_port(m_hInstance, i, &m_vecControls[i]);
        }
        if (oDescriptor.activate != nullptr)
            oDescriptor.activate(m_hInstance);
    }

    ~CPlugin() override
    {
        if (m_oDescriptor.deactivate != nullptr)
            m_oDescriptor.deactivate(m_hInstance);
        m_oDescriptor.cleanup(m_hInstance);
    }

    void Process(const float* const (&pIn)[2], float* const (&pOut)[2], int iFrameLen) override
    {
        for (size_t i = 0; i < 2; ++i)
        {
            m_oDescriptor.connect_port(m_hInstance, m_vecIn.at(i), const_cast<float*>(pIn[i]));
            m_oDescriptor.connect_port(m_hInstance, m_vecOut.at(i), pOut[i]);
        }
        m_oDescriptor.run(m_hInstance, static_cast<unsigned long>(iFrameLen));
    }

private:
    const LADSPA_Descriptor& m_oDescriptor;
    LADSPA_Handle m_hInstance;
    std::vector<float> m_vecControls;
    std::vector<unsigned long> m_vecIn;
    std::vector<unsigned long> m_vecOut;
};
} // namespace

std::unique_ptr<CLimiterPlugin> CLimiterPlugin::Open(const std::string& strFile, const std::string& strLabel,
                                                     const std::map<std::string, float>& mapControls)
{
    std::error_code oError;
    for (const auto& oEntry : std::filesystem::directory_iterator(FOLDER, oError))
    {
        if (oEntry.path().filename().string().rfind(strFile, 0) != 0)
            continue;
        void* const hFile = dlopen(oEntry.path().c_str(), RTLD_NOW);
        if (hFile == nullptr)
            continue;
        const auto fnDescriptor = reinterpret_cast<LADSPA_Descriptor_Function>(dlsym(hFile, "ladspa_descriptor"));
        for (unsigned long i = 0; fnDescriptor != nullptr; ++i)
        {
            const LADSPA_Descriptor* const pDescriptor = fnDescriptor(i);
            if (pDescriptor == nullptr)
                break;
            if (strLabel == pDescriptor->Label)
                return std::make_unique<CPlugin>(*pDescriptor, mapControls);
        }
    }
    return nullptr;
}

#else

std::unique_ptr<CLimiterPlugin> CLimiterPlugin::Open(const std::string&, const std::string&,
                                                     const std::map<std::string, float>&)
{
    return nullptr;
}

#endif
