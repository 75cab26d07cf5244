#include "plugin-modules/Gallery/src/settings/SettingsJson.h"

#include "common/json/JsonHelpers.h"

namespace {

constexpr const char* kOldGalleryPath = "currentDirectory";

// Visits every value with its key, in the order of writing.
template <typename Visitor>
void VisitSettings(Visitor visit) {
    visit(kCapEnabled, "capEnabled", &StoredSettings::capEnabled);
    visit(kMaxSizePercent, "capSizePercent", &StoredSettings::maxSizePercent);
    visit(kUserGalleryPath, "currentDirectoryV2", &StoredSettings::userGalleryPath);
    visit(kTempFolder, "tempDirectory", &StoredSettings::tempFolder);
    visit(kTrackerUpdateState, "trackerUpdateState", &StoredSettings::trackerUpdateState);
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

SettingsSet Differences(const StoredSettings& a, const StoredSettings& b) {
    SettingsSet different = 0;
    VisitSettings([&](SettingsBit bit, const char*, auto value) {
        if (a.*value != b.*value) different |= bit;
    });
    return different;
}

void CopySettings(const StoredSettings& from, SettingsSet which, StoredSettings& to) {
    VisitSettings([&](SettingsBit bit, const char*, auto value) {
        if ((which & bit) != 0) to.*value = from.*value;
    });
}

bool ReadStoredSettings(const KXP::Value& root, StoredSettings& settings, bool& oldLayout) {
    const KXP::Value* object = KXP::jsonFindMember(root, "settings", false);
    if (!object || !object->IsObject() || object->ObjectEmpty()) return false;
    const Reader read(*object);
    VisitSettings([&](SettingsBit, const char* key, auto value) { read(key, settings.*value); });
    oldLayout = KXP::jsonObjectHasKey(*object, kOldGalleryPath, false);
    if (oldLayout)
        settings.userGalleryPath = KXP::jsonGetValueOrDefault<std::string>(*object, kOldGalleryPath, "");
    return true;
}

void WriteStoredSettings(const StoredSettings& settings, KXP::Document& document) {
    KXP::Allocator& allocator = document.GetAllocator();
    KXP::Value object(rapidjson::kObjectType);
    Writer write(object, allocator);
    VisitSettings([&](SettingsBit, const char* key, auto value) { write(key, settings.*value); });
    document.SetObject();
    document.AddMember("settings", object, allocator);
}
