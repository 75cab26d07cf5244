#include "plugin-modules/Gallery/src/settings/SettingsJson.h"

#include "common/json/JsonHelpers.h"

namespace {

constexpr const char* kOldGalleryPath = "currentDirectory";

// Visits every member of the file, in the order of writing.
template <typename Settings, typename Visitor>
void VisitMembers(Settings& settings, Visitor visit) {
    visit("capEnabled", settings.capEnabled);
    visit("capSizePercent", settings.maxSizePercent);
    visit("currentDirectoryV2", settings.userGalleryPath);
    visit("tempDirectory", settings.tempFolder);
    visit("trackerUpdateState", settings.trackerUpdateState);
}

class Reader {
  public:
    explicit Reader(const KXP::Value& object) : object_(object) {}

    template <typename T>
    void operator()(const char* key, T& member) const {
        member = KXP::jsonGetValueOrDefault<T>(object_, key, member);
    }
    // A negative number is accepted and stored as unsigned: the cap is not checked.
    void operator()(const char* key, uint32_t& member) const {
        const auto fallback = static_cast<int>(member);
        const auto asSigned = static_cast<uint32_t>(KXP::jsonGetValueOrDefault<int>(object_, key, fallback));
        member = KXP::jsonGetValueOrDefault<uint32_t>(object_, key, asSigned);
    }
    void operator()(const char* key, TrackerUpdateState& member) const {
        member = KXP::jsonGetEnumOrDefault(object_, key, kTrackerUpdateStateStrs, TrackerUpdateNotActive);
    }

  private:
    const KXP::Value& object_;
};

class Writer {
  public:
    Writer(KXP::Value& object, KXP::Allocator& allocator) : object_(object), allocator_(allocator) {}

    template <typename T>
    void operator()(const char* key, T member) {
        object_.AddMember(rapidjson::StringRef(key), member, allocator_);
    }
    void operator()(const char* key, const std::string& member) {
        object_.AddMember(rapidjson::StringRef(key), KXP::Value(member, allocator_), allocator_);
    }
    void operator()(const char* key, TrackerUpdateState member) {
        (*this)(key, TrackerUpdateStateName(member));
    }

  private:
    KXP::Value& object_;
    KXP::Allocator& allocator_;
};

}  // namespace

const std::map<std::string, TrackerUpdateState> kTrackerUpdateStateStrs = {
    {"TrackerUpdateNotActive", TrackerUpdateNotActive},
    {"TrackerUpdateInProgress", TrackerUpdateInProgress},
    {"TrackerUpdateComplete", TrackerUpdateComplete},
    {"CancelUpdateComplete", CancelUpdateComplete},
    {"CancelUpdate", CancelUpdate},
};

std::string TrackerUpdateStateName(TrackerUpdateState state) {
    for (const auto& [name, value] : kTrackerUpdateStateStrs) {
        if (value == state) return name;
    }
    return "";
}

bool ReadStoredSettings(const KXP::Value& root, StoredSettings& settings, bool& oldLayout) {
    const KXP::Value& object = KXP::JSONGetObjectOrEmpty(root, "settings");
    if (object.ObjectEmpty()) return false;
    VisitMembers(settings, Reader(object));
    oldLayout = KXP::jsonObjectHasKey(object, kOldGalleryPath, false);
    if (oldLayout)
        settings.userGalleryPath = KXP::jsonGetValueOrDefault<std::string>(object, kOldGalleryPath, "");
    return true;
}

void WriteStoredSettings(const StoredSettings& settings, KXP::Document& document) {
    KXP::Allocator& allocator = document.GetAllocator();
    KXP::Value object(rapidjson::kObjectType);
    VisitMembers(settings, Writer(object, allocator));
    document.SetObject();
    document.AddMember("settings", object, allocator);
}
