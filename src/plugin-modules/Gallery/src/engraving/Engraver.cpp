#include "plugin-modules/Gallery/src/engraving/Engraver.h"

#include <optional>

#include "CobalixUtil.h"
#include "common/Mutex.h"
#include "plugin-modules/Gallery/src/engraving/EngravingFile.h"
#include "plugin-modules/Gallery/src/engraving/EngravingPlan.h"
#include "plugin-modules/Gallery/src/engraving/MetadataText.h"
#include "plugin-modules/Gallery/src/engraving/Mp4Boxes.h"

namespace {

// Readers look at no more of a tag.
constexpr size_t kMaxText = 4096;

// Two that plan for the same file would write over each other. Files are engraved one at a time, whichever
// they are: each takes a few writes.
class Turn {
  public:
    Turn() {
        const KXP::MutexLock lock(mutex_);
        while (isTaken_)
            ended_.Wait(mutex_);
        isTaken_ = true;
    }
    ~Turn() {
        {
            const KXP::MutexLock lock(mutex_);
            isTaken_ = false;
        }
        ended_.NotifyAll();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

  private:
    static inline KXP::Mutex mutex_;
    static inline KXP::CondVar ended_;
    static inline bool isTaken_ GUARDED_BY(mutex_) = false;
};

}  // namespace

bool AddMetadatatoFile(const std::string& outputFile, const CaptureRequestInfo* info) {
    using namespace engraving;
    if (outputFile.empty()) {
        KXP_LOG(KXP::LogFailure, "Null output file string passed, returning error");
        return false;
    }
    const std::string text = MakeMetadata(info);
    const Turn turn;
    // The lines are the same on every platform, whoever reads and writes the movie there.
    std::optional<EngravingFile> file;
    Mp4Layout layout;
    try {
        file.emplace(outputFile);
        layout = ReadLayout(file->source(), file->size());
    } catch (const EngravingError& error) {
        KXP_LOG(KXP::LogFailure, "AVMutableMovie:initWithURL returned error, error string: %s", error.what());
        return false;
    }
    try {
        if (text.size() > kMaxText) throw EngravingError("the metadata is too long to be read back");
        file->CarryOut(PlanEngraving(file->source(), layout, text));
    } catch (const EngravingError& error) {
        KXP_LOG(KXP::LogFailure, "AVMutableMovie:writeMovieHeaderToURL returned error, error string: %s",
                error.what());
        return false;
    }
    return true;
}
