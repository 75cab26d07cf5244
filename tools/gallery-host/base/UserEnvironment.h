// The environment of the user, for the programs of the user's desktop; this program may live in another home.
#pragma once

#include <string>

namespace host {

// The user's data, settings and caches are below `home` from now on, for this program and the plug-in. Call
// it before there are threads, because the environment has no lock.
void MoveHome(const std::string& home);

// As it was at the start of this program, for posix_spawn. Any thread, after MoveHome.
char* const* UserEnvironment();

}  // namespace host
