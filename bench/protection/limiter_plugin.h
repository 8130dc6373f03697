// A stereo limiter of the distribution, by the published plugin interface, to measure our own time against.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

// Two channels in and two out. Controls stand at their plugin's defaults, but for those that are given by name.
class CLimiterPlugin
{
public:
    // The plugin of that label from the first file in the plugin folder whose name begins with strFile, at 48 kHz.
    // Null: the package isn't installed.
    static std::unique_ptr<CLimiterPlugin> Open(const std::string& strFile, const std::string& strLabel,
                                                const std::map<std::string, float>& mapControls);
    virtual ~CLimiterPlugin() = default;

    virtual void Process(const float* const (&pIn)[2], float* const (&pOut)[2], int iFrameLen) = 0;
};
