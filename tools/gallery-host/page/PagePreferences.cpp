#include "gallery-host/page/PagePreferences.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <fcntl.h>

#include "base/FileDescriptor.h"
#include "base/NewFile.h"
#include "base/Places.h"
#include "base/ReadWrite.h"
#include "gallery-host/message/Envelope.h"

namespace host::page {
namespace {

bool IsPlain(const KXP::Value::Member& member) {
    const KXP::Value& value = member.value;
    return value.IsString() || value.IsNumber() || value.IsBool();
}

std::string ReadText(const std::string& path) {
    const KXP::FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    KXP::FileBytes content;
    if (!file.IsOpen() || !KXP::ReadWhole(file, PagePreferences::kMaxBytes, content)) return {};
    return std::string(content.view());
}

}  // namespace

PagePreferences::PagePreferences()
    : file_(KXP::Platform::AppSupportFolder() + KXP::kProductFolder + "/" + KXP::kShareFolder +
            "/PagePreferences.json") {}

KXP::Document PagePreferences::Read() const {
    KXP::Document preferences;
    std::string error;
    if (!ParseObject(ReadText(file_), preferences, error)) preferences.SetObject();
    return preferences;
}

std::string PagePreferences::Write(const KXP::Value& preferences) const {
    if (!preferences.IsObject() || !std::all_of(preferences.MemberBegin(), preferences.MemberEnd(), IsPlain))
        return "Preferences are texts, numbers and booleans";
    const std::string text = ToText(preferences);
    if (text.size() > kMaxBytes) return "The preferences are too long";
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(file_).parent_path(), error);
    KXP::NewFile file(file_);
    if (!file.IsOpen() || !KXP::WriteFully(file.descriptor(), text) ||
        !file.PutOver(KXP::Durability::Content))
        return std::string("The preferences could not be kept: ") + std::strerror(errno);
    return {};
}

}  // namespace host::page
