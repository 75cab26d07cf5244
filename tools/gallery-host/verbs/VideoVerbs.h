// The verbs that change a video or what is on record of it: trim, meme and engrave.
#pragma once

#include <string>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

// What these have in common: the file as the user wrote it, and its absolute path.
struct VideoSubject {
    std::string name;
    std::string path;
    bool json = false;
};

struct TrimOptions {
    VideoSubject file;
    std::string target;  // absolute; the file's own path to cut it in place
    double from = 0;     // milliseconds
    double length = 0;
};

struct MemeOptions {
    VideoSubject file;
    std::string top;  // both empty to take them away
    std::string bottom;
};

struct EngraveOptions {
    VideoSubject file;
    std::string app;
    std::string profile;
    std::string shortName;
    int cmsId = 0;
    bool highlight = false;
    std::string definition;
    std::string group;
    int significance = 0;
    std::string mediaType;
};

// These throw Failure(kExitFailed) with plain words; with JSON the outcome is a line of standard output too.
void RunTrim(Session& session, Output& output, const TrimOptions& options);
void RunMeme(Session& session, Output& output, const MemeOptions& options);
void RunEngrave(Session& session, Output& output, const EngraveOptions& options);

}  // namespace host
