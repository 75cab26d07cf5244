// What the pages are told of drives and folders to keep captures in.

#include "tests/abi/PluginLibrary.h"

TEST_F(RunningPlugin, TellsWhereCapturesCanGo) {
    std::string last;
    bool root = false;
    for (const KXP::Value& drive : KXP::JSONGetArray(Ask("EnumerateDrives", "{}"), "drives").GetArray()) {
        const auto name = KXP::jsonGetValue<std::string>(drive, "name");
        EXPECT_LT(last, name);
        EXPECT_FALSE(KXP::jsonGetValue<std::string>(drive, "type").empty());
        root = root || name == "/";
        last = name;
    }
    EXPECT_TRUE(root);

    const TempFolder folder;
    const KXP::Value& space = Ask("GetDriveInfo", R"({"drive":")" + folder.path() + "\"}");
    const auto total = KXP::jsonGetValue<unsigned>(space, "totalSpaceMB");
    EXPECT_GT(total, 0u);
    EXPECT_LE(KXP::jsonGetValue<unsigned>(space, "freeSpaceMB"), total);

    const auto writable = [&](const std::string& directory) {
        return KXP::jsonGetValue<bool>(Ask("IsDirectoryWriteable", R"({"directory":")" + directory + "\"}"),
                                       "writable");
    };
    EXPECT_TRUE(writable(folder.path()));
    EXPECT_FALSE(writable(folder / "missing"));
    EXPECT_TRUE(Ask("CheckDiskSpace", "{}").HasMember("lowDiskSpace"));
}

TEST_F(RunningPlugin, TellsWhatIsWrongWithADriveOrFolder) {
    const struct {
        const char* method;
        const char* payload;
        const char* answer;
    } rows[] = {
        {"GetDriveInfo", R"({"drive":"/no/such/drive"})", "-2147467259 Failed to get drive information"},
        // One letter is a drive: the folder "/" as "/:", which is not there.
        {"GetDriveInfo", R"({"drive":"/"})", "-2147467259 Failed to get drive information"},
        {"GetDriveInfo", R"({"drive":"//"})", "0 Success"},
        // What claims to be a failure passes the catalogue unchecked.
        {"IsDirectoryWriteable", R"({"_return_code":-1})", "-2147024809 Directory value is empty"},
        {"GetDriveInfo", R"({"_return_code":-1,"drive":[]})",
         "-2147024809 Found key 'drive', with unexpected type: Array"},
    };
    for (const auto& row : rows) {
        const KXP::Value& answer = Ask(row.method, row.payload);
        EXPECT_EQ(
            std::to_string(answer["_return_code"].GetInt()) + " " + answer["_return_status"].GetString(),
            row.answer);
    }
}
