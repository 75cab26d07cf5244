// Writes the seed corpus of every fuzz target: MakeSeeds <folder> fills <folder>/<target>/.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "fuzz/SeedBytes.h"
#include "fuzz/SeedCorpus.h"
#include "sample-captures/ExrImage.h"
#include "sample-captures/JpegImage.h"
#include "sample-captures/Mp4Video.h"
#include "sample-captures/PngImage.h"
#include "sample-media/MadeMedia.h"
#include "sample-media/StillFiles.h"
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

// The target labels them itself.
void MakeLabelledPng(Corpus corpus) {
    AddLabelledPngs(corpus);
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

void MakeExif(Corpus corpus) {
    const std::string big("MM\0*\0\0\0\x08\0\2\1\x0F\0\2\0\0\0\1\0\0\0\0\1\x12\0\3\0\0\0\1\0\6\0\0\0\0\0\0",
                          38);
    const std::string little("II*\0\x08\0\0\0\1\0\x12\1\3\0\1\0\0\0\3\0\0\0\0\0\0\0", 26);
    corpus.Add(big);
    corpus.Add(little);
    // A directory elsewhere, at the start and nowhere.
    for (const char* offset : {"\x0C", "\0", "\xFF"})
        corpus.Add(std::string(little).replace(4, 1, offset, 1).insert(8, "gap."));
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

// Whole pictures, with and without Exif data of either byte order.
void MakeImportMarks(Corpus corpus) {
    for (const std::string& picture : OneOfEach())
        if (picture.size() < 4000) corpus.Add(picture);
    const std::string jpeg = samples::JpegImage(8, 8, {});
    for (const char* order : {"MM\0*\0\0\0\x08\0\1\1\x12\0\3\0\0\0\1\0\6\0\0\0\0\0\0",
                              "II*\0\x08\0\0\0\1\0\x12\1\3\0\1\0\0\0\3\0\0\0\0\0\0\0"}) {
        const std::string exif = std::string("Exif\0\0", 6) + std::string(order, 26);
        corpus.Add(std::string(jpeg).insert(20, "\xFF\xE1" + U16(34) + exif));
    }
}

std::string Track() {
    return Mp4Box("trak", Mp4Box("tkhd", std::string(84, '\0')));
}

// Movies with room within, after, and elsewhere; with what others have put into their user data; in
// fragments; and with what an interrupted engraving leaves.
void MakeEngrave(Corpus corpus) {
    const std::string header = Mp4Box("mvhd", std::string(100, '\0'));
    const std::string room = Mp4Box("free", std::string(300, 'f'));
    const std::string frames = Mp4Box("mdat", "frames");
    const std::string userData =
        Mp4Box("udta", Mp4Box("name", "n") + Mp4Box("tagc", "{}") + std::string(4, '\0'));
    const std::string movie = Mp4Box("moov", header + Track() + userData);
    corpus.Add(captures::FileType() + movie + frames);
    corpus.Add(captures::FileType() + movie + room + frames);
    corpus.Add(captures::FileType() + frames + movie);
    corpus.Add(captures::FileType() + Mp4Box("moov", header + room + Track() + userData + userData) + frames);
    corpus.Add(room + room + frames + Mp4Box("moov", header + Track()) + frames);
    corpus.Add(movie + Mp4Box("moof", "m") + frames);
    corpus.Add(movie + room + Mp4Box("moof", "m") + frames);
    corpus.Add(movie + Mp4Box("udta", "") + frames);
    corpus.Add(movie + frames + movie + U32(900) + "moov");
    corpus.Add(Mp4Box("tagc", "") + movie + frames);
    corpus.Add(captures::FileType() + Mp4Box("moov", header + Mp4Box("tagc", "{}") + Track()) + frames);
    corpus.Add(U32(1) + "moov" + U64(16 + header.size() + Track().size()) + header + Track() + frames);
}

std::string Table(const char* type, std::initializer_list<uint32_t> numbers) {
    std::string content = U32(0);
    for (const uint32_t number : numbers)
        content += U32(number);
    return Mp4Box(type, content);
}

void MakeSampleTable(Corpus corpus) {
    const std::string durations = Table("stts", {2, 3, 512, 2, 1024});
    const std::string chunks = Table("stsc", {2, 1, 2, 1, 2, 1, 1}) + Table("stco", {3, 1000, 2000, 3000});
    const std::string sizes = Table("stsz", {0, 5, 10, 20, 30, 40, 50});
    const std::string shifts = Table("ctts", {3, 1, 1024, 2, 0xFFFFFE00, 1, 0});
    const std::string groups = Table("sbgp", {0x726F6C6C, 1, 5, 1}) + Table("sgpd", {0x726F6C6C, 2, 1, 0});
    corpus.Add("0" + durations + chunks + sizes);
    corpus.Add("0" + durations + chunks + sizes + shifts + Table("stss", {2, 1, 4}) + groups);
    corpus.Add("0" + durations + Table("stsc", {1, 1, 3, 1}) + Table("co64", {2, 0, 1000, 1, 0}) +
               Table("stz2", {4, 6, 0x12345678}) + Table("stss", {0}) + Table("stps", {1, 2}));
    const std::string sound = std::string(16, '\0') + std::string("\0\2\0\x10", 4) + std::string(8, '\0');
    corpus.Add("1" + Table("stts", {1, 100, 1}) + chunks + Table("stsz", {1, 5}) +
               Mp4Box("stsd", U32(0) + U32(1) + Mp4Box("sowt", sound)));
}

void MakePictureHead(Corpus corpus) {
    for (const std::string& file : OneOfEach())
        corpus.Add(file);
    std::string tiled = stillfiles::Exr(20, 10, {}, [](size_t, int, int) { return 1.0F; });
    corpus.Add(tiled.replace(5, 1, "\2"));
    AddPictureHeads(corpus);
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

void MakeStillThumbnail(Corpus corpus) {
    for (const std::string& file : OneOfEach())
        corpus.Add(file);
    const std::string exif("MM\0*\0\0\0\x08\0\1\1\x12\0\3\0\0\0\1\0\6\0\0", 22);
    corpus.Add(OneOfEach()[0].insert(33, samples::PngChunk("eXIf", exif)));
    corpus.Add(OneOfEach()[3].insert(2, "\xFF\xE1" + U16(30) + std::string("Exif\0\0", 6) + exif));
}

void MakeSharedThumbnail(Corpus corpus) {
    const auto add = [&corpus](const std::string& texts) {
        corpus.Add(samples::PngImage(64, 32, {{1, 2, 3}, {4, 5, 6}}, {texts}));
    };
    const std::string time = captures::PngText("Thumb::MTime", "1");
    add(captures::PngText("Thumb::URI", "file:///a") + time + captures::PngText("Thumb::Size", "2"));
    add(samples::PngChunk("iTXt", std::string("Thumb::URI\0\0\0\0\0file:///a", 24)) + time);
    // "file:///a" as zlib packs it without compression.
    add(samples::PngChunk(
            "zTXt", std::string("Thumb::URI\0\0\x78\1\1\x09\0\xF6\xFF", 19) + "file:///a" + U32(0x0F6302C9)) +
        time);
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

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: MakeSeeds <folder>\n");
        return 2;
    }
    try {
        const std::filesystem::path root = argv[1];
        MakeTextSeeds(root);
        MakeHostSeeds(root);
        MakePng({root, "png"});
        MakeJpeg({root, "jpeg"});
        MakeLabelledPng({root, "labelledpng"});
        MakeMp4({root, "mp4"});
        MakeExif({root, "exif"});
        MakeEngrave({root, "engrave"});
        MakeImportMarks({root, "importmarks"});
        MakeSampleTable({root, "sampletable"});
        MakePictureHead({root, "picturehead"});
        MakeMp4Header({root, "mp4header"});
        MakeImageSize({root, "imagesize"});
        MakeXmp({root, "xmp"});
        MakeMetadataBlock({root, "metadatablock"});
        MakeStillThumbnail({root, "still_thumbnail"});
        MakeSharedThumbnail({root, "shared_thumbnail"});
        MakeVideoFrame({root, "video_frame"});
        MakeVideoSeeds(root);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
