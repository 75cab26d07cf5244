#include "gallery-host/ListTable.h"

#include <algorithm>
#include <array>
#include <vector>

#include "gallery-host/Envelope.h"
#include "gallery-host/Printable.h"
#include "gallery-host/Words.h"

namespace host {
namespace {

constexpr size_t kColumns = 4;
constexpr const char* kBold = "\x1b[1m";
constexpr const char* kFolderColour = "\x1b[1;34m";
constexpr const char* kPlain = "\x1b[0m";

struct Row {
    std::array<std::string, kColumns> cells;
    const char* nameColour;
};

KXP::Value::ConstArray Elements(const KXP::Value& payload, const char* key) {
    static const KXP::Value empty(rapidjson::kArrayType);
    if (!payload.IsObject()) return empty.GetArray();
    const auto member = payload.FindMember(key);
    if (member == payload.MemberEnd() || !member->value.IsArray()) return empty.GetArray();
    return member->value.GetArray();
}

std::vector<Row> MakeRows(const KXP::Value& payload) {
    std::vector<Row> rows;
    for (const std::string& name : FolderNames(payload))
        rows.push_back({{Printable(name) + "/", "folder", "", ""}, kFolderColour});
    for (const KXP::Value& file : Elements(payload, "files"))
        rows.push_back({{Printable(Text(file, "name")), HumanKind(Text(file, "type")),
                         HumanDetail(Text(file, "subtype")), HumanSource(Text(file, "source"))},
                        ""});
    return rows;
}

std::string Line(const Row& row, const std::array<size_t, kColumns>& widths, bool colour) {
    std::string line;
    size_t gap = 0;  // written only when something follows, so that no line ends in spaces
    for (size_t column = 0; column < kColumns; ++column) {
        const std::string& cell = row.cells[column];
        if (!cell.empty()) {
            const bool coloured = colour && column == 0 && *row.nameColour;
            line += std::string(gap, ' ');
            line += coloured ? row.nameColour + cell + kPlain : cell;
            gap = 0;
        }
        gap += widths[column] - DisplayWidth(cell) + 2;
    }
    return line + "\n";
}

}  // namespace

std::string ListTable(const KXP::Value& payload, bool colour) {
    std::vector<Row> rows = MakeRows(payload);
    if (rows.empty()) return {};
    rows.insert(rows.begin(), {{"NAME", "KIND", "DETAILS", "SOURCE"}, kBold});
    std::array<size_t, kColumns> widths{};
    for (const Row& row : rows)
        for (size_t column = 0; column < kColumns; ++column)
            widths[column] = std::max(widths[column], DisplayWidth(row.cells[column]));
    std::string table;
    for (const Row& row : rows)
        table += Line(row, widths, colour);
    return table;
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
