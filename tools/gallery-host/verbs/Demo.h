// A gallery of samples in a temporary home, to try the plug-in without touching the user's files.
#pragma once

#include <string>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

// A new folder that HOME and the XDG variables point to from then on. Construct it before the plug-in is
// loaded and before there are threads, because the environment has no lock.
class TemporaryHome {
  public:
    explicit TemporaryHome(bool keep);  // throws Failure
    ~TemporaryHome();                   // removes the folder, or prints where it is
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;

    // Creates the gallery in its default place, fills it with samples and returns its path. Throws Failure.
    std::string FillGallery() const;

  private:
    std::string path_;
    const bool keep_;
};

// Lists the gallery's folder, then the captures on record.
void RunDemo(Session& session, Output& output, const std::string& gallery);

}  // namespace host
