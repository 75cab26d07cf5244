// Formats rows of cells as lines with aligned columns. Pure.
#pragma once

#include <string>
#include <vector>

namespace host {

struct TableRow {
    std::vector<std::string> cells;  // Printable
    const char* nameColour = "";     // of the first cell
};

constexpr const char* kBold = "\x1b[1m";
constexpr const char* kPlain = "\x1b[0m";

// One line for each row, without its end; all rows have as many cells as the first. No line ends in spaces.
// The column `right` is right-aligned.
std::vector<std::string> TableLines(const std::vector<TableRow>& rows, bool colour,
                                    size_t right = std::string::npos);
// The same as one text, each line with its end.
std::string TableText(const std::vector<TableRow>& rows, bool colour, size_t right = std::string::npos);

}  // namespace host
