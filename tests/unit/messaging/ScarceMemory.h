// Makes allocations of this program fail, those by malloc and in slabs included: its link replaces the
// functions for them.
#pragma once

class ScarceMemory {
  public:
    enum class Fails { One, AllFromThereOn };

    // Counts the allocations of all threads that are not spared; the `nth` fails, or it and all after it.
    ScarceMemory(long nth, Fails which);
    ~ScarceMemory();
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;

    bool HasFailed() const;
};

// The calling thread's allocations succeed for as long as this lives: they are the test's own.
class SparedMemory {
  public:
    SparedMemory();
    ~SparedMemory();
    SparedMemory(const SparedMemory&) = delete;
    SparedMemory& operator=(const SparedMemory&) = delete;
};
