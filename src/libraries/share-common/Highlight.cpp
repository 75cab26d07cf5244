#include "libraries/share-common/Highlight.h"

#include "common/FileUtil.h"
#include "common/JsonHelpers.h"

namespace {

KXP::Value Text(const std::string& text, KXP::Allocator& allocator) {
    return {text, allocator};
}

std::string TextOf(const KXP::Value& value, const char* key) {
    return KXP::jsonGetValueOrDefault<std::string>(value, key, "");
}

int NumberOf(const KXP::Value& value, const char* key) {
    return KXP::jsonGetValueOrDefault<int>(value, key, 0);
}

}  // namespace

const std::map<std::string, HighlightType> kHighlightTypeJsonStrs = {
    {"video", HighlightType::Video},
    {"screenshot", HighlightType::Screenshot},
};

bool HighlightStringToEnum(const std::string& word, HighlightType& type) {
    type = HighlightType::Video;
    const auto found = kHighlightTypeJsonStrs.find(word);
    if (found == kHighlightTypeJsonStrs.end()) return false;
    type = found->second;
    return true;
}

bool HighlightEnumToString(HighlightType type, std::string& word) {
    for (const auto& [name, value] : kHighlightTypeJsonStrs) {
        if (value != type) continue;
        word = name;
        return true;
    }
    return false;
}

std::string Highlight::GetTypeAsString() const {
    std::string word;
    HighlightEnumToString(type_, word);
    return word;
}

void Highlight::SetMessageBusRefid(const std::string& reference) {
    messageBusRefid_ = reference;
    // Also for the empty reference, so that it finds itself as a key like any other.
    if (reference.empty() || reference.back() != '\0') messageBusRefid_ += '\0';
}

bool Highlight::MediaFileExists() const {
    return KXP::FileExists(path_);
}

void Highlight::CreateHighlightJSONValue(const Highlight& highlight, KXP::Value& out,
                                         KXP::Allocator& allocator) {
    out.SetObject();
    out.AddMember("id", highlight.id_, allocator);
    out.AddMember("definitionId", Text(highlight.definitionId_, allocator), allocator);
    out.AddMember("name", Text(highlight.name_, allocator), allocator);
    out.AddMember("groupId", Text(highlight.groupId_, allocator), allocator);
    out.AddMember("path", Text(highlight.path_, allocator), allocator);
    out.AddMember("type", Text(highlight.GetTypeAsString(), allocator), allocator);
    out.AddMember("tags", highlight.tags_, allocator);
    out.AddMember("significance", highlight.significance_, allocator);
    out.AddMember("messageBusReferenceId", Text(highlight.messageBusRefid_, allocator), allocator);
    out.AddMember("videoLengthSeconds", highlight.videoLength_, allocator);
    out.AddMember("startDelta", highlight.startDelta_, allocator);
    out.AddMember("endDelta", highlight.endDelta_, allocator);
    out.AddMember("eventTimeStamp", Text(highlight.timeStamp_, allocator), allocator);
    KXP::Value app;
    CreateAppJSONValue(highlight.app_, app, allocator);
    out.AddMember("app", app, allocator);
}

void Highlight::CreateAppJSONValue(const SDKAppInfo& app, KXP::Value& out, KXP::Allocator& allocator) {
    out.SetObject();
    out.AddMember("appShortName", Text(app.appShortName, allocator), allocator);
    out.AddMember("profileName", Text(app.profileName, allocator), allocator);
    out.AddMember("name", Text(app.name, allocator), allocator);
}

void Highlight::ParseHighlightJSON(Highlight& highlight, const KXP::Value& value) {
    highlight.SetId(NumberOf(value, "id"));
    highlight.SetHighlightDefinitionId(TextOf(value, "definitionId"));
    highlight.SetHighlightName(TextOf(value, "name"));
    highlight.SetGroupId(TextOf(value, "groupId"));
    highlight.SetPath(TextOf(value, "path"));
    HighlightStringToEnum(TextOf(value, "type"), highlight.type_);
    highlight.SetTags(NumberOf(value, "tags"));
    highlight.SetSignificance(NumberOf(value, "significance"));
    highlight.SetMessageBusRefid(TextOf(value, "messageBusReferenceId"));
    highlight.SetVideoLength(NumberOf(value, "videoLengthSeconds"));
    highlight.SetStartDelta(NumberOf(value, "startDelta"));
    highlight.SetEndDelta(NumberOf(value, "endDelta"));
    highlight.SetTimeStamp(TextOf(value, "eventTimeStamp"));
    ParseAppJSON(highlight.app_, KXP::JSONGetObjectOrEmpty(value, "app"));
}

void Highlight::ParseAppJSON(SDKAppInfo& app, const KXP::Value& value) {
    app.appShortName = TextOf(value, "appShortName");
    app.profileName = TextOf(value, "profileName");
    app.name = TextOf(value, "name");
}
