// Keeps the recipes of montages in step with the cloud.
#pragma once

#include <atomic>

namespace montage {

// Any thread.
class RecipeSync {
  public:
    // Fetches what has changed. False, with a log line, when that cannot be done or after End. May take long;
    // End cuts it short.
    bool RecipeCloudSync();
    // Aborts the syncs that are running, and lets no other begin until Begin.
    void End();
    void Begin() { ended_ = false; }

  private:
    std::atomic<bool> ended_{false};
};

}  // namespace montage
