// Formats a folder listing for people. Pure: payload in, text out.
#pragma once

#include <string>
#include <vector>

#include "common/json/Json.h"

namespace host {

// The payload of a GetFolderListing response as a table, folders first, both in their order; empty when there
// is nothing to list. Members of unexpected types are skipped.
std::string ListTable(const KXP::Value& payload, bool colour);

// The folders of a listing, in their order.
std::vector<std::string> FolderNames(const KXP::Value& payload);

// For example "2 folders, 1 file".
std::string ListSummary(const KXP::Value& payload);

}  // namespace host
