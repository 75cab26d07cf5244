#include "tests/module/GalleryWalk.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/media/FolderCrc.h"
#include "tests/support/CaptureBytes.h"
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

}  // namespace

const GalleryWalk::Operation GalleryWalk::kFileOperations[] = {
    {24, &GalleryWalk::Create},      {6, &GalleryWalk::CreateInSteps}, {5, &GalleryWalk::CreateForeign},
    {4, &GalleryWalk::CreateNested}, {2, &GalleryWalk::CreateLoose},   {6, &GalleryWalk::Rename},
    {6, &GalleryWalk::MoveToGame},   {6, &GalleryWalk::Replace},       {6, &GalleryWalk::Overwrite},
    {12, &GalleryWalk::Delete},      {4, &GalleryWalk::RenameGame},    {3, &GalleryWalk::MoveGameOut},
    {5, &GalleryWalk::MoveGameIn},   {3, &GalleryWalk::CopyGameIn},    {2, &GalleryWalk::DeleteGame},
};

const GalleryWalk::Operation GalleryWalk::kTrackerOperations[] = {
    {6, &GalleryWalk::Pause},         {2, &GalleryWalk::AskAmidst},    {1, &GalleryWalk::MoveGalleryAway},
    {1, &GalleryWalk::ChangeGallery}, {1, &GalleryWalk::CancelChange}, {2, &GalleryWalk::KillAmidst},
};

GalleryWalk::GalleryWalk(unsigned seed) : random_(seed) {
    Start();
    // Without a capture there is no tracker's file, and then every start rebuilds.
    Settle();
}

void GalleryWalk::Say(const std::string& text) {
    using namespace std::chrono;
    const auto now = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    said_ += std::to_string(now % 100000000) + " " + text + "\n";
}

template <size_t Size>
void GalleryWalk::RunOne(const Operation (&operations)[Size]) {
    int sum = 0;
    for (const Operation& operation : operations)
        sum += operation.weight;
    int at = Random(sum);
    const Operation* operation = operations;
    while ((at -= operation->weight) >= 0)
        ++operation;
    (this->*operation->run)();
}

int GalleryWalk::Spell() {
    Say("--- spell");
    if (Chance(15)) KillAtRest();
    const int steps = 1 + Random(10);
    for (int i = 0; i < steps; ++i) {
        if (Chance(20)) {
            RunOne(kTrackerOperations);
        } else {
            RunOne(kFileOperations);
        }
        if (::testing::Test::HasFatalFailure() || ::testing::Test::HasNonfatalFailure()) return 0;
    }
    return Settle() ? steps : 0;
}

void GalleryWalk::End() {
    EXPECT_EQ(process_->End(), 0) << process_->log();
    EXPECT_EQ(process_->wrong(), "");
    EXPECT_EQ(process_->known(), PathsOf(records_.ids)) << "what is told at the end changes nothing";
}

// What there is to work on.

std::string GalleryWalk::AnyGame() {
    return model_.gallery() + "/" + kGames[Random(static_cast<int>(std::size(kGames)))];
}

std::string GalleryWalk::SomeGame() {
    for (int i = 0; i < 8; ++i)
        if (const std::string game = AnyGame(); fs::exists(game)) return game;
    const std::string game = AnyGame();
    fs::create_directories(game);
    return game;
}

std::string GalleryWalk::FreeGame() {
    for (int i = 0; i < 8; ++i)
        if (std::string game = AnyGame(); !fs::exists(game)) return game;
    return {};
}

std::string GalleryWalk::SomeFile() {
    const std::vector<std::string> files = model_.FilesBeneath(model_.gallery());
    return files.empty() ? "" : files[static_cast<size_t>(Random(static_cast<int>(files.size())))];
}

std::string GalleryWalk::SomeName(const std::string& extension) {
    return "c" + std::to_string(Random(8)) + extension;
}

std::string GalleryWalk::SomeExtension() {
    return kExtensions[Random(static_cast<int>(std::size(kExtensions)))];
}

std::string GalleryWalk::Bytes(const std::string& extension, bool own) {
    if (extension == ".png")
        return captures::Png(own ? captures::PngText("Software", "Ovirastream SHARE") : "");
    if (extension == ".jpg")
        return own ? captures::OwnJpeg(600, 800) : captures::Jpeg({}, "", captures::FrameHeader(600, 800));
    if (!own) return TempGallery::Video(600, 1200, "holiday");
    if (Chance(50)) return TempGallery::Video(600, 1200, captures::Block("Ovirastream SHARE", "{}"));
    const std::string group = Chance(50) ? "RACE" : "LAP";
    return TempGallery::Video(600, 1200,
                              captures::Block("Ovirastream SDK", Member("GroupId", Quoted(group))));
}

// Files.

void GalleryWalk::Write(const std::string& path, bool own) {
    Say((own ? "write " : "write foreign ") + path);
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << Bytes(fs::path(path).extension(), own);
    model_.Put(path, own);
}

void GalleryWalk::Create() {
    Write(AnyGame() + "/" + SomeName(SomeExtension()), true);
}

void GalleryWalk::CreateInSteps() {
    const std::string path = SomeGame() + "/" + SomeName(SomeExtension());
    Say("write in steps " + path);
    const std::string bytes = Bytes(fs::path(path).extension(), true);
    const size_t half = static_cast<size_t>(Random(static_cast<int>(bytes.size())));
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes.substr(0, half) << std::flush;
    process_->ReadFor(Random(2500));
    out << bytes.substr(half);
    out.close();
    model_.Put(path, true);
}

void GalleryWalk::CreateForeign() {
    Write(SomeGame() + "/" + SomeName(SomeExtension()), false);
}

void GalleryWalk::CreateNested() {
    Write(SomeGame() + "/Best of/" + SomeName(SomeExtension()), Chance(80));
}

void GalleryWalk::CreateLoose() {
    Write(model_.gallery() + "/" + SomeName(SomeExtension()), true);
}

void GalleryWalk::Overwrite() {
    if (const std::string path = SomeFile(); !path.empty()) Write(path, Chance(60));
}

void GalleryWalk::Delete() {
    const std::string path = SomeFile();
    if (path.empty()) return;
    Say("delete " + path);
    fs::remove(path);
    model_.Remove(path);
}

void GalleryWalk::MoveFile(const std::string& from, const std::string& to) {
    if (from.empty() || from == to) return;
    Say("move " + from + " to " + to);
    fs::create_directories(fs::path(to).parent_path());
    fs::rename(from, to);
    model_.Move(from, to);
}

void GalleryWalk::Rename() {
    const fs::path from = SomeFile();
    MoveFile(from, from.parent_path() / SomeName(from.extension()));
}

void GalleryWalk::MoveToGame() {
    const fs::path from = SomeFile();
    MoveFile(from, AnyGame() + "/" + from.filename().string());
}

// As programs save: a file beside, and then over the old one.
void GalleryWalk::Replace() {
    const fs::path path = SomeFile();
    if (path.empty()) return;
    const std::string beside = path.parent_path() / ("new" + path.extension().string());
    Write(beside, Chance(60));
    if (Chance(30)) process_->ReadFor(Random(1500));
    MoveFile(beside, path);
}

// Folders.

void GalleryWalk::MoveFolder(const std::string& from, const std::string& to) {
    Say("move folder " + from + " to " + to);
    fs::rename(from, to);
    model_.Move(from, to);
}

void GalleryWalk::RenameGame() {
    const std::string to = FreeGame();
    if (!to.empty()) MoveFolder(SomeGame(), to);
}

void GalleryWalk::MoveGameOut() {
    const std::string from = SomeGame();
    const std::string to = outside_ + "/" + std::to_string(folders_++);
    MoveFolder(from, to);
    outsiders_.push_back(to);
}

void GalleryWalk::MoveGameIn() {
    const std::string to = FreeGame();
    if (to.empty() || outsiders_.empty()) return;
    MoveFolder(outsiders_.back(), to);
    outsiders_.pop_back();
}

void GalleryWalk::CopyGameIn() {
    const std::string to = FreeGame();
    if (to.empty() || outsiders_.empty()) return;
    Say("copy folder " + outsiders_.back() + " to " + to);
    fs::copy(outsiders_.back(), to, fs::copy_options::recursive);
    model_.CopyFolder(outsiders_.back(), to);
}

void GalleryWalk::DeleteGame() {
    const std::string game = SomeGame();
    Say("delete folder " + game);
    fs::remove_all(game);
    model_.RemoveFolder(game);
}

// The tracker.

void GalleryWalk::Pause() {
    Say("pause");
    process_->ReadFor(Random(1500));
}

// Whoever asks makes the tracker look whether the files are there.
void GalleryWalk::AskAmidst() {
    Say("ask");
    process_->Tell("GetRecentUGC", Member("count", "1000"));
    process_->Tell("GetAppUGC", Member("appName", Quoted(kGames[0])));
}

void GalleryWalk::MoveGalleryAway() {
    Say("gallery away");
    process_->SetSilent();
    fs::rename(model_.gallery(), away_);
    process_->ReadFor(Random(2500));
    Say("gallery back");
    // An empty one may have been made meanwhile.
    fs::rename(away_, model_.gallery());
    model_.CameBack();
}

void GalleryWalk::ChangeGallery() {
    const std::string to = galleries_[model_.gallery() == galleries_[0] ? 1 : 0];
    Say("change the gallery to " + to);
    process_->SetSilent();
    const std::string settings = Member("userGalleryPath", Quoted(to));
    EXPECT_EQ(CodeOf(process_->Ask("SetSettings", Member("settings", settings))), 0) << process_->log();
    previous_ = model_.gallery();
    model_.Rebuilt(to, false);
}

void GalleryWalk::CancelChange() {
    if (previous_.empty()) return;
    Say("cancel the change");
    process_->SetSilent();
    EXPECT_EQ(CodeOf(process_->Ask("CancelPathUpdate", "{}")), 0) << process_->log();
    model_.Rebuilt(previous_, true);
}

void GalleryWalk::Start() {
    Say("start");
    if (!ReadTracker(trackerFile_, records_)) records_ = {};
    process_ = std::make_unique<TrackerProcess>(home_, PathsOf(records_.ids));
    previous_.clear();
    if (!process_->HasRebuilt()) return;
    Say("rebuilds");
    process_->SetSilent();
    model_.Rebuilt(model_.gallery(), false);
}

void GalleryWalk::KillAmidst() {
    Say("kill");
    process_->Kill();
    EXPECT_EQ(process_->wrong(), "");
    Start();
}

// When all is quiet, what is on disk decides whether the next start rebuilds.
void GalleryWalk::KillAtRest() {
    Say("kill at rest");
    process_->Kill();
    const bool changes = Chance(50);
    if (changes) PutMarker();
    Start();
    EXPECT_EQ(process_->HasRebuilt(), changes) << Tail(said_, 8000) << process_->log();
}

// The comparison.

// A new capture behind all that has been done: when it is on record, so is the rest, and the sum is of now.
void GalleryWalk::PutMarker() {
    const std::string last = marker_;
    marker_ = model_.gallery() + "/Marks/" + std::to_string(++markers_) + ".png";
    if (fs::exists(last)) {
        fs::remove(last);
        model_.Remove(last);
    }
    Write(marker_, true);
}

bool GalleryWalk::Settle() {
    PutMarker();
    if (!Await()) return false;
    if (process_->silent() && !AwaitNews()) return false;
    const std::string wrong = CompareAnswers();
    EXPECT_EQ(wrong, "") << Tail(said_, 8000);
    model_.Settle(records_.ids);
    return wrong.empty();
}

// What went on in silence is over when a new capture is told. One that comes while the gallery is looked at
// as a whole is on record without a word.
bool GalleryWalk::AwaitNews() {
    constexpr int kTries = 5;
    for (int i = 0; i < kTries; ++i) {
        PutMarker();
        if (!Await()) return false;
        // It is told behind the write that Await has seen, if at all.
        for (int wait = 0; wait < 10 && !process_->IsTold(marker_); ++wait)
            process_->ReadFor(50);
        if (!process_->IsTold(marker_)) continue;
        process_->SetKnown(PathsOf(records_.ids));
        return true;
    }
    ADD_FAILURE() << "no capture is told any more after\n"
                  << Tail(said_, 8000) << Tail(process_->log(), 20000);
    return false;
}

bool GalleryWalk::Await() {
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

std::string GalleryWalk::Compare() {
    if (!process_->wrong().empty()) return process_->wrong();
    if (!ReadTracker(trackerFile_, records_)) return "no tracker file\n";
    std::string wrong = records_.wrong + model_.Compare(records_.ids);
    if (!wrong.empty()) return wrong;
    uint32_t crc = 0;
    (void)media::CalculateFolderCRC(model_.gallery() + "/", model_.gallery(), crc);
    if (crc != records_.folderCRC) return "the sum of the gallery is another\n";
    if (!process_->silent() && process_->known() != PathsOf(records_.ids)) return "told are others\n";
    return {};
}

std::string GalleryWalk::CompareAnswers() {
    std::string wrong;
    if (IdsIn(process_->Ask("GetRecentUGC", Member("count", "100000")), "recents") != records_.ids)
        wrong += "GetRecentUGC answers others\n";
    for (const auto& [game, ids] : records_.games)
        if (IdsIn(process_->Ask("GetAppUGC", Member("appName", Quoted(game))), "ugc") != ids)
            wrong += "GetAppUGC answers others for " + game + "\n";
    return wrong;
}
