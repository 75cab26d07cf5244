// What differs between systems in loading a library at run time.
#pragma once

namespace KXP::Platform {

// How the file names of libraries end, with the dot.
extern const char* const kLibrarySuffix;

// For dlopen: the library finds its own names and those of what it links before the process's, so that it
// does not mix with other builds of the same libraries in its host. 0 where that is always so.
int OwnScopeFlag();

}  // namespace KXP::Platform
