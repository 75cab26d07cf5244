#include <gtest/gtest.h>

#include "sample-captures/PngImage.h"
#include "tests/abi/PluginLibrary.h"
#include "tests/support/TempFolder.h"

TEST(ImageDimensions, AreAnsweredOrRefused) {
    const TempFolder folder;
    const PluginLibrary plugin{PRODUCT_ROOT};
    FakeContainer container;
    ASSERT_TRUE(plugin.Up(container));
    const auto ask = [&](const std::string& file) {
        return plugin.Ask(container, "GetImageFileDimensions", file,
                          R"({"file":")" + (folder / file) + "\"}");
    };
    folder.Write("a.png", samples::PngImage(70, 50, {{1, 2, 3}, {4, 5, 6}}));
    folder.Write("a.txt", "text");
    const std::string answer = ask("a.png");
    EXPECT_NE(answer.find("\"_return_code\":0"), std::string::npos) << answer;
    EXPECT_NE(answer.find("\"width\":70,\"height\":50"), std::string::npos) << answer;
    for (const char* file : {"a.txt", "missing.png"}) {
        const std::string refused = ask(file);
        EXPECT_NE(refused.find("\"_return_code\":-2147024809"), std::string::npos) << refused;
        EXPECT_NE(refused.find("\"Error in opening or reading image file\""), std::string::npos) << refused;
    }
    EXPECT_TRUE(plugin.Down(container));
}
