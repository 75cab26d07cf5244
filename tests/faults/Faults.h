// Calls of the system that fail on demand: a library that is loaded ahead of all others and stands before the
// C library for the product's calls.
#pragma once

#include <cstddef>

namespace faults {

// An error for a call that may do less than it was asked for.
constexpr int kShort = -1;
// Instead of an error: the process is killed before the call.
constexpr int kKill = -2;

struct Kind {
    const char* name;
    int errors[4];  // errno values that fit, or kShort; 0 after the last
};

// The interface of the library, found with dlsym.
struct Control {
    const Kind* kinds;
    size_t count;
    // From now on the `nth` call of a kind, counted from 1, fails with `error`, once; 0 for none, and calls
    // are only counted. Calls of the program itself are left alone.
    void (*arm)(size_t kind, long nth, int error);
    // Ends that. Whether the call came and failed.
    bool (*disarm)();
    // How many calls of a kind there were while it was armed.
    long (*calls)(size_t kind);
};

}  // namespace faults

extern "C" const faults::Control* FaultsControl();
