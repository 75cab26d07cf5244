// The hub of the module: what the endpoints call. The heavy work lies in units of their own; this class binds
// them to the running plug-in. The functions that inspect files touch no state and may run on any thread.
#pragma once

#include <cstdint>
#include <string>

class GalleryPlugin;

class ZvGalleryAPI {
  public:
    explicit ZvGalleryAPI(GalleryPlugin& plugin) : plugin_(plugin) {}
    ZvGalleryAPI(const ZvGalleryAPI&) = delete;
    ZvGalleryAPI& operator=(const ZvGalleryAPI&) = delete;

    GalleryPlugin& Plugin() { return plugin_; }

    // Whether the file is the product's own, by its bytes, and what it is. Gives 1, or a negative code when
    // that could not be told; the strings are then left as they were.
    static int32_t CheckIfZv(const std::string& path, bool& isOwn);
    static int32_t CheckIfZv(const std::string& path, bool& isOwn, std::string& type, std::string& subtype,
                             std::string& source);
    // Whether a JPEG is small enough to be shown whole. Gives 1, or 0x80070006 when it cannot be opened.
    static int32_t CheckIfJPGFileSizeIsValid(const std::string& path, bool& isValid);
    static bool IsDirectoryEmpty(const std::string& path, bool onlyOwn);

  private:
    GalleryPlugin& plugin_;
};
