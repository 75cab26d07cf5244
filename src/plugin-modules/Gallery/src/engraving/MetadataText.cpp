#include "plugin-modules/Gallery/src/engraving/MetadataText.h"

#include "CobalixUtil.h"
#include "common/json/Json.h"
#include "common/text/Base64.h"
#include "common/text/SafeString.h"
#include "common/text/TextUtil.h"
#include "common/text/TimeUtil.h"

namespace {

using Writer = KXP::JsonWriter;

template <size_t kSize>
std::string TextOf(const wchar_t (&field)[kSize]) {
    return KXP::WideToUtf8({field, strnlen_(field, kSize)});
}

void Put(Writer& writer, const char* key, const std::string& text) {
    writer.Key(key);
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

void PutIfAny(Writer& writer, const char* key, const std::string& text) {
    if (!text.empty()) Put(writer, key, text);
}

bool IsHighlight(const CaptureRequestInfo& info) {
    return info.captureType == CaptureRequestInfo::kHighlight ||
           info.captureType == CaptureRequestInfo::kHighlightToo;
}

const char* SourceOf(const CaptureRequestInfo& info) {
    if (info.captureType == CaptureRequestInfo::kHighlight) return "Ovirastream SDK";
    if (info.captureType == CaptureRequestInfo::kLumis) return "Ovirastream LUMIS";
    return "Ovirastream SHARE";
}

// Readers look for the profile in "DRSProfileName" alone, so it also gets the other one.
void PutProfiles(Writer& writer, const CaptureRequestInfo& info) {
    const std::string drsProfile = TextOf(info.drsProfileName);
    const std::string profile = TextOf(info.profileName);
    PutIfAny(writer, "DRSProfileName", drsProfile);
    PutIfAny(writer, "ProfileName", profile);
    if (drsProfile.empty()) PutIfAny(writer, "DRSProfileName", profile);
}

void PutHighlight(Writer& writer, const CaptureRequestInfo& info) {
    if (!IsHighlight(info)) return;
    Put(writer, "HighlightName", TextOf(info.highlightName));
    Put(writer, "HighlightId", TextOf(info.highlightId));
    Put(writer, "HighlightGroupId", TextOf(info.highlightGroupId));
    writer.Key("HighlightTags");
    writer.Uint(info.tags);
    writer.Key("HighlightSignificance");
    writer.Uint(info.significance);
}

std::string MakeInner(const CaptureRequestInfo& info) {
    KXP::JsonBuffer buffer;
    Writer writer(buffer);
    writer.StartObject();
    PutIfAny(writer, "DRSAppName", TextOf(info.drsAppName));
    PutProfiles(writer, info);
    PutIfAny(writer, "ShortName", TextOf(info.shortName));
    PutIfAny(writer, "MediaType", TextOf(info.mediaType));
    if (info.eventTimeStamp != 0)
        Put(writer, "EventTimeStamp", KXP::GetISO8601TimeFromMs(info.eventTimeStamp));
    if (info.cmsId != 0) {
        writer.Key("CmsId");
        writer.Int64(info.cmsId);
    }
    PutHighlight(writer, info);
    writer.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace

std::string MakeMetadata(const CaptureRequestInfo* info) {
    const std::string inner = MakeInner(*info);
    KXP_LOG(KXP::LogTrace, "MakeMetadata b64 string:%s", inner.c_str());
    KXP::JsonBuffer buffer;
    Writer writer(buffer);
    writer.StartObject();
    Put(writer, "Source", SourceOf(*info));
    Put(writer, "B64", KXP::EncodeBase64(inner));
    writer.EndObject();
    KXP_LOG(KXP::LogTrace, "MakeMetadata metadata string:%s", buffer.GetString());
    return {buffer.GetString(), buffer.GetSize()};
}

std::string MakeMetadataOvs(const CaptureRequestInfo* info) {
    KXP::JsonBuffer buffer;
    Writer writer(buffer);
    writer.StartObject();
    Put(writer, "DRSAppName", TextOf(info->drsAppName));
    Put(writer, "ProfileName", TextOf(info->profileName));
    Put(writer, "ShortName", TextOf(info->shortName));
    Put(writer, "MediaType", TextOf(info->mediaType));
    PutHighlight(writer, *info);
    writer.EndObject();
    KXP_LOG(KXP::LogTrace, "MakeMetadataOvs metadata string:%s", buffer.GetString());
    return {buffer.GetString(), buffer.GetSize()};
}
