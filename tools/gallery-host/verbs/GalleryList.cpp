#include "gallery-host/verbs/GalleryList.h"

#include <algorithm>
#include <chrono>

#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/GalleryTable.h"
#include "gallery-host/output/ListTable.h"
#include "gallery-host/verbs/Verbs.h"

namespace host {
namespace {

using std::chrono::steady_clock;

// How often to ask whether the scan has ended. No notification reports the end of the scan at the start.
constexpr std::chrono::milliseconds kPollPeriod{100};

void Wait(Session& session, Deadline deadline) {
    while (session.Pump(deadline) != PluginLoader::Wake::kDeadline) {
    }
}

KXP::Value AskGame(Session& session, const std::string& name, KXP::Allocator& allocator) {
    const KXP::Document answer = AskForSuccess(session, "GetAppUGC", MakeTexts({{"appName", name}}));
    KXP::Value captures(rapidjson::kArrayType);
    for (const KXP::Value& ugc : Elements(Payload(answer), "ugc"))
        captures.PushBack(KXP::Value(ugc, allocator), allocator);
    KXP::Value game(rapidjson::kObjectType);
    game.AddMember("name", KXP::Value(name, allocator), allocator);
    game.AddMember("ugc", captures, allocator);
    return game;
}

}  // namespace

KXP::Document AskSettings(Session& session) {
    const KXP::Document answer = AskForSuccess(session, "GetSettings", KXP::Value(rapidjson::kObjectType));
    KXP::Document settings;
    if (const KXP::Value* found = Find(Payload(answer), "settings"))
        settings.CopyFrom(*found, settings.GetAllocator());
    if (Text(settings, "path").empty())
        throw Failure(kExitFailed, "the plug-in does not name the gallery's folder");
    return settings;
}

bool IsComplete(const KXP::Value& settings) {
    return Text(settings, "trackerStatus") != "TrackerUpdateInProgress";
}

std::string AwaitGallery(Session& session) {
    const Deadline deadline = steady_clock::now() + session.options().timeout;
    for (bool said = false;; said = true) {
        const KXP::Document settings = AskSettings(session);
        if (IsComplete(settings)) return Text(settings, "path");
        if (steady_clock::now() >= deadline)
            throw Failure(kExitNoAnswer, "the scan of the gallery did not end within " +
                                             Seconds(session.options().timeout) + "; --timeout allows more");
        if (!said) Say("the gallery is being scanned; waiting for the scan to end");
        Wait(session, std::min(deadline, steady_clock::now() + kPollPeriod));
    }
}

std::vector<std::string> AskGames(Session& session, const std::string& folder) {
    ListOptions options;
    options.directory = folder;
    options.onlyOwn = true;
    return FolderNames(Payload(AskListing(session, options)));
}

GalleryListing AskGallery(Session& session) {
    GalleryListing gallery;
    gallery.folder = AwaitGallery(session);
    gallery.games.SetObject();
    KXP::Allocator& allocator = gallery.games.GetAllocator();
    KXP::Value games(rapidjson::kArrayType);
    for (const std::string& name : AskGames(session, gallery.folder))
        games.PushBack(AskGame(session, name, allocator), allocator);
    gallery.games.AddMember("games", games, allocator);
    return gallery;
}

void RunGalleryList(Session& session, Output& output, bool json) {
    const GalleryListing gallery = AskGallery(session);
    if (json) {
        WriteJson(output, gallery.games);
        return;
    }
    output.Write(GalleryTable(gallery.games, WantsColour()));
    const std::string folder = Printable(gallery.folder);
    if (CaptureCount(gallery.games) > 0) {
        Say(GallerySummary(gallery.games) + " in " + folder);
    } else {
        Say("no captures so far in " + folder);
        Say("The product saves each in the folder of its game there. You can also copy captures into such a "
            "folder.");
    }
}

}  // namespace host
