#include "libraries/ovnx-media/apple/ShownKeyframes.h"

#include <algorithm>

#include "libraries/ovnx-media/cut/SourceMovie.h"

namespace ovnxmedia {
namespace {

struct Shown {
    std::vector<int64_t> times;  // ascending
    int64_t end = 0;             // of the last edit
};

Shown FindShown(const SourceTrack& video, const Budget& budget) {
    Shown shown;
    for (const Edit& edit : video.edits) {
        budget.Check();
        const int64_t length = std::min(edit.length, video.table.End() - edit.media);
        for (const Sample& sample : video.table.samples) {
            const int64_t within = sample.shown - edit.media;
            if (sample.isSync && within >= 0 && within < length) shown.times.push_back(edit.start + within);
        }
        shown.end = std::max(shown.end, edit.start + length);
    }
    std::sort(shown.times.begin(), shown.times.end());
    return shown;
}

}  // namespace

ShownTimes KeyframesFromTenth(int fd, size_t most, const Budget& budget) {
    const SourceMovie movie(fd, budget);
    const SourceTrack& video = movie.Video();
    const Shown shown = FindShown(video, budget);
    if (shown.times.empty()) return {video.unit, {}};
    const int64_t start = shown.times.front();
    const auto after =
        std::upper_bound(shown.times.begin(), shown.times.end(), start + (shown.end - start) / 10);
    const auto first = after - 1;
    const auto count = std::min<size_t>(most, static_cast<size_t>(shown.times.end() - first));
    return {video.unit, {first, first + static_cast<std::ptrdiff_t>(count)}};
}

}  // namespace ovnxmedia
