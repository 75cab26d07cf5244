// What the capture service reports about a capture, as the input of an engraving.
#pragma once

#include <cstdint>

// Whoever fills it zeroes it first; texts have a terminating zero.
struct CaptureRequestInfo {
    static constexpr uint32_t kOrdinary = 0;
    static constexpr uint32_t kHighlight = 5;
    static constexpr uint32_t kHighlightToo =
        6;  // written like a highlight, under the source of an ordinary one
    static constexpr uint32_t kLumis = 8;

    uint32_t reserved;
    uint32_t captureType;
    wchar_t profileName[100];
    wchar_t drsAppName[100];
    wchar_t shortName[100];
    int64_t cmsId;
    wchar_t highlightName[256];
    wchar_t highlightId[256];
    wchar_t highlightGroupId[256];
    wchar_t mediaType[256];
    uint32_t tags;
    uint32_t significance;
    wchar_t drsProfileName[100];
    uint64_t eventTimeStamp;  // milliseconds since 1970
};
