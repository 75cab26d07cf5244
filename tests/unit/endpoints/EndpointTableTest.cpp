// The table of requests held against the catalogue: a request without an entry there is refused before its
// handler runs, and one without a row has no handler.
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "common/JsonParse.h"
#include "plugin-modules/Gallery/plugin/ApiCatalogue.h"

namespace {

// The names in the table with their handlers.
std::map<std::string, std::string> Rows() {
    std::ifstream file(ENDPOINT_TABLE);
    const std::string table{std::istreambuf_iterator<char>(file), {}};
    const std::regex row(
        R"re(RegisterTask<(\w+)>\("(\w+)"\)|RegisterSyncMethod\(\s*"(\w+)",\s*&\w+,\s*&\w+::(\w+)\))re");
    std::map<std::string, std::string> rows;
    for (std::sregex_iterator match(table.begin(), table.end(), row), end; match != end; ++match) {
        const bool isTask = (*match)[1].matched;
        EXPECT_TRUE(rows.emplace((*match)[isTask ? 2 : 3], (*match)[isTask ? 1 : 4]).second);
    }
    return rows;
}

}  // namespace

TEST(EndpointTable, HasARowForEachRequestOfTheCatalogue) {
    KXP::Document catalogue;
    ASSERT_FALSE(KXP::ParseJSON(ApiCatalogueText(), catalogue).IsError());
    std::set<std::string> requests;
    for (const auto& [name, definition] : catalogue["definitions"].GetObject())
        if (definition.HasMember("isCommand") && !definition.HasMember("persistent"))
            requests.insert(name.GetString());
    requests.erase("MigrateHighlightsTracker");  // of an earlier version; answered as unknown
    std::set<std::string> names;
    for (const auto& [name, handler] : Rows())
        names.insert(name);
    EXPECT_EQ(names, requests);
}

TEST(EndpointTable, AHandlerHasTheNameOfItsRequest) {
    std::map<std::string, std::string> others;
    for (const auto& [name, handler] : Rows())
        if (name != handler) others[name] = handler;
    const std::map<std::string, std::string> expected = {
        {"RemoveGalleryItem", "Remove"},
        {"GetFileMetadata", "GetMetaData"},
        {"GetImageFileDimensions", "GetImageDimensions"},
        {"CopyFile", "GalleryCopyFile"},
        {"MoveFile", "GalleryMoveFile"},
        {"IsDirectoryWriteable", "IsDirectoryWritable"},
        {"PreviewPathInfo", "PopulatePreviewPath"},
        {"Trim", "TrimVideo"},
    };
    EXPECT_EQ(others, expected);
}
