// machine.xml: the devices that a machine declares.
#pragma once

#include "platform/control/devices_native.h"

#include <optional>

struct CDeclaredMachine
{
    std::vector<machine::Device> vecDevices;
    std::optional<machine::Controller> oController;
    std::optional<SYSTEM_POWER_STATUS> oPower;
    std::vector<std::string> vecErrors; // file, line, reason
};

// A missing file declares nothing. The sensors' curves begin at the moment of the call, by the machine's clock.
CDeclaredMachine ReadMachineXml(const std::string& strHostFile);
