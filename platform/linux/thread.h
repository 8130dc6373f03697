// What the thread pool needs of a thread beyond the platform's names.
#pragma once

// Takes the calling thread back to the ordinary priority if it was changed.
void RestoreThreadPriority();
