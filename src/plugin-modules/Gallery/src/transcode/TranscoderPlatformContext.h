// The library that cuts videos: loaded while the plug-in runs if it is there, never linked.
#pragma once

#include <string>

#include "libraries/ovnx-codelib/include/OvsXcodeApi.h"

class TranscoderPlatformContext {
  public:
    TranscoderPlatformContext() = default;
    // Shuts the library down and closes it.
    ~TranscoderPlatformContext();
    TranscoderPlatformContext(const TranscoderPlatformContext&) = delete;
    TranscoderPlatformContext& operator=(const TranscoderPlatformContext&) = delete;

    // Loads libovnxcodelib from the folder. False, and logged, when that fails; a missing export is only
    // logged.
    bool Load(const std::string& folder);
    // Initializes the library with the product's folder. Throws what GetProductBinaryDirectory and wcscpy_s
    // throw.
    void Initialize();
    void Shutdown();

    // Returns the library's own value, negative for a failure, or -9 without the library. Any thread.
    int32_t Remux(ovsxcodeapi::RemuxParams& params) const;

  private:
    void* library_ = nullptr;
    decltype(&OvsXcodeRemux) remux_ = nullptr;
    decltype(&InitializeTranscoder) initialize_ = nullptr;
    decltype(&ShutdownTranscoder) shutdown_ = nullptr;
};
