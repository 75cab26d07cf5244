// The words for the gallery's values, the same in every verb.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "common/json/Json.h"

namespace host {

// A file's type, subtype and source in words; "-" if the plug-in does not know them. An unknown value is
// shown as it is, made Printable.
std::string HumanKind(const std::string& type);
std::string HumanDetail(const std::string& subtype);
// The same for a record, in which a screenshot has no subtype.
std::string HumanDetailOf(const std::string& type, const std::string& subtype);
std::string HumanSource(const std::string& source);

constexpr const char* kNotOnRecord = "not a capture that the gallery has on record";

// "no files", "1 file" or "2 files".
std::string Counted(size_t count, const std::string& noun);

// The folder, which names the game, and the file; made Printable.
std::string ShortPath(const std::string& path);

// The plug-in's UTC as local time, "2026-03-14 18:06"; another form is shown as it is, made Printable.
std::string HumanDate(const std::string& date);

// The member "fileSizeKB" of a record, or 0.
double SizeKB(const KXP::Value& ugc);
// In decimal units, like the plug-in's: "12 kB", "2.4 MB", "512 GB".
std::string HumanSize(double kilobytes);
// The size of a volume; 0x7FFFFFFF stands for an unknown one.
std::string HumanVolume(uint32_t megabytes);

}  // namespace host
