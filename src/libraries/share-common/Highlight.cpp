#include "libraries/share-common/Highlight.h"

#include "common/files/FileUtil.h"
#include "common/json/JsonHelpers.h"

namespace {

KXP::Value ValueOf(const std::string& text, KXP::Allocator& allocator) {
    return {text, allocator};
}

KXP::Value ValueOf(int number, KXP::Allocator&) {
    return KXP::Value(number);
}

KXP::Value ValueOf(uint32_t mask, KXP::Allocator&) {
    return KXP::Value(mask);
}

KXP::Value ValueOf(HighlightType type, KXP::Allocator& allocator) {
    std::string word;
    HighlightEnumToString(type, word);
    return ValueOf(word, allocator);
}

void Take(const KXP::Value& value, const char* key, std::string& text) {
    text = KXP::jsonGetValueOrDefault<std::string>(value, key, "");
}

void Take(const KXP::Value& value, const char* key, int& number) {
    number = KXP::jsonGetValueOrDefault<int>(value, key, 0);
}

void Take(const KXP::Value& value, const char* key, uint32_t& mask) {
    mask = KXP::jsonGetMaskOrZero(value, key);
}

void Take(const KXP::Value& value, const char* key, HighlightType& type) {
    HighlightStringToEnum(KXP::jsonGetValueOrDefault<std::string>(value, key, ""), type);
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

template <typename AnyHighlight, typename Visit>
void Highlight::ForEachField(AnyHighlight& highlight, Visit visit) {
    visit("id", highlight.id_);
    visit("definitionId", highlight.definitionId_);
    visit("name", highlight.name_);
    visit("groupId", highlight.groupId_);
    visit("path", highlight.path_);
    visit("type", highlight.type_);
    visit("tags", highlight.tags_);
    visit("significance", highlight.significance_);
    visit("messageBusReferenceId", highlight.messageBusRefid_);
    visit("videoLengthSeconds", highlight.videoLength_);
    visit("startDelta", highlight.startDelta_);
    visit("endDelta", highlight.endDelta_);
    visit("eventTimeStamp", highlight.timeStamp_);
}

void Highlight::CreateHighlightJSONValue(const Highlight& highlight, KXP::Value& out,
                                         KXP::Allocator& allocator) {
    out.SetObject();
    ForEachField(highlight, [&](const char* key, const auto& field) {
        out.AddMember(rapidjson::StringRef(key), ValueOf(field, allocator), allocator);
    });
    KXP::Value app;
    CreateAppJSONValue(highlight.app_, app, allocator);
    out.AddMember("app", app, allocator);
}

void Highlight::CreateAppJSONValue(const SDKAppInfo& app, KXP::Value& out, KXP::Allocator& allocator) {
    out.SetObject();
    out.AddMember("appShortName", ValueOf(app.appShortName, allocator), allocator);
    out.AddMember("profileName", ValueOf(app.profileName, allocator), allocator);
    out.AddMember("name", ValueOf(app.name, allocator), allocator);
}

void Highlight::ParseHighlightJSON(Highlight& highlight, const KXP::Value& value) {
    ForEachField(highlight, [&](const char* key, auto& field) { Take(value, key, field); });
    highlight.SetMessageBusRefid(highlight.messageBusRefid_);
    ParseAppJSON(highlight.app_, KXP::JSONGetObjectOrEmpty(value, "app"));
}

void Highlight::ParseAppJSON(SDKAppInfo& app, const KXP::Value& value) {
    Take(value, "appShortName", app.appShortName);
    Take(value, "profileName", app.profileName);
    Take(value, "name", app.name);
}
