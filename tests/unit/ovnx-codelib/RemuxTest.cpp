#include <cmath>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "sample-media/DecodedMedia.h"
#include "sample-media/MadeBoxes.h"
#include "sample-media/MadeMedia.h"
#include "sample-media/VariedMedia.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TempFolder.h"
#include "tests/unit/ovnx-codelib/CodecLibrary.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

constexpr int kFps = 30;

made::Video Capture() {
    made::Video video;
    video.frames = 90;
    video.rotation = 90;
    video.audioLanguages = {"eng", "deu"};
    video.creationTime = "2020-01-02T03:04:05Z";
    video.tagc = "{\"Source\":\"Ovirastream SHARE\",\"B64\":\"e30=\"}";
    return video;
}

std::vector<int> Range(int first, int end) {
    std::vector<int> numbers(static_cast<size_t>(end - first));
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

std::vector<int> NumbersOf(const made::Decoded& decoded) {
    std::vector<int> numbers;
    for (const made::ShownFrame& frame : decoded.frames)
        numbers.push_back(frame.number);
    return numbers;
}

class RemuxTest : public testing::Test {
  protected:
    // A copy of the video, and what is in the folder with it.
    std::string Put(const made::Video& video) const {
        fs::copy_file(made::Path(video), folder_ / "source.mp4", fs::copy_options::overwrite_existing);
        return folder_ / "source.mp4";
    }

    std::set<std::string> Names() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_.path()))
            names.insert(entry.path().filename());
        return names;
    }

    const TempFolder folder_;
    const CodecLibrary library_;
    const std::string clip_ = folder_ / "clip.mp4";
};

// The clip's sound is the source's of the same time, but for the last packet, whose end may be cut.
void ExpectSameSound(const made::Decoded& source, const made::Decoded& clip, double start) {
    for (size_t track = 1; track < source.sounds.size(); ++track) {
        const std::vector<float>& from = source.sounds[track];
        const std::vector<float>& to = clip.sounds[track];
        const auto offset = static_cast<size_t>(std::lround(start * 48000));
        ASSERT_GT(to.size(), 4096u);
        float worst = 0;
        for (size_t i = 0; i < to.size() - 1024; ++i)
            worst = std::max(worst, std::abs(to[i] - from.at(offset + i)));
        EXPECT_LT(worst, 1e-5) << "track " << track;
    }
}

TEST_F(RemuxTest, ShowsExactlyTheRange) {
    struct Case {
        const char* what;
        void (*change)(made::Video&);
        double start, end;  // frames
        bool atKeyframe;
        int first, after;  // that are shown
    };
    const auto asIs = [](made::Video&) {};
    const Case cases[] = {
        {"from within", asIs, 45, 75, false, 45, 75},
        {"moov in front", [](made::Video& each) { each.moovInFront = true; }, 45, 75, false, 45, 75},
        {"no reordering", [](made::Video& each) { each.bFrames = 0; }, 45, 75, false, 45, 75},
        {"from a keyframe", asIs, 60, 61, false, 60, 61},
        {"from within a frame", asIs, 45.6, 75, false, 45, 75},
        {"at the keyframe before", asIs, 45, 75, true, 30, 75},
        {"from the beginning", asIs, 0, 10, false, 0, 10},
        {"beyond the end", asIs, 70, 9000, false, 70, 90},
        {"all", asIs, 0, 90, true, 0, 90},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        made::Video video = Capture();
        each.change(video);
        const std::string source = Put(video);
        ASSERT_EQ(library_.Remux(source, clip_, each.start / kFps, each.end / kFps, each.atKeyframe), 0);
        const made::Decoded from = made::Decode(source);
        const made::Decoded to = made::Decode(clip_);
        EXPECT_EQ(NumbersOf(to), Range(each.first, each.after));
        EXPECT_NEAR(to.frames.at(0).time, 0, 1e-4);
        const double end = each.end > 90 ? from.duration : 1.0 * each.after / kFps;
        EXPECT_NEAR(to.duration, end - 1.0 * each.first / kFps, 1e-3);
        EXPECT_EQ(to.tracks, from.tracks);
        EXPECT_TRUE(to.hiddenAtStart == 0 || !each.atKeyframe) << to.hiddenAtStart;
        if (!each.atKeyframe && each.after - each.first >= 10)
            ExpectSameSound(from, to, 1.0 * each.first / kFps);
    }
    EXPECT_EQ(Names(), (std::set<std::string>{"clip.mp4", "source.mp4"}));
}

TEST_F(RemuxTest, AClipCanBeCutAgain) {
    ASSERT_EQ(library_.Remux(Put(Capture()), clip_, 40.0 / kFps, 80.0 / kFps), 0);
    const std::string again = folder_ / "again.mp4";
    ASSERT_EQ(library_.Remux(clip_, again, 5.0 / kFps, 100), 0);
    EXPECT_EQ(NumbersOf(made::Decode(again)), Range(45, 80));
}

TEST_F(RemuxTest, CarriesWhatDescribesTheSource) {
    Put(Capture());
    ASSERT_EQ(library_.Remux(folder_ / "source.mp4", clip_, 1, 2), 0);
    const std::string source = folder_.Read("source.mp4");
    const std::string clip = folder_.Read("clip.mp4");
    EXPECT_EQ(made::BoxAt(clip, "moov/udta/tagc"), Capture().tagc);
    EXPECT_EQ(made::BoxAt(clip, "moov/udta"), made::BoxAt(source, "moov/udta"));
    std::string order;
    for (const made::Box& box : made::Boxes(clip))
        order += box.type + " ";
    EXPECT_EQ(order, "ftyp moov free mdat ");
    EXPECT_EQ(made::BoxAt(clip, "moov/mvhd").substr(4, 4),
              made::BoxAt(source, "moov/mvhd").substr(4, 4));  // creation
}

TEST_F(RemuxTest, CarriesBoxesByteForByte) {
    Put(Capture());
    std::string bytes = folder_.Read("source.mp4");
    const std::string version(4, '\0');
    const std::string sphere =
        made::BoxOf("st3d", version + "\1") +
        made::BoxOf("sv3d",
                    made::BoxOf("svhd", version + "maker\0"s) +
                        made::BoxOf("proj", made::BoxOf("prhd", version + std::string(12, '\0')) +
                                                made::BoxOf("equi", version + std::string(16, '\0'))));
    struct Addition {
        const char* place;
        std::string box;
    };
    const Addition additions[] = {
        {"moov/trak/mdia/minf/stbl/stsd/avc1", sphere},
        {"moov/trak",
         made::BoxOf(
             "uuid",
             "\xff\xcc\x82\x63\xf8\x55\x4a\x93\x88\x14\x58\x7a\x02\x52\x1f\xdd<rdf:SphericalVideo/>")},
        {"moov/trak", made::BoxOf("udta", made::BoxOf("name", "the front camera"))},
        {"moov", made::BoxOf("uuid", "sixteen bytes of the movie, and more")},
    };
    for (const Addition& each : additions)
        bytes = made::WithContent(bytes, each.place, std::string(made::BoxAt(bytes, each.place)) + each.box);
    const std::string ofFile = made::BoxOf("uuid", "sixteen bytes of the file, and more");
    const std::string source = folder_.Write("source.mp4", bytes + ofFile);
    ASSERT_EQ(library_.Remux(source, clip_, 1, 2), 0);
    const std::string clip = folder_.Read("clip.mp4");
    for (const Addition& each : additions)
        EXPECT_NE(made::BoxAt(clip, each.place).find(each.box), std::string_view::npos) << each.place;
    EXPECT_EQ(clip.find(ofFile), clip.size() - ofFile.size());
    for (const char* const path : {"moov/trak/mdia/minf/stbl/stsd", "moov/trak/mdia/hdlr", "ftyp"})
        EXPECT_EQ(made::BoxAt(clip, path), made::BoxAt(bytes, path));
    EXPECT_EQ(NumbersOf(made::Decode(clip_)), Range(30, 60));
}

TEST_F(RemuxTest, CutsAcrossEdits) {
    Put(Capture());
    // First the frames from 60 on, then those from 15 on, in units of 1000 and 15360 a second.
    std::string edits("\0\0\0\0\0\0\0\2\0\0\1\xf4\0\0\x7c\0\0\1\0\0\0\0\1\xf4\0\0\x22\0\0\1\0\0", 32);
    const std::string bytes = made::WithContent(folder_.Read("source.mp4"), "moov/trak/edts/elst", edits);
    const std::string source = folder_.Write("source.mp4", bytes);
    const std::vector<int> shown = NumbersOf(made::Decode(source));
    std::vector<int> expected = Range(60, 75);
    for (const int number : Range(15, 30))
        expected.push_back(number);
    ASSERT_EQ(shown, expected);
    ASSERT_EQ(library_.Remux(source, clip_, 5.0 / kFps, 25.0 / kFps), 0);
    EXPECT_EQ(NumbersOf(made::Decode(clip_)), std::vector<int>(expected.begin() + 5, expected.begin() + 25));
}

std::string Big(uint64_t value, size_t size) {
    std::string bytes;
    while (size-- > 0)
        bytes += static_cast<char>(value >> 8 * size);
    return bytes;
}

// Most of the file is a hole.
TEST_F(RemuxTest, CutsFromFarBehindInALargeFile) {
    constexpr uint64_t kHole = uint64_t{5} << 30;
    made::Video video;
    video.audioLanguages = {};
    Put(video);
    std::string bytes = folder_.Read("source.mp4");
    const char* const path = "moov/trak/mdia/minf/stbl/stco";
    const std::string places(made::BoxAt(bytes, path));
    std::string far = places.substr(0, 8);
    for (size_t at = 8; at < places.size(); at += 4) {
        uint64_t place = 0;
        for (const char each : places.substr(at, 4))
            place = place << 8 | static_cast<unsigned char>(each);
        far += Big(place + kHole, 8);
    }
    bytes = made::WithContent(bytes, path, far);
    bytes.replace(bytes.rfind("stco"), 4, "co64");
    const size_t start = made::Boxes(bytes).front().end;
    folder_.Write("source.mp4", bytes.substr(0, start) + Big(1, 4) + "free" + Big(kHole, 8));
    std::fstream file(folder_ / "source.mp4", std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(static_cast<std::streamoff>(start + kHole)) << bytes.substr(start) << std::flush;
    ASSERT_TRUE(file.good());
    ASSERT_EQ(library_.Remux(folder_ / "source.mp4", clip_, 20.0 / kFps, 40.0 / kFps), 0);
    EXPECT_EQ(NumbersOf(made::Decode(clip_)), Range(20, 40));
}

// The picture becomes whole bit by bit, column by column, again and again.
TEST_F(RemuxTest, BeginsWhereAGradualRefreshIsComplete) {
    made::VariedVideo video;
    video.encoder = "libx264";
    video.options = "preset=veryfast:intra-refresh=1";
    video.frames = 90;
    video.keyInterval = 10;
    const std::string source = folder_ / "source.mp4";
    made::Write(video, source);
    const std::vector<made::ShownFrame> frames = made::Decode(source).frames;
    const std::string bytes = folder_.Read("source.mp4");
    const char* const path = "moov/trak/mdia/minf/stbl/stss";
    struct Case {
        const char* what;
        std::string keyframes;
        int mostHidden;
    };
    const Case cases[] = {
        {"where they begin", std::string(made::BoxAt(bytes, path)), 29},
        {"the first alone", "\0\0\0\0\0\0\0\1\0\0\0\1"s, 45},
        {"none", std::string(8, '\0'), 29},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        folder_.Write("source.mp4", made::WithContent(bytes, path, each.keyframes));
        for (const size_t first : {45, 47, 50, 53}) {
            ASSERT_EQ(library_.Remux(source, clip_, frames[first].time, frames[first + 10].time), 0);
            const made::Decoded clip = made::Decode(clip_);
            ASSERT_EQ(clip.frames.size(), 10u);
            for (size_t i = 0; i < 10; ++i)
                EXPECT_EQ(clip.frames[i].hash, frames[first + i].hash) << first << " " << i;
            EXPECT_LE(clip.hiddenAtStart, each.mostHidden + static_cast<int>(first) - 45);
        }
    }
}

TEST_F(RemuxTest, LeavesOutATrackThatHasEnded) {
    made::VariedVideo video;
    video.encoder = "libx264";
    video.frames = 90;
    video.sounds = {{"aac", "", 48000, 0, 1}, {"aac", "", 48000, 0, 3}};
    const std::string source = folder_ / "source.mp4";
    made::Write(video, source);
    ovsxcodeapi::RemuxBlock block = CodecLibrary::Block(source, clip_, 1.5, 2.5);
    ovsxcodeapi::RemuxParams params;
    params.block = &block;
    ASSERT_EQ(library_.Run(params), 0);
    EXPECT_EQ(block.leftOut, 1u);
    EXPECT_EQ(made::Decode(clip_).ids, (std::vector<int>{1, 3}));
}

TEST_F(RemuxTest, TakesThePlaceOfAnOlderFile) {
    folder_.Write("clip.mp4", std::string(100000, 'x'));
    const std::string source = Put(Capture());
    chmod(source.c_str(), 0440);
    ASSERT_EQ(library_.Remux(source, clip_, 1, 2), 0);
    EXPECT_EQ(NumbersOf(made::Decode(clip_)), Range(30, 60));
    struct stat status {};
    ASSERT_EQ(stat(clip_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST_F(RemuxTest, EachFailureHasItsValueAndLeavesNothing) {
    made::Video front = Capture();
    front.moovInFront = true;
    made::Video sound = Capture();
    sound.hasVideo = false;
    const std::string source = Put(front);
    const std::string bytes = folder_.Read("source.mp4");
    folder_.Write("cut.mp4", bytes.substr(0, bytes.size() - 1000));
    folder_.Write("headless.mp4", bytes.substr(0, 200));
    folder_.Write("text.mp4", "This is no video.");
    fs::copy_file(made::Path(sound), folder_ / "sound.mp4");
    made::Video other;
    other.format = "matroska";
    fs::copy_file(made::Path(other), folder_ / "video.mkv");
    std::string encrypted = bytes;
    encrypted.replace(bytes.find("avc1\0\0\0\0"s), 4, "encv");
    folder_.Write("encrypted.mp4", encrypted);
    std::string elsewhere = bytes;
    elsewhere.replace(bytes.find("url \0\0\0\1"s), 8, "url \0\0\0\0"s);
    folder_.Write("elsewhere.mp4", elsewhere);
    fs::create_hard_link(source, folder_ / "link.mp4");
    fs::create_symlink("nowhere", folder_ / "symlink.mp4");
    folder_.MakeFolder("folder.mp4");
    const std::set<std::string> names = Names();
    struct Case {
        const char* input;
        const char* output;
        double start, end;
        int32_t value;
    };
    const Case cases[] = {
        {"source.mp4", "clip.mp4", 1, 1, -7},    {"source.mp4", "clip.mp4", 2, 1, -7},
        {"source.mp4", "clip.mp4", 3.1, 5, -7},  {"missing.mp4", "clip.mp4", 1, 2, -5},
        {"folder.mp4", "clip.mp4", 1, 2, -5},    {"text.mp4", "clip.mp4", 1, 2, -1},
        {"headless.mp4", "clip.mp4", 1, 2, -2},  {"cut.mp4", "clip.mp4", 1, 3, -2},
        {"sound.mp4", "clip.mp4", 1, 2, -8},     {"source.mp4", "missing/clip.mp4", 1, 2, -10},
        {"source.mp4", "folder.mp4", 1, 2, -10}, {"source.mp4", "symlink.mp4", 1, 2, -10},
        {"video.mkv", "clip.mp4", 1, 2, -1},     {"encrypted.mp4", "clip.mp4", 1, 2, -1},
        {"elsewhere.mp4", "clip.mp4", 1, 2, -1}, {"source.mp4", "source.mp4", 1, 2, -21},
        {"source.mp4", "link.mp4", 1, 2, -21},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(library_.Remux(folder_ / each.input, folder_ / each.output, each.start, each.end),
                  each.value)
            << each.input << " " << each.output;
        EXPECT_EQ(Names(), names);
    }
    EXPECT_EQ(folder_.Read("source.mp4"), bytes);
}

TEST_F(RemuxTest, AFullDiskLeavesNothing) {
    const std::string source = Put(Capture());
    folder_.Write("clip.mp4", "older");
    for (const rlim_t limit : {0u, 10000u, 30000u}) {
        const FileSizeLimit full(limit);
        EXPECT_EQ(library_.Remux(source, clip_, 0, 3), -10) << limit;
        EXPECT_EQ(Names(), (std::set<std::string>{"clip.mp4", "source.mp4"}));
        EXPECT_EQ(folder_.Read("clip.mp4"), "older");
    }
}

TEST_F(RemuxTest, SpoiltFilesEndInAValue) {
    made::Video video = Capture();
    video.moovInFront = true;
    Put(video);
    const std::string whole = folder_.Read("source.mp4");
    std::mt19937 random(1);  // NOLINT(bugprone-random-generator-seed)
    for (int round = 0; round < 150; ++round) {
        std::string spoilt = whole;
        for (unsigned flips = 1 + random() % 8; flips > 0; --flips)
            spoilt[random() % 12000] = static_cast<char>(random());
        const int32_t value =
            library_.Remux(folder_.Write("spoilt.mp4", spoilt), clip_, 1, 2, round % 2 == 0);
        EXPECT_EQ(folder_.Has("clip.mp4"), value == 0);
        fs::remove(clip_);
        EXPECT_EQ(Names().size(), 2u);
    }
}

TEST_F(RemuxTest, RecordsThatAreNoneAreRefused) {
    const std::string source = Put(Capture());
    ovsxcodeapi::RemuxBlock block = CodecLibrary::Block(source, clip_, 1, 2);
    ovsxcodeapi::RemuxParams good;
    good.block = &block;
    ovsxcodeapi::RemuxParams bad[] = {good, good, good, good};
    bad[0].version = 0;
    bad[1].kind = 0;
    bad[2].blockSize = 0;
    bad[3].block = nullptr;
    for (const ovsxcodeapi::RemuxParams& params : bad)
        EXPECT_EQ(library_.Run(params), -20);
    std::fill(std::begin(block.input), std::end(block.input), L'x');
    EXPECT_EQ(library_.Run(good), -20) << "a text without an end";
    library_.Shutdown();
    EXPECT_EQ(library_.Remux(source, clip_, 1, 2), -22);
}

}  // namespace
