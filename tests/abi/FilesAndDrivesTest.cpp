// The requests for single files, folders and drives that need no gallery.

#include "sample-captures/PngImage.h"
#include "tests/abi/PluginLibrary.h"

TEST_F(RunningPlugin, AnswersAboutFilesFoldersAndDrives) {
    const TempFolder folder;
    const auto file = [&](const std::string& name, const std::string& bytes) {
        return R"({"file":")" + folder.Write(name, bytes) + "\"}";
    };
    const struct {
        const char* method;
        std::string payload;
        const char* answer;  // its beginning
    } rows[] = {
        {"GetImageFileDimensions", file("a.png", samples::PngImage(70, 50, {{1, 2, 3}, {4, 5, 6}})),
         R"({"width":70,"height":50,"_return_code":0)"},
        {"GetImageFileDimensions", file("a.txt", "text"),
         R"({"_return_code":-2147024809,"_return_status":"Error in opening or reading image file")"},
        {"IsDirectoryWriteable", R"({"directory":")" + folder.path() + "\"}", R"({"writable":true,)"},
        {"IsDirectoryWriteable", R"({"directory":")" + (folder / "none") + "\"}", R"({"writable":false,)"},
        // A payload that claims to be a failure is not checked against the catalogue.
        {"IsDirectoryWriteable", R"({"_return_code":-1})",
         R"({"_return_code":-2147024809,"_return_status":"Directory value is empty")"},
        {"EnumerateDrives", "{}", R"({"drives":[{"name":"/","type":")"},
        {"GetDriveInfo", R"({"drive":")" + folder.path() + "\"}", R"({"freeSpaceMB":)"},
        // A single character is taken as a drive letter, so "/" becomes "/:", which does not exist.
        {"GetDriveInfo", R"({"drive":"/"})",
         R"({"_return_code":-2147467259,"_return_status":"Failed to get drive information")"},
        {"GetDriveInfo", R"({"drive":"//"})", R"({"freeSpaceMB":)"},
        {"CheckDiskSpace", "{}", R"({"lowDiskSpace":)"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(AskText(row.method, row.payload).find(row.answer), 0u)
            << row.method << AskText(row.method, row.payload);
}
