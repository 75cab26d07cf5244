#include "gallery-host/verbs/RecordVerbs.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "gallery-host/base/Paths.h"
#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/GalleryTable.h"
#include "gallery-host/output/TextTable.h"
#include "gallery-host/output/Words.h"
#include "gallery-host/verbs/GalleryList.h"
#include "gallery-host/verbs/Verbs.h"

namespace host {
namespace {

KXP::Document AskRecord(Session& session, const std::string& name, const std::string& path) {
    KXP::Document answer = AskForSuccess(session, "GetFileMetadata", MakeTexts({{"file", path}}));
    // The request succeeds for any file, with no members for one that is not on record.
    if (Find(Payload(answer), "fileType")) return answer;
    throw Failure(kExitFailed, name + ": " + WhyNot(path, kNotOnRecord));
}

// Adds the dimensions of an image, if they can be read.
void AddDimensions(Session& session, const std::string& path, KXP::Document& record) {
    const KXP::Document answer = session.Ask("GetImageFileDimensions", MakeTexts({{"file", path}}));
    if (ResultCode(answer) < 0) return;
    for (const char* side : {"width", "height"})
        if (const KXP::Value* pixels = Find(Payload(answer), side))
            record.AddMember(rapidjson::StringRef(side), KXP::Value(*pixels, record.GetAllocator()),
                             record.GetAllocator());
}

std::string Number(const KXP::Value& record, const char* key) {
    const KXP::Value* number = Find(record, key);
    return number && number->IsUint64() ? std::to_string(number->GetUint64()) : "";
}

std::string Joined(const std::string& left, const char* between, const std::string& right) {
    return left.empty() || right.empty() ? left + right : left + between + right;
}

std::string HumanAudio(const std::string& audio) {
    if (audio == "Single") return "one track";
    if (audio == "Separate") return "separate tracks";
    return audio == "Unknown" ? "" : Printable(audio);
}

std::string RecordTable(const KXP::Value& record, bool colour) {
    const auto text = [&](const char* key) { return Printable(Text(record, key)); };
    const std::string type = Text(record, "fileType");
    const KXP::Value* meme = Find(record, "memeInfo");
    const auto bar = [&](const char* key) { return meme ? Printable(Text(*meme, key)) : ""; };
    const std::string date = Text(record, "date");
    const std::string cms = Number(record, "cmsId");
    std::vector<TableRow> rows;
    const auto row = [&](const char* label, const std::string& value) {
        if (!value.empty() && value != "-") rows.push_back({{label, value}, kBold});
    };
    row("File", text("file"));
    row("Kind", Joined(HumanKind(type), ", ", HumanDetailOf(type, Text(record, "fileSubType"))));
    row("Made by", HumanSource(Text(record, "fileSource")));
    row("Saved", date.empty() ? "not yet" : HumanDate(date));
    row("Size", date.empty() ? "" : HumanSize(SizeKB(record)));
    row("Pixels", Joined(Number(record, "width"), " x ", Number(record, "height")));
    row("Length", text("duration"));
    row("Audio", HumanAudio(Text(record, "audiotype")));
    row("Game", text("DRSName"));
    row("Profile", text("DRSProfileName"));
    row("CMS id", cms == "0" ? "" : cms);
    row("Event", HumanDate(Text(record, "eventTimeStamp")));
    row("Top bar", bar("topBarText"));
    row("Bottom bar", bar("bottomBarText"));
    return TableText(rows, colour);
}

unsigned Count(const KXP::Value& stats, const char* key) {
    const KXP::Value* count = Find(stats, key);
    return count && count->IsUint() ? count->GetUint() : 0;
}

}  // namespace

void RunShow(Session& session, Output& output, const std::string& name, const std::string& path, bool json) {
    AwaitGallery(session);
    const KXP::Document answer = AskRecord(session, name, path);
    KXP::Document record = MakeTexts({{"file", path}});
    for (const KXP::Value::Member& member : Payload(answer).GetObject())
        if (std::string_view(member.name.GetString()).substr(0, 8) != "_return_")
            record.AddMember(KXP::Value(member.name, record.GetAllocator()),
                             KXP::Value(member.value, record.GetAllocator()), record.GetAllocator());
    if (Text(record, "fileType") == "image") AddDimensions(session, path, record);
    if (json)
        WriteJson(output, record);
    else
        output.Write(RecordTable(record, WantsColour()));
}

void RunRecent(Session& session, Output& output, unsigned count, bool json) {
    const std::string folder = AwaitGallery(session);
    KXP::Document request(rapidjson::kObjectType);
    request.AddMember("count", count, request.GetAllocator());
    const KXP::Document answer = AskForSuccess(session, "GetRecentUGC", request);
    const KXP::Value::ConstArray captures = Elements(Payload(answer), "recents");
    if (json) {
        // The plug-in leaves an empty list out.
        KXP::Document list(rapidjson::kObjectType);
        KXP::Value recents(rapidjson::kArrayType);
        for (const KXP::Value& ugc : captures)
            recents.PushBack(KXP::Value(ugc, list.GetAllocator()), list.GetAllocator());
        list.AddMember("recents", recents, list.GetAllocator());
        WriteJson(output, list);
        return;
    }
    output.Write(RecentTable(Payload(answer), WantsColour()));
    if (captures.Empty()) Say("no captures so far in " + folder);
}

void RunStats(Session& session, Output& output, const std::string& game, bool json) {
    const std::string folder = AwaitGallery(session);
    const KXP::Document answer = AskForSuccess(session, "GetAppStats", MakeTexts({{"appName", game}}));
    const unsigned videos = Count(Payload(answer), "videos");
    const unsigned screenshots = Count(Payload(answer), "screenshots");
    if (videos + screenshots == 0) {
        // An unknown game has the same answer.
        const std::vector<std::string> games = AskGames(session, folder);
        if (std::find(games.begin(), games.end(), game) == games.end())
            throw Failure(kExitFailed,
                          "no game \"" + game + "\" on record; \"gallery-host list\" lists the games");
    }
    if (json) {
        KXP::Document stats = MakeTexts({{"game", game}});
        stats.AddMember("videos", videos, stats.GetAllocator());
        stats.AddMember("screenshots", screenshots, stats.GetAllocator());
        WriteJson(output, stats);
    } else {
        output.Write(Printable(game) + ": " + Counted(videos, "video") + ", " +
                     Counted(screenshots, "image") + "\n");
    }
}

}  // namespace host
