#include <memory>

#include <gio/gio.h>

#include "gallery-host/trash/Trash.h"

namespace host {
namespace {

struct Release {
    void operator()(GFile* file) const { g_object_unref(file); }
    void operator()(GError* error) const { g_error_free(error); }
};

std::string ReasonOf(const GError& error) {
    if (g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_NOT_SUPPORTED)) return "its volume has no trash";
    return std::string("cannot be moved to the trash: ") + error.message;
}

}  // namespace

std::string MoveToTrash(const std::string& path) {
    // The library's own way through the file system, which needs no desktop and no daemon.
    const std::unique_ptr<GFile, Release> file(g_vfs_get_file_for_path(g_vfs_get_local(), path.c_str()));
    GError* error = nullptr;
    if (g_file_trash(file.get(), nullptr, &error)) return {};
    const std::unique_ptr<GError, Release> owned(error);
    return ReasonOf(*owned);
}

}  // namespace host
