#include "gallery-host/verbs/MontageVerb.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <optional>
#include <utility>

#include "gallery-host/base/FileStamp.h"
#include "gallery-host/base/Paths.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/Progress.h"
#include "gallery-host/verbs/GalleryList.h"
#include "gallery-host/verbs/Verbs.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNotification = "MontageNotification";

struct Ending {
    const char* ending;
    const char* type;
};

constexpr Ending kEndings[] = {
    {".mp4", "video"}, {".m4v", "video"}, {".mov", "video"},  {".mkv", "video"},  {".webm", "video"},
    {".avi", "video"}, {".png", "image"}, {".jpg", "image"},  {".jpeg", "image"}, {".jps", "image"},
    {".gif", "image"}, {".bmp", "image"}, {".webp", "image"}, {".mp3", "audio"},  {".wav", "audio"},
    {".m4a", "audio"}, {".aac", "audio"}, {".ogg", "audio"},  {".opus", "audio"}, {".flac", "audio"},
};

// Of the record; 0 without one.
double Duration(Session& session, const std::string& path) {
    const KXP::Document answer = session.Ask("GetFileMetadata", MakeTexts({{"file", path}}));
    const KXP::Value* duration = Find(Payload(answer), "msDuration");
    return ResultCode(answer) >= 0 && duration && duration->IsNumber() ? duration->GetDouble() : 0;
}

KXP::Value InputEntry(Session& session, const MontageInput& input, KXP::Allocator& allocator) {
    KXP::Value details(rapidjson::kObjectType);
    details.AddMember("path", KXP::Value(input.path, allocator), allocator);
    details.AddMember("duration", input.type == "image" ? 0 : Duration(session, input.path), allocator);
    KXP::Value entry(rapidjson::kObjectType);
    entry.AddMember("details", details, allocator);
    entry.AddMember("inputFileType", KXP::Value(input.type, allocator), allocator);
    return entry;
}

void AddTitle(KXP::Document& request, const std::string& title) {
    KXP::Allocator& allocator = request.GetAllocator();
    KXP::Value details(rapidjson::kObjectType);
    details.AddMember("txtTitle", KXP::Value(title, allocator), allocator);
    KXP::Value sequence(rapidjson::kObjectType);
    sequence.AddMember("seqType", "titleBasic", allocator);
    sequence.AddMember("seqDetails", details, allocator);
    KXP::Value storyboard(rapidjson::kObjectType);
    storyboard.AddMember("titleSequence", sequence, allocator);
    request.AddMember("storyboard", storyboard, allocator);
}

KXP::Document MontageRequest(Session& session, const MontageOptions& options) {
    KXP::Document request = MakeTexts({{"recipe", options.recipe}, {"output", options.out}});
    KXP::Value inputs(rapidjson::kArrayType);
    for (const MontageInput& input : options.inputs)
        inputs.PushBack(InputEntry(session, input, request.GetAllocator()), request.GetAllocator());
    request.AddMember("inputs", inputs, request.GetAllocator());
    if (!options.title.empty()) AddTitle(request, options.title);
    return request;
}

// A montage request, its progress and its answer.
class Montage {
  public:
    Montage(Session& session, Output& output, bool json)
        : session_(session),
          output_(output),
          json_(json),
          listening_(session.Listen([this](KXP::Document& message, auto) { OnMessage(message); })) {}

    void Start(const KXP::Value& payload) {
        Send(MakeRequest(kNotification, KXP::Value(rapidjson::kObjectType), kPersistent));
        const KXP::Document request = MakeRequest("CreateMontageFromRecipe", payload);
        id_ = Text(request, "uniqueid");
        Send(request);
    }

    // False if there is no answer by the deadline.
    bool Await(Deadline deadline) {
        while (!answered_) {
            progress_.Draw();
            if (session_.Pump(std::min(deadline, progress_.due())) == PluginLoader::Wake::kDeadline &&
                std::chrono::steady_clock::now() >= deadline)
                return false;
            Report();
        }
        session_.FinishRelay(std::chrono::steady_clock::now() + session_.options().timeout);
        Report();
        return true;
    }

    void Cancel() {
        ClearStatus();
        Say("canceling the montage; a second Ctrl-C leaves without waiting");
        Send(MakeRequest("CancelMontage", KXP::Value(rapidjson::kObjectType)));
        if (!Await(std::chrono::steady_clock::now() + session_.options().timeout))
            Say("the montage has not ended within " + Seconds(session_.options().timeout));
    }

    const KXP::Document& answer() const { return answer_; }

  private:
    void Send(const KXP::Document& envelope) {
        const std::optional<std::string> refusal = session_.Send(envelope);
        if (refusal) throw Failure(kExitFailed, "the plug-in refused the request: " + *refusal);
    }

    void OnMessage(KXP::Document& message) {
        if (IsNotification(message) && Text(message, "method") == kNotification) {
            const KXP::Value* progress = Find(Payload(message), "progress");
            if (progress && progress->IsNumber()) progressed_ = progress->GetDouble();
        } else if (!id_.empty() && Text(message, "reference_uniqueid") == id_) {
            answer_ = std::move(message);
            answered_ = true;
        }
    }

    void Report() {
        if (!progressed_) return;
        const double percent = *std::exchange(progressed_, std::nullopt);
        progress_.Set(static_cast<size_t>(std::clamp(percent, 0.0, 100.0)));
        if (!json_) return;
        KXP::Document line(rapidjson::kObjectType);
        line.AddMember("progress", percent, line.GetAllocator());
        output_.Write(ToText(line) + "\n");
    }

    Session& session_;
    Output& output_;
    const bool json_;
    std::string id_;
    std::optional<double> progressed_;  // not reported yet
    KXP::Document answer_;
    bool answered_ = false;
    Progress progress_{"making the montage"};
    const Session::Listening listening_;  // last: it fills the rest
};

// Whether the file is engraved as a montage, according to the listing of its folder.
bool IsMarked(Session& session, const std::string& path) {
    ListOptions options;
    options.directory = fs::path(path).parent_path().string();
    const KXP::Document answer = AskListing(session, options);
    const std::string name = fs::path(path).filename().string();
    for (const KXP::Value& file : Elements(Payload(answer), "files"))
        if (Text(file, "name") == name) return Text(file, "subtype") == "Montage";
    return false;
}

std::string MakeMontage(Session& session, Output& output, const MontageOptions& options,
                        const KXP::Value& request) {
    Montage montage(session, output, options.json);
    montage.Start(request);
    try {
        montage.Await(Deadline::max());
    } catch (const Failure& failure) {
        if (failure.status() == kExitInterrupted) montage.Cancel();
        throw;
    }
    return ResultCode(montage.answer()) < 0 ? ResultText(montage.answer()) : "";
}

}  // namespace

MontageInput ReadMontageInput(const std::string& name) {
    MontageInput input{AbsolutePath(name), {}};
    const std::string reason = WhyNot(input.path, "");
    if (!reason.empty()) throw Failure(kExitFailed, name + ": " + reason);
    std::string ending = fs::path(input.path).extension().string();
    for (char& c : ending)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (const Ending& known : kEndings)
        if (ending == known.ending) input.type = known.type;
    if (input.type.empty())
        throw Failure(kExitFailed, name + ": neither a video nor an image nor audio, by its name");
    return input;
}

void RunMontage(Session& session, Output& output, const MontageOptions& options) {
    AwaitGallery(session);
    const FileStamp before(options.out);
    const KXP::Document request = MontageRequest(session, options);
    std::string error = MakeMontage(session, output, options, request);
    // The request succeeds even if the montage process failed.
    if (error.empty() && !(FileStamp(options.out) != before))
        error = "the montage process has not written it; what it printed is in the log, which -v shows";
    if (options.json) WriteOutcome(output, MakeTexts({{"output", options.out}}), error);
    if (!error.empty()) throw Failure(kExitFailed, options.out + ": " + error);
    Say(options.out +
        (IsMarked(session, options.out)
             ? ": written"
             : ": written, but it could not be engraved; the log, which -v shows, has the reason"));
}

}  // namespace host
