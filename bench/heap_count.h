// Counts the heap blocks that a thread asks for.
#pragma once

#include <cstdint>

// Blocks that operator new gave to this thread since it began.
int64_t ThreadHeapBlocks();
