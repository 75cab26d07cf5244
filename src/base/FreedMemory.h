// Freed memory that the process still holds.
#pragma once

namespace KXP::Platform {

// Gives the system back what the heap holds and nobody uses, as after work that took far more memory than
// its result. Takes some milliseconds. Does nothing where the heap does so by itself. Any thread.
void ReturnFreedMemory();

}  // namespace KXP::Platform
