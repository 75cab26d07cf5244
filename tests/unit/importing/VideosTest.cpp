// Recordings in other containers, from the file to the capture. That every frame is kept, the matrix of
// videos checks.
#include <filesystem>

#include <gtest/gtest.h>

#include "importing/Importer.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"
#include "sample-media/DecodedMedia.h"
#include "sample-media/VariedMedia.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace importing;
using Outcome = Importer::Outcome;

class ImportVideo : public testing::Test {
  protected:
    std::string Make(const std::string& name, const std::string& format, uint32_t seed = 1,
                     bool isProRes = false) const {
        made::VariedVideo video;
        video.encoder = isProRes ? "prores_ks" : "libx264";
        video.options = isProRes ? "profile=standard" : "preset=veryfast:x264-params=log=-1";
        video.pixels = isProRes ? "yuv422p10le" : "yuv420p";
        video.bFrames = isProRes ? 0 : 3;
        video.sounds = {{"aac", "aac_pns=0", 44100, 0, 2}};
        video.format = format;
        video.seed = seed;
        std::filesystem::create_directories(folder_ / "Tide");
        made::Write(video, folder_ / "Tide/" + name);
        return folder_ / "Tide/" + name;
    }

    Importer::Result Import(const std::string& path, const ReadListener& onRead = {}, bool move = false) {
        ImportLedger ledger(folder_ / "Imported.jsonl");
        Importer importer({gallery_, "", "", {}, move, PRODUCT_DEPENDENCIES, onRead}, ledger);
        Importer::Result result = importer.Import(path);
        kept_ = importer.Commit();
        return result;
    }

    std::string Refusal(const std::string& path) {
        try {
            return "imported: " + Import(path).path;
        } catch (const ImportError& error) {
            return error.what();
        }
    }

    std::string Cut(const std::string& path, const std::string& name, double part) const {
        std::string copy = folder_ / "Tide/" + name;
        std::filesystem::copy_file(path, copy);
        std::filesystem::resize_file(
            copy, static_cast<uintmax_t>(static_cast<double>(std::filesystem::file_size(path)) * part));
        return copy;
    }

    const TempFolder folder_;
    const std::string gallery_ = folder_.MakeFolder("gallery");
    std::vector<std::string> kept_;
};

TEST_F(ImportVideo, IsKnownAgainInAnyContainer) {
    const std::string source = Make("a.mkv", "matroska");
    const made::Decoded expected = made::Decode(source);
    const std::string copy = Import(source, {}, true).path;
    EXPECT_EQ(copy, gallery_ + "/Tide/a.mp4");
    EXPECT_TRUE(kept_.empty());
    EXPECT_FALSE(std::filesystem::exists(source));
    media::SniffResult result;
    EXPECT_EQ(media::SniffFile(copy, result), 1);
    EXPECT_EQ(result.drsName, "Tide");
    EXPECT_EQ(made::Decode(copy).frames.size(), expected.frames.size());
    // A transport stream has start codes before the units of H.264, and headers before those of AAC.
    uint32_t seed = 2;
    for (const std::string format : {"matroska", "flv", "mpegts", "mov"}) {
        const std::string converted = Import(Make("from." + format, format, seed++)).path;
        const std::string mp4 = folder_ / "Tide/" + format + ".mp4";
        std::filesystem::copy_file(converted, mp4);
        // By its type no player takes it for anything but what its name says.
        EXPECT_NE(folder_.Read("Tide/" + format + ".mp4").substr(4, 8), "ftypqt  ") << format;
        EXPECT_EQ(Import(mp4).outcome, Outcome::kKnown) << format;
    }
    EXPECT_EQ(Import(Make("other.mp4", "mp4", seed)).outcome, Outcome::kImported);
}

TEST_F(ImportVideo, KeepsASourceWhoseCopyIsAnother) {
    const std::string source = Make("a.mkv", "matroska");
    ImportLedger ledger(folder_ / "Imported.jsonl");
    Importer importer({gallery_, "", "", {}, true, PRODUCT_DEPENDENCIES, {}}, ledger);
    const std::string copy = importer.Import(source).path;
    std::string bytes = folder_.Read("gallery/Tide/a.mp4");
    bytes[bytes.size() / 4] ^= 1;
    folder_.Write("gallery/Tide/a.mp4", bytes);
    EXPECT_EQ(importer.Commit(), std::vector{source});
    EXPECT_TRUE(std::filesystem::exists(source));
}

TEST_F(ImportVideo, TakesWhatACrashHasLeft) {
    const std::string whole = Make("a.mkv", "matroska");
    const made::Decoded expected = made::Decode(whole);
    const made::Decoded copy = made::Decode(Import(Cut(whole, "crashed.mkv", 0.7)).path);
    ASSERT_GT(copy.frames.size(), expected.frames.size() / 3);
    ASSERT_LT(copy.frames.size(), expected.frames.size());
    // The last frames may lack those that they refer to.
    for (size_t i = 0; i + 4 < copy.frames.size(); ++i)
        EXPECT_EQ(copy.frames[i].hash, expected.frames[i].hash) << i;
}

TEST_F(ImportVideo, RefusesByCodecAndLeavesNothing) {
    EXPECT_EQ(Refusal(Make("a.mov", "mov", 1, true)), "its video is prores, which an MP4 does not take");
    const std::string mkv = Make("a.mkv", "matroska");
    const std::string mp4 = Make("a.mp4", "mp4");
    for (const std::string& path : {Cut(mp4, "cut.mp4", 0.9), Cut(mkv, "cut.mkv", 0.01),
                                    folder_.Write("Tide/b.mkv", "\x1A\x45\xDF\xA3nothing")})
        EXPECT_EQ(Refusal(path).find("imported:"), std::string::npos) << path;
    {
        const FileSizeLimit full(20000);
        EXPECT_EQ(Refusal(mkv), "cannot be written: File too large");
    }
    struct Stopped {};
    EXPECT_THROW(Import(mkv, [](uint64_t) { throw Stopped(); }), Stopped);
    EXPECT_TRUE(std::filesystem::is_empty(gallery_));
    EXPECT_EQ(Import(mkv).outcome, Outcome::kImported);
}

}  // namespace
