#include "libraries/share-common/MetadataBlock.h"

#include <array>
#include <iterator>
#include <utility>

#include "CobalixUtil.h"
#include "common/json/MemberPicker.h"
#include "common/text/Base64.h"

namespace {

std::string_view TextOf(const KXP::Value& value) {
    return {value.GetString(), value.GetStringLength()};
}

// Each returns whether the value is of the field's type.
bool Take(const KXP::Value& value, std::string& field) {
    if (value.IsString()) field = TextOf(value);
    return value.IsString();
}

bool Take(const KXP::Value& value, int64_t& field) {
    if (value.IsInt64()) field = value.GetInt64();
    return value.IsInt64();
}

bool Take(const KXP::Value& value, uint32_t& field) {
    if (value.IsUint()) field = value.GetUint();
    return value.IsUint();
}

// A screenshot says nothing new: what the walk found in the file's own structure is more exact.
bool TakeSubType(const KXP::Value& value, MetadataFields& fields) {
    return Take(value, fields.fileSubType) && !fields.fileSubType.empty() &&
           fields.fileSubType != "Screenshot";
}

template <auto field>
bool TakeInto(const KXP::Value& value, MetadataFields& fields) {
    return Take(value, fields.*field);
}

template <auto field>
void CopyField(const MetadataFields& from, MetadataFields& to) {
    to.*field = from.*field;
}

struct Member {
    std::string_view name;
    bool (*take)(const KXP::Value&, MetadataFields&);
    void (*copy)(const MetadataFields& from, MetadataFields& to);
};

template <auto field>
constexpr Member Of(std::string_view name) {
    return {name, TakeInto<field>, CopyField<field>};
}

// In the order of taking. Older writers use the short names; where both are present the long one, taken last,
// wins. "ProfileName" is not read: writers mirror it into "DRSProfileName" when there is no other.
constexpr Member kMembers[] = {
    Of<&MetadataFields::drsName>("DRSAppName"),
    Of<&MetadataFields::drsProfileName>("DRSProfileName"),
    Of<&MetadataFields::shortName>("ShortName"),
    {"MediaType", TakeSubType, CopyField<&MetadataFields::fileSubType>},
    Of<&MetadataFields::cmsId>("CmsId"),
    Of<&MetadataFields::highlightName>("Name"),
    Of<&MetadataFields::highlightName>("HighlightName"),
    Of<&MetadataFields::highlightDefinitionId>("Id"),
    Of<&MetadataFields::highlightDefinitionId>("HighlightId"),
    Of<&MetadataFields::highlightGroupId>("GroupId"),
    Of<&MetadataFields::highlightGroupId>("HighlightGroupId"),
    Of<&MetadataFields::eventTimeStamp>("EventTimeStamp"),
    Of<&MetadataFields::highlightTags>("Tags"),
    Of<&MetadataFields::highlightTags>("HighlightTags"),
    Of<&MetadataFields::highlightSignificance>("Significance"),
    Of<&MetadataFields::highlightSignificance>("HighlightSignificance"),
};

constexpr size_t kMemberCount = std::size(kMembers);

constexpr auto kMemberNames = [] {
    std::array<std::string_view, kMemberCount> names{};
    for (size_t i = 0; i < kMemberCount; ++i)
        names[i] = kMembers[i].name;
    return names;
}();

enum OuterMember : size_t { kSource, kCode };
constexpr std::array<std::string_view, 2> kOuterNames = {"Source", "B64"};

}  // namespace

MetadataBlock::MetadataBlock(std::string_view text) {
    KXP::MemberPicker outer(kOuterNames);
    if (!outer.Read(std::string(text))) return;
    Take(outer[kSource], source_);
    if (!outer[kCode].IsString()) return;

    KXP::MemberPicker inner(kMemberNames);
    if (!inner.Read(KXP::DecodeBase64Loosely(TextOf(outer[kCode])))) return;
    for (size_t i = 0; i < kMemberCount; ++i)
        if (kMembers[i].take(inner[i], fields_)) taken_ |= 1u << i;
    hasFacts_ = true;
}

void MetadataBlock::CopyTo(MetadataFields& fields) const {
    for (size_t i = 0; i < kMemberCount; ++i)
        if ((taken_ >> i & 1) != 0) kMembers[i].copy(fields_, fields);
    if (!hasFacts_) return;
    KXP_LOG(KXP::LogTrace, "CheckIfZv: cmsId:%ld name:%s id:%s groupId:%s tags:0x%08x significance:0x%08x",
            static_cast<long>(fields.cmsId), fields.highlightName.c_str(),
            fields.highlightDefinitionId.c_str(), fields.highlightGroupId.c_str(), fields.highlightTags,
            fields.highlightSignificance);
}

const MetadataBlock& MetadataReader::Read(std::string_view text) {
    if (text == kept_[last_].text) return kept_[last_].block;
    Kept& other = kept_[1 - last_];
    if (text != other.text) other = {std::string(text), MetadataBlock(text)};
    last_ = 1 - last_;
    return other.block;
}
