// Writes the machine.xml of the test's machine and has it read.
#pragma once

#include "platform/control/machine_native.h"

#include <fstream>

// The file's first line is the root's, the elements begin on the second.
inline void DeclareMachine(const std::string& strElements)
{
    std::ofstream(machine::Folder() + "/machine.xml") << "<machine>\n" << strElements << "\n</machine>\n";
    machine::ReloadDevices();
}
