// The remux library as its callers have it: opened at run time, with records written byte by byte.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>

#include <dlfcn.h>

#include "libraries/ovnx-codelib/include/OvsXcodeApi.h"

class CodecLibrary {
  public:
    CodecLibrary() : handle_(dlopen(PRODUCT_DEPENDENCIES "/libovnxcodelib.so", RTLD_NOW | RTLD_GLOBAL)) {
        if (!handle_) throw std::runtime_error(dlerror());
        alignas(8) unsigned char record[1048] = {1, 0, 0, 0, 2};
        Entry<decltype(&InitializeTranscoder)>("InitializeTranscoder")(
            reinterpret_cast<ovsxcodeapi::InitParams*>(record));
    }
    ~CodecLibrary() {
        Shutdown();
        dlclose(handle_);
    }
    CodecLibrary(const CodecLibrary&) = delete;
    CodecLibrary& operator=(const CodecLibrary&) = delete;

    void Shutdown() const { Entry<decltype(&ShutdownTranscoder)>("ShutdownTranscoder")(); }

    // The parameter block and the record around it.
    struct Call {
        alignas(8) unsigned char block[2112] = {};
        alignas(8) unsigned char record[24] = {};
    };

    static void Fill(Call& call, const std::string& input, const std::string& output, double start,
                     double end, bool atKeyframe) {
        Put(call.block, 0, uint32_t{1});
        Put(call.block, 8, static_cast<uint64_t>(std::llround(start * 10000000)));
        Put(call.block, 16, static_cast<uint64_t>(std::llround(end * 10000000)));
        PutText(call.block + 24, input);
        PutText(call.block + 1064, output);
        Put(call.block, 2104, uint32_t{atKeyframe});
        Put(call.record, 0, uint32_t{1});
        Put(call.record, 4, uint32_t{1});
        Put(call.record, 8, uint64_t{2112});
        Put(call.record, 16, reinterpret_cast<uint64_t>(&call.block));
    }

    int32_t Run(Call& call) const {
        return Entry<decltype(&OvsXcodeRemux)>("OvsXcodeRemux")(
            reinterpret_cast<ovsxcodeapi::RemuxParams&>(call.record));
    }

    // Times in seconds.
    int32_t Remux(const std::string& input, const std::string& output, double start, double end,
                  bool atKeyframe = false) const {
        Call call;
        Fill(call, input, output, start, end, atKeyframe);
        return Run(call);
    }

    template <typename Number>
    static void Put(unsigned char* record, size_t at, Number value) {
        std::memcpy(record + at, &value, sizeof(value));
    }

  private:
    // Of ASCII characters.
    static void PutText(unsigned char* at, const std::string& text) {
        for (size_t i = 0; i < text.size(); ++i)
            at[4 * i] = static_cast<unsigned char>(text[i]);
    }

    template <typename Function>
    Function Entry(const char* name) const {
        const auto entry = reinterpret_cast<Function>(dlsym(handle_, name));
        if (!entry) throw std::runtime_error(name);
        return entry;
    }

    void* const handle_;
};
