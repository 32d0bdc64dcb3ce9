#pragma once

#include "krbase.h"

/// While it lives the machine has as much memory as `bytes` says.
class MachineMemory {
public:
    explicit MachineMemory(long long (*bytes)()) : m_former(krMachineMemory) { krMachineMemory = bytes; }
    MachineMemory(const MachineMemory&) = delete;
    MachineMemory& operator=(const MachineMemory&) = delete;
    ~MachineMemory() { krMachineMemory = m_former; }

private:
    long long (*m_former)();
};
