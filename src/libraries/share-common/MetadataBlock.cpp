#include "libraries/share-common/MetadataBlock.h"

#include <climits>

#include <b64/decode.h>

#include "CobalixUtil.h"
#include "common/StackDocument.h"

namespace {

std::string DecodeBase64(std::string_view code) {
    if (code.size() > INT_MAX) return {};
    // The decoder writes and reads one byte behind what it has decoded.
    std::string plain(code.size() / 4 * 3 + code.size() % 4 + 1, '\0');
    base64::decoder decoder;
    // The constructor's own initialisation is all the state there is: one block, one call.
    const int length = decoder.decode(code.data(), static_cast<int>(code.size()), plain.data());
    plain.resize(static_cast<size_t>(length));
    return plain;
}

std::string_view TextOf(const KXP::Value& value) {
    return {value.GetString(), value.GetStringLength()};
}

void Take(const KXP::Value& object, const char* name, std::string& field) {
    const auto member = object.FindMember(name);
    if (member != object.MemberEnd() && member->value.IsString()) field = TextOf(member->value);
}

void Take(const KXP::Value& object, const char* name, int64_t& field) {
    const auto member = object.FindMember(name);
    if (member != object.MemberEnd() && member->value.IsInt64()) field = member->value.GetInt64();
}

void Take(const KXP::Value& object, const char* name, uint32_t& field) {
    const auto member = object.FindMember(name);
    if (member != object.MemberEnd() && member->value.IsUint()) field = member->value.GetUint();
}

void TakeSubType(const KXP::Value& object, std::string& subType) {
    std::string mediaType;
    Take(object, "MediaType", mediaType);
    // A screenshot says nothing new: what the walk found in the file's own structure is more exact.
    if (!mediaType.empty() && mediaType != "Screenshot") subType = std::move(mediaType);
}

// "ProfileName" is not read: writers mirror it into "DRSProfileName" when there is no other.
void TakeMembers(const KXP::Value& inner, MetadataFields& fields) {
    Take(inner, "DRSAppName", fields.drsName);
    Take(inner, "DRSProfileName", fields.drsProfileName);
    Take(inner, "ShortName", fields.shortName);
    TakeSubType(inner, fields.fileSubType);
    Take(inner, "CmsId", fields.cmsId);
    // Older writers use the short names; where both are present the long one, taken last, wins.
    Take(inner, "Name", fields.highlightName);
    Take(inner, "HighlightName", fields.highlightName);
    Take(inner, "Id", fields.highlightDefinitionId);
    Take(inner, "HighlightId", fields.highlightDefinitionId);
    Take(inner, "GroupId", fields.highlightGroupId);
    Take(inner, "HighlightGroupId", fields.highlightGroupId);
    Take(inner, "EventTimeStamp", fields.eventTimeStamp);
    Take(inner, "Tags", fields.highlightTags);
    Take(inner, "HighlightTags", fields.highlightTags);
    Take(inner, "Significance", fields.highlightSignificance);
    Take(inner, "HighlightSignificance", fields.highlightSignificance);
}

}  // namespace

void ReadMetadataBlock(std::string_view text, MetadataFields& fields) {
    KXP::StackDocument outer;
    if (outer.Parse(text).IsError()) return;
    ReadMetadataBlock(*outer, fields);
}

void ReadMetadataBlock(const KXP::Value& outer, MetadataFields& fields) {
    if (!outer.IsObject()) return;
    const auto code = outer.FindMember("B64");
    if (code == outer.MemberEnd() || !code->value.IsString()) return;

    KXP::StackDocument inner;
    if (inner.Parse(DecodeBase64(TextOf(code->value))).IsError() || !(*inner).IsObject()) return;
    TakeMembers(*inner, fields);
    KXP_LOG(KXP::LogTrace, "CheckIfZv: cmsId:%ld name:%s id:%s groupId:%s tags:0x%08x significance:0x%08x",
            static_cast<long>(fields.cmsId), fields.highlightName.c_str(),
            fields.highlightDefinitionId.c_str(), fields.highlightGroupId.c_str(), fields.highlightTags,
            fields.highlightSignificance);
}
