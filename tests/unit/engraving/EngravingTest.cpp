#include <cstring>
#include <thread>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/engraving/Engraver.h"
#include "plugin-modules/Gallery/src/engraving/EngravingPlan.h"
#include "plugin-modules/Gallery/src/media/ByteCursor.h"
#include "plugin-modules/Gallery/src/media/Mp4Walk.h"
#include "tests/support/CaptureBytes.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TempFolder.h"

namespace {

using samples::Mp4Box;
using samples::U32;
using samples::U64;

const std::string kMedia = Mp4Box("mdat", "these bytes never move");
const std::string kHeader = Mp4Box("mvhd", std::string(100, '\7'));
const std::string kTrack = Mp4Box("trak", Mp4Box("tkhd", std::string(84, '\1')) + Mp4Box("mdia", "media"));
const std::string kTitle = Mp4Box("\xA9nam", "title");
const std::string kOld = captures::Block("Ovirastream SHARE", R"({"DRSAppName":"old"})");
const std::string kNew = captures::Block("Ovirastream SHARE", R"({"DRSAppName":"a new one, and longer"})");

std::string UserData(const std::string& content) {
    return Mp4Box("udta", content);
}

std::string Movie(const std::string& more = "") {
    return Mp4Box("moov", kHeader + kTrack + more);
}

std::string Free(size_t size) {
    return Mp4Box("free", std::string(size - 8, 'x'));
}

// The application that readers find, and "" for none.
std::string AppOf(const std::string& file) {
    media::MemorySource source(file);
    media::ByteCursor cursor(source);
    media::SniffResult result;
    media::WalkMp4(cursor, result);
    return result.drsName;
}

// What a player needs is there: the first movie with its header and tracks, and the media in its place.
void ExpectPlays(const std::string& file, const std::string& before) {
    media::MemorySource source(file);
    const engraving::Mp4Layout layout = engraving::ReadLayout(source, file.size());
    const std::string movie = file.substr(layout.movie.offset, layout.movie.size);
    EXPECT_NE(movie.find(kHeader + kTrack), std::string::npos);
    EXPECT_EQ(file.find(kMedia), before.find(kMedia));
    if (before.find(kTitle) != std::string::npos) {
        EXPECT_NE(movie.find(kTitle), std::string::npos);
    }
}

void Apply(const engraving::Write& write, const std::string& before, size_t limit, std::string& file) {
    std::string bytes = write.bytes + before.substr(write.copyFrom, write.copySize);
    bytes.resize(std::min(bytes.size(), limit));
    if (file.size() < write.at + bytes.size()) file.resize(write.at + bytes.size());
    file.replace(write.at, bytes.size(), bytes);
}

const std::vector<std::pair<const char*, std::string>> kFiles = {
    {"movie behind", captures::FileType() + kMedia + Movie()},
    {"movie in front", captures::FileType() + Movie() + kMedia},
    {"movie in front, with a block", captures::FileType() + Movie(UserData(Mp4Box("tagc", kOld))) + kMedia},
    {"size of 64 bits", captures::FileType() + kMedia + U32(1) + "moov" +
                            U64(16 + kHeader.size() + kTrack.size()) + kHeader + kTrack},
    {"block and title", kMedia + Movie(UserData(Mp4Box("tagc", kOld) + kTitle + std::string(4, '\0')))},
    {"two lists", kMedia + Movie(UserData(kTitle) + UserData(Mp4Box("tagc", kOld)))},
    {"hole in the movie", kMedia + Movie(UserData(Mp4Box("tagc", kOld) + kTitle) + Free(400)) + kMedia},
    {"hole behind the movie", Movie(UserData(Mp4Box("tagc", kOld) + kTitle)) + Free(400) + kMedia},
    {"too small a hole", Movie() + Mp4Box("skip", "too small") + kMedia},
    {"a hole that leaves no room for its rest", Movie() + Free(16 + kNew.size() + 4) + kMedia},
    {"hole for a movie", Free(2000) + kMedia + Movie(UserData(Mp4Box("tagc", kOld))) + kMedia},
    {"fragments", Movie(UserData(Mp4Box("tagc", kOld))) + Free(400) + Mp4Box("moof", "fragment") + kMedia},
    {"user data after the movie", Movie(UserData(Mp4Box("tagc", kOld)) + Free(400)) + kMedia + UserData("")},
    {"left by an engraving that ended before the switch",
     Movie(UserData(Mp4Box("tagc", kOld))) + kMedia +
         Movie(UserData(Mp4Box("tagc", captures::Block("Ovirastream SHARE", R"({"DRSAppName":"wrong"})"))))},
    {"a few bytes behind", Movie() + kMedia + std::string(7, '\0')},
    {"left by one that ended while it appended",
     Movie(UserData(Mp4Box("tagc", kOld))) + kMedia + Movie().substr(0, 60)},
};

TEST(Engraving, LeavesAWholeMovieWhereverItStops) {
    for (const auto& [name, before] : kFiles) {
        SCOPED_TRACE(name);
        media::MemorySource source(before);
        const engraving::Mp4Layout layout = engraving::ReadLayout(source, before.size());
        const engraving::Plan plan = engraving::PlanEngraving(source, layout, kNew);
        const std::string old = AppOf(before);
        std::string file = before.substr(0, plan.length);
        for (const engraving::Batch& batch : plan.batches) {
            const std::string atStep = file;
            for (size_t done = 0; done <= batch.size(); ++done) {
                // Torn ones too, but for those of a switch, which is a few bytes at once.
                const size_t torn = done < batch.size() && batch[done].bytes.size() > 8 ? 21 : 0;
                std::string cut = atStep;
                for (size_t i = 0; i < done; ++i)
                    Apply(batch[i], atStep, SIZE_MAX, cut);
                if (torn > 0) Apply(batch[done], atStep, torn, cut);
                ExpectPlays(cut, before);
                const std::string app = AppOf(cut);
                EXPECT_TRUE(app == old || app == "a new one, and longer") << app;
                if (done == batch.size()) file = cut;
            }
        }
        EXPECT_EQ(AppOf(file), "a new one, and longer");
        EXPECT_NE(file.compare(0, plan.length, before, 0, plan.length), 0);
        const bool hasHole = before.find(std::string(300, 'x')) != std::string::npos;
        EXPECT_EQ(file.size() > layout.end, !hasHole) << "the room that there is, is used";
    }
}

TEST(Engraving, RefusesWhatItDoesNotUnderstand) {
    const TempFolder folder;
    const auto info = std::make_unique<CaptureRequestInfo>();
    const auto refused = [&](const std::string& bytes) {
        const std::string path = folder.Write("a.mp4", bytes);
        return !AddMetadatatoFile(path, info.get()) && folder.Read("a.mp4") == bytes;
    };
    const std::string rows[] = {std::string(),
                                std::string("no boxes at all, but text"),
                                kMedia,
                                Mp4Box("moov", kTrack) + kMedia,
                                Mp4Box("moov", kHeader) + kMedia,
                                Mp4Box("moov", kHeader + Mp4Box("trak", U32(4) + "tkhd")) + kMedia,
                                Movie("garbage") + kMedia,
                                Movie(UserData("more than four bytes")) + kMedia,
                                Movie() + U32(0) + "mdat to the end",
                                Movie() + kMedia.substr(0, kMedia.size() - 1),
                                Movie() + U32(1) + "mdat" + U64(UINT64_MAX),
                                Movie() + Mp4Box("moof", "fragment") + kMedia,
                                Movie() + UserData(Mp4Box("tagc", kOld)) + kMedia,
                                UserData(kTitle) + Movie(Free(400)) + kMedia};
    for (const std::string& bytes : rows)
        EXPECT_TRUE(refused(bytes)) << bytes;
    struct Boxes final : media::ByteSource {
        size_t ReadAt(uint64_t, char* out, size_t) override { return U32(8).append("free").copy(out, 8); }
    } endless;
    EXPECT_THROW(engraving::ReadBoxes(endless, 0, UINT64_MAX), engraving::EngravingError);
    EXPECT_FALSE(AddMetadatatoFile(folder.path(), info.get()));
    EXPECT_FALSE(AddMetadatatoFile("", info.get()));
    for (wchar_t* text : {info->highlightName, info->highlightId, info->highlightGroupId})
        std::wmemset(text, L'\U0001F600', 256);
    info->captureType = 5;
    EXPECT_TRUE(refused(Movie() + kMedia));
}

TEST(Engraving, TakesTurns) {
    const TempFolder folder;
    const std::string path = folder.Write("a.mp4", Movie() + kMedia);
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&path] {
            const auto info = std::make_unique<CaptureRequestInfo>();
            std::wcscpy(info->drsAppName, L"App");
            for (int round = 0; round < 20; ++round)
                EXPECT_TRUE(AddMetadatatoFile(path, info.get()));
        });
    for (std::thread& thread : threads)
        thread.join();
    ExpectPlays(folder.Read("a.mp4"), Movie() + kMedia);
}

TEST(Engraving, OnAFullDiskLeavesTheFileAsItWas) {
    const TempFolder folder;
    const std::string bytes = Movie() + kMedia;
    const std::string path = folder.Write("a.mp4", bytes + Movie().substr(0, 60));  // with a remnant
    const auto info = std::make_unique<CaptureRequestInfo>();
    std::wcscpy(info->drsAppName, L"App");
    {
        const FileSizeLimit full(bytes.size() + 30);
        EXPECT_FALSE(AddMetadatatoFile(path, info.get()));
    }
    EXPECT_EQ(folder.Read("a.mp4"), bytes);
    EXPECT_TRUE(AddMetadatatoFile(folder.Write("a.mp4", bytes + Movie().substr(0, 60)), info.get()));
    EXPECT_EQ(AppOf(folder.Read("a.mp4")), "App");
}

}  // namespace
