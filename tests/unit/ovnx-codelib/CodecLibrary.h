// The remux library as its callers have it: opened at run time.
#pragma once

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include <dlfcn.h>

#include "libraries/ovnx-codelib/include/OvsXcodeApi.h"

class CodecLibrary {
  public:
    CodecLibrary() : handle_(dlopen(PRODUCT_DEPENDENCIES "/libovnxcodelib.so", RTLD_NOW | RTLD_GLOBAL)) {
        if (!handle_) throw std::runtime_error(dlerror());
        ovsxcodeapi::InitParams params;
        Entry<decltype(&InitializeTranscoder)>("InitializeTranscoder")(&params);
    }
    ~CodecLibrary() {
        Shutdown();
        dlclose(handle_);
    }
    CodecLibrary(const CodecLibrary&) = delete;
    CodecLibrary& operator=(const CodecLibrary&) = delete;

    void Shutdown() const { Entry<decltype(&ShutdownTranscoder)>("ShutdownTranscoder")(); }

    static ovsxcodeapi::RemuxBlock Block(const std::string& input, const std::string& output, double start,
                                         double end, bool atKeyframe = false) {
        ovsxcodeapi::RemuxBlock block;
        block.start = static_cast<uint64_t>(std::llround(start * 10000000));
        block.end = static_cast<uint64_t>(std::llround(end * 10000000));
        // Of ASCII characters.
        std::copy(input.begin(), input.end(), block.input);
        std::copy(output.begin(), output.end(), block.output);
        block.flags = atKeyframe ? uint32_t{ovsxcodeapi::RemuxAtKeyframe} : 0;
        return block;
    }

    int32_t Run(ovsxcodeapi::RemuxParams params) const {
        return Entry<decltype(&OvsXcodeRemux)>("OvsXcodeRemux")(params);
    }

    // Times in seconds.
    int32_t Remux(const std::string& input, const std::string& output, double start, double end,
                  bool atKeyframe = false) const {
        ovsxcodeapi::RemuxBlock block = Block(input, output, start, end, atKeyframe);
        ovsxcodeapi::RemuxParams params;
        params.block = &block;
        return Run(params);
    }

  private:
    template <typename Function>
    Function Entry(const char* name) const {
        const auto entry = reinterpret_cast<Function>(dlsym(handle_, name));
        if (!entry) throw std::runtime_error(name);
        return entry;
    }

    void* const handle_;
};
