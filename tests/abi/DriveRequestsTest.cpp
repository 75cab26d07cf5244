// What the pages are told of drives and folders to keep captures in.

#include <deque>

#include <gtest/gtest.h>

#include "common/JsonHelpers.h"
#include "common/JsonParse.h"
#include "tests/abi/PluginLibrary.h"
#include "tests/support/TempFolder.h"

namespace {

class DriveRequestsTest : public testing::Test {
  protected:
    DriveRequestsTest() { EXPECT_TRUE(plugin_.Up(container_)); }
    ~DriveRequestsTest() override { EXPECT_TRUE(plugin_.Down(container_)); }

    // The payload of the answer.
    const KXP::Value& Ask(const std::string& method, const std::string& payload) {
        const std::string text =
            plugin_.Ask(container_, method, "drive" + std::to_string(answers_.size()), payload);
        KXP::Document& answer = answers_.emplace_back();
        EXPECT_FALSE(KXP::ParseJSON(text, answer).IsError());
        return KXP::JSONGetObject(answer, "payload");
    }

    void ExpectFailure(const std::string& method, const std::string& payload, int32_t code,
                       const std::string& text) {
        const KXP::Value& answer = Ask(method, payload);
        EXPECT_EQ(KXP::jsonGetValue<int>(answer, "_return_code"), code) << payload;
        EXPECT_EQ(KXP::jsonGetValue<std::string>(answer, "_return_status"), text) << payload;
    }

    FakeContainer container_;
    const PluginLibrary plugin_{PRODUCT_ROOT};
    std::deque<KXP::Document> answers_;
};

}  // namespace

TEST_F(DriveRequestsTest, TellsWhereCapturesCanGo) {
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
}

TEST_F(DriveRequestsTest, TellsWhatIsWrong) {
    const auto failure = static_cast<int32_t>(0x80004005);
    const auto invalid = static_cast<int32_t>(0x80070057);
    const std::string noSpace = "Failed to get drive information";
    ExpectFailure("GetDriveInfo", R"({"drive":"/no/such/drive"})", failure, noSpace);
    // What claims to be a failure passes the catalogue unchecked.
    ExpectFailure("IsDirectoryWriteable", R"({"_return_code":-1})", invalid, "Directory value is empty");
    ExpectFailure("GetDriveInfo", R"({"_return_code":-1,"drive":[]})", invalid,
                  "Found key 'drive', with unexpected type: Array");

    // One letter is a drive: the folder "/" as "/:", which is not there.
    ExpectFailure("GetDriveInfo", R"({"drive":"/"})", failure, noSpace);
    EXPECT_EQ(KXP::jsonGetValue<int>(Ask("GetDriveInfo", R"({"drive":"//"})"), "_return_code"), 0);
}
