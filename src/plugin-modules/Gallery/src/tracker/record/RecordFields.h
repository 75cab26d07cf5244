// The members of a record in its two JSON forms, as lists that readers, writers and tests share.
#pragma once

#include <cstddef>
#include <string_view>
#include <variant>

#include "libraries/share-common/PageWords.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

struct RecordField;

// A list of fields; also that of an object inside the record, whose fields are all texts.
struct RecordFields {
    const RecordField* first;
    size_t count;

    const RecordField* begin() const { return first; }
    const RecordField* end() const;
    const RecordField& operator[](size_t index) const;
};

// Kinds of records, as bits. Each field is written for certain kinds only and read for all.
enum RecordKind : unsigned {
    kAnyRecord = 1,
    kVideoRecord = 2,
    kHighlightRecord = 4,
    kNoScreenshot = 8,
};

using WordForPages = const std::string_view&(std::string_view word);

struct RecordField {
    std::string_view key;
    std::variant<std::string TrackedUGC::*, SharedText TrackedUGC::*, int32_t TrackedUGC::*,
                 uint32_t TrackedUGC::*, uint64_t TrackedUGC::*, RecordFields>
        member;
    RecordKind writtenFor = kAnyRecord;
    WordForPages* word = nullptr;  // replaces the text by a word that pages know
};

inline const RecordField* RecordFields::end() const {
    return first + count;
}
inline const RecordField& RecordFields::operator[](size_t index) const {
    return first[index];
}

// The kinds of the record, as bits.
inline unsigned KindsOf(const TrackedUGC& record) {
    return kAnyRecord | (record.fileType == "video" ? kVideoRecord : 0u) |
           (TrackedUGC::IsAHighlight(record) ? kHighlightRecord : 0u) |
           (record.fileSubType == "Screenshot" ? 0u : kNoScreenshot);
}

namespace record_fields {

using R = TrackedUGC;

inline constexpr RecordField kFileCaptions[] = {
    {"top", &R::topBarText},
    {"bottom", &R::bottomBarText},
};

// Of the tracker's file, in its order.
inline constexpr RecordField kFile[] = {
    {"id", &R::id},
    {"path", &R::path},
    {"type", &R::fileType},
    {"subType", &R::fileSubType},
    {"source", &R::fileSource},
    {"sizeKB", &R::sizeKB},
    {"date", &R::date},
    {"profileName", &R::profileName},
    {"drsName", &R::drsName},
    {"shortName", &R::shortName},
    {"cmsId", &R::cmsId},
    {"duration", &R::duration, kVideoRecord},
    {"msDuration", &R::msDuration, kVideoRecord},
    {"audioType", &R::audioType, kVideoRecord},
    {"highlightDefinitionId", &R::highlightDefinitionId, kHighlightRecord},
    {"highlightName", &R::highlightName, kHighlightRecord},
    {"highlightGroupId", &R::highlightGroupId, kHighlightRecord},
    {"highlightTags", &R::highlightTags, kHighlightRecord},
    {"highlightSignificance", &R::highlightSignificance, kHighlightRecord},
    {"highlightEventTimeStamp", &R::eventTimeStamp, kHighlightRecord},
    {"meme", RecordFields{kFileCaptions, std::size(kFileCaptions)}},
};

inline constexpr RecordField kApiCaptions[] = {
    {"topBarText", &R::topBarText},
    {"bottomBarText", &R::bottomBarText},
};

// Of responses, which have no short name; only the subtype of a screenshot is ever left out.
inline constexpr RecordField kApi[] = {
    {"id", &R::id},
    {"path", &R::path},
    {"fileType", &R::fileType, kAnyRecord, TypeForPages},
    {"fileSubType", &R::fileSubType, kNoScreenshot, SubtypeForPages},
    {"fileSource", &R::fileSource, kAnyRecord, SourceForPages},
    {"fileSizeKB", &R::sizeKB},
    {"date", &R::date},
    {"DRSName", &R::drsName},
    {"DRSProfileName", &R::profileName},
    {"cmsId", &R::cmsId},
    {"duration", &R::duration},
    {"msDuration", &R::msDuration},
    {"audioType", &R::audioType},
    {"highlightDefinitionId", &R::highlightDefinitionId},
    {"highlightName", &R::highlightName},
    {"highlightGroupId", &R::highlightGroupId},
    {"highlightTags", &R::highlightTags},
    {"highlightSignificance", &R::highlightSignificance},
    {"eventTimeStamp", &R::eventTimeStamp},
    {"memeInfo", RecordFields{kApiCaptions, std::size(kApiCaptions)}},
};

}  // namespace record_fields

inline constexpr RecordFields kRecordFileFields{record_fields::kFile, std::size(record_fields::kFile)};
inline constexpr RecordFields kRecordApiFields{record_fields::kApi, std::size(record_fields::kApi)};
