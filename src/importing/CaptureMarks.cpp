#include "importing/CaptureMarks.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "base/Text.h"
#include "importing/Splice.h"
#include "plugin-modules/Gallery/src/engraving/MetadataText.h"

namespace importing {
namespace {

// Readers look at no more of a block.
constexpr size_t kMaxBlock = 4096;

template <size_t kSize>
void Fill(wchar_t (&field)[kSize], const std::string& text) {
    const std::wstring wide = KXP::Utf8ToWide(text);
    if (wide.size() >= kSize) throw ImportError("would have a name that is too long");
    std::copy(wide.begin(), wide.end(), field);
}

}  // namespace

std::string SoftwareOf(const CaptureMarks& marks) {
    return marks.highlight.empty() ? "Ovirastream SHARE" : "Ovirastream SDK";
}

std::string BlockOf(const CaptureMarks& marks) {
    // On the heap, as it takes kilobytes.
    const auto info = std::make_unique<CaptureRequestInfo>();
    Fill(info->drsAppName, marks.game);
    if (!marks.highlight.empty()) {
        info->captureType = CaptureRequestInfo::kHighlight;
        Fill(info->highlightName, marks.highlight);
        Fill(info->highlightId, marks.highlight);
    }
    std::string block = MakeMetadata(info.get());
    if (block.size() > kMaxBlock) throw ImportError("would have a name that is too long");
    return block;
}

}  // namespace importing
