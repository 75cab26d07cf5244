// The part of CoreMedia that we use, after its public documentation.
#pragma once

#include <stdint.h>

struct CMTime {
    int64_t value;
    int32_t timescale;
    uint32_t flags;
    int64_t epoch;
};
struct CMTimeRange {
    CMTime start;
    CMTime duration;
};

extern "C" {
extern const CMTime kCMTimeZero;

CMTime CMTimeMake(int64_t value, int32_t timescale);
double CMTimeGetSeconds(CMTime time);
}
