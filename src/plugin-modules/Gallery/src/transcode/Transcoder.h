// The front of all media processing: cutting videos, through a library that is loaded at run time, the
// montage process, and encodings, which this platform does not have. Any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "common/system/ChildProcess.h"
#include "common/threads/Mutex.h"
#include "plugin-modules/Gallery/src/transcode/TranscoderPlatformContext.h"

class Transcoder {
  public:
    enum class EncodeQuality { Low = 0, Medium = 1, High = 2, Ultra = 3 };
    enum class EncodeFps { Low = 0, Medium = 1, High = 2, Ultra = 3 };

    // The result of an encoding.
    struct Output {
        std::string newFile;
        uint64_t newFileSize = 0;  // bytes
        uint32_t newWidth = 0;     // pixels
        uint32_t newHeight = 0;
        uint32_t iterations = 0;
    };

    // Does not throw when the library is missing: cutting then fails, and the rest works.
    Transcoder();

    // Copies `length` milliseconds of a video, beginning at `start`, into a new file. Returns 0, or
    // 0x80004005 after logging the reason. Throws std::runtime_error for a path of 260 characters or more.
    int32_t TrimVideoFile(const std::string& input, const std::string& output, double start, double length,
                          bool startOnKeyframe) const;
    // Returns the library's value, or -9, and logs, without the library.
    int32_t TrimVideoFile(ovsxcodeapi::RemuxParams& params) const { return context_->Remux(params); }

    // A montage, from its request to its end. Cancelling also ends one whose process has not started yet.
    class MontageRun {
      public:
        explicit MontageRun(Transcoder& owner);
        ~MontageRun();
        MontageRun(const MontageRun&) = delete;
        MontageRun& operator=(const MontageRun&) = delete;

      private:
        friend class Transcoder;
        class ProcessEnd;

        Transcoder& owner_;
        bool canceled_ = false;                 // guarded by the owner's mutex, like the process
        KXP::ChildProcess* process_ = nullptr;  // while it runs
    };

    // Runs the program until it ends, and logs what it prints. Returns 0 however it ended, and for a run that
    // was canceled before; 0x80004005, and logs, when it could not be started.
    int32_t CreateCefMontageProcess(MontageRun& run, const std::string& launchPath,
                                    const std::vector<std::string>& arguments) EXCLUDES(montageMutex_);
    // Ends all montages that were requested before, by force when they take longer than `grace`.
    void CancelMontage(std::chrono::milliseconds grace = std::chrono::seconds(5)) EXCLUDES(montageMutex_);
    bool WasMontageCanceled(const MontageRun& run) const EXCLUDES(montageMutex_);

    // Other platforms have encoders. Here each of these does nothing and succeeds: it returns 0 and leaves
    // `output` unchanged. `maxSizeMB` 0 is any size; `meme` is a bitmap to overlay.
    int32_t CreateMontage(const std::string& script) const;
    int32_t TranscodeImageFile(const std::string& source, int maxSizeMB, EncodeQuality quality,
                               const std::string& targetFolder, Output& output) const;
    int32_t TranscodeImageFileWithMeme(const std::string& source, int maxSizeMB, EncodeQuality quality,
                                       const std::string& targetFolder, Output& output,
                                       const std::string& meme) const;
    int32_t TranscodeVideoFile(const std::string& source, int maxSizeMB, EncodeQuality quality,
                               const std::string& targetFolder, double duration, Output& output,
                               EncodeFps fps) const;
    int32_t TranscodeVideoFileWithMeme(const std::string& source, int maxSizeMB, EncodeQuality quality,
                                       const std::string& targetFolder, Output& output, EncodeFps fps,
                                       const std::string& meme) const;

  private:
    const std::unique_ptr<TranscoderPlatformContext> context_;
    mutable KXP::OuterMutex montageMutex_;  // then that of a montage's process
    std::set<MontageRun*> montages_ GUARDED_BY(montageMutex_);
};

// The words of requests for these values.
extern const std::map<std::string, Transcoder::EncodeQuality> kTranscodeQualityJsonStrs;
extern const std::map<std::string, Transcoder::EncodeFps> kTranscodeFpsJsonStrs;
