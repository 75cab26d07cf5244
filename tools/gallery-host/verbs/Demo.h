// A gallery of samples in a home of its own, so that the plug-in can be tried without touching the user's.
#pragma once

#include <string>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

// A new folder that HOME and the XDG folders point into from then on. Make it before there are threads, as
// the environment has no lock, and before the plug-in is loaded.
class TemporaryHome {
  public:
    explicit TemporaryHome(bool keep);  // throws Failure
    ~TemporaryHome();                   // removes the folder, or says where it is
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;

    // Where the plug-in looks for the gallery by default; made and filled with samples. Throws Failure.
    std::string FillGallery() const;

  private:
    std::string path_;
    const bool keep_;
};

// Lists what lies in the gallery's folder, and what the gallery has on record.
void RunDemo(Session& session, Output& output, const std::string& gallery);

}  // namespace host
