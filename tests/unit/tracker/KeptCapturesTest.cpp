// What people gave captures: through random changes by two processes, on a full disk, and from damaged lines.
#include <array>
#include <map>
#include <optional>
#include <random>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/settings/GalleryPaths.h"
#include "plugin-modules/Gallery/src/tracker/kept/KeptCaptures.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"

namespace {

constexpr int64_t kDay = int64_t{24} * 3600;

KeptCapture Capture(const std::string& path, FileStamp stamp, const std::string& caption) {
    KeptCapture capture{path, stamp, {}, 0};
    capture.facts.topBarText = caption;
    return capture;
}

KeptFacts Told() {
    TrackedUGC record;
    record.bottomBarText = "bottom";
    record.shortName = "short";
    record.highlightDefinitionId = "definition";
    record.highlightName = std::string("zero\0quote\"", 11);
    record.highlightGroupId = "group";
    record.highlightTags = INT32_MIN;
    record.highlightSignificance = INT32_MAX;
    record.eventTimeStamp = "\xF0\x9F\x98\x80";
    return FactsOf(record, true);
}

// The facts of each entry by its file. Equal maps are equal memories.
using Model = std::map<std::string, KeptCapture>;

std::string KeyOf(const KeptCapture& capture) {
    return capture.path + " " + std::to_string(capture.stamp.size);
}

void Note(Model& model, const KeptCapture& capture) {
    if (capture.facts.IsEmpty()) {
        model.erase(KeyOf(capture));
    } else {
        model[KeyOf(capture)] = capture;
    }
}

Model ModelOf(const KeptCaptures& kept) {
    Model model;
    for (const KeptPtr& capture : kept.Snapshot())
        model[KeyOf(*capture)] = *capture;
    return model;
}

// One process, and what its callers know from their own changes and from those that were reported to them.
struct Process {
    explicit Process(const std::string& folder) : kept(folder, [] { return kDay; }) {
        kept.Load();
        known = ModelOf(kept);
    }
    void Follow() {
        for (const KeptPtr& capture : kept.ReadNew())
            Note(known, *capture);
    }

    KeptCaptures kept;
    Model known;
    std::vector<KeptCapture> unsaved;
};

TEST(KeptCaptures, TwoProcessesAndTheFileAgreeAfterAnyChanges) {
    const TempFolder folder;
    const LogCapture log;
    std::mt19937 random(13);
    std::array<std::optional<Process>, 2> processes;
    Model saved;
    int compactions = 0;
    uintmax_t size = 0;
    const std::string path = folder / kKeptFileName;
    for (int step = 0; step < 3000; ++step) {
        auto& process = processes[random() % 2];
        if (!process) process.emplace(folder.path());
        const unsigned what = random() % 16;
        const std::string name = "/g/" + std::to_string(random() % 40);
        KeptCapture capture = Capture(name, {random() % 3 + 1, 5, 7}, "");
        if (what < 8) {
            if (what > 0) capture.facts.topBarText = std::string(300, static_cast<char>('a' + random() % 26));
            if (what == 1) capture.facts = Told();
            Note(process->known, capture);
            process->unsaved.push_back(capture);
            ASSERT_TRUE(process->kept.Put(capture).put);
        } else if (what == 8) {
            const KeptPtr found = process->kept.LatestOf(name, {});
            if (!found) continue;
            KeptCapture gone = *found;
            gone.goneSince = kDay;
            process->kept.NoteGone(gone.path, gone.stamp);
            Note(process->known, gone);
            process->unsaved.push_back(gone);
            EXPECT_FALSE(process->kept.LatestOf(name, {}));
        } else if (what < 12) {
            ASSERT_EQ(process->kept.Save().code, 0);
            for (const KeptCapture& change : process->unsaved)
                Note(saved, change);
            process->unsaved.clear();
            EXPECT_FALSE(process->kept.HasUnsaved());
        } else if (what == 12) {
            process->Follow();
            EXPECT_EQ(process->known, ModelOf(process->kept)) << step;
        } else if (what == 13) {
            if (!process->unsaved.empty()) continue;
            ASSERT_EQ(process->kept.CompactIfLong().code, 0);
        } else if (what == 14) {
            process.reset();
        } else {
            std::ofstream(path, std::ios::app) << R"({"path":"/g/cut o)";
        }
        if (!std::filesystem::exists(path)) continue;
        const uintmax_t before = std::exchange(size, std::filesystem::file_size(path));
        if (size < before) ++compactions;
        if (step % 20 > 0) continue;
        ASSERT_EQ(Process(folder.path()).known, saved) << step;
    }
    EXPECT_GT(compactions, 3);
}

TEST(KeptCaptures, AFileIsFoundAgainWhereItWasMoved) {
    KeptIndex index;
    const auto put = [&](const std::string& path, FileStamp stamp, const std::string& caption) {
        index.Put(std::make_shared<KeptCapture>(Capture(path, stamp, caption)), 1);
    };
    const auto found = [&](const std::string& path, FileStamp stamp) {
        const KeptPtr capture = index.Find(path, stamp);
        return capture ? capture->facts.topBarText : "none";
    };
    put("/g/a/1.png", {1, 10, 5}, "exact");
    put("/g/b/2.png", {1, 10, 6}, "inode");
    put("/g/c/3.png", {1, 10, 0}, "first by name");
    put("/h/c/3.png", {1, 10, 0}, "last by name");
    EXPECT_EQ(found("/g/a/1.png", {1, 10, 6}), "exact");
    EXPECT_EQ(found("/h/a/3.png", {1, 10, 6}), "inode");
    EXPECT_EQ(found("/h/a/3.png", {1, 10, 7}), "last by name");
    EXPECT_EQ(found("/h/a/3.png", {1, 10, 0}), "last by name");
    EXPECT_EQ(found("/g/a/1.png", {1, 11, 5}), "none");
    EXPECT_EQ(found("/g/a/4.png", {1, 10, 0}), "none") << "no inode is no inode in common";
    put("/g/a/1.png", {2, 10, 5}, "newer");
    EXPECT_EQ(index.LatestOf("/g/a/1.png", {3, 10, 5})->facts.topBarText, "newer");
    KeptCapture gone = Capture("/g/a/1.png", {1, 10, 5}, "exact");
    gone.goneSince = kDay;
    index.Put(std::make_shared<KeptCapture>(gone), 1);
    EXPECT_EQ(index.LatestOf("/g/a/1.png", {2, 10, 5})->facts.topBarText, "newer")
        << "the file before it was missed later";
    EXPECT_FALSE(index.LatestOf("/g/a/1.png", {3, 10, 5}));
    EXPECT_EQ(index.lineBytes(), index.size());
}

TEST(KeptCaptures, WhatTheFileSaysOfItselfHasPrecedence) {
    TrackedUGC record;
    record.topBarText = "old";
    record.highlightName = "of the file";
    record.highlightTags = 5;
    KeptFacts expected = Told();
    FillIn(expected, record);
    expected.highlightName = "of the file";
    EXPECT_EQ(FactsOf(record, true), expected);
    Apply(Told(), record);
    EXPECT_EQ(FactsOf(record, true), Told()) << "of a file that is as it was";
    expected = Told();
    Apply({}, record);
    expected.bottomBarText.clear();
    EXPECT_EQ(FactsOf(record, true), expected) << "only captions, which were removed";
}

TEST(KeptCaptures, WhatCannotBeSavedIsRetractedOrWaits) {
    const TempFolder folder;
    const FileStamp stamp{1, 2, 3};
    KeptCaptures kept(folder.path());
    kept.Load();
    EXPECT_FALSE(kept.Put(Capture("/g/a", stamp, std::string(70000, 'x'))).put);
    (void)kept.Put(Capture("/g/a", stamp, "old"));
    ASSERT_EQ(kept.Save().code, 0);
    const std::string before = folder.Read(kKeptFileName);
    {
        const FileSizeLimit full(before.size() + 10);
        const KeptCaptures::Change change = kept.Put(Capture("/g/a", stamp, "new"));
        const KXP::RetVal saved = kept.Save();
        EXPECT_EQ(static_cast<uint32_t>(saved.code), 0x80004005);
        EXPECT_EQ(saved.text, "File too large");
        EXPECT_EQ(folder.Read(kKeptFileName), before);
        kept.Retract(change);
        EXPECT_EQ(kept.Find("/g/a", stamp)->facts.topBarText, "old");
        EXPECT_FALSE(kept.HasUnsaved());
        (void)kept.Put(Capture("/g/b", stamp, "waits"));
        EXPECT_TRUE(kept.Save().Failed());
    }
    const KeptCaptures::Change removal = kept.Put(Capture("/g/a", stamp, ""));
    ASSERT_EQ(kept.Save().code, 0);
    kept.Retract(removal);
    ASSERT_EQ(kept.Save().code, 0);
    EXPECT_EQ(ModelOf(Process(folder.path()).kept), ModelOf(kept));
    EXPECT_EQ(kept.Snapshot().size(), 2u);
}

TEST(KeptCaptures, DamagedLinesArePassedOverAndOldOnesForgotten) {
    const TempFolder folder;
    const std::string good =
        R"({"path":"/g/ü","size":1,"modifiedNs":-2,"inode":3,"meme":{"top":"t"},"more":[1]})";
    const std::string gone = R"({"path":"/g/gone","meme":{"top":"t"},"gone":)";
    std::string text = "\xEF\xBB\xBF" + good + "\n\n";
    for (const char* damaged :
         {"[]", "7", "{}", R"({"path":7})", R"({"path":""})", R"({"path":"/g\u0000"})",
          R"({"path":"/g","size":-1})", R"({"path":"/g","meme":["t"]})", "{\"path\":\"\xFF\"}",
          R"({"path":"/g","meme":{"top":1}})", R"({"path":"/g","highlight":1})"})
        text += std::string(damaged) + "\n";
    text += R"({"path":"/g/x","meme":{"top":")" + std::string(200000, 'x') + "\"}}\n";
    text += gone + "1}\n" + gone.substr(0, 9) + "/later" + gone.substr(9) + std::to_string(kDay * 11) + "}\n";
    folder.Write(kKeptFileName, text + R"({"path":"/g/y","meme":{"top":"y"}}
{"path":"/g/cut)");
    LogCapture log;
    KeptCaptures kept(folder.path(), [] { return kDay * 100; });
    kept.Load();
    EXPECT_EQ(log.Lines().size(), 1u);
    EXPECT_TRUE(log.Has("passed over 13 damaged lines"));
    std::string paths;
    for (const KeptPtr& capture : kept.Snapshot())
        paths += capture->path + " ";
    EXPECT_EQ(paths, "/g/ü /later/g/gone /g/y ");
    EXPECT_EQ(kept.Find("/g/ü", {1, -2, 3})->facts.topBarText, "t");
}

}  // namespace
