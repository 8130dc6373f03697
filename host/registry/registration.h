// Registers the module on the machine, as regsvr32 does.
#pragma once

#include <string>

// Loads the module (empty: KelvaneAPO.dll next to the program) and calls its export. Throws CHostError.
void RegisterModule(const std::string& strModule);
void UnregisterModule(const std::string& strModule);
