// The small text block that a capture carries and that says what made it: an outer JSON object with the
// members "Source" and "B64", the latter being the base64 of an inner JSON object with the facts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "common/json/Json.h"

// What a block can say about a media file. Texts are UTF-8 and may hold any character, U+0000 among them.
struct MetadataFields {
    std::string fileSubType;
    std::string drsName;
    std::string drsProfileName;
    std::string shortName;
    int64_t cmsId = 0;
    std::string highlightName;
    std::string highlightDefinitionId;
    std::string highlightGroupId;
    std::string eventTimeStamp;
    uint32_t highlightTags = 0;
    uint32_t highlightSignificance = 0;
};

// Overwrites the fields whose members the block holds with the right type and leaves the others as they were;
// a block that cannot be read changes nothing. Content never makes it throw. Any thread.
void ReadMetadataBlock(std::string_view text, MetadataFields& fields);

// The same over an outer text that is parsed already, of whatever type.
void ReadMetadataBlock(const KXP::Value& outer, MetadataFields& fields);
