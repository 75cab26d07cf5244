#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

#include "common/files/FileUtil.h"
#include "common/text/TextUtil.h"
#include "plugin-modules/Gallery/src/tracker/record/RecordFields.h"

namespace {

using KXP::Value;

// Makes the JSON value of one member.
struct ApiValue {
    const TrackedUGC& record;
    KXP::Allocator& allocator;
    WordForPages* word = nullptr;

    Value operator()(std::string TrackedUGC::*text) const {
        return Value(KXP::ToValidUtf8(record.*text), allocator);
    }
    Value operator()(SharedText TrackedUGC::*text) const {
        if (!word) return Value(KXP::ToValidUtf8(std::string(record.*text)), allocator);
        const std::string_view known = word(record.*text);
        return Value(known.data(), static_cast<rapidjson::SizeType>(known.size()), allocator);
    }
    Value operator()(int32_t TrackedUGC::*number) const {
        // A mask has no sign.
        if (number == &TrackedUGC::highlightTags || number == &TrackedUGC::highlightSignificance)
            return Value(static_cast<uint32_t>(record.*number));
        return Value(record.*number);
    }
    template <typename T>
    Value operator()(T TrackedUGC::*number) const {
        return Value(record.*number);
    }
    Value operator()(const RecordFields& fields) const {
        Value object(rapidjson::kObjectType);
        const unsigned kinds = KindsOf(record);
        for (const RecordField& field : fields) {
            if ((field.writtenFor & kinds) == 0) continue;
            object.AddMember(Value(rapidjson::StringRef(field.key.data(), field.key.size())),
                             std::visit(ApiValue{record, allocator, field.word}, field.member), allocator);
        }
        return object;
    }
};

}  // namespace

TrackedUGC::TrackedUGC(const Highlight& highlight)
    : id(highlight.GetId()),
      path(highlight.GetPath()),
      fileType(highlight.GetTypeAsString()),
      fileSubType("Highlight"),
      fileSource("OVS_SDK"),
      profileName(highlight.GetSDKAppInfo().profileName),
      drsName(highlight.GetSDKAppInfo().name),
      shortName(highlight.GetSDKAppInfo().appShortName),
      cmsId(highlight.GetSDKAppInfo().cmsId),
      highlightDefinitionId(highlight.GetHighlightDefinitionId()),
      highlightGroupId(highlight.GetGroupId()),
      highlightTags(highlight.GetTags()),
      highlightSignificance(highlight.GetSignificance()),
      highlightName(highlight.GetHighlightName()),
      eventTimeStamp(highlight.GetTimeStamp()) {}

void TrackedUGC::ShareTexts(TextPool& pool) {
    for (SharedText* const text :
         {&fileType, &fileSubType, &fileSource, &profileName, &drsName, &shortName, &duration, &audioType,
          &highlightDefinitionId, &highlightGroupId, &highlightName, &topBarText, &bottomBarText})
        pool.Share(*text);
}

bool TrackedUGC::MediaFileExists() const {
    return KXP::FileExists(path);
}

bool TrackedUGC::IsAHighlight(const TrackedUGC& ugc) {
    return ugc.fileSource == "OVS_SDK" && ugc.fileSubType == "Highlight";
}

void TrackedUGC::CreateUGCJSONValue(const TrackedUGC& ugc, Value& out, KXP::Allocator& allocator) {
    out = ApiValue{ugc, allocator}(kRecordApiFields);
}
