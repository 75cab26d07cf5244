// What the tables of a track say about its samples: frames, packets of sound, texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ovnxmedia {

// One sample, or a run of samples of sound of one size that lie side by side. Times are in units of the
// track, on the time line that edit lists refer to.
struct Sample {
    uint64_t offset = 0;  // in the file
    int64_t decoded = 0;  // when it is decoded
    int64_t shown = 0;
    uint32_t size = 0;      // of all of it
    uint32_t duration = 0;  // of all of it
    uint32_t count = 1;     // greater for a run
    uint32_t number = 0;    // of the first, counted from 0
    uint32_t entry = 1;     // of the sample descriptions, counted from 1
    bool isSync = false;

    int64_t end() const { return shown + duration; }
};

// How a run of sound is divided: into units of so many samples, each of so many bytes.
struct RunUnit {
    uint32_t samples = 1;
    uint32_t bytes = 0;
};

// A "sbgp" and its "sgpd": which samples belong to which group of a kind.
struct SampleGroups {
    struct Run {
        uint64_t end;  // the number of the first sample after it
        uint32_t group;
    };

    std::string kind;               // four bytes
    std::string_view descriptions;  // the content of the "sgpd"; empty without one
    std::vector<Run> runs;

    // The group of a sample, counted from 1; 0 for none.
    uint32_t GroupOf(uint32_t number) const;
};

struct SampleTable {
    std::vector<Sample> samples;  // in the order of decoding
    bool hasSyncTable = false;    // without it every sample can be decoded by itself
    bool namesNoSync = false;     // there is such a table, and it is empty
    bool hasRuns = false;
    RunUnit unit;               // of the runs
    uint32_t uniformSize = 0;   // of each sample, as the table of a track with runs has it
    std::string_view priority;  // the content of the "sdtp": one byte for each sample after the first four
    std::vector<SampleGroups> groups;

    // When all of it has been shown.
    int64_t End() const;
};

}  // namespace ovnxmedia
