// Writes the seed corpus of every fuzz target: MakeSeeds <folder> fills <folder>/<target>/.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "fuzz/SeedBytes.h"
#include "sample-captures/ExrImage.h"
#include "sample-captures/JpegImage.h"
#include "sample-captures/Mp4Video.h"
#include "sample-captures/PngImage.h"
#include "sample-media/MadeMedia.h"
#include "sample-media/StillFiles.h"
#include "sample-media/VariedMedia.h"
#include "tests/support/CaptureBytes.h"

namespace {

using captures::Block;
using samples::Mp4Box;
using samples::U16;
using samples::U32;
using samples::U64;

constexpr std::string_view kInner =
    R"({"DRSAppName":"App","DRSProfileName":"Profile","ShortName":"app","MediaType":"Video","CmsId":-7,)"
    R"("EventTimeStamp":"2020-01-02T03:04:05Z","Name":"n","HighlightName":"hn","Id":"i","HighlightId":"hi",)"
    R"("GroupId":"g","HighlightGroupId":"hg","Tags":1,"HighlightTags":2,"Significance":3,)"
    R"("HighlightSignificance":4294967295})";

// One target's folder; seeds are numbered in the order they are written.
class Corpus {
  public:
    Corpus(const std::filesystem::path& root, const char* target) : folder_(root / target) {
        std::filesystem::create_directories(folder_);
    }

    void Add(std::string_view bytes) {
        std::ofstream file(folder_ / ("seed" + std::to_string(++count_)), std::ios::binary);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!file.flush()) throw std::runtime_error("cannot write " + folder_.string());
    }

  private:
    std::filesystem::path folder_;
    int count_ = 0;
};

void MakeCloudManifest(Corpus corpus) {
    const std::string digest = R"("sha256":")" + std::string(64, 'a') + "\"";
    corpus.Add(R"({"MontageConfig.json":[{"path":"MontageConfig.json","size":1,)" + digest +
               R"(}],"media":[],"release":[{"path":"a/b.js","size":4294967296,)" + digest +
               R"(,"more":[{"path":["x"]},-1.5e-3,null,true]}]})");
    corpus.Add(R"({"media":[{"path":"a/../../b","size":-1,)" + digest + "}]}");
    corpus.Add(R"({"media":[{"path":"\u002e\u002e/\u0000\ud83d\ude00","size":1,)" + digest + "}]}");
    corpus.Add("{}");
    corpus.Add("{\"\xE0");
}

void MakePng(Corpus corpus) {
    using captures::Png;
    using captures::PngText;
    const std::string block = Block("Ovirastream SHARE", kInner);
    corpus.Add(Png(PngText("Source", "ZORVEX")));
    corpus.Add(Png(PngText("Software", "Ovirastream SHARE 1.0") + PngText("DRSName", "Name") +
                   PngText("DRSProfileName", "Profile") + PngText("Description", block)));
    corpus.Add(Png(seeds::PngXmp(seeds::Xmp("Ovirastream SDK", block))));
    corpus.Add(Png(samples::PngChunk("tEXt", "DRSName") + samples::PngChunk("iTXt", "XML:com.adobe.xmp")));
    corpus.Add(
        Png(samples::PngChunk("eXIf", std::string(4097, 'x')) + PngText("Software", "Ovirastream LUMIS")));
    const std::string sdk = PngText("Software", "Ovirastream SDK");
    const std::string other = PngText("Source", "OTHERS");
    std::string chunks;
    for (int i = 0; i < 5; ++i, chunks += samples::PngChunk("gAMA", "1234"))
        corpus.Add(Png(chunks + sdk + PngText("Source", "ZORVEX")));
    corpus.Add(Png(chunks + sdk));
    corpus.Add(Png(chunks + other + sdk));
    corpus.Add(Png(samples::PngChunk("IDAT", "") + sdk));
    corpus.Add(Png(PngText("DRSName", "Name") + PngText("DRSProfileName", "Profile") + sdk));
    corpus.Add(Png(other + PngText("Source", "ZORVEX")));
    std::string text("Software\0Ovirastream SHARE", 26);
    for (const size_t size : {4096, 4097}) {
        text.resize(size);
        corpus.Add(Png(samples::PngChunk("tEXt", text) + sdk));
    }
    corpus.Add(Png(U32(0xFFFFFFFC) + "fake" + sdk));
}

void MakeJpeg(Corpus corpus) {
    using seeds::FrameHeader;
    using seeds::Jpeg;
    using seeds::ValuesAt;
    corpus.Add(seeds::OwnJpeg(1080, 1920));
    corpus.Add(seeds::OwnJpeg(8192, 8193));
    corpus.Add(Jpeg({{0x0110, 6, ValuesAt(4)},
                     {0x0131, 18, ValuesAt(4) + 6},
                     {0x000B, 4, ValuesAt(4) + 24},
                     {0xC6F6, 600, 0xFFFFFFFF}},
                    std::string("Lumis\0Ovirastream SHARE\0Name360Stereo", 37), "\xFF\xFF\xDB" + U16(2)));
    const std::string frame = FrameHeader(1080, 1920);
    corpus.Add(Jpeg({{0x010F, 3, 0}, {0x0110, 6, ValuesAt(2)}}, "Lumis", frame));
    corpus.Add(Jpeg({{0x0110, 9, ValuesAt(2)}, {0x010F, 3, 0}}, "ZvCamera", frame));
    corpus.Add(Jpeg({{0x010F, 7, ValuesAt(2)}, {0x010F, 7, 0}}, "ZORVEX", frame));
    corpus.Add(Jpeg({{0x010F, 7, ValuesAt(2)}, {0x010F, 5, 0}}, "ZORVEX", frame));
    corpus.Add(Jpeg({{0x0131, 5, 0}, {0x0131, 18, ValuesAt(2)}}, "Ovirastream SHARE", frame));
    corpus.Add(Jpeg({{0x000B, 512, 472}, {0xC6F6, 513, 0}, {0x010F, 9, ValuesAt(3)}}, "ZvCamera", frame));
    for (const uint16_t first : {25, 26, 27, 492, 493})
        corpus.Add(seeds::OwnJpeg(1, 1).replace(4, 2, U16(first)));
    // A subtype before a name, in place of the second entry.
    corpus.Add(Jpeg({{0x010F, 7, ValuesAt(3)}, {}, {0x000B, 4, ValuesAt(3) + 7}}, "ZORVEX.Name", frame)
                   .replace(seeds::kTiffBase + 22, 12, "Stereo......"));
    std::string late = seeds::OwnJpeg(1, 1);
    corpus.Add(late.replace(496, 16, "SuperResolution."));
    corpus.Add(late.replace(496, 16, "\0SuperResolution", 16));
    for (const std::string& between : {"\xFF\xC4" + U16(2) + "\xFF\xC8" + U16(3) + "x", "\xFF\xE1" + U16(1),
                                       std::string("\xFF\xD9"), "\xFF\xDA" + U16(2)})
        corpus.Add(std::string("\xFF\xD8").append(between).append(frame));
}

void MakeMp4(Corpus corpus) {
    const std::string block = Block("Ovirastream SDK", kInner);
    corpus.Add(captures::FileType() + captures::Movie(block) + Mp4Box("mdat", "frames"));
    corpus.Add(captures::FileType() + U32(1) + "mdat" + U64(24) + "8 bytes." +
               captures::Movie(Block("Ovirastream SHARE", "{}")));
    corpus.Add(Mp4Box("moov", Mp4Box("moov", Mp4Box("udta", Mp4Box("tagc", "{\"Source\":1}")))));
    corpus.Add(U32(1) + "free" + U64(UINT64_MAX));
    corpus.Add(U32(7) + "free");
    corpus.Add(U32(0) + "mdat");
    const std::string tags = Mp4Box("tagc", block);
    corpus.Add(Mp4Box("udta", Mp4Box("tagc", "{}") + "{}" + tags));
    corpus.Add(Mp4Box("udta", "") + captures::Movie(block));
    corpus.Add(Mp4Box("moov", "") + Mp4Box("moov", tags));
    corpus.Add(Mp4Box("tagc", std::string(5000, ' ')) + std::string(4096, '\0') + tags);
    corpus.Add(Mp4Box("tagc", block + std::string(4096 - block.size(), ' ') + "x"));
    corpus.Add(U32(2000) + "tagc" + block);
    // The walk would overstep the tags by as much.
    corpus.Add(captures::Movie(block) + std::string(block.size(), ' ') + U32(7) + "free");
    corpus.Add(captures::Movie(Block("Ovirastream SHARE ", kInner)));
    corpus.Add(U32(1) + "mdat" + std::string(7, '\0'));
    for (const uint64_t size : {15, 16, 24})
        corpus.Add(U32(1) + "mdat" + U64(size) + captures::Movie(block));
}

void MakeMp4Header(Corpus corpus) {
    samples::Mp4Options options;
    options.width = options.height = 16;
    options.frames = 1;
    const samples::Gradient colours{{1, 2, 3}, {4, 5, 6}};
    corpus.Add(samples::Mp4Video(options, colours));
    options.moovBehind = true;
    corpus.Add(samples::Mp4Video(options, colours));
    corpus.Add(U32(1) + "mdat" + U64(24) + "8 bytes." +
               Mp4Box("moov", Mp4Box("mvhd", "\1" + std::string(111, '\2')) +
                                  Mp4Box("trak", Mp4Box("tkhd", std::string(96, '\1')))));
    corpus.Add(U32(1) + "moov" + U32(16) + "mvhd" + std::string(200, '\0'));
    for (const uint64_t size : {uint64_t{15}, uint64_t{16}, uint64_t{INT64_MAX}, UINT64_MAX})
        corpus.Add(Mp4Box("free", "") + U32(1) + "wide" + U64(size) + std::string(120, '\0'));
    for (const uint32_t tracks : {3, 4})
        corpus.Add(Mp4Box("moov", Mp4Box("mvhd", std::string(96, '\0') + U32(tracks))) +
                   std::string(120, '\0'));
    for (const size_t size : {76, 80, 88})
        corpus.Add(Mp4Box("moov", Mp4Box("trak", Mp4Box("tkhd", std::string(size, '\1') + U64(size)))) +
                   std::string(120, '\0'));
}

void MakeImageSize(Corpus corpus) {
    const samples::Gradient colours{{1, 2, 3}, {4, 5, 6}};
    corpus.Add(samples::PngImage(16, 9, colours));
    corpus.Add(samples::JpegImage(16, 9, colours));
    corpus.Add(samples::ExrImage(4, 3, colours));
    corpus.Add(std::string("GIF89a\x10\0\x09\0\0\0\0", 13));
    corpus.Add("BM" + std::string(12, '\0') +
               std::string("\x28\0\0\0\x10\0\0\0\xF7\xFF\xFF\xFF\1\0\x18\0", 16));
    corpus.Add("BM" + std::string(12, '\0') + std::string("\x0C\0\0\0\x10\0\x09\0\1\0\x18\0", 12));
    const std::string webP("RIFF\x20\0\0\0WEBP", 12);
    corpus.Add(webP + std::string("VP8X\x0A\0\0\0\0\0\0\0\x0F\0\0\x08\0\0", 18));
    corpus.Add(webP + std::string("VP8 \x0A\0\0\0\0\0\0\x9D\1\x2A\x10\0\x09\0", 18));
    corpus.Add(webP + std::string("VP8L\x05\0\0\0\x2F\x0F\0\2\0", 13));
}

void MakeXmp(Corpus corpus) {
    corpus.Add(seeds::Xmp("Ovirastream SDK", "&lt;a&gt; &amp;&apos;&quot;&#xA;&unknown;&am"));
    corpus.Add("<x:xmpmeta>   </x:xmpmeta>");
    corpus.Add("<p:a <x:xmpmeta b=\"c\"><</x:xmpmeta ><a></b></a>");
}

void MakeMetadataBlock(Corpus corpus) {
    corpus.Add(Block("Ovirastream SDK", kInner));
    corpus.Add(Block("Ovirastream SHARE", R"({"CmsId":"text","Tags":-1,"Name":{"HighlightName":[]}})"));
    corpus.Add(captures::Base64(kInner));
    corpus.Add("{\"B64\":\"e30\"}");
}

void MakeEnvelope(Corpus corpus) {
    corpus.Add(
        R"({"system":"CobalixNative","module":"Gallery","method":"ZvQuery","uniqueid":"1","type":3072})");
    corpus.Add(R"({"system":"Page","module":"Page","method":"M","uniqueid":"2","reference_uniqueid":"1",)"
               R"("source_system":"CobalixNative","source_module":"Gallery","payload":{"_return_code":0,)"
               R"("_return_status":"Success","_return_internal":0}})");
    corpus.Add(R"({"method":"Saved","uniqueid":"3","reference_uniqueid":"Saved","type":3073,"payload":{}})");
    corpus.Add(R"({"system":"","module":1,"method":null,"uniqueid":"4","payload":[]})");
}

void MakeJsonFile(Corpus corpus) {
    corpus.Add(
        "// settings\n{\"a\": [1, -2.5e3, true, null], /* more */ \"b\": {\"c\": "
        "\"\\u00e9\\ud83d\\ude00\"}}\n");
    corpus.Add("\xEF\xBB\xBF{\"a\":\"\xC3\xA9\"}");
    corpus.Add(std::string("\xFF\xFE{\0\"\0a\0\"\0:\0001\0}\0", 16));
    corpus.Add(std::string("\xFE\xFF\0{\0\"\0a\0\"\0:\0001\0}", 16));
}

void MakeHighlights(Corpus corpus) {
    const std::string root = R"("defaultLocale":"en-US","drsName":"a","profileName":"b","shortName":"c"})";
    corpus.Add(R"({"highlights":{"kill":{"significance":1,"highlightTags":-1,"userInterest":true,)"
               R"("userEnabled":false,"name":{"en-US":"Kill","EN-us":"K","pt":""}}},)" +
               root);
    corpus.Add(
        R"({"highlights":{"":{"significance":4294967295,"highlightTags":1,"userInterest":0,"name":{}},)"
        R"("n":{"name":{"en":1}},"x":[]},)" +
        root);
    corpus.Add(R"({"highlights":[],)" + root);
}

void MakeSettings(Corpus corpus) {
    corpus.Add(R"({"settings":{"capEnabled":true,"capSizePercent":50,"currentDirectoryV2":"/g",)"
               R"("tempDirectory":"/t","trackerUpdateState":"CancelUpdate"}})");
    corpus.Add(R"({"settings":{"currentDirectory":"g\u0000","capSizePercent":-5,"trackerUpdateState":"x"}})");
    corpus.Add(R"({"settings":{"currentDirectory":1,"capSizePercent":4294967295,"capEnabled":"on"}})");
    corpus.Add(R"({"settings":{}})");
}

void MakeTrackerFile(Corpus corpus) {
    corpus.Add(
        R"({"UGC":[{"id":1,"path":"/g/a/b.mp4","type":"video","subType":"Highlight","source":"OVS_SDK","sizeKB":9,)"
        R"("date":"d","profileName":"a","drsName":"a","shortName":"s","cmsId":4294967297,"duration":"00:00:15",)"
        R"("msDuration":15000,"audioType":"stereo","highlightDefinitionId":"i","highlightName":"n",)"
        R"("highlightGroupId":"g","highlightTags":1,"highlightSignificance":2,"highlightEventTimeStamp":"t",)"
        R"("meme":{"top":"x","bottom":"y"}}],"apps":[{"appName":"a","recents":[1],"groups":{"g":[1]}}],)"
        R"("info":{"lastUGCIdUsed":1,"version":6,"folderCRC":4294967295}})");
    corpus.Add(
        R"({"UGC":[5,{"meme":[],"id":"1"}],"apps":[{"recents":[1]},{"appName":"\u0000","groups":[]}]})");
    corpus.Add("\x80\xC3(\xED\xA0\x80");
}

// Of every format, and of its ways of storing, one small picture of noise.
std::vector<std::string> OneOfEach() {
    using namespace stillfiles;
    uint32_t state = 1;
    const auto noise = [&state] {
        return static_cast<uint8_t>((state = state * 1664525 + 1013904223) >> 24);
    };
    const auto bytes = [&](uint32_t, uint32_t) {
        return std::array<uint16_t, 4>{noise(), noise(), noise(), noise()};
    };
    const auto colour = [&](int, int) { return Rgb{noise(), noise(), noise()}; };
    const auto light = [&](size_t, int, int) { return static_cast<float>(noise()) / 64; };
    return {Png(19, 13, {}, bytes),
            Png(19, 13, {PNG_COLOR_TYPE_RGB_ALPHA, 16, true}, bytes),
            Png(19, 13, {PNG_COLOR_TYPE_PALETTE, 2},
                [&](uint32_t x, uint32_t) { return std::array<uint16_t, 4>{static_cast<uint16_t>(x % 3)}; }),
            Jpeg(33, 17, TJSAMP_420, 0, colour),
            Jpeg(33, 17, TJSAMP_444, TJFLAG_PROGRESSIVE, colour),
            Jpeg(33, 17, TJSAMP_444, 0, colour, TJPF_CMYK),
            Exr(20, 10, {}, light),
            Exr(20, 10, {Imf::PIZ_COMPRESSION, true, 1, {"R", "G", "B", "A"}, 20}, light),
            Exr(20, 10, {Imf::DWAA_COMPRESSION, false, 2, {"Y"}}, light)};
}

void MakeStillThumbnail(Corpus corpus) {
    for (const std::string& file : OneOfEach())
        corpus.Add(file);
}

void MakeVideoFrame(Corpus corpus) {
    made::Video video;
    video.width = 64;
    video.height = 36;
    video.frames = 6;
    video.keyInterval = 2;
    for (const char* codec : {"libx264", "mpeg4", "mjpeg"})
        for (const char* format : {"mp4", "matroska"}) {
            video.codec = codec;
            video.format = format;
            video.bFrames = codec == std::string("libx264") ? 1 : 0;
            std::ifstream file(made::Path(video), std::ios::binary);
            corpus.Add(std::string(std::istreambuf_iterator<char>(file), {}));
        }
    // A matrix of colours that does not exist.
    video.codec = "mpeg4";
    video.namesMatrix = true;
    std::ifstream file(made::Path(video), std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(file), {});
    constexpr std::string_view kMatrix = "\x55\xB1\x81\x01";
    const size_t at = bytes.find(kMatrix);
    if (at == std::string::npos) throw std::runtime_error("the video names no matrix");
    corpus.Add(bytes.replace(at, kMatrix.size(), "\x55\xB1\x81\x49"));
}

// With reordered frames, sound of two kinds and chapters: whole, in fragments, and with the other container's
// runs.
void MakeRemux(Corpus corpus, const std::string& path) {
    made::VariedVideo video;
    video.encoder = "libx264";
    video.options = "preset=ultrafast:intra-refresh=1";
    video.frames = 8;
    video.keyInterval = 3;
    video.width = video.height = 32;
    video.chapters = {0, 0.1};
    for (const char* muxing : {"", "movflags=frag_keyframe+delay_moov"})
        for (const char* format : {"mp4", "mov"}) {
            video.format = format;
            video.muxing = muxing;
            video.sounds = {{format == std::string("mov") ? "pcm_s16le" : "aac", "", 8000, 0, 0.2}};
            made::Write(video, path);
            std::ifstream file(path, std::ios::binary);
            corpus.Add(std::string(std::istreambuf_iterator<char>(file), {}));
        }
    std::filesystem::remove(path);
}

void MakeEdgeLog(Corpus corpus) {
    corpus.Add(
        R"({"gameName":"g","session":4294967296,"playStarted":"s","playTime":"p","startTime":"a","endTime":"b",)"
        R"("mapFileName":"m","events":[{"time":"t","name":"n","info":"i","round":-1}],)"
        R"("rounds":[{"number":1,"score1":2,"score2":3,"time":"t"}],"metaData":"d"})");
    corpus.Add(R"({"gameName":7,"events":{},"rounds":[]})");
    corpus.Add(R"({"rounds":[{"number":18446744073709551615,"time":"t"}]})");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: MakeSeeds <folder>\n");
        return 2;
    }
    try {
        const std::filesystem::path root = argv[1];
        MakeCloudManifest({root, "cloudmanifest"});
        MakePng({root, "png"});
        MakeJpeg({root, "jpeg"});
        MakeMp4({root, "mp4"});
        MakeMp4Header({root, "mp4header"});
        MakeImageSize({root, "imagesize"});
        MakeXmp({root, "xmp"});
        MakeMetadataBlock({root, "metadatablock"});
        MakeEnvelope({root, "envelope"});
        MakeJsonFile({root, "jsonfile"});
        MakeHighlights({root, "highlights"});
        MakeSettings({root, "settings"});
        MakeTrackerFile({root, "trackerfile"});
        MakeStillThumbnail({root, "still_thumbnail"});
        MakeVideoFrame({root, "video_frame"});
        MakeRemux({root, "remux"}, root / "source");
        MakeEdgeLog({root, "edgelog"});
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
