// A gallery that a test changes, the library that follows it in a process of its own, and the comparison of
// what the library says with the model, when it has had time to hear of everything.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/media/FolderCrc.h"
#include "tests/module/GalleryModel.h"
#include "tests/module/TrackerProcess.h"
#include "tests/module/TrackerRecords.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempGallery.h"

namespace fs = std::filesystem;

// {"key":value}, the value being JSON.
inline std::string Member(const std::string& key, const std::string& value) {
    return "{\"" + key + "\":" + value + "}";
}

inline std::string Quoted(const std::string& text) {
    KXP::JsonBuffer buffer;
    KXP::JsonWriter writer(buffer);
    writer.String(text);
    return buffer.GetString();
}

inline std::map<std::string, int> IdsIn(const KXP::Document& answer, const char* member) {
    std::map<std::string, int> ids;
    const KXP::Value* list =
        rapidjson::GenericPointer<KXP::Value>((std::string("/payload/") + member).c_str()).Get(answer);
    if (list && list->IsArray())
        for (const KXP::Value& item : list->GetArray())
            ids[item["path"].GetString()] = item["id"].GetInt();
    return ids;
}

inline int CodeOf(const KXP::Document& answer) {
    const KXP::Value* code = rapidjson::GenericPointer<KXP::Value>("/payload/_return_code").Get(answer);
    return code && code->IsInt() ? code->GetInt() : -1;
}

inline std::string Tail(const std::string& text, size_t size) {
    return text.size() <= size ? text : text.substr(text.size() - size);
}

inline std::set<std::string> PathsOf(const std::map<std::string, int>& ids) {
    std::set<std::string> paths;
    for (const auto& [path, id] : ids)
        paths.insert(path);
    return paths;
}

inline unsigned FromEnvironment(const char* name, unsigned otherwise) {
    const char* const text = std::getenv(name);
    return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

class WalkedGallery : public testing::Test {
  protected:
    // When all is quiet; waits for that.
    void Settle() {
        PutMarker();
        if (!Await() || (process_->silent() && !AwaitNews())) return;
        CompareAnswers();
        model_.Settle(records_);
    }

    void Start() {
        Say("start");
        if (!ReadTracker(trackerFile_, records_)) records_ = {};
        process_ = std::make_unique<TrackerProcess>(home_, PathsOf(records_.ids));
        previous_.clear();
        // The other may have written between the two readings of its file.
        if (other_) process_->SetSilent();
        if (!process_->HasRebuilt()) return;
        Say("rebuilds");
        process_->SetSilent();
        model_.Rebuilt(model_.gallery());
    }

    void End() {
        EXPECT_EQ(process_->End(), 0) << process_->log();
        EXPECT_EQ(process_->wrong(), "");
    }

    int Random(size_t below) { return static_cast<int>(random_() % below); }
    bool Chance(int percent) { return Random(100) < percent; }
    void Say(const std::string& text) {
        using namespace std::chrono;
        const auto now = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
        said_ += std::to_string(now % 100000000) + " " + text + "\n";
    }

    std::string AnyGame() { return model_.gallery() + "/" + kGames[Random(std::size(kGames))]; }
    std::string SomeGame() {
        std::string game = AnyGame();
        for (int i = 0; i < 8 && !fs::exists(game); ++i)
            game = AnyGame();
        fs::create_directories(game);
        return game;
    }
    // A game without a folder; nothing when there is hardly any.
    std::string FreeGame() {
        for (int i = 0; i < 8; ++i)
            if (std::string game = AnyGame(); !fs::exists(game)) return game;
        return {};
    }
    // A file in the gallery; nothing when there is none.
    std::string SomeFile() {
        const std::vector<std::string> files = model_.FilesAt(model_.gallery());
        return files.empty() ? "" : files[static_cast<size_t>(Random(files.size()))];
    }
    std::string SomeName(std::string extension = "") {
        if (extension.empty()) extension = kExtensions[Random(std::size(kExtensions))];
        return "/c" + std::to_string(Random(8)) + extension;
    }
    std::string Bytes(const std::string& extension, bool own) {
        if (extension == ".png")
            return captures::Png(own ? captures::PngText("Software", "Ovirastream SHARE") : "");
        if (extension == ".jpg") return own ? captures::OwnJpeg() : samples::JpegImage(16, 9, {});
        if (!own) return TempGallery::Video(600, 1200, "holiday");
        if (Chance(50)) return TempGallery::Video(600, 1200, captures::Block("Ovirastream SHARE", "{}"));
        const std::string group = Member("GroupId", Chance(50) ? "\"RACE\"" : "\"LAP\"");
        return TempGallery::Video(600, 1200, captures::Block("Ovirastream SDK", group));
    }

    void Write(const std::string& path, bool own, bool inSteps = false) {
        Say((own ? "write " : "write foreign ") + path + (inSteps ? " in steps" : ""));
        fs::create_directories(fs::path(path).parent_path());
        const std::string bytes = Bytes(fs::path(path).extension(), own);
        const size_t first = inSteps ? static_cast<size_t>(Random(bytes.size())) : 0;
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out << bytes.substr(0, first) << std::flush;
        if (inSteps) process_->ReadFor(Random(2500));
        out << bytes.substr(first);
        out.close();
        model_.Put(path, own);
    }
    void Remove(const std::string& path) {
        if (path.empty()) return;
        Say("remove " + path);
        fs::remove_all(path);
        model_.Remove(path);
    }

    // A new capture behind all that has been done: when it is on record, so is the rest, and the sum is of
    // now.
    void PutMarker() {
        if (fs::exists(marker_)) Remove(marker_);
        marker_ = model_.gallery() + "/Marks/" + std::to_string(++markers_) + ".png";
        Write(marker_, true);
    }

    // What went on in silence is over when a new capture is told. One that comes while the gallery is looked
    // at as a whole is on record without a word.
    bool AwaitNews() {
        for (int i = 0; i < 5; ++i) {
            PutMarker();
            if (!Await()) return false;
            // It is told behind the write that Await has seen, if at all.
            for (int wait = 0; wait < 10 && process_->known().count(marker_) == 0; ++wait)
                process_->ReadFor(50);
            if (process_->known().count(marker_) == 0) continue;
            process_->SetKnown(PathsOf(records_.ids));
            return true;
        }
        ADD_FAILURE() << "no capture is told any more after\n"
                      << Tail(said_, 8000) << Tail(process_->log(), 20000);
        return false;
    }

    bool Await() {
        const auto limit = std::chrono::steady_clock::now() + kPatience;
        std::string wrong;
        do {
            process_->ReadFor(50);
            wrong = Compare();
            if (wrong.empty()) return true;
        } while (std::chrono::steady_clock::now() < limit);
        ADD_FAILURE() << wrong << "after\n" << Tail(said_, 8000) << Tail(process_->log(), 20000);
        return false;
    }

    std::string Compare() {
        if (!process_->wrong().empty()) return process_->wrong();
        if (!ReadTracker(trackerFile_, records_)) return "no tracker file\n";
        std::string wrong = records_.wrong + model_.Compare(records_);
        if (!wrong.empty()) return wrong;
        uint32_t crc = 0;
        media::CalculateFolderCRC(model_.gallery() + "/", model_.gallery(), crc);
        if (crc != records_.folderCRC) return "the sum of the gallery is another\n";
        if (!process_->silent() && process_->known() != PathsOf(records_.ids)) return "told are others\n";
        if (other_ && Recent(*other_) != records_.ids) return "the other process says otherwise\n";
        return {};
    }

    static std::map<std::string, int> Recent(TrackerProcess& process) {
        return IdsIn(process.Ask("GetRecentUGC", Member("count", "100000")), "recents");
    }
    void CompareAnswers() {
        EXPECT_EQ(Recent(*process_), records_.ids) << Tail(said_, 8000);
        for (const auto& [game, ids] : records_.games)
            EXPECT_EQ(IdsIn(process_->Ask("GetAppUGC", Member("appName", Quoted(game))), "ugc"), ids)
                << Tail(said_, 8000);
    }

    const LogCapture quiet_;  // of this process
    const TempFolder home_;
    const std::string galleries_[2] = {home_.MakeFolder("Videos/ZORVEX/Ovirastream"),
                                       home_.MakeFolder("Other/Gallery")};
    const std::string trackerFile_ = home_ / "data/ZORVEX/OvirastreamX/Share/UGCTracker.json";
    std::mt19937 random_{FromEnvironment("GALLERY_WALK_SEED", 1)};
    GalleryModel model_{galleries_[0]};
    std::unique_ptr<TrackerProcess> process_;
    std::unique_ptr<TrackerProcess> other_;  // beside it, at times
    TrackerRecords records_;
    std::string previous_;  // the gallery that a cancelled change goes back to
    std::string marker_;
    int markers_ = 0;
    std::string said_;

    static constexpr std::chrono::seconds kPatience{30};
    static constexpr const char* kGames[] = {"Rustwind Rally", "Tide", "Über", "G 4", "Ash'n\"Oak"};
    static constexpr const char* kExtensions[] = {".png", ".mp4", ".jpg"};
};
