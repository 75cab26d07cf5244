#include <filesystem>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "importing/GameName.h"
#include "importing/Importer.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"
#include "sample-captures/JpegImage.h"
#include "sample-captures/Mp4Video.h"
#include "sample-captures/PngImage.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace importing;
using samples::Gradient;
using Outcome = Importer::Outcome;

const Gradient kColours{{255, 0, 0}, {0, 0, 255}};
constexpr int64_t kTime = 1234567890123456789;

void SetTime(const std::string& path, int64_t time) {
    const timespec times[2] = {{}, {time / 1000000000, time % 1000000000}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

int64_t TimeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return int64_t{status.st_mtim.tv_sec} * 1000000000 + status.st_mtim.tv_nsec;
}

std::string DigestOfPicture(const std::string& path) {
    return ImportSource(path).DigestOfPicture();
}

class ImporterTest : public testing::Test {
  protected:
    // As a run of its own, which knows what was noted alone.
    Importer::Result Import(const std::string& path, ImportOptions options = {}) {
        ImportLedger ledger(ledger_);
        options.gallery = gallery_;
        options.libraries = PRODUCT_DEPENDENCIES;
        Importer importer(options, ledger);
        Importer::Result result = importer.Import(path);
        kept_ = importer.Commit();
        return result;
    }

    std::string Place(const std::string& path) { return Import(path).path.substr(gallery_.size() + 1); }

    std::string Refusal(const std::string& path, const ImportOptions& options = {}) {
        try {
            return "imported: " + Import(path, options).path;
        } catch (const ImportError& error) {
            return error.what();
        }
    }

    std::string Png(const std::string& name, uint32_t size = 4) {
        return folder_.Write(name, samples::PngImage(size, size, kColours));
    }

    size_t Captures() const {
        size_t count = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(gallery_)) {
            EXPECT_TRUE(entry.is_directory() || entry.file_size() > 0) << entry.path();
            ++count;
        }
        return count;
    }

    const TempFolder folder_;
    const std::string gallery_ = folder_.MakeFolder("gallery");
    const std::string ledger_ = folder_ / "Imported.jsonl";
    std::vector<std::string> kept_;
};

TEST_F(ImporterTest, MakesCapturesOfEachKind) {
    const std::string png = samples::PngImage(4, 4, kColours);
    for (const auto& [name, bytes, game, copy] :
         {std::tuple{"Tide/a.png", png, "Tide", "Tide/a.png"},
          {"Videos/Hill Racer_2026-11-22 10.11.12.mp4", samples::Mp4Video({}, kColours), "Hill Racer",
           "Hill Racer/Hill Racer_2026-11-22 10.11.12.mp4"},
          {"Pictures/Screenshot from 2026-11-22.jpeg", samples::JpegImage(40, 40, kColours), "",
           "Other/Screenshot from 2026-11-22.jpg"},
          {"Tide/20261122.1011", samples::PngImage(5, 5, kColours), "Tide", "Tide/20261122.1011.png"}}) {
        const std::string source = folder_.Write(name, bytes);
        SetTime(source, kTime);
        EXPECT_EQ(Place(source), copy);
        EXPECT_EQ(folder_.Read(name), bytes);
        EXPECT_EQ(TimeOf(gallery_ + "/" + copy), kTime);
        media::SniffResult result;
        EXPECT_EQ(media::SniffFile(gallery_ + "/" + copy, result), 1);
        EXPECT_TRUE(result.isOwn);
        EXPECT_EQ(result.drsName, *game ? game : "Other");
    }
}

TEST_F(ImporterTest, TakesGameHighlightAndDateAsTold) {
    const Importer::Result result =
        Import(Png("Tide/a.png"), {{}, "Rustwind Rally", "Photo finish", -1500000000, false, {}, {}});
    EXPECT_EQ(result.path, gallery_ + "/Rustwind Rally/a.png");
    EXPECT_EQ(TimeOf(result.path), -1500000000);
    media::SniffResult sniffed;
    media::SniffFile(result.path, sniffed);
    EXPECT_EQ(sniffed.highlightName, "Photo finish");
    EXPECT_EQ(sniffed.drsName, "Rustwind Rally");
}

TEST_F(ImporterTest, OverwritesNothingAndKnowsWhatItHasImported) {
    folder_.Write("gallery/Tide/a.png", "mine");
    std::filesystem::create_symlink("nowhere", gallery_ + "/Tide/a (2).png");
    const std::string source = Png("Tide/a.png");
    EXPECT_EQ(Place(source), "Tide/a (3).png");
    EXPECT_EQ(folder_.Read("gallery/Tide/a.png"), "mine");
    // Under its name, under another, with other metadata, and after its capture was deleted.
    const std::string other = folder_.Write(
        "Sea/b.png", samples::PngImage(4, 4, kColours, {samples::PngTextChunk("Comment", "by hand")}));
    std::filesystem::remove(gallery_ + "/Tide/a (3).png");
    for (const std::string& path : {source, other})
        EXPECT_EQ(Import(path).outcome, Outcome::kKnown);
    EXPECT_FALSE(folder_.Has("gallery/Sea"));
    EXPECT_EQ(Place(Png("Sea/b.png", 5)), "Sea/b.png");
}

TEST_F(ImporterTest, OfTwoAtOnceOneHasThePicture) {
    ImportLedger ledgers[] = {ImportLedger(ledger_), ImportLedger(ledger_)};
    const ImportOptions options{gallery_, {}, {}, {}, false, PRODUCT_DEPENDENCIES, {}};
    Importer first(options, ledgers[0]);
    Importer second(options, ledgers[1]);
    EXPECT_EQ(first.Import(Png("Tide/a.png")).outcome, Outcome::kImported);
    EXPECT_EQ(second.Import(Png("Sea/a.png")).outcome, Outcome::kKnown);
    EXPECT_EQ(second.Import(Png("Sea/b.png", 5)).outcome, Outcome::kImported);
    second.Commit();
    EXPECT_EQ(first.Import(Png("Tide/b.png", 5)).outcome, Outcome::kKnown);
    // Another picture of the same name takes the place meanwhile.
    ImportOptions reading = options;
    reading.onRead = [&](uint64_t) {
        if (folder_.Has("gallery/Sun/c.png")) return;
        EXPECT_EQ(second.Import(Png("Pictures/Sun/c.png", 6)).path, gallery_ + "/Sun/c.png");
    };
    Importer third(reading, ledgers[0]);
    EXPECT_EQ(third.Import(Png("Sun/c.png", 7)).path, gallery_ + "/Sun/c (2).png");
    third.Commit();
    second.Commit();
    // Nothing but the ledger stays of them.
    first.Commit();
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
        EXPECT_TRUE(entry.is_directory() || entry.path() == ledger_) << entry.path();
}

TEST_F(ImporterTest, GoesOnAfterAKill) {
    const std::string source = Png("Tide/a.png");
    folder_.Write("gallery/Tide/a.png", "mine");
    EXPECT_EQ(Place(source), "Tide/a (2).png");
    std::filesystem::remove(ledger_);
    EXPECT_EQ(Import(source).outcome, Outcome::kKnown);
    EXPECT_EQ(Captures(), 3);
    // A note that was cut off takes no other with it.
    const std::string noted = folder_.Read("Imported.jsonl");
    folder_.Write("Imported.jsonl", noted + R"({"picture":"12)");
    EXPECT_EQ(Place(Png("Tide/c.png", 6)), "Tide/c.png");
    EXPECT_EQ(Import(source).outcome, Outcome::kKnown);
    EXPECT_EQ(Import(Png("Tide/d.png", 6)).outcome, Outcome::kKnown);
    // The copy of another import, killed while this one reads the picture, which has noted nothing.
    ImportLedger lost(folder_ / "Lost.jsonl");
    ImportOptions options{gallery_, {}, {}, {}, false, PRODUCT_DEPENDENCIES, {}};
    Importer(options, lost).Import(Png("Sea/e.png", 8));
    options.onRead = [&](uint64_t) {
        std::error_code ignored;
        std::filesystem::rename(gallery_ + "/Sea/e.png", gallery_ + "/Sun/e.png", ignored);
    };
    EXPECT_EQ(Import(Png("Sun/e.png", 8), options).outcome, Outcome::kKnown);
    EXPECT_TRUE(folder_.Has("gallery/Sun/e.png") && !folder_.Has("gallery/Sun/e (2).png"));
}

TEST_F(ImporterTest, MovesOnlyWhatItCouldVerify) {
    ImportOptions move;
    move.move = true;
    const std::string good = Png("Tide/a.png");
    EXPECT_EQ(Import(good, move).outcome, Outcome::kImported);
    EXPECT_FALSE(std::filesystem::exists(good));
    EXPECT_TRUE(kept_.empty());

    for (const bool changesSource : {false, true}) {
        const std::string source = Png("Tide/b.png", changesSource ? 8 : 7);
        ImportLedger ledger(ledger_);
        move.gallery = gallery_;
        move.libraries = PRODUCT_DEPENDENCIES;
        Importer importer(move, ledger);
        const std::string copy = importer.Import(source).path;
        if (changesSource)
            folder_.Write("Tide/b.png", "goes on");
        else
            std::filesystem::resize_file(copy, 200);
        EXPECT_EQ(importer.Commit(), std::vector{source});
        EXPECT_TRUE(std::filesystem::exists(source));
    }
}

TEST_F(ImporterTest, RefusesWithAReasonAndLeavesNothing) {
    const std::string png = samples::PngImage(4, 4, kColours);
    const std::string mp4 = samples::Mp4Video({}, kColours);
    for (const auto& [name, bytes, reason] :
         {std::tuple{"empty.png", std::string(), "is empty"},
          {"text.png", std::string("hello"), "is neither a picture nor a video that can be imported"},
          {"cut.png", png.substr(0, png.size() - 13), "is cut off"},
          {"cut.jpg", samples::JpegImage(40, 40, kColours).substr(0, 500), "is cut off"},
          {"bad\xFFname.png", png, "has a name that is not UTF-8"},
          {".hidden.png", png, "is hidden"},
          {"cut.mp4", mp4.substr(0, mp4.size() - 1), ""}}) {
        const std::string refusal = Refusal(folder_.Write("Tide/" + std::string(name), bytes));
        EXPECT_EQ(refusal.find("imported:"), std::string::npos) << name;
        EXPECT_EQ(*reason ? refusal : "", reason) << name;
    }
    EXPECT_EQ(Refusal(folder_ / "Tide"), "is not a file");
    EXPECT_EQ(Refusal(folder_ / "none.png"), "No such file or directory");
    EXPECT_EQ(Refusal(Png(std::string(254, 'n'))), "cannot be written: File name too long");
    EXPECT_EQ(Refusal(Png("Tide/a.png"), {{}, std::string(100, 'g'), {}, {}, false, {}, {}}),
              "would have a name that is too long");
    {
        const FileSizeLimit full(100);
        EXPECT_EQ(Refusal(folder_ / "Tide/a.png"), "cannot be written: File too large");
    }
    EXPECT_EQ(Captures(), 0);
    EXPECT_EQ(Place(folder_ / "Tide/a.png"), "Tide/a.png");
}

TEST_F(ImporterTest, NoticesASourceThatChanges) {
    const std::string source = Png("Tide/a.png", 300);
    for (const bool grows : {true, false}) {
        ImportOptions options;
        options.onRead = [&](uint64_t) {
            if (grows)
                folder_.Write("Tide/a.png", folder_.Read("Tide/a.png") + "more");
            else
                SetTime(source, kTime);
        };
        EXPECT_EQ(Refusal(source, options), "changes while it is read");
    }
    EXPECT_EQ(Captures(), 0);
}

TEST_F(ImporterTest, ImportsAPreparedFileAsItIsWhenItsTurnComes) {
    ImportLedger ledger(ledger_);
    ImportOptions options;
    options.gallery = gallery_;
    Importer importer(options, ledger);
    const auto import = [&](const std::string& path, const std::string& next) {
        importer.Prepare(next);
        const Importer::Result result = importer.Import(path);
        EXPECT_EQ(DigestOfPicture(result.path), DigestOfPicture(path));
    };
    const std::string changed = Png("Tide/b.png", 5);
    import(Png("Tide/a.png"), changed);
    Png("Tide/b.png", 60);
    import(changed, folder_ / "missing.png");
    import(Png("Tide/c.png", 7), Png("Tide/d.png", 8));
    import(Png("Tide/e.png", 9), folder_.path());
    import(folder_ / "Tide/d.png", folder_ / "Tide/c.png");
}

TEST_F(ImporterTest, NamesTheGameByFolderOrFile) {
    for (const auto& [path, game] : {std::pair{"/home/me/Tide/a.png", "Tide"},
                                     {"/home/me/VIDEOS/Hill_Racer-20261122.mp4", "Hill Racer"},
                                     {"/tmp/Screenshot (12).png", kOtherGame},
                                     {"/tmp/..20261122.png", kOtherGame},
                                     {"/tmp/.Tide/Sea 2026_11_22.png", "Sea"},
                                     {"/2026-11-22.png", kOtherGame}})
        EXPECT_EQ(GameOf(path), game) << path;
}

}  // namespace
