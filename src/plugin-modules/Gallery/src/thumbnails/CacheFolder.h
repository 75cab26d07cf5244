// Folders below the user's cache that are nobody else's.
#pragma once

#include <string>

#include "base/FileDescriptor.h"

struct stat;

bool IsOwn(const struct stat& status);

enum class Missing { Leave, Make };

// Opens the folder `path` of the cache. Closed when it, or one on the way to it, is missing, a link or
// somebody else's. Those that are made are for the user alone.
KXP::FileDescriptor OpenInCache(const std::string& path, Missing missing);
