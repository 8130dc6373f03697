// The machine's folder, as the layer itself asks about it.
#pragma once

// Counts the folders so far, so that whoever keeps something of one sees that it is another's. Any thread.
unsigned MachineGeneration();
