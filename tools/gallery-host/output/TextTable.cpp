#include "gallery-host/output/TextTable.h"

#include <algorithm>

#include "gallery-host/base/Printable.h"

namespace host {
namespace {

std::vector<size_t> Widths(const std::vector<TableRow>& rows) {
    std::vector<size_t> widths(rows.empty() ? 0 : rows[0].cells.size());
    for (const TableRow& row : rows)
        for (size_t column = 0; column < widths.size(); ++column)
            widths[column] = std::max(widths[column], DisplayWidth(row.cells[column]));
    return widths;
}

std::string Line(const TableRow& row, const std::vector<size_t>& widths, bool colour, size_t right) {
    std::string line;
    size_t gap = 0;  // written only before a cell, so that no line ends in spaces
    for (size_t column = 0; column < widths.size(); ++column) {
        const std::string& cell = row.cells[column];
        const size_t free = widths[column] - DisplayWidth(cell);
        if (column == right) gap += free;
        if (!cell.empty()) {
            const bool coloured = colour && column == 0 && *row.nameColour;
            line += std::string(gap, ' ');
            line += coloured ? row.nameColour + cell + kPlain : cell;
            gap = 0;
        }
        gap += (column == right ? 0 : free) + 2;
    }
    return line;
}

}  // namespace

std::vector<std::string> TableLines(const std::vector<TableRow>& rows, bool colour, size_t right) {
    const std::vector<size_t> widths = Widths(rows);
    std::vector<std::string> lines;
    lines.reserve(rows.size());
    for (const TableRow& row : rows)
        lines.push_back(Line(row, widths, colour, right));
    return lines;
}

std::string TableText(const std::vector<TableRow>& rows, bool colour, size_t right) {
    std::string text;
    for (const std::string& line : TableLines(rows, colour, right))
        text += line + "\n";
    return text;
}

}  // namespace host
