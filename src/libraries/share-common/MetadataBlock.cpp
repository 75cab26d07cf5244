#include "libraries/share-common/MetadataBlock.h"

#include "CobalixUtil.h"
#include "common/json/JsonParse.h"
#include "common/json/StackDocument.h"
#include "common/text/Base64.h"

namespace {

std::string_view TextOf(const KXP::Value& value) {
    return {value.GetString(), value.GetStringLength()};
}

void Take(const KXP::Value& value, std::string& field) {
    if (value.IsString()) field = TextOf(value);
}

void Take(const KXP::Value& value, int64_t& field) {
    if (value.IsInt64()) field = value.GetInt64();
}

void Take(const KXP::Value& value, uint32_t& field) {
    if (value.IsUint()) field = value.GetUint();
}

void TakeSubType(const KXP::Value& value, std::string& subType) {
    std::string mediaType;
    Take(value, mediaType);
    // A screenshot says nothing new: what the walk found in the file's own structure is more exact.
    if (!mediaType.empty() && mediaType != "Screenshot") subType = std::move(mediaType);
}

struct Member {
    std::string_view name;
    void (*take)(const KXP::Value&, MetadataFields&);
};

template <auto field>
void TakeInto(const KXP::Value& value, MetadataFields& fields) {
    Take(value, fields.*field);
}

// In the order of taking. Older writers use the short names; where both are present the long one, taken last,
// wins. "ProfileName" is not read: writers mirror it into "DRSProfileName" when there is no other.
constexpr Member kMembers[] = {
    {"DRSAppName", TakeInto<&MetadataFields::drsName>},
    {"DRSProfileName", TakeInto<&MetadataFields::drsProfileName>},
    {"ShortName", TakeInto<&MetadataFields::shortName>},
    {"MediaType",
     [](const KXP::Value& value, MetadataFields& fields) { TakeSubType(value, fields.fileSubType); }},
    {"CmsId", TakeInto<&MetadataFields::cmsId>},
    {"Name", TakeInto<&MetadataFields::highlightName>},
    {"HighlightName", TakeInto<&MetadataFields::highlightName>},
    {"Id", TakeInto<&MetadataFields::highlightDefinitionId>},
    {"HighlightId", TakeInto<&MetadataFields::highlightDefinitionId>},
    {"GroupId", TakeInto<&MetadataFields::highlightGroupId>},
    {"HighlightGroupId", TakeInto<&MetadataFields::highlightGroupId>},
    {"EventTimeStamp", TakeInto<&MetadataFields::eventTimeStamp>},
    {"Tags", TakeInto<&MetadataFields::highlightTags>},
    {"HighlightTags", TakeInto<&MetadataFields::highlightTags>},
    {"Significance", TakeInto<&MetadataFields::highlightSignificance>},
    {"HighlightSignificance", TakeInto<&MetadataFields::highlightSignificance>},
};

void TakeMembers(const KXP::Value& inner, MetadataFields& fields) {
    for (const Member& member : kMembers) {
        for (auto at = inner.MemberBegin(); at != inner.MemberEnd(); ++at) {
            if (TextOf(at->name) != member.name) continue;
            member.take(at->value, fields);
            break;
        }
    }
}

}  // namespace

void ReadMetadataBlock(std::string_view text, MetadataFields& fields) {
    KXP::StackDocument outer;
    if (KXP::ParseJSON(text, *outer).IsError()) return;
    ReadMetadataBlock(*outer, fields);
}

void ReadMetadataBlock(const KXP::Value& outer, MetadataFields& fields) {
    if (!outer.IsObject()) return;
    const auto code = outer.FindMember("B64");
    if (code == outer.MemberEnd() || !code->value.IsString()) return;

    KXP::StackDocument inner;
    if (KXP::ParseJSON(KXP::DecodeBase64Loosely(TextOf(code->value)), *inner).IsError() ||
        !(*inner).IsObject())
        return;
    TakeMembers(*inner, fields);
    KXP_LOG(KXP::LogTrace, "CheckIfZv: cmsId:%ld name:%s id:%s groupId:%s tags:0x%08x significance:0x%08x",
            static_cast<long>(fields.cmsId), fields.highlightName.c_str(),
            fields.highlightDefinitionId.c_str(), fields.highlightGroupId.c_str(), fields.highlightTags,
            fields.highlightSignificance);
}
