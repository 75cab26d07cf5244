// Seeds that are whole videos.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/SeedCorpus.h"
#include "sample-media/VariedMedia.h"

namespace {

made::VariedVideo SmallVideo() {
    made::VariedVideo video;
    video.encoder = "libx264";
    video.options = "preset=ultrafast:intra-refresh=1";
    video.frames = 8;
    video.keyInterval = 3;
    video.width = video.height = 32;
    video.chapters = {0, 0.1};
    return video;
}

void AddVideo(Corpus& corpus, const made::VariedVideo& video, const std::string& path) {
    made::Write(video, path);
    std::ifstream file(path, std::ios::binary);
    corpus.Add(std::string(std::istreambuf_iterator<char>(file), {}));
    std::filesystem::remove(path);
}

void MakeConvert(Corpus corpus, const std::string& path) {
    made::VariedVideo video = SmallVideo();
    video.options = "preset=ultrafast";
    video.bFrames = 2;
    for (const char* format : {"matroska", "flv", "mpegts", "mov"}) {
        video.format = format;
        video.sounds = {{"aac", "", 44100, 0, 0.1}};
        AddVideo(corpus, video, path);
    }
    video.format = "webm";
    video.encoder = "libvpx-vp9";
    video.options = "cpu-used=8:deadline=realtime";
    video.sounds = {{"libopus", "", 48000, 0, 0.1}};
    AddVideo(corpus, video, path);
}

// With reordered frames, sound of two kinds and chapters: whole, in fragments, and with the other container's
// runs.
void MakeRemux(Corpus corpus, const std::string& path) {
    made::VariedVideo video = SmallVideo();
    for (const char* muxing : {"", "movflags=frag_keyframe+delay_moov"})
        for (const char* format : {"mp4", "mov"}) {
            video.format = format;
            video.muxing = muxing;
            video.sounds = {{format == std::string("mov") ? "pcm_s16le" : "aac", "", 8000, 0, 0.2}};
            AddVideo(corpus, video, path);
        }
}

}  // namespace

void MakeVideoSeeds(const std::filesystem::path& root) {
    MakeConvert({root, "convert"}, root / "source");
    MakeRemux({root, "remux"}, root / "source");
}
