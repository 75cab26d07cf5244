// Where threads go that could not be waited for at shutdown.
#pragma once

#include <thread>

namespace KXP {

// Leaves the thread to the process, and keeps the code that it runs in for the rest of it: the library stays
// mapped when the container closes it. What the thread uses, it must own.
void AbandonThread(std::thread thread);

}  // namespace KXP
