// Does to a gallery, at random, what users and games do to theirs. GALLERY_WALK_SEED gives another walk,
// GALLERY_WALK_STEPS a longer one.
#include <functional>

#include "tests/module/WalkedGallery.h"

namespace {

class GalleryWalk : public WalkedGallery {
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

  private:
    struct Operation {
        int weight;
        std::function<void()> run;
    };

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

    void Move(const std::string& from, const std::string& to) {
        if (from.empty() || to.empty() || from == to) return;
        Say("move " + from + " to " + to);
        fs::create_directories(fs::path(to).parent_path());
        fs::rename(from, to);
        model_.Move(from, to);
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
        const bool isKnown = model_.IsKnown(path) && !process_->silent();
        const std::string texts = Member("topBarText", Quoted(text) + ",\"bottomBarText\":\"\"");
        const std::string request = Member("file", Quoted(path) + ",\"memeInfo\":" + texts);
        const int code = CodeOf(Someone().Ask("AddMeme", request));
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
        const std::string paths = Member("source", Quoted(from) + ",\"destination\":" + Quoted(to));
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
        const std::string request = Member(
            "file",
            Quoted(path) +
                R"(,"DRSProfileName":"p","DRSAppName":"a",)"
                R"("DRSShortName":"s","highlightDefinitionId":"","highlightGroupId":"","mediaType":"")");
        EXPECT_EQ(CodeOf(Someone().Ask("EngraveMP4", request)), 0) << process_->log();
        model_.Put(path, true);
    }
    // A second process on the same folders, which writes the record when the first one has ended.
    void StartOrEndOther() {
        if (other_) return EndOther();
        if (process_->silent()) return;
        Say("start another");
        other_ = std::make_unique<TrackerProcess>(home_, PathsOf(records_.ids));
        EXPECT_FALSE(other_->HasRebuilt());
    }
    void EndOther() {
        if (!other_) return;
        Say("end the other");
        EXPECT_EQ(other_->End(), 0) << other_->log();
        other_.reset();
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

    const std::string away_ = home_.MakeFolder("Elsewhere") + "/Gallery";
    const std::string outside_ = home_.MakeFolder("Outside");
    int captions_ = 0;
    std::vector<std::string> outsiders_;  // folders outside the gallery
    int folders_ = 0;
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
