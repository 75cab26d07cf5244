// The table of requests held against the catalogue: a request without an entry there is refused before its
// handler is asked.
#include <fstream>
#include <iterator>
#include <regex>
#include <string>

#include <gtest/gtest.h>

#include "common/JsonParse.h"
#include "plugin-modules/Gallery/plugin/ApiCatalogue.h"

TEST(EndpointTable, EveryRowIsInTheCatalogue) {
    std::ifstream file(ENDPOINT_TABLE);
    const std::string table{std::istreambuf_iterator<char>(file), {}};
    KXP::Document catalogue;
    ASSERT_FALSE(KXP::ParseJSON(ApiCatalogueText(), catalogue).IsError());
    const KXP::Value& definitions = catalogue["definitions"];
    const std::regex row(R"re(Register(?:Task<\w+>|SyncMethod)\(\s*"(\w+)")re");
    size_t rows = 0;
    for (std::sregex_iterator match(table.begin(), table.end(), row), end; match != end; ++match, ++rows) {
        const std::string name = (*match)[1];
        ASSERT_TRUE(definitions.HasMember(name.c_str())) << name;
        EXPECT_TRUE(definitions[name.c_str()].HasMember("isCommand")) << name;
    }
    EXPECT_GT(rows, 30u) << "the table was read";
}
