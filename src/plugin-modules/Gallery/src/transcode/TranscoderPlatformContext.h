// The remux library while the plug-in runs: loaded if it is there, never linked.
#pragma once

#include <string>

#include "plugin-modules/Gallery/src/transcode/RemuxApi.h"

class TranscoderPlatformContext {
  public:
    TranscoderPlatformContext() = default;
    // Shuts the library down and closes it.
    ~TranscoderPlatformContext();
    TranscoderPlatformContext(const TranscoderPlatformContext&) = delete;
    TranscoderPlatformContext& operator=(const TranscoderPlatformContext&) = delete;

    // Loads libovnxcodelib from the folder. False, and logged, when that cannot be; an export that is missing
    // is only logged.
    bool Load(const std::string& folder);
    // Tells the library where the product is. Throws what GetProductBinaryDirectory and wcscpy_s throw.
    void Initialize();
    void Shutdown();

    // The library's own value, negative for a failure; -9 when there is no library. Any thread.
    int32_t Remux(ovsxcodeapi::RemuxParams& params) const;

  private:
    void* library_ = nullptr;
    ovsxcodeapi::OvsXcodeRemuxFn remux_ = nullptr;
    ovsxcodeapi::InitializeTranscoderFn initialize_ = nullptr;
    ovsxcodeapi::ShutdownTranscoderFn shutdown_ = nullptr;
};
