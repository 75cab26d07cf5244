// Reads the tables of a track that is not in fragments.
#pragma once

#include <string_view>

#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/cut/Sample.h"
#include "libraries/ovnx-media/cut/TableRows.h"

namespace ovnxmedia {

// The most entries that the tables of a file may make: about 12 hours of video at 60 frames with sound.
constexpr size_t kMaxSamples = 4u << 20;

// The samples one after the other, for whoever needs none of them twice: those of a long recording take tens
// of megabytes. `boxes` is the content of a "stbl", which must outlive this object, as the budget. `isSound`
// allows for runs. The functions throw Failure where tables contradict each other.
class SampleWalk {
  public:
    SampleWalk(std::string_view boxes, bool isSound, const Budget& budget);

    // The next one, without whether it can be decoded by itself; false at the end.
    bool Next(Sample& sample);

    bool HasRuns() const { return hasRuns_; }
    RunUnit unit() const { return unit_; }
    const Sizes& sizes() const { return sizes_; }
    const Tables& tables() const { return tables_; }
    // The content of a table; empty when there is none.
    std::string_view At(const char* type) const;

  private:
    void LookForRuns();
    bool NextChunk();
    void TakeRun(Sample& run) const;
    void TakeSample(Sample& sample);

    const Budget& budget_;
    const Tables tables_;
    const Sizes sizes_;
    Values durations_;
    Values shifts_;
    const bool isLarge_;
    const Rows chunks_;
    const Rows groups_;
    bool hasRuns_ = false;
    RunUnit unit_;
    uint32_t delta_ = 0;  // of each sample of a run
    uint64_t chunk_ = 0;  // the next one
    uint64_t group_ = 0;  // of the current chunk
    uint64_t left_ = 0;   // of its samples
    uint32_t entry_ = 1;
    uint64_t offset_ = 0;  // of the next sample
    int64_t time_ = 0;
    uint64_t number_ = 0;
};

// At most `most` entries are made; throws Failure beyond that, and as above. The result refers to the tables.
SampleTable ReadSampleTable(std::string_view boxes, bool isSound, size_t most, const Budget& budget);

}  // namespace ovnxmedia
