#include "tests/matrix/MatrixFiles.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace matrix {
namespace {

constexpr char kMp4[] = "mp4";
constexpr char kMov[] = "mov";

struct VideoRow {
    const char* name;
    const char* encoder;
    const char* options;
    const char* pixels;
    int bFrames;
    const char* only = nullptr;  // the one container that takes it
};

constexpr VideoRow kVideos[] = {
    {"H.264 baseline", "libx264", "preset=ultrafast:profile=baseline", "yuv420p", 0},
    {"H.264 main", "libx264", "preset=veryfast:profile=main:x264-params=log=-1", "yuv420p", 2},
    {"H.264 high, open groups", "libx264", "preset=veryfast:x264-params=open-gop=1\\:log=-1", "yuv420p", 3},
    {"H.264 high 10", "libx264", "preset=veryfast:profile=high10", "yuv420p10le", 2},
    {"H.264 high 4:4:4", "libx264", "preset=veryfast", "yuv444p", 2},
    {"H.264 gradual refresh", "libx264", "preset=veryfast:intra-refresh=1", "yuv420p", 0},
    {"HEVC main, open groups", "libx265",
     "preset=ultrafast:x265-params=log-level=none\\:pools=none\\:frame-threads=1\\:open-gop=1", "yuv420p", 3},
    {"HEVC main 10", "libx265",
     "preset=ultrafast:x265-params=log-level=none\\:pools=none\\:frame-threads=1\\:open-gop=0", "yuv420p10le",
     2},
    {"AV1", "libaom-av1", "cpu-used=8:usage=realtime", "yuv420p", 0, kMp4},
    {"AV1 with hidden frames", "libaom-av1", "cpu-used=8:lag-in-frames=8", "yuv420p", 0, kMp4},
    {"VP9", "libvpx-vp9", "cpu-used=8:deadline=realtime", "yuv420p", 0, kMp4},
    {"VP9 with hidden frames", "libvpx-vp9", "cpu-used=5:lag-in-frames=10:auto-alt-ref=1", "yuv420p", 0,
     kMp4},
    {"VP9 of 10 bits", "libvpx-vp9", "cpu-used=8:deadline=realtime:profile=2", "yuv420p10le", 0, kMp4},
    {"MPEG-4", "mpeg4", "", "yuv420p", 0},
    {"MPEG-4 with B frames", "mpeg4", "", "yuv420p", 2},
    {"MJPEG", "mjpeg", "", "yuvj420p", 0},
    {"ProRes", "prores_ks", "profile=standard", "yuv422p10le", 0, kMov},
    {"ProRes 4444", "prores_ks", "profile=4444", "yuv444p10le", 0, kMov},
};

struct SoundRow {
    const char* encoder;
    const char* options;
    int rate;
    double tolerance;
    const char* only = nullptr;
};

constexpr SoundRow kSounds[] = {
    {"aac", "aac_pns=0", 48000, 1e-4},
    {"aac", "aac_pns=0", 44100, 1e-4},
    {"ac3", "", 48000, 1e-4},
    {"eac3", "", 48000, 1e-4},
    {"libopus", "", 48000, 2e-2, kMp4},
    {"libmp3lame", "", 44100, 1e-4},
    {"flac", "", 48000, 0, kMp4},
    {"alac", "", 44100, 0},
    {"pcm_s16le", "", 48000, 0, kMov},
    {"pcm_s24le", "", 48000, 0, kMov},
    {"pcm_f32le", "", 44100, 0, kMov},
    {"pcm_s16be", "", 8000, 0, kMov},
    {"adpcm_ima_qt", "", 44100, 1e-2, kMov},
};

struct Structure {
    const char* name;
    const char* muxing;
};

constexpr Structure kStructures[] = {
    {"moov behind", ""},
    {"moov in front", "movflags=faststart"},
    {"fragments", "movflags=frag_keyframe+empty_moov+default_base_moof"},
    {"fragments of half a second", "frag_duration=500000:movflags=delay_moov"},
    {"negative offsets", "movflags=negative_cts_offsets"},
    {"a coarse unit of the movie", "write_tmcd=0:movie_timescale=600"},
};

struct Container {
    const char* format;
    const char* encoders;  // that it takes, each between two spaces
    int rate = 0;          // of its sound, if it takes but one
};

constexpr Container kContainers[] = {
    {"matroska",
     " libx264 libx265 libaom-av1 libvpx-vp9 mpeg4 mjpeg aac ac3 eac3 libopus libmp3lame flac alac "},
    {"webm", " libaom-av1 libvpx-vp9 libopus "},
    {"mpegts", " libx264 libx265 mpeg4 aac ac3 eac3 libmp3lame "},
    {"flv", " libx264 aac libmp3lame ", 44100},
};

bool Takes(const Container& container, const std::string& encoder) {
    return std::string(container.encoders).find(" " + encoder + " ") != std::string::npos;
}

template <typename Row, size_t Count>
const Row& Drawn(const Row (&rows)[Count], std::mt19937& random) {
    return rows[random() % Count];
}

bool Takes(const char* only, const std::string& format) {
    return !only || only == format;
}

void AddSounds(File& file, std::mt19937& random) {
    made::VariedVideo& video = file.video;
    const double length = video.start + video.frames / 29.97;
    for (unsigned left = random() % 4; left > 0;) {
        const SoundRow& row = Drawn(kSounds, random);
        if (!Takes(row.only, video.format)) continue;
        --left;
        made::VariedSound sound{row.encoder, row.options, row.rate, 0, length};
        const unsigned kind = random() % 5;
        if (kind == 0) sound.start = length / 2;
        if (kind == 1) sound.end = length / 2;
        video.sounds.push_back(sound);
        file.soundTolerance = std::max(file.soundTolerance, row.tolerance);
        file.name += std::string(", ") + row.encoder + (kind == 0 ? " late" : kind == 1 ? " early" : "");
    }
}

}  // namespace

File FileOf(unsigned number, std::mt19937& random) {
    const VideoRow& row = kVideos[number % std::size(kVideos)];
    File file{{}, row.name, 0};
    made::VariedVideo& video = file.video;
    video.encoder = row.encoder;
    video.options = row.options;
    video.pixels = row.pixels;
    video.bFrames = row.bFrames;
    video.seed = static_cast<uint32_t>(random());
    video.format = row.only ? row.only : random() % 2 == 0 ? kMp4 : kMov;
    const Structure& structure = Drawn(kStructures, random);
    video.muxing = structure.muxing;
    video.frames = 20 + static_cast<int>(random() % 60);
    video.keyInterval = 5 + static_cast<int>(random() % 20);
    // Some players leave out a keyframe at the very end.
    if ((video.frames - 1) % video.keyInterval == 0) ++video.frames;
    // Of frames that are reordered at a variable rate one encoder makes wrong times, and the muxer between
    // fragments.
    const bool isWrong = video.encoder == "mpeg4" || video.muxing.find("frag") != std::string::npos;
    video.variableRate = random() % 4 == 0 && !(isWrong && row.bFrames > 0);
    video.rotation = static_cast<int>(random() % 4) * 90;
    video.isHdr = random() % 4 == 0;
    if (random() % 4 == 0) video.start = 0.35;
    file.name += ", " + video.format + ", " + structure.name + (video.variableRate ? ", variable rate" : "") +
                 (video.start > 0 ? ", begins late" : "") + (video.isHdr ? ", HDR" : "");
    if (random() % 3 == 0) video.chapters = {0, 0.3, 0.8, 1.5};
    AddSounds(file, random);
    // The muxer knows those only by their first packets.
    const bool isLate = file.name.find("ac3") != std::string::npos;
    if (const size_t at = video.muxing.find("empty_moov"); isLate && at != std::string::npos)
        video.muxing.replace(at, 10, "delay_moov");
    return file;
}

std::vector<made::VariedVideo> InOtherContainers(const made::VariedVideo& video) {
    std::vector<made::VariedVideo> all;
    for (const Container& container : kContainers) {
        if (!Takes(container, video.encoder)) continue;
        made::VariedVideo other = video;
        other.format = container.format;
        other.muxing.clear();
        other.sounds.erase(std::remove_if(other.sounds.begin(), other.sounds.end(),
                                          [&](const made::VariedSound& sound) {
                                              return !Takes(container, sound.encoder) ||
                                                     (container.rate != 0 && sound.rate != container.rate);
                                          }),
                           other.sounds.end());
        if (container.rate != 0 && other.sounds.size() > 1) other.sounds.resize(1);
        all.push_back(other);
    }
    return all;
}

}  // namespace matrix
