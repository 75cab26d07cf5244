// A home of its own for what the product keeps there; the user's own is never touched. Made before other
// threads run, and destroyed after them.
#pragma once

#include <string>

#include "tests/support/ScopedEnv.h"
#include "tests/support/TempFolder.h"

class TemporaryHome {
  public:
    const TempFolder& folder() const { return folder_; }
    std::string operator/(const std::string& name) const { return folder_ / name; }

  private:
    const TempFolder folder_;
    const ScopedEnv home_{"HOME", folder_.path()};
    const ScopedEnv data_{"XDG_DATA_HOME", folder_ / "data"};
    const ScopedEnv config_{"XDG_CONFIG_HOME", folder_ / "config"};
    const ScopedEnv cache_{"XDG_CACHE_HOME", folder_ / "cache"};
};
