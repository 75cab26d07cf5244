// The small text block that a capture carries and that says what made it: an outer JSON object with the
// members "Source" and "B64", the latter being the base64 of an inner JSON object with the facts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

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

// One block, read. A block that cannot be read says nothing. Content never makes it throw.
class MetadataBlock {
  public:
    MetadataBlock() = default;
    explicit MetadataBlock(std::string_view text);

    // The outer "Source"; empty where it is missing or no string.
    const std::string& source() const { return source_; }
    // Overwrites the fields whose members the block holds with the right type and leaves the others as they
    // were.
    void CopyTo(MetadataFields& fields) const;

  private:
    std::string source_;
    MetadataFields fields_;
    bool hasFacts_ = false;  // an inner object that could be read
    uint32_t taken_ = 0;     // a bit for each of the members that a block can hold
};

// Reads one block after the other. The captures of a game lie side by side and carry the same block, but for
// highlights, which name their moment: so the last two are kept. One thread.
class MetadataReader {
  public:
    // Valid until the next call.
    const MetadataBlock& Read(std::string_view text);

  private:
    struct Kept {
        std::string text;
        MetadataBlock block;
    };

    Kept kept_[2];
    size_t last_ = 0;  // an index of the one that was used last
};
