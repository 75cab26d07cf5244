// The gallery's values in the words of this program, the same for every verb.
#pragma once

#include <cstddef>
#include <string>

namespace host {

// What the plug-in says of a file's type, subtype and source; "-" where it knows nothing. A word that is not
// known is shown as it came, made Printable.
std::string HumanKind(const std::string& type);
std::string HumanDetail(const std::string& subtype);
// The same for a record, in which a screenshot has no subtype.
std::string HumanDetailOf(const std::string& type, const std::string& subtype);
std::string HumanSource(const std::string& source);

// "no files", "1 file" or "2 files".
std::string Counted(size_t count, const std::string& noun);

// Decimal units, as the plug-in counts in them: "12 kB", "2.4 MB", "512 GB".
std::string HumanSize(double kilobytes);

}  // namespace host
