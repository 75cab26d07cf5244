#include "gallery-host/verbs/Replay.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <map>

#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/Words.h"
#include "gallery-host/verbs/GalleryList.h"
#include "gallery-host/verbs/Serve.h"

namespace host {
namespace {

using std::chrono::steady_clock;

// Notifications that were put together differently would never come.
constexpr std::chrono::seconds kNotificationWait{10};
constexpr std::chrono::milliseconds kStep{50};
constexpr size_t kShownBytes = 200;
constexpr const char* kSpace[] = {"freeSpaceMB", "totalSpaceMB", "totalDiskSpaceMB"};

std::string Shown(const KXP::Value& value) {
    const std::string text = ToText(value);
    return text.size() > kShownBytes ? text.substr(0, kShownBytes) + "..." : text;
}

// Finds where two values differ.
class Comparison {
  public:
    explicit Comparison(const std::vector<std::string>& ignored) : ignored_(ignored) {}

    // The place, as a JSON pointer, and both values; empty when they are equal.
    std::string Of(const KXP::Value& recorded, const KXP::Value& actual, const std::string& at = {}) const {
        if (recorded.IsObject() && actual.IsObject()) return OfObjects(recorded, actual, at);
        if (recorded.IsArray() && actual.IsArray() && recorded.Size() == actual.Size())
            return OfArrays(recorded, actual, at);
        return recorded == actual ? std::string() : Text(at, "recorded " + Shown(recorded), Shown(actual));
    }

  private:
    static std::string Below(const std::string& at, const std::string& name) {
        return std::string(at).append("/").append(name);
    }
    static std::string Text(const std::string& at, const std::string& before, const std::string& now) {
        return at + ": " + before + ", now " + now;
    }

    bool IsIgnored(const std::string& name) const {
        return std::find(ignored_.begin(), ignored_.end(), name) != ignored_.end();
    }

    std::string OfArrays(const KXP::Value& recorded, const KXP::Value& actual, const std::string& at) const {
        std::string found;
        for (rapidjson::SizeType index = 0; found.empty() && index < recorded.Size(); ++index)
            found = Of(recorded[index], actual[index], Below(at, std::to_string(index)));
        return found;
    }

    std::string OfObjects(const KXP::Value& recorded, const KXP::Value& actual, const std::string& at) const {
        std::string found;
        for (const KXP::Value::Member& member : recorded.GetObject()) {
            const std::string name = member.name.GetString();
            if (!found.empty() || IsIgnored(name)) continue;
            const std::string below = Below(at, name);
            const KXP::Value* const other = Find(actual, name.c_str());
            found = other ? Of(member.value, *other, below)
                          : Text(below, "recorded " + Shown(member.value), "missing");
        }
        for (const KXP::Value::Member& member : actual.GetObject()) {
            const std::string name = member.name.GetString();
            if (found.empty() && !IsIgnored(name) && !Find(recorded, name.c_str()))
                found = Text(Below(at, name), "not recorded", Shown(member.value));
        }
        return found;
    }

    const std::vector<std::string>& ignored_;
};

// What answers and refusals are known by; empty for a notification, and for the refusal of a line without a
// name, which is not recorded if it is no JSON.
std::string KeyOf(const KXP::Value& line) {
    const std::string id = Text(line, "reference_uniqueid");
    if (Find(line, "error")) return id.empty() ? id : "refusal " + id;
    if (!Text(line, "command").empty()) return "command";
    const KXP::Value* const type = Find(line, "type");
    const bool isNotification = type && type->IsInt() && type->GetInt() == kPersistent;
    return isNotification ? std::string() : "answer " + id;
}

class Replay {
  public:
    Replay(Session& session, const std::vector<std::string>& ignored) : session_(session), ignored_(ignored) {
        ignored_.insert(ignored_.end(), std::begin(kSpace), std::end(kSpace));
    }

    void Run(const std::vector<RecordedMessage>& recording, Recorder* recorder) {
        Server server(
            session_, [this](const KXP::Value& line) { return Note(line); }, recorder);
        const Session::Listening listening = server.Begin();
        for (const RecordedMessage& recorded : recording) {
            if (recorded.isIn) {
                Await();
                server.Take(recorded.message, recorded.line);
            } else {
                Expect(recorded);
            }
        }
        server.AwaitAnswers();
        Await();
    }

    size_t answers() const { return expected_.size(); }

    // Throws for the first that differs.
    void Compare() {
        for (const RecordedMessage* recorded : expected_) {
            std::deque<KXP::Document>& came = actual_[KeyOf(recorded->message)];
            const std::string where =
                "line " + std::to_string(recorded->line) + ": " + Text(recorded->message, "method") + ": ";
            if (came.empty()) throw Failure(kExitFailed, where + ": there is no such answer now");
            const std::string found = Comparison(ignored_).Of(Core(recorded->message), Core(came.front()));
            if (!found.empty()) throw Failure(kExitFailed, where + Printable(found));
            came.pop_front();
        }
    }

  private:
    // What has to be equal: identifiers of the container's and line numbers are not.
    static KXP::Document Core(const KXP::Value& line) {
        KXP::Document core(rapidjson::kObjectType);
        for (const char* name : {"method", "payload", "command"})
            if (const KXP::Value* const value = Find(line, name))
                core.AddMember(rapidjson::StringRef(name), KXP::Value(*value, core.GetAllocator()),
                               core.GetAllocator());
        if (const KXP::Value* const error = Find(line, "error")) AddText(core, "error", Text(*error, "text"));
        return core;
    }

    void Expect(const RecordedMessage& recorded) {
        const std::string key = KeyOf(recorded.message);
        if (key.empty()) {
            if (!Find(recorded.message, "error")) ++notifications_;
            return;
        }
        expected_.push_back(&recorded);
        --lead_[key];
    }

    bool Note(const KXP::Value& line) {
        const std::string key = KeyOf(line);
        if (key.empty()) {
            if (!Find(line, "error")) --notifications_;
            return true;
        }
        ++lead_[key];
        KXP::Document copy;
        copy.CopyFrom(line, copy.GetAllocator());
        actual_[key].push_back(std::move(copy));
        return true;
    }

    bool Lacks() const {
        return std::any_of(lead_.begin(), lead_.end(), [](const auto& entry) { return entry.second < 0; });
    }

    // Waits for what the recording had by here.
    void Await() {
        const Deadline forAnswers = steady_clock::now() + session_.options().timeout;
        const Deadline forNotifications = steady_clock::now() + kNotificationWait;
        while ((Lacks() && steady_clock::now() < forAnswers) ||
               (notifications_ > 0 && steady_clock::now() < forNotifications))
            session_.Pump(steady_clock::now() + kStep);
        // Those that did not come are waited for once.
        notifications_ = std::min(notifications_, 0);
    }

    Session& session_;
    std::vector<std::string> ignored_;
    std::vector<const RecordedMessage*> expected_;
    std::map<std::string, std::deque<KXP::Document>> actual_;
    std::map<std::string, int> lead_;  // of what came over what was recorded
    int notifications_ = 0;            // recorded ones that have not come
};

}  // namespace

void RunReplay(Session& session, Output& output, const std::vector<RecordedMessage>& recording,
               const std::vector<std::string>& ignored, Recorder* recorder) {
    // During a scan answers depend on how far it is.
    AwaitGallery(session);
    Replay replay(session, ignored);
    replay.Run(recording, recorder);
    replay.Compare();
    output.Write(Counted(replay.answers(), "answer") + " as recorded\n");
}

}  // namespace host
