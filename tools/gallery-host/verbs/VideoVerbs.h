// The verbs that change a video or its record: trim, meme and engrave.
#pragma once

#include <string>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

// The file of a verb: its name as the user wrote it, and its absolute path.
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
    std::string top;  // both empty to remove them
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

// Keeps texts for a video on record. Returns why it could not; empty when it did.
std::string AddMeme(Session& session, const std::string& path, const std::string& top,
                    const std::string& bottom);

// These throw Failure(kExitFailed). With JSON the outcome is also a line of standard output.
void RunTrim(Session& session, Output& output, const TrimOptions& options);
void RunMeme(Session& session, Output& output, const MemeOptions& options);
void RunEngrave(Session& session, Output& output, const EngraveOptions& options);

}  // namespace host
