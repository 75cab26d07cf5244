#include "gallery-host/output/GalleryTable.h"

#include <algorithm>
#include <vector>

#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/TextTable.h"
#include "gallery-host/output/Words.h"

namespace host {
namespace {

constexpr size_t kSizeColumn = 3;

std::string FileName(const KXP::Value& ugc) {
    const std::string path = Text(ugc, "path");
    return Printable(path.substr(path.rfind('/') + 1));
}

TableRow MakeRow(const KXP::Value& ugc, const std::string& name) {
    const std::string type = Text(ugc, "fileType");
    const std::string date = Text(ugc, "date");
    // A highlight that is only announced has neither date nor size.
    return {{name, HumanKind(type), HumanDetailOf(type, Text(ugc, "fileSubType")),
             date.empty() ? "" : HumanSize(SizeKB(ugc)), Printable(Text(ugc, "duration")),
             date.empty() ? "not saved yet" : HumanDate(date)}};
}

// Newest first, with those that are not saved yet at the top. The plug-in lists them in the order in which it
// recorded them, which is arbitrary after a rebuild.
std::vector<const KXP::Value*> ByDate(const KXP::Value& game) {
    std::vector<const KXP::Value*> captures;
    for (const KXP::Value& ugc : Elements(game, "ugc"))
        captures.push_back(&ugc);
    std::stable_sort(captures.begin(), captures.end(), [](const KXP::Value* a, const KXP::Value* b) {
        const std::string left = Text(*a, "date");
        const std::string right = Text(*b, "date");
        return !right.empty() && (left.empty() || left > right);
    });
    return captures;
}

std::string Heading(const KXP::Value& game, bool colour) {
    size_t videos = 0;
    size_t images = 0;
    const KXP::Value::ConstArray captures = Elements(game, "ugc");
    for (const KXP::Value& ugc : captures) {
        if (Text(ugc, "fileType") == "video") ++videos;
        if (Text(ugc, "fileType") == "image") ++images;
    }
    std::string counts;
    const auto count = [&](size_t number, const char* noun) {
        if (number > 0) counts += (counts.empty() ? ": " : ", ") + Counted(number, noun);
    };
    count(videos, "video");
    count(images, "image");
    count(captures.Size() - videos - images, "other file");
    const std::string name = Printable(Text(game, "name"));
    return (colour ? kBold + name + kPlain : name) + counts;
}

}  // namespace

std::string GalleryTable(const KXP::Value& gallery, bool colour) {
    std::vector<TableRow> rows;  // of all games, so that their columns line up
    for (const KXP::Value& game : Elements(gallery, "games"))
        for (const KXP::Value* ugc : ByDate(game))
            rows.push_back(MakeRow(*ugc, FileName(*ugc)));
    const std::vector<std::string> lines = TableLines(rows, colour, kSizeColumn);

    std::string table;
    auto line = lines.begin();
    for (const KXP::Value& game : Elements(gallery, "games")) {
        const auto count = static_cast<std::ptrdiff_t>(Elements(game, "ugc").Size());
        if (count == 0) continue;
        table += (table.empty() ? "" : "\n") + Heading(game, colour) + "\n";
        for (const auto end = line + count; line != end; ++line)
            table += "  " + *line + "\n";
    }
    return table;
}

std::string RecentTable(const KXP::Value& recents, bool colour) {
    std::vector<TableRow> rows;
    for (const KXP::Value& ugc : Elements(recents, "recents"))
        rows.push_back(MakeRow(ugc, ShortPath(Text(ugc, "path"))));
    return TableText(rows, colour, kSizeColumn);
}

size_t CaptureCount(const KXP::Value& gallery) {
    size_t count = 0;
    for (const KXP::Value& game : Elements(gallery, "games"))
        count += Elements(game, "ugc").Size();
    return count;
}

std::string GallerySummary(const KXP::Value& gallery) {
    size_t games = 0;
    double kilobytes = 0;
    for (const KXP::Value& game : Elements(gallery, "games")) {
        const KXP::Value::ConstArray captures = Elements(game, "ugc");
        games += captures.Empty() ? 0 : 1;
        for (const KXP::Value& ugc : captures)
            kilobytes += SizeKB(ugc);
    }
    return Counted(games, "game") + ", " + Counted(CaptureCount(gallery), "capture") + ", " +
           HumanSize(kilobytes);
}

}  // namespace host
