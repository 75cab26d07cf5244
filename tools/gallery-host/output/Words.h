// The gallery's values in the words of this program, the same for every verb.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "common/Json.h"

namespace host {

// What the plug-in says of a file's type, subtype and source; "-" where it knows nothing. A word that is not
// known is shown as it came, made Printable.
std::string HumanKind(const std::string& type);
std::string HumanDetail(const std::string& subtype);
// The same for a record, in which a screenshot has no subtype.
std::string HumanDetailOf(const std::string& type, const std::string& subtype);
std::string HumanSource(const std::string& source);

constexpr const char* kNotOnRecord = "not a capture that the gallery has on record";

// "no files", "1 file" or "2 files".
std::string Counted(size_t count, const std::string& noun);

// The folder and the file, as all captures of one game lie in one folder; made Printable.
std::string ShortPath(const std::string& path);

// The plug-in's UTC as local time, "2026-03-14 18:06"; what is of another form as it came, made Printable.
std::string HumanDate(const std::string& date);

// The member "fileSizeKB" of a record, or 0.
double SizeKB(const KXP::Value& ugc);
// Decimal units, as the plug-in counts in them: "12 kB", "2.4 MB", "512 GB".
std::string HumanSize(double kilobytes);
// What a volume has; one that could not be measured is told by a number of its own.
std::string HumanVolume(uint32_t megabytes);

}  // namespace host
