// The machine that the benchmarks run on: a copy of the default one in a temporary folder, module registered.
#pragma once

#include <string>

class CBenchMachine
{
public:
    // Lays the folder, log and dump off, and makes the process stand for it. Throws on what it can't lay.
    CBenchMachine();
    CBenchMachine(const CBenchMachine&) = delete;
    CBenchMachine& operator=(const CBenchMachine&) = delete;
    ~CBenchMachine();

private:
    std::string m_strFolder;
};
