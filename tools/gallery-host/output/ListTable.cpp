#include "gallery-host/output/ListTable.h"

#include <vector>

#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/TextTable.h"
#include "gallery-host/output/Words.h"

namespace host {
namespace {

constexpr const char* kFolderColour = "\x1b[1;34m";

std::vector<TableRow> MakeRows(const KXP::Value& payload) {
    std::vector<TableRow> rows;
    for (const std::string& name : FolderNames(payload))
        rows.push_back({{Printable(name) + "/", "folder", "", ""}, kFolderColour});
    for (const KXP::Value& file : Elements(payload, "files"))
        rows.push_back({{Printable(Text(file, "name")), HumanKind(Text(file, "type")),
                         HumanDetail(Text(file, "subtype")), HumanSource(Text(file, "source"))}});
    return rows;
}

}  // namespace

std::string ListTable(const KXP::Value& payload, bool colour) {
    std::vector<TableRow> rows = MakeRows(payload);
    if (rows.empty()) return {};
    rows.insert(rows.begin(), {{"NAME", "KIND", "DETAILS", "SOURCE"}, kBold});
    return TableText(rows, colour);
}

std::vector<std::string> FolderNames(const KXP::Value& payload) {
    std::vector<std::string> names;
    for (const KXP::Value& directory : Elements(payload, "directories"))
        if (directory.IsString()) names.emplace_back(directory.GetString(), directory.GetStringLength());
    return names;
}

std::string ListSummary(const KXP::Value& payload) {
    return Counted(Elements(payload, "directories").Size(), "folder") + ", " +
           Counted(Elements(payload, "files").Size(), "file");
}

}  // namespace host
