// What is found when a clip is opened again.
#include <cstdio>
#include <memory>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "base/FileDescriptor.h"
#include "libraries/ovnx-media/Ffmpeg.h"
#include "libraries/ovnx-media/cut/ClipCheck.h"
#include "sample-media/MadeMedia.h"

namespace {

using namespace ovnxmedia;

TEST(ClipCheckTest, FindsWhateverDiffersFromTheSource) {
    PrepareFfmpeg();
    const Budget budget;
    const KXP::FileDescriptor input(open(made::Path({}).c_str(), O_RDONLY | O_CLOEXEC));
    SourceMovie source(input.get(), budget);
    std::vector<ClipTrack> tracks;
    for (const SourceTrack& track : source.tracks())
        tracks.push_back(CutTrack(track, {1, 1}, {2, 1}, source.file(), budget));
    ASSERT_EQ(tracks.size(), 2u);
    const ChunkPlan plan = PlanChunks(tracks);
    const std::unique_ptr<FILE, int (*)(FILE*)> clip(std::tmpfile(), std::fclose);
    const int output = fileno(clip.get());
    const MediaPlace base = WriteClip(source, tracks, plan, {10000000, 20000000}, "", output, budget);
    const auto check = [&] { CheckClip(source, tracks, plan, base, output, budget); };
    ASSERT_NO_THROW(check());
    SourceFile written(output);
    const std::string bytes = ReadRange(written, 0, written.size());
    struct Fault {
        const char* what;
        size_t at;
    };
    const Fault faults[] = {
        {"the first sample", base},
        {"the last sample", bytes.size() - 1},
        {"the video's description", bytes.find("avcC") + 12},
        {"the sound's description", bytes.find("esds") + 20},
        {"the place of the first samples", bytes.find("stco") + 14},
        {"the size of a sample", bytes.find("stsz") + 18},
        {"the type of a track", bytes.rfind("trak")},
        {"the type of the movie", bytes.find("moov")},
    };
    for (const Fault& fault : faults) {
        SCOPED_TRACE(fault.what);
        const char other = static_cast<char>(bytes[fault.at] ^ 1);
        ASSERT_EQ(pwrite(output, &other, 1, static_cast<off_t>(fault.at)), 1);
        try {
            check();
            ADD_FAILURE() << "was not found";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.status(), OVNX_MEDIA_UNFAITHFUL) << failure.what();
        }
        ASSERT_EQ(pwrite(output, &bytes[fault.at], 1, static_cast<off_t>(fault.at)), 1);
    }
    ASSERT_NO_THROW(check());
}

}  // namespace
