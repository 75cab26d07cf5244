// Cuts a clip out of a video: into a file of its own, or in the place of its source.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "common/results/RetVal.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

class EditNote;

// One for each request. Not on the tracker's worker.
class Trimmer {
  public:
    // Cuts `length` milliseconds from `start` on out of a video into a new file: 0 or a negative code.
    using Cut = std::function<int32_t(const std::string& input, const std::string& output, double start,
                                      double length)>;

    // All of them outlive this object. Who sets `cancelled` wakes the tracker's waits after that.
    Trimmer(UGCTracker& tracker, Cut cut, const std::atomic<bool>& cancelled)
        : tracker_(tracker), cut_(std::move(cut)), cancelled_(cancelled) {}

    // Cuts `lengthMs` from `headTrimMs` on out of a video; over itself when both paths are the same, and the
    // input is then untouched until the clip is whole. A file that is there and no capture by its bytes is
    // never replaced. If the process dies meanwhile, FinishInterruptedEdits
    // leaves the one or the other. A cut that fails leaves nothing where nothing was. Success once the clip
    // is on record; 0x80004005 when it is not, after two seconds or at once where it can never be, though the
    // clip may be there.
    KXP::RetVal TrimUGC(const std::string& input, const std::string& output, double headTrimMs,
                        double lengthMs);

  private:
    KXP::RetVal TrimInPlace(const std::string& path, double headTrimMs, double lengthMs);
    bool CutFile(const std::string& input, const std::string& output, double headTrimMs, double lengthMs);
    // The last step before the clip is put in place. From then on the next start does it if the process dies.
    bool PrepareClip(const std::string& clip, const std::string& path, EditNote& note) const;
    static bool PutInPlace(const std::string& clip, const std::string& path);
    KXP::RetVal AwaitClip(const std::string& output) const;

    UGCTracker& tracker_;
    const Cut cut_;
    const std::atomic<bool>& cancelled_;
};
