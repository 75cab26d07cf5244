#include "gallery-host/verbs/VideoVerbs.h"

#include <utility>

#include "gallery-host/base/FileStamp.h"
#include "gallery-host/base/Paths.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/Words.h"
#include "gallery-host/verbs/GalleryList.h"
#include "gallery-host/verbs/Verbs.h"

namespace host {
namespace {

constexpr const char* kSeeLog = "; the plug-in's log, which -v shows, has the reason";

void End(Output& output, const VideoSubject& file, KXP::Document line, const std::string& error) {
    if (file.json) WriteOutcome(output, std::move(line), error);
    if (!error.empty()) throw Failure(kExitFailed, file.name + ": " + error);
}

void AddNumber(KXP::Document& object, const char* key, double number) {
    object.AddMember(rapidjson::StringRef(key), number, object.GetAllocator());
}

std::string MemeError(const KXP::Document& answer, const std::string& path) {
    if (ResultCode(answer) >= 0) return "";
    const std::string text = ResultText(answer);
    return text.find("UGC not found") == std::string::npos ? text : WhyNot(path, kNotOnRecord);
}

KXP::Document EngraveRequest(const EngraveOptions& options) {
    KXP::Document request = MakeTexts({{"file", options.file.path},
                                       {"DRSProfileName", options.profile},
                                       {"DRSAppName", options.app},
                                       {"DRSShortName", options.shortName},
                                       {"highlightDefinitionId", options.definition},
                                       {"highlightGroupId", options.group},
                                       {"mediaType", options.mediaType}});
    KXP::Allocator& allocator = request.GetAllocator();
    request.AddMember("cmsId", options.cmsId, allocator);
    request.AddMember("isAHighlight", options.highlight, allocator);
    request.AddMember("highlightSignificance", options.significance, allocator);
    return request;
}

}  // namespace

void RunTrim(Session& session, Output& output, const TrimOptions& options) {
    const VideoSubject& file = options.file;
    // During a scan of the gallery the plug-in would wait in vain for the clip to be on record.
    AwaitGallery(session);
    const FileStamp before(options.target);
    KXP::Document request = MakeTexts({{"input", file.path}, {"output", options.target}});
    AddNumber(request, "headTrimMs", options.from);
    AddNumber(request, "lengthMs", options.length);
    const bool onRecord = ResultCode(session.Ask("Trim", request, TimeToCopy(file.path))) >= 0;
    // The request also fails for a clip that the gallery does not keep on record, so the file decides. Clips
    // appear whole or not at all.
    const bool written = FileStamp(options.target) != before;
    KXP::Document line = MakeTexts({{"file", file.path}, {"output", options.target}});
    line.AddMember("onRecord", onRecord, line.GetAllocator());
    End(output, file, std::move(line),
        written || onRecord ? "" : WhyNot(file.path, std::string("could not be cut") + kSeeLog));
    Say(options.target + ": the clip is there" +
        (onRecord ? ""
                  : "; it is not on record, because only the product's own captures in a game's folder of "
                    "the gallery are"));
}

std::string AddMeme(Session& session, const std::string& path, const std::string& top,
                    const std::string& bottom) {
    KXP::Document request = MakeTexts({{"file", path}});
    KXP::Allocator& allocator = request.GetAllocator();
    KXP::Value texts(rapidjson::kObjectType);
    texts.AddMember("topBarText", KXP::Value(top, allocator), allocator);
    texts.AddMember("bottomBarText", KXP::Value(bottom, allocator), allocator);
    request.AddMember("memeInfo", texts, allocator);
    return MemeError(session.Ask("AddMeme", request), path);
}

void RunMeme(Session& session, Output& output, const MemeOptions& options) {
    AwaitGallery(session);
    End(output, options.file, MakeTexts({{"file", options.file.path}}),
        AddMeme(session, options.file.path, options.top, options.bottom));
}

void RunEngrave(Session& session, Output& output, const EngraveOptions& options) {
    const VideoSubject& file = options.file;
    const FileStamp before(file.path);
    const KXP::Document answer = session.Ask("EngraveMP4", EngraveRequest(options), TimeToCopy(file.path));
    std::string error;
    if (ResultCode(answer) < 0) error = ResultText(answer);
    // The request succeeds even if the file could not be engraved.
    else if (!(FileStamp(file.path) != before))
        error = WhyNot(file.path, std::string("could not be engraved") + kSeeLog);
    End(output, file, MakeTexts({{"file", file.path}}), error);
}

}  // namespace host
