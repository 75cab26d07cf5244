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

    // These create the gallery in its default place and throw Failure. The samples are small, of every kind,
    // with files that are no captures; returns the gallery's path.
    std::string FillWithSamples() const;
    // Pictures and videos to look at, which the program demo-gallery makes.
    void FillWithScenes() const;

  private:
    std::string MakeGallery() const;

    std::string path_;
    const bool keep_;
};

// Gives some of the scenes' videos their captions, once the gallery is scanned. Throws Failure.
void CaptionScenes(Session& session);

// Lists the gallery's folder, then the captures on record.
void RunDemo(Session& session, Output& output, const std::string& gallery);

}  // namespace host
