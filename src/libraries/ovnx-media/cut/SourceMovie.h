// The movie that a clip is cut out of, as its boxes describe it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "libraries/ovnx-media/cut/EditList.h"
#include "libraries/ovnx-media/cut/MovieFile.h"
#include "libraries/ovnx-media/cut/Sample.h"

namespace ovnxmedia {

// Refers to the movie's bytes.
struct SourceTrack {
    std::string_view content;  // of the "trak"
    uint32_t id = 0;
    uint32_t unit = 1;    // of its times, in parts of a second
    std::string handler;  // what kind of track it is: "vide", "soun", "text" and others
    std::vector<Edit> edits;
    SampleTable table;

    bool IsVideo() const { return handler == "vide"; }
    bool IsSound() const { return handler == "soun"; }
    // A text holds until the next one, wherever it is cut.
    bool IsText() const { return handler == "text" || handler == "sbtl" || handler == "subt"; }
    // The content of the "stbl".
    std::string_view tables() const;
    // The content of the sample descriptions.
    std::string_view descriptions() const;
    // One sample description; its type is empty where there is none with this number.
    std::string_view EntryType(uint32_t number) const;
    std::string_view Entry(uint32_t number) const;
};

class SourceMovie {
  public:
    // Whether the samples are put into memory. Those in fragments are in any case; for others there is
    // SampleWalk.
    enum class Samples { Read, Leave };

    // Throws Failure when `fd` is no MP4 file, or one of a kind that cannot be cut. The budget must outlive
    // this object.
    SourceMovie(int fd, const Budget& budget, Samples samples = Samples::Read);
    SourceMovie(const SourceMovie&) = delete;
    SourceMovie& operator=(const SourceMovie&) = delete;

    SourceFile& file() { return file_; }
    const MovieFile& boxes() const { return boxes_; }
    const std::vector<SourceTrack>& tracks() const { return tracks_; }
    bool HasSamples() const { return hasSamples_; }
    // The first video, apart from the pictures of chapters. Throws Failure when there is none.
    const SourceTrack& Video() const;

  private:
    void ReadTrack(std::string_view content, uint32_t movieUnit, const Budget& budget);

    SourceFile file_;
    MovieFile boxes_;
    const bool hasSamples_;
    std::vector<SourceTrack> tracks_;
    std::vector<uint32_t> chapterTracks_;
    size_t samplesLeft_;
};

}  // namespace ovnxmedia
