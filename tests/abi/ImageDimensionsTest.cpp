#include "sample-captures/PngImage.h"
#include "tests/abi/PluginLibrary.h"

TEST_F(RunningPlugin, AnswersOrRefusesTheSizeOfAPicture) {
    const TempFolder folder;
    folder.Write("a.png", samples::PngImage(70, 50, {{1, 2, 3}, {4, 5, 6}}));
    folder.Write("a.txt", "text");
    const std::pair<const char*, const char*> rows[] = {
        {"a.png", R"({"width":70,"height":50,"_return_code":0)"},
        {"a.txt", R"({"_return_code":-2147024809,"_return_status":"Error in opening or reading image file")"},
        {"missing.png", R"({"_return_code":-2147024809)"}};
    for (const auto& [file, answer] : rows)
        EXPECT_EQ(AskText("GetImageFileDimensions", R"({"file":")" + (folder / file) + "\"}").find(answer),
                  0u)
            << file;
}
