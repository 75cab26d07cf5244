// A home of its own with a gallery in it, for as long as it lives, and captures to put there.
#pragma once

#include <string>

#include "tests/support/CaptureBytes.h"
#include "tests/support/TemporaryHome.h"

class TempGallery {
  public:
    std::string Path(const std::string& name) const { return gallery_ + "/" + name; }
    const std::string& path() const { return gallery_; }
    const TempFolder& home() const { return home_.folder(); }

    // A screenshot of the product's own; returns its path.
    std::string AddImage(const std::string& name) const {
        return Add(name, captures::Png(captures::PngText("Software", "Ovirastream SHARE")));
    }
    std::string AddHighlight(const std::string& name, const std::string& inner = "{}") const {
        return Add(name, Video(600, 1200, captures::Block("Ovirastream SDK", inner)));
    }
    std::string Add(const std::string& name, const std::string& bytes) const {
        return home().Write("Videos/ZORVEX/Ovirastream/" + name, bytes);
    }
    void Remove(const std::string& name) const { std::filesystem::remove_all(Path(name)); }

    // The bytes of a video, with what the inspection reads of one.
    static std::string Video(uint32_t timeScale, uint32_t duration, const std::string& tagc) {
        std::string header(100, '\0');
        header.replace(12, 4, samples::U32(timeScale)).replace(16, 4, samples::U32(duration));
        header.replace(96, 4, samples::U32(2));
        return captures::FileType() +
               samples::Mp4Box("moov", samples::Mp4Box("mvhd", header) +
                                           samples::Mp4Box("udta", samples::Mp4Box("tagc", tagc))) +
               samples::Mp4Box("free", std::string(120, '\0'));
    }

    std::string ShareFile(const std::string& name) const { return "data/ZORVEX/OvirastreamX/Share/" + name; }

  private:
    TemporaryHome home_;
    const std::string gallery_ = home().MakeFolder("Videos/ZORVEX/Ovirastream");
};
