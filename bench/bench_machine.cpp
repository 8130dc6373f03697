// Lays a machine for the benchmarks.
#include "bench/bench_machine.h"

#include "host/registry/registration.h"
#include "host/registry/registry_text.h"
#include "platform/control/machine_native.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

CBenchMachine::CBenchMachine()
{
    std::string strTemplate = (fs::temp_directory_path() / "kelvane-bench-XXXXXX").string();
    if (mkdtemp(strTemplate.data()) == nullptr)
        throw std::system_error(errno, std::generic_category(), strTemplate);
    m_strFolder = strTemplate;
    fs::copy(KELVANE_MACHINE_SOURCE, m_strFolder, fs::copy_options::recursive);
    fs::copy(fs::read_symlink("/proc/self/exe").parent_path() / "Kelvane_x64.dll",
             fs::path(m_strFolder) / "c/windows/system32/ZVAudioDriver/Kelvane_x64.dll");
    machine::UseFolder(m_strFolder);
    SetRegistryValue("Debug\\DebugLevel=0");
    SetRegistryValue("Dump\\DumpLevel=0");
    RegisterModule("");
}

CBenchMachine::~CBenchMachine()
{
    std::error_code oError;
    fs::remove_all(m_strFolder, oError);
}
