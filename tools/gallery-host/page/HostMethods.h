// The methods of the module "Host": what the library does not do for a page, and this program does.
#pragma once

#include <string>
#include <vector>

#include "common/json/Json.h"
#include "gallery-host/page/GalleryFolder.h"
#include "gallery-host/page/Handles.h"
#include "gallery-host/page/PagePreferences.h"

namespace host::page {

const std::vector<std::string>& HostMethodNames();

// For one thread.
class HostMethods {
  public:
    HostMethods(const Handles& handles, const GalleryFolder& gallery)
        : handles_(handles), gallery_(gallery) {}

    // The response to a request of one of these names, with the library's form of result.
    KXP::Document Answer(const std::string& method, const KXP::Value& payload) const;

  private:
    KXP::Document OpenFile(const std::string& method, const std::string& path) const;
    KXP::Document AnswerPreferences(const KXP::Value& payload) const;
    // For each file a result of its own.
    KXP::Document AnswerFiles(const std::string& method, const KXP::Value& payload) const;

    const Handles& handles_;
    const GalleryFolder& gallery_;
    const PagePreferences preferences_;
};

// Opens a file or folder with the desktop's program for it. False when there is none. `path` is absolute.
bool OpenWithDesktop(const std::string& path);

}  // namespace host::page
