#include "plugin-modules/Gallery/src/engraving/Engraver.h"

#include <optional>

#include "CobalixUtil.h"
#include "plugin-modules/Gallery/src/engraving/EngravingFile.h"
#include "plugin-modules/Gallery/src/engraving/EngravingPlan.h"
#include "plugin-modules/Gallery/src/engraving/MetadataText.h"
#include "plugin-modules/Gallery/src/engraving/Mp4Layout.h"
#include "plugin-modules/Gallery/src/media/Edits.h"

namespace {

// Readers look at no more of a tag.
constexpr size_t kMaxText = 4096;

}  // namespace

bool AddMetadatatoFile(const std::string& outputFile, const CaptureRequestInfo* info) {
    using namespace engraving;
    if (outputFile.empty()) {
        KXP_LOG(KXP::LogFailure, "Null output file string passed, returning error");
        return false;
    }
    const std::string text = MakeMetadata(info);
    const KXP::Turn turn(media::Edits(), media::EditedFile(outputFile));
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
