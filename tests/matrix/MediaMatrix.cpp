// MediaMatrix COUNT [SEED [FOLDER]]: makes so many videos, cuts each of them ten times, engraves it five
// times and converts it from other containers, and plays all of that against the source: every frame and
// every sample of sound. Prints the seed, each difference, and how many there were; 0 when there was none.
// Keeps what differs in the folder.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <string>

#include "plugin-modules/Gallery/src/engraving/Engraver.h"
#include "sample-media/DecodedMedia.h"
#include "tests/matrix/Converter.h"
#include "tests/matrix/MatrixFiles.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"
#include "tests/unit/ovnx-codelib/CodecLibrary.h"

namespace {

constexpr int kCuts = 10;
constexpr int kEngravings = 5;
constexpr double kInstant = 1e-6;
constexpr double kUnit = 1e-4;
constexpr double kTimeTolerance = 1e-3;
// Of the first sound against the first frame, in containers with coarse times.
constexpr double kSoundTolerance = 2e-3;
// A sound need not be there for less than that.
constexpr double kFewPackets = 0.1;

// What differs, in words; empty when nothing does.
using Difference = std::string;

Difference FramesDiffer(const made::Decoded& source, const made::Decoded& clip, double start, double end) {
    size_t at = 0;
    for (const made::ShownFrame& frame : source.frames) {
        if (frame.time < start - kInstant || frame.time > end - kInstant) continue;
        if (at == clip.frames.size()) return "frames are missing at the end";
        const made::ShownFrame& other = clip.frames[at++];
        if (other.hash != frame.hash) return "frame " + std::to_string(at - 1) + " differs";
        if (std::abs(other.time - (frame.time - start)) > kTimeTolerance)
            return "frame " + std::to_string(at - 1) + " is at another time";
    }
    return at == clip.frames.size() ? "" : "there are frames after the end";
}

Difference SoundDiffers(const made::Decoded& source, size_t track, const made::Decoded& clip, double start,
                        double end, double tolerance) {
    const std::vector<float>& from = source.sounds[track];
    const double rate = source.sampleRates[track];
    // From the first to the last sample that is not silent. What decoders add to the last packet is not in
    // the tables.
    size_t last = std::min(from.size(), static_cast<size_t>(std::lround(end * rate)));
    const auto offset = static_cast<size_t>(std::lround(start * rate));
    while (last > offset && from[last - 1] == 0)
        --last;
    const auto few = static_cast<size_t>(kFewPackets * rate);
    const size_t expected = last - std::min(last, offset);
    const auto found = std::find(clip.ids.begin(), clip.ids.end(), source.ids[track]);
    if (found == clip.ids.end()) return expected < few ? "" : "a sound is missing";
    const std::vector<float>& to = clip.sounds[static_cast<size_t>(found - clip.ids.begin())];
    const bool isAtEnd = last + few > from.size();
    // The player does not find its way within the very last packet.
    if (isAtEnd && expected < few) return "";
    if (to.size() + (isAtEnd ? few : 1) < expected) return "a sound ends early";
    const size_t compared = std::min(expected, to.size());
    size_t different = 0;
    float most = 0;
    for (size_t i = 0; i < compared; ++i) {
        const float difference = std::abs(to[i] - from.at(offset + i));
        if (difference <= static_cast<float>(tolerance)) continue;
        most = std::max(most, difference);
        different = i + 1;
    }
    if (different == 0) return "";
    return "sound " + std::to_string(track) + " differs up to sample " + std::to_string(different) + " of " +
           std::to_string(compared) + ", at most by " + std::to_string(most);
}

// When the frame began that is shown at a time; that time where none is.
double ShownAt(const made::Decoded& source, double time) {
    double begin = -1;
    for (const made::ShownFrame& frame : source.frames)
        if (frame.time <= time + kInstant) begin = std::max(begin, frame.time);
    return begin < 0 ? time : begin;
}

Difference ChaptersDiffer(const made::Decoded& source, const made::Decoded& clip, double start, double end) {
    std::vector<made::Chapter> expected;
    for (const made::Chapter& chapter : source.chapters) {
        if (chapter.start >= end) continue;
        if (chapter.start <= start) expected.clear();
        expected.push_back({std::max(0.0, chapter.start - start), chapter.title});
    }
    if (expected.size() != clip.chapters.size())
        return std::to_string(clip.chapters.size()) + " chapters instead of " +
               std::to_string(expected.size());
    for (size_t i = 0; i < expected.size(); ++i)
        if (expected[i].title != clip.chapters[i].title ||
            std::abs(expected[i].start - clip.chapters[i].start) > kTimeTolerance)
            return "chapter " + std::to_string(i) + " differs";
    return "";
}

class MatrixRun {
  public:
    MatrixRun(unsigned count, unsigned seed, std::string keep)
        : count_(count), random_(seed), keep_(std::move(keep)) {}

    // How many differences there were.
    int Run() {
        for (unsigned i = 0; i < count_; ++i) {
            const matrix::File file = matrix::FileOf(i, random_);
            if (!Make(file)) continue;
            const made::Decoded source = made::Decode(source_);
            for (int cut = 0; cut < kCuts; ++cut)
                Cut(file, source);
            for (int engraving = 0; engraving < kEngravings; ++engraving)
                Engrave(file, source);
            for (const made::VariedVideo& video : matrix::InOtherContainers(file.video))
                Convert({video, file.name + " as " + video.format, 0});
        }
        std::printf(
            "%u files, %d cuts (%d of nothing), %d engravings (%d refused), %d conversions: %d differences\n",
            count_, cuts_, refusedCuts_, engravings_, refusedEngravings_, conversions_, differences_);
        return differences_;
    }

  private:
    bool Make(const matrix::File& file) {
        try {
            made::Write(file.video, source_);
            return true;
        } catch (const std::exception& error) {
            Report(file, "source", error.what());
            return false;
        }
    }

    double Random() { return static_cast<double>(random_()) / static_cast<double>(random_.max()); }

    void Report(const matrix::File& file, const std::string& what, const Difference& difference) {
        if (difference.empty()) return;
        ++differences_;
        std::printf("%d: %s; %s: %s\n", differences_, file.name.c_str(), what.c_str(), difference.c_str());
        for (const std::string& path : {source_, clip_})
            if (!keep_.empty() && std::filesystem::exists(path))
                std::filesystem::copy_file(path, keep_ + "/" + std::to_string(differences_) + "-" +
                                                     std::filesystem::path(path).filename().string());
    }

    struct Bytes {
        std::string source;
        std::string clip;
    };
    Bytes Now() const {
        return {folder_.Read("source.mp4"), folder_.Has("clip.mp4") ? folder_.Read("clip.mp4") : ""};
    }

    // Often at a frame, where rounding shows.
    double RandomTime(const made::Decoded& source) {
        if (random_() % 3 == 0) return source.frames[random_() % source.frames.size()].time;
        return Random() * (source.frames.back().time + 0.05);
    }

    // The time, or that of a frame which it cannot be told from in units of the track.
    static double AtFrame(const made::Decoded& source, double time) {
        for (const made::ShownFrame& frame : source.frames)
            if (std::abs(frame.time - time) < kUnit) return frame.time;
        return time;
    }

    void Cut(const matrix::File& file, const made::Decoded& source) {
        const double a = RandomTime(source);
        const double b = RandomTime(source);
        const double end = AtFrame(source, std::max(a, b) + (random_() % 4 == 0 ? 1 : 0.001));
        const double start = AtFrame(source, std::min(a, b));
        char what[100];
        std::snprintf(what, sizeof(what), "cut from %.7f to %.7f", start, end);
        const double shown = ShownAt(source, start);
        const bool hasFrames =
            std::any_of(source.frames.begin(), source.frames.end(), [&](const made::ShownFrame& frame) {
                return frame.time >= shown - kInstant && frame.time < end - kInstant;
            });
        const Bytes before = Now();
        const int32_t value = library_.Remux(source_, clip_, start, end);
        ++cuts_;
        if (Now().source != before.source) Report(file, what, "the source is another");
        if (value != 0) {
            ++refusedCuts_;
            if (hasFrames || value != ovsxcodeapi::RemuxEmptyRange)
                Report(file, what, "refused with " + std::to_string(value));
            if (Now().clip != before.clip) Report(file, what, "refused, and the older clip is another");
            return;
        }
        try {
            const made::Decoded clip = made::Decode(clip_);
            Difference difference = FramesDiffer(source, clip, shown, end);
            for (size_t track = 0; track < source.sounds.size() && difference.empty(); ++track)
                if (source.sampleRates[track] > 0)
                    difference = SoundDiffers(source, track, clip, shown, end, file.soundTolerance);
            if (difference.empty()) difference = ChaptersDiffer(source, clip, shown, end);
            Report(file, what, difference);
        } catch (const std::exception& error) {
            Report(file, what, error.what());
        }
    }

    void Engrave(const matrix::File& file, const made::Decoded& source) {
        CaptureRequestInfo info{};
        info.captureType =
            random_() % 2 == 0 ? CaptureRequestInfo::kOrdinary : CaptureRequestInfo::kHighlight;
        info.cmsId = static_cast<int64_t>(random_());
        std::fill_n(info.shortName, random_() % 90, L'a');
        std::fill_n(info.highlightId, random_() % 250, L'b');
        ++engravings_;
        const Bytes before = Now();
        const LogCapture log;
        if (!Engraver().apply(source_, info)) {
            ++refusedEngravings_;
            if (!log.Has("error string: ")) Report(file, "engraving", "refused without a reason");
            if (Now().source != before.source) Report(file, "engraving", "refused, and the file is another");
            return;
        }
        try {
            const made::Decoded engraved = made::Decode(source_);
            Difference difference = FramesDiffer(source, engraved, 0, 1e9);
            for (size_t track = 0; track < source.sounds.size() && difference.empty(); ++track)
                if (source.sounds[track] != engraved.sounds[track]) difference = "a sound differs";
            Report(file, "engraving", difference);
        } catch (const std::exception& error) {
            Report(file, "engraving", error.what());
        }
    }

    // Every frame, at its time after the first; every sound, as early or late against the frames.
    static Difference ConversionDiffers(const made::Decoded& source, const made::Decoded& copy) {
        if (source.frames.size() != copy.frames.size())
            return std::to_string(copy.frames.size()) + " frames instead of " +
                   std::to_string(source.frames.size());
        const double shift = source.frames.front().time - copy.frames.front().time;
        for (size_t i = 0; i < source.frames.size(); ++i)
            if (source.frames[i].hash != copy.frames[i].hash ||
                std::abs(source.frames[i].time - copy.frames[i].time - shift) > kTimeTolerance)
                return "frame " + std::to_string(i) + " differs";
        for (size_t i = 0; i < source.soundStarts.size(); ++i)
            if (source.sampleRates[i] > 0 &&
                std::abs(source.soundStarts[i] - copy.soundStarts.at(i) - shift) > kSoundTolerance)
                return "sound " + std::to_string(i) + " is at another time";
        return "";
    }

    void Convert(const matrix::File& file) {
        if (!Make(file)) return;
        ++conversions_;
        try {
            const std::string refusal = converter_.Convert(source_, clip_);
            if (!refusal.empty()) return Report(file, "conversion", "refused, as " + refusal);
            const made::Decoded source = made::Decode(source_);
            const made::Decoded copy = made::Decode(clip_);
            Difference difference = ConversionDiffers(source, copy);
            if (difference.empty() && converter_.PacketsOf(source_) != converter_.PacketsOf(clip_))
                difference = "packets differ";
            Report(file, "conversion", difference);
        } catch (const std::exception& error) {
            Report(file, "conversion", error.what());
        }
    }

    const unsigned count_;
    std::mt19937 random_;
    const std::string keep_;
    const TempFolder folder_;
    const std::string source_ = folder_ / "source.mp4";
    const std::string clip_ = folder_ / "clip.mp4";
    const CodecLibrary library_;
    const matrix::Converter converter_;
    int conversions_ = 0;
    int cuts_ = 0;
    int refusedCuts_ = 0;
    int engravings_ = 0;
    int refusedEngravings_ = 0;
    int differences_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
    const unsigned count = argc > 1 ? static_cast<unsigned>(std::atoi(argv[1])) : 20;
    const unsigned seed = argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : 1;
    std::printf("seed %u\n", seed);
    try {
        return MatrixRun(count, seed, argc > 3 ? argv[3] : "").Run() == 0 ? 0 : 1;
    } catch (const std::exception& error) {
        std::printf("%s\n", error.what());
        return 1;
    }
}
