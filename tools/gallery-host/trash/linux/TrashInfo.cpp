#include "gallery-host/trash/linux/TrashInfo.h"

#include <algorithm>
#include <cctype>
#include <memory>

#include <glib.h>

namespace host {
namespace {

constexpr const char* kGroup = "Trash Info";

struct FreeText {
    void operator()(char* text) const { g_free(text); }
};
using OwnText = std::unique_ptr<char, FreeText>;

// The fields have a fixed width; other programs write fractions or a zone after them.
std::string DateOf(const char* text) {
    constexpr std::string_view kForm = "0000-00-00T00:00:00";
    const std::string_view date = std::string_view(text).substr(0, kForm.size());
    const bool fits =
        std::equal(date.begin(), date.end(), kForm.begin(), kForm.end(), [](char is, char form) {
            return form == '0' ? std::isdigit(static_cast<unsigned char>(is)) != 0 : is == form;
        });
    return fits ? std::string(date) : std::string();
}

}  // namespace

bool ReadTrashInfo(std::string_view text, TrashInfo& info) {
    const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> file(g_key_file_new(), g_key_file_unref);
    if (!g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr))
        return false;
    // A path is escaped as in an address, not as other values of such files.
    const OwnText escaped(g_key_file_get_value(file.get(), kGroup, "Path", nullptr));
    const OwnText path(escaped ? g_uri_unescape_string(escaped.get(), nullptr) : nullptr);
    if (!path || *path == '\0') return false;
    const OwnText date(g_key_file_get_value(file.get(), kGroup, "DeletionDate", nullptr));
    info.path = path.get();
    info.deleted = date ? DateOf(date.get()) : std::string();
    return true;
}

}  // namespace host
