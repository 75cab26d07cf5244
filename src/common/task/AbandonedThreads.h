// Where threads go that a queue could not wait for at shutdown.
#pragma once

#include <thread>
#include <vector>

namespace KXP {

// Leaves the threads to the process, and keeps the code they run in for the rest of it: the library stays
// mapped when the container closes it. What the threads use, they must own.
void AbandonThreads(std::vector<std::thread> threads);

}  // namespace KXP
