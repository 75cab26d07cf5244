#include "gallery-host/output/Words.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <string_view>

#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"

namespace host {
namespace {

struct Word {
    const char* value;
    const char* human;
};

constexpr Word kKinds[] = {{"video", "video"}, {"image", "image"}, {"other", "other file"}};

constexpr Word kDetails[] = {
    {"Screenshot", "screenshot"},
    {"Highlight", "highlight"},
    {"AnimatedGif", "animated GIF"},
    {"Normal", "normal"},
    {"Normal_Lumis", "LUMIS picture"},
    {"SuperResolution", "super resolution"},
    {"SuperResolution_Oversized", "super resolution, too large to show"},
    {"360Mono", "360\u00b0"},
    {"360Stereo", "360\u00b0, stereo"},
    {"Stereo", "stereo"},
    {"Exr", "raw light (EXR)"},
    {"Montage", "montage"},
    {"InstantReplay", "instant replay"},
    {"Manual", "manual recording"},
    {"Unknown", "-"},
};

constexpr Word kSources[] = {
    {"OVS_Share", "Share"},
    {"OVS_Lumis", "LUMIS"},
    {"OVS_SDK", "highlights SDK"},
    {"StandAlone_Lumis", "LUMIS (stand-alone)"},
    {"Undefined", "-"},
};

template <size_t N>
std::string Human(const Word (&words)[N], const std::string& value) {
    for (const Word& word : words)
        if (value == word.value) return word.human;
    return Printable(value);
}

}  // namespace

std::string HumanKind(const std::string& type) {
    return Human(kKinds, type);
}

std::string HumanDetail(const std::string& subtype) {
    return Human(kDetails, subtype);
}

std::string HumanDetailOf(const std::string& type, const std::string& subtype) {
    return HumanDetail(subtype.empty() && type == "image" ? "Screenshot" : subtype);
}

std::string HumanSource(const std::string& source) {
    return Human(kSources, source);
}

std::string Counted(size_t count, const std::string& noun) {
    return (count ? std::to_string(count) : "no") + " " + noun + (count == 1 ? "" : "s");
}

std::string ShortPath(const std::string& path) {
    const size_t file = path.rfind('/');
    if (file == std::string::npos || file == 0) return Printable(path);
    const size_t folder = path.rfind('/', file - 1);
    return Printable(std::string_view(path).substr(folder == std::string::npos ? 0 : folder + 1));
}

std::string HumanDate(const std::string& date) {
    std::tm utc{};
    const char* end = strptime(date.c_str(), "%Y-%m-%dT%H:%M:%S", &utc);
    // Events have milliseconds, files do not.
    if (end && *end == '.') end += 1 + std::strspn(end + 1, "0123456789");
    if (!end || std::strcmp(end, "Z") != 0) return Printable(date);
    const std::time_t seconds = timegm(&utc);
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[32];
    return std::string(text, std::strftime(text, sizeof text, "%F %H:%M", &local));
}

double SizeKB(const KXP::Value& ugc) {
    const KXP::Value* size = Find(ugc, "fileSizeKB");
    return size && size->IsUint64() ? size->GetDouble() : 0;
}

std::string HumanSize(double kilobytes) {
    constexpr const char* kUnits[] = {"kB", "MB", "GB", "TB"};
    size_t unit = 0;
    // From here on the text would round to 1000.
    for (; kilobytes >= 999.5 && unit < 3; ++unit)
        kilobytes /= 1000;
    char text[40];
    std::snprintf(text, sizeof text, unit == 0 || kilobytes >= 99.95 ? "%.0f %s" : "%.1f %s", kilobytes,
                  kUnits[unit]);
    return text;
}

std::string HumanVolume(uint32_t megabytes) {
    return megabytes == 0x7FFFFFFF ? "an unknown size" : HumanSize(megabytes * 1000.0);
}

}  // namespace host
