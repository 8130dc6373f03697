// Where a virtual operation stands in its interface's table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

// A pointer to a virtual operation holds its table offset and 1, in both builds.
template <class Operation> size_t SlotOf(Operation pOperation)
{
    std::uintptr_t iOffset = 0;
    std::memcpy(&iOffset, &pOperation, sizeof iOffset);
    return (iOffset - 1) / sizeof(void*);
}
