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
    // A video's duration in seconds, audio layout and picture size, as media::FindMP4HeaderInfo tells them:
    // the size with `wantSize`, the two others without.
    static int32_t FindMP4HeaderInfo(const std::string& path, double& duration, std::string& audioType,
                                     bool wantSize, unsigned int& width, unsigned int& height);
    static int32_t FindMP4DurationTypeInfo(const std::string& path, double& duration, std::string& audioType);
    static int32_t FindMP4SizeInfo(const std::string& path, unsigned int& width, unsigned int& height);

  private:
    GalleryPlugin& plugin_;
};
