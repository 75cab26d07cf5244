#include "gallery-host/GalleryList.h"

#include <algorithm>
#include <chrono>

#include "gallery-host/Envelope.h"
#include "gallery-host/GalleryTable.h"
#include "gallery-host/ListTable.h"
#include "gallery-host/Printable.h"
#include "gallery-host/Verbs.h"

namespace host {
namespace {

using std::chrono::steady_clock;

// Between two looks at how far the gallery is. No notification tells the end of the look at its start.
constexpr std::chrono::milliseconds kPollPeriod{100};

bool IsComplete(const KXP::Value& settings) {
    return Text(settings, "trackerStatus") != "TrackerUpdateInProgress";
}

KXP::Document AskSettings(Session& session) {
    KXP::Document answer = AskForSuccess(session, "GetSettings", KXP::Value(rapidjson::kObjectType));
    const KXP::Value* settings = Find(Payload(answer), "settings");
    if (!settings || Text(*settings, "path").empty())
        throw Failure(kExitFailed, "the plug-in does not tell the gallery's folder");
    return answer;
}

void Wait(Session& session, Deadline deadline) {
    while (session.Pump(deadline) != PluginLoader::Wake::kDeadline) {
    }
}

// The gallery's folder, once the gallery is complete.
std::string AwaitGallery(Session& session) {
    const Deadline deadline = steady_clock::now() + session.options().timeout;
    for (bool said = false;; said = true) {
        const KXP::Document answer = AskSettings(session);
        const KXP::Value& settings = Payload(answer)["settings"];
        if (IsComplete(settings)) return Text(settings, "path");
        if (steady_clock::now() >= deadline)
            throw Failure(kExitNoAnswer, "the gallery is not looked through within " +
                                             Seconds(session.options().timeout) +
                                             "; a longer --timeout gives it more");
        if (!said) Say("the gallery is being looked through; waiting for the end of that");
        Wait(session, std::min(deadline, steady_clock::now() + kPollPeriod));
    }
}

KXP::Value AskGame(Session& session, const std::string& name, KXP::Allocator& allocator) {
    KXP::Document request(rapidjson::kObjectType);
    request.AddMember("appName", KXP::Value(name, request.GetAllocator()), request.GetAllocator());
    const KXP::Document answer = AskForSuccess(session, "GetAppUGC", request);
    KXP::Value captures(rapidjson::kArrayType);
    for (const KXP::Value& ugc : Elements(Payload(answer), "ugc"))
        captures.PushBack(KXP::Value(ugc, allocator), allocator);
    KXP::Value game(rapidjson::kObjectType);
    game.AddMember("name", KXP::Value(name, allocator), allocator);
    game.AddMember("ugc", captures, allocator);
    return game;
}

}  // namespace

GalleryListing AskGallery(Session& session) {
    GalleryListing gallery;
    gallery.folder = AwaitGallery(session);
    ListOptions options;
    options.directory = gallery.folder;
    options.onlyOwn = true;
    const KXP::Document listing = AskListing(session, options);
    gallery.games.SetObject();
    KXP::Allocator& allocator = gallery.games.GetAllocator();
    KXP::Value games(rapidjson::kArrayType);
    for (const std::string& name : FolderNames(Payload(listing)))
        games.PushBack(AskGame(session, name, allocator), allocator);
    gallery.games.AddMember("games", games, allocator);
    return gallery;
}

void RunGalleryList(Session& session, Output& output, bool json) {
    const GalleryListing gallery = AskGallery(session);
    if (json) {
        output.Write(PrintableJson(ToPrettyText(gallery.games)) + "\n");
        return;
    }
    output.Write(GalleryTable(gallery.games, WantsColour()));
    const std::string folder = Printable(gallery.folder);
    if (CaptureCount(gallery.games) > 0) {
        Say(GallerySummary(gallery.games) + " in " + folder);
    } else {
        Say("no captures so far in " + folder);
        Say("The product saves each in a folder of its game there. You can put some into such a folder as "
            "well.");
    }
}

}  // namespace host
