// Does to a gallery, at random, what users and games do to theirs, while the library follows it in a process
// of its own; and holds what the library says against the model when it has had time to hear of it.
// GALLERY_WALK_SEED gives another walk, GALLERY_WALK_STEPS a longer one.
#include <filesystem>
#include <fstream>
#include <functional>
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

namespace {

constexpr std::chrono::seconds kPatience{30};
constexpr const char* kGames[] = {"Rustwind Rally", "Tide", "Über", "G 4", "Ash'n\"Oak"};
constexpr const char* kExtensions[] = {".png", ".mp4", ".jpg"};

// {"key":value}, the value being JSON.
std::string Member(const std::string& key, const std::string& value) {
    return "{\"" + key + "\":" + value + "}";
}

std::string Quoted(const std::string& text) {
    KXP::JsonBuffer buffer;
    KXP::JsonWriter writer(buffer);
    writer.String(text);
    return buffer.GetString();
}

std::map<std::string, int> IdsIn(const KXP::Document& answer, const char* member) {
    std::map<std::string, int> ids;
    const KXP::Value* list = KXP::JsonPointer((std::string("/payload/") + member).c_str()).Get(answer);
    if (list && list->IsArray())
        for (const KXP::Value& item : list->GetArray())
            ids[item["path"].GetString()] = item["id"].GetInt();
    return ids;
}

int CodeOf(const KXP::Document& answer) {
    const KXP::Value* code = KXP::JsonPointer("/payload/_return_code").Get(answer);
    return code && code->IsInt() ? code->GetInt() : -1;
}

std::string Tail(const std::string& text, size_t size) {
    return text.size() <= size ? text : text.substr(text.size() - size);
}

std::set<std::string> PathsOf(const std::map<std::string, int>& ids) {
    std::set<std::string> paths;
    for (const auto& [path, id] : ids)
        paths.insert(path);
    return paths;
}

unsigned FromEnvironment(const char* name, unsigned otherwise) {
    const char* const text = std::getenv(name);
    return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

class GalleryWalk : public testing::Test {
  protected:
    // Some steps one behind the other, and then the comparison. Gives the number of steps.
    int Spell() {
        Say("--- spell");
        if (Chance(15)) KillAtRest();
        const int steps = 1 + Random(10);
        for (int i = 0; i < steps && !HasFailure(); ++i)
            RunOne(Chance(30) ? trackerOperations_ : fileOperations_);
        if (!HasFailure()) Settle();
        return steps;
    }

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

  private:
    struct Operation {
        int weight;
        std::function<void()> run;
    };

    int Random(size_t below) { return static_cast<int>(random_() % below); }
    bool Chance(int percent) { return Random(100) < percent; }
    void RunOne(const std::vector<Operation>& operations) {
        size_t sum = 0;
        for (const Operation& operation : operations)
            sum += static_cast<size_t>(operation.weight);
        int at = Random(sum);
        auto operation = operations.begin();
        while ((at -= operation->weight) >= 0)
            ++operation;
        operation->run();
    }
    void Say(const std::string& text) {
        using namespace std::chrono;
        const auto now = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
        said_ += std::to_string(now % 100000000) + " " + text + "\n";
    }

    // What there is to work on.

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

    // Files and folders.

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
    void Move(const std::string& from, const std::string& to) {
        if (from.empty() || to.empty() || from == to) return;
        Say("move " + from + " to " + to);
        fs::create_directories(fs::path(to).parent_path());
        fs::rename(from, to);
        model_.Move(from, to);
    }
    void Remove(const std::string& path) {
        if (path.empty()) return;
        Say("remove " + path);
        fs::remove_all(path);
        model_.Remove(path);
    }
    void Rename() {
        const fs::path from = SomeFile();
        if (!from.empty()) Move(from, from.parent_path().string() + SomeName(from.extension()));
    }
    void MoveToGame() {
        const fs::path from = SomeFile();
        Move(from, AnyGame() + "/" + from.filename().string());
    }
    // As programs save: a file beside, and then over the old one.
    void Replace() {
        const fs::path path = SomeFile();
        if (path.empty()) return;
        const std::string beside = path.parent_path() / ("new" + path.extension().string());
        Write(beside, Chance(60));
        if (Chance(30)) process_->ReadFor(Random(1500));
        Move(beside, path);
    }
    void MoveGameOut() {
        outsiders_.push_back(outside_ + "/" + std::to_string(folders_++));
        Move(SomeGame(), outsiders_.back());
    }
    void MoveGameIn(bool copy) {
        const std::string to = FreeGame();
        if (to.empty() || outsiders_.empty()) return;
        if (copy) {
            Say("copy " + outsiders_.back() + " to " + to);
            fs::copy(outsiders_.back(), to, fs::copy_options::recursive);
            model_.Copy(outsiders_.back(), to);
            return;
        }
        Move(outsiders_.back(), to);
        outsiders_.pop_back();
    }
    void MoveGalleryAway() {
        EndOther();
        Say("gallery away");
        process_->SetSilent();
        fs::rename(model_.gallery(), away_);
        process_->ReadFor(Random(2500));
        Say("gallery back");
        // An empty one may have been made meanwhile.
        fs::rename(away_, model_.gallery());
        model_.Rebuilt(model_.gallery());
    }

    // The tracker.

    // Whoever asks makes the tracker look whether the files are there.
    void AskAmidst() {
        Say("ask");
        process_->Tell("GetRecentUGC", Member("count", "1000"));
        process_->Tell("GetAppUGC", Member("appName", Quoted(kGames[0])));
    }
    void ChangeGallery() {
        EndOther();
        const std::string to = galleries_[model_.gallery() == galleries_[0] ? 1 : 0];
        Say("change the gallery to " + to);
        process_->SetSilent();
        const std::string settings = Member("settings", Member("userGalleryPath", Quoted(to)));
        EXPECT_EQ(CodeOf(process_->Ask("SetSettings", settings)), 0) << process_->log();
        previous_ = model_.gallery();
        model_.Rebuilt(to);
    }
    void CancelChange() {
        if (previous_.empty()) return;
        EndOther();
        Say("cancel the change");
        process_->SetSilent();
        EXPECT_EQ(CodeOf(process_->Ask("CancelPathUpdate", "{}")), 0) << process_->log();
        model_.Rebuilt(previous_);
    }
    // Whatever was done a moment ago is on record, and the next start finds it so.
    void Restart() {
        Say("stop");
        const bool mayRebuild = process_->silent();
        End();
        const std::string before = process_->log();
        Start();
        EXPECT_TRUE(mayRebuild || !process_->HasRebuilt()) << Tail(said_, 8000) << before << process_->log();
    }
    void Caption() {
        const std::string path = SomeFile();
        const std::string text = "caption " + std::to_string(++captions_);
        if (path.empty()) return;
        Say("caption " + path + " " + text);
        const std::string texts =
            Member("memeInfo", "{\"topBarText\":\"" + text + "\",\"bottomBarText\":\"\"}");
        const bool isKnown = model_.IsKnown(path) && !process_->silent();
        const int code =
            CodeOf(Someone().Ask("AddMeme", "{\"file\":" + Quoted(path) + "," + texts.substr(1)));
        if (code == 0) model_.Caption(path, text);
        EXPECT_TRUE(code == 0 || !isKnown) << Tail(said_, 8000) << process_->log();
    }
    void Transfer(const std::string& method) {
        const fs::path from = SomeFile();
        const std::string to = AnyGame() + "/m" + std::to_string(++captions_) + from.extension().string();
        if (!model_.IsKnown(from)) return;
        const bool move = method == "MoveFile";
        if (!move) fs::create_directories(fs::path(to).parent_path());
        Say("ask to " + method + " " + from.string() + " to " + to);
        const std::string paths = "{\"source\":" + Quoted(from) + ",\"destination\":" + Quoted(to) + "}";
        EXPECT_EQ(CodeOf((move ? *process_ : Someone()).Ask(method, paths)), 0) << process_->log();
        if (!move) return model_.Copy(from, to);
        // Who follows another process gets the record from there, with a new id.
        process_->silent() || other_ ? model_.Move(from, to) : model_.MoveRecord(from, to);
    }
    void RemoveByRequest() {
        const std::string path = SomeFile();
        if (path.empty() || !model_.IsKnown(path) || process_->silent()) return;
        Say("ask to remove " + path);
        EXPECT_EQ(CodeOf(Someone().Ask("RemoveGalleryItem", Member("file", Quoted(path)))), 0);
        model_.Remove(path);
    }
    void Engrave() {
        const std::string path = SomeFile();
        if (fs::path(path).extension() != ".mp4" || !model_.IsKnown(path)) return;
        Say("engrave " + path);
        const std::string info =
            "\"DRSProfileName\":\"p\",\"DRSAppName\":\"a\",\"DRSShortName\":\"s\","
            "\"highlightDefinitionId\":\"\",\"highlightGroupId\":\"\",\"mediaType\":\"\"}";
        EXPECT_EQ(CodeOf(Someone().Ask("EngraveMP4", "{\"file\":" + Quoted(path) + "," + info)), 0)
            << process_->log();
        model_.Put(path, true);
    }
    // A second process on the same folders, which writes the record when the first one has ended.
    void StartOrEndOther() {
        if (process_->silent() && !other_) return;
        Say(other_ ? "end the other" : "start another");
        if (other_) {
            EXPECT_EQ(other_->End(), 0) << other_->log();
            other_.reset();
        } else {
            other_ = std::make_unique<TrackerProcess>(home_, PathsOf(records_.ids));
            EXPECT_FALSE(other_->HasRebuilt());
        }
    }
    void EndOther() {
        if (other_) StartOrEndOther();
    }
    // Of the two, at random.
    TrackerProcess& Someone() { return other_ && Chance(50) ? *other_ : *process_; }
    void KillAmidst() {
        Say("kill");
        process_->Kill();
        EXPECT_EQ(process_->wrong(), "");
        Start();
    }
    // When all is quiet, what is on disk decides whether the next start rebuilds.
    void KillAtRest() {
        EndOther();
        process_->Kill();
        const bool changes = Chance(50);
        if (changes) PutMarker();
        Start();
        EXPECT_EQ(process_->HasRebuilt(), changes) << Tail(said_, 8000) << process_->log();
    }

    // The comparison.

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

    const std::vector<Operation> fileOperations_ = {
        {24, [&] { Write(AnyGame() + SomeName(), true); }},
        {6, [&] { Write(SomeGame() + SomeName(), true, true); }},
        {5, [&] { Write(SomeGame() + SomeName(), false); }},
        {4, [&] { Write(SomeGame() + "/Best of" + SomeName(), Chance(80)); }},
        {2, [&] { Write(model_.gallery() + SomeName(), true); }},
        {6, [&] { Rename(); }},
        {6, [&] { MoveToGame(); }},
        {6, [&] { Replace(); }},
        {6,
         [&] {
             if (const std::string path = SomeFile(); !path.empty()) Write(path, Chance(60));
         }},
        {12, [&] { Remove(SomeFile()); }},
        {4, [&] { Move(SomeGame(), FreeGame()); }},
        {3, [&] { MoveGameOut(); }},
        {5, [&] { MoveGameIn(false); }},
        {3, [&] { MoveGameIn(true); }},
        {2, [&] { Remove(SomeGame()); }},
    };
    const std::vector<Operation> trackerOperations_ = {
        {6, [&] { process_->ReadFor(Random(1500)); }},
        {2, [&] { AskAmidst(); }},
        {1, [&] { MoveGalleryAway(); }},
        {1, [&] { ChangeGallery(); }},
        {1, [&] { CancelChange(); }},
        {4, [&] { KillAmidst(); }},
        {18, [&] { Restart(); }},
        {3, [&] { StartOrEndOther(); }},
        {8, [&] { Caption(); }},
        {4, [&] { Transfer("MoveFile"); }},
        {2, [&] { Transfer("CopyFile"); }},
        {4, [&] { RemoveByRequest(); }},
        {2, [&] { Engrave(); }},
    };

    const LogCapture quiet_;  // of this process
    const TempFolder home_;
    const std::string galleries_[2] = {home_.MakeFolder("Videos/ZORVEX/Ovirastream"),
                                       home_.MakeFolder("Other/Gallery")};
    const std::string outside_ = home_.MakeFolder("Outside");
    const std::string away_ = home_.MakeFolder("Elsewhere") + "/Gallery";
    const std::string trackerFile_ = home_ / "data/ZORVEX/OvirastreamX/Share/UGCTracker.json";
    std::mt19937 random_{FromEnvironment("GALLERY_WALK_SEED", 1)};
    GalleryModel model_{galleries_[0]};
    std::unique_ptr<TrackerProcess> process_;
    std::unique_ptr<TrackerProcess> other_;  // beside it, at times
    TrackerRecords records_;
    std::string previous_;  // the gallery that a cancelled change goes back to
    std::string marker_;
    int markers_ = 0;
    int captions_ = 0;
    std::vector<std::string> outsiders_;  // folders outside the gallery
    int folders_ = 0;
    std::string said_;
};

TEST_F(GalleryWalk, TheRecordIsTrueToTheDisk) {
    SCOPED_TRACE("GALLERY_WALK_SEED=" + std::to_string(FromEnvironment("GALLERY_WALK_SEED", 1)));
    Start();
    // Without a capture there is no tracker's file, and then every start rebuilds.
    Settle();
    for (int left = static_cast<int>(FromEnvironment("GALLERY_WALK_STEPS", 150)); left > 0;) {
        left -= Spell();
        ASSERT_FALSE(HasFailure()) << left << " steps were left";
    }
    End();
}

}  // namespace
