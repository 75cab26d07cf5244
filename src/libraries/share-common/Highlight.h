// A capture that a game announces before its file exists, and the application that it comes from.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "common/json/Json.h"

enum class HighlightType { Video = 1, Screenshot = 2 };

// The words for it in messages.
extern const std::map<std::string, HighlightType> kHighlightTypeJsonStrs;

// False, and Video, for an unknown word.
bool HighlightStringToEnum(const std::string& word, HighlightType& type);
// False, and `word` unchanged, for a value that is none of the enumeration.
bool HighlightEnumToString(HighlightType type, std::string& word);

// What is known of the application; messages carry the three names alone.
struct SDKAppInfo {
    int processId = 0;
    std::string profileName;
    std::string name;
    std::string appShortName;
    std::string executable;
    uint64_t cmsId = 0;
    int version = 0;
};

class Highlight {
  public:
    int GetId() const { return id_; }
    void SetId(int id) { id_ = id; }
    const std::string& GetGroupId() const { return groupId_; }
    void SetGroupId(const std::string& groupId) { groupId_ = groupId; }
    const std::string& GetHighlightDefinitionId() const { return definitionId_; }
    void SetHighlightDefinitionId(const std::string& definitionId) { definitionId_ = definitionId; }
    const std::string& GetHighlightName() const { return name_; }
    void SetHighlightName(const std::string& name) { name_ = name; }
    HighlightType GetType() const { return type_; }
    void SetType(HighlightType type) { type_ = type; }
    // Empty for a value that is none of the enumeration.
    std::string GetTypeAsString() const;
    // Bits, like the tags; messages carry them unsigned.
    int GetSignificance() const { return static_cast<int>(significance_); }
    void SetSignificance(int significance) { significance_ = static_cast<uint32_t>(significance); }
    const std::string& GetTimeStamp() const { return timeStamp_; }
    void SetTimeStamp(const std::string& timeStamp) { timeStamp_ = timeStamp; }
    const std::string& GetPath() const { return path_; }
    void SetPath(const std::string& path) { path_ = path; }
    int GetTags() const { return static_cast<int>(tags_); }
    void SetTags(int tags) { tags_ = static_cast<uint32_t>(tags); }
    const SDKAppInfo& GetSDKAppInfo() const { return app_; }
    void SetSDKAppInfo(const SDKAppInfo& app) { app_ = app; }
    const std::string& GetMessageBusRefid() const { return messageBusRefid_; }
    // Keeps the reference with one NUL at its end, which keys of maps by it carry too.
    void SetMessageBusRefid(const std::string& reference);
    int GetVideoLength() const { return videoLength_; }  // seconds
    void SetVideoLength(int seconds) { videoLength_ = seconds; }
    int GetStartDelta() const { return startDelta_; }  // milliseconds
    void SetStartDelta(int milliseconds) { startDelta_ = milliseconds; }
    int GetEndDelta() const { return endDelta_; }  // milliseconds
    void SetEndDelta(int milliseconds) { endDelta_ = milliseconds; }

    bool MediaFileExists() const;

    // `out` becomes an object with every member, whatever is in it.
    static void CreateHighlightJSONValue(const Highlight& highlight, KXP::Value& out,
                                         KXP::Allocator& allocator);
    static void CreateAppJSONValue(const SDKAppInfo& app, KXP::Value& out, KXP::Allocator& allocator);
    // Members that are missing or of another type become 0 or the empty text.
    static void ParseHighlightJSON(Highlight& highlight, const KXP::Value& value);
    static void ParseAppJSON(SDKAppInfo& app, const KXP::Value& value);

  private:
    // Calls `visit` with the name and the member of each field but the application, in the order of the JSON.
    template <typename AnyHighlight, typename Visit>
    static void ForEachField(AnyHighlight& highlight, Visit visit);

    int id_ = 0;
    std::string groupId_;
    std::string definitionId_;
    std::string name_;
    HighlightType type_ = HighlightType::Video;
    uint32_t significance_ = 0;
    std::string timeStamp_;
    std::string path_;
    uint32_t tags_ = 0;
    SDKAppInfo app_;
    std::string messageBusRefid_;
    int videoLength_ = 0;
    int startDelta_ = 0;
    int endDelta_ = 0;
};
