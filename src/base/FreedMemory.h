// Freed memory that the process still holds.
#pragma once

namespace KXP::Platform {

// Gives the system back what the heap holds and nobody uses, as after work that took far more memory than
// its result. Takes some milliseconds. Does nothing where the heap does so by itself. Any thread.
void ReturnFreedMemory();

// Lets all threads of this program share two parts of its heap, where each thread could have one of its own:
// a burst on many threads leaves each part as large as it ever was. For a program, before it has threads; a
// library has no say in its process's heap.
void KeepHeapTogether();

// Has the heap give large blocks back as soon as they are freed: each thread's part of it would otherwise
// keep what the largest work needed for a moment. For a program, before it has threads.
void ReturnLargeBlocks();

}  // namespace KXP::Platform
