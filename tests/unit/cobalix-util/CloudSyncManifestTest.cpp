#include <string>

#include <gtest/gtest.h>

#include "libraries/cobalix-util/cloud/Error.h"
#include "libraries/cobalix-util/cloud/Manifest.h"

namespace KXP::Cloud {
namespace {

const std::string kDigest = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

std::string Entry(const std::string& path, const std::string& size = "3", const std::string& more = "") {
    return R"({"path":")" + path + R"(","size":)" + size + R"(,"sha256":")" + kDigest + "\"" + more + "}";
}

std::string ErrorOf(const std::string& text) {
    try {
        ParseManifest(text);
        return "";
    } catch (const Error& error) {
        return error.what();
    }
}

TEST(CloudSyncManifest, TakesFilesInTheirOrderAndEachOnce) {
    EXPECT_TRUE(ParseManifest(" {} ").empty());
    EXPECT_TRUE(ParseManifest(R"({"media":[]})").empty());
    const auto files = ParseManifest(
        R"({"z":[)" + Entry("b/..c/d.e", "0", R"(,"x":{"path":["/"],"size":-1})") + "],\"a\":[" +
        Entry("a\xC3\xA9 b", "4294967296") + "," + Entry("b/..c/d.e", "0") + "]}");
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[0].path, "b/..c/d.e");
    EXPECT_EQ(files[1].path, "a\xC3\xA9 b");
    EXPECT_EQ(files[1].size, 4294967296u);
    EXPECT_EQ(files[1].sha256, kDigest);
}

TEST(CloudSyncManifest, RefusesPathsThatLeaveTheirFolder) {
    for (const char* path : {"", "/etc/x", "../x", "a/../../x", "a/..", "..", ".", "./a", "a/./b", "a//b",
                             "a/", "a\\\\b", "C:\\\\x", "a\\u0000b", "a\\nb", "a\\u007f"})
        EXPECT_EQ(ErrorOf("{\"m\":[" + Entry(path) + "]}"), "the manifest holds a path that may not be used")
            << path;
    EXPECT_TRUE(IsPlainPath(std::string(255, 'a')));
    EXPECT_FALSE(IsPlainPath(std::string(256, 'a')));
    std::string deep = "a";
    while (deep.size() <= 1024)
        deep += "/a";
    EXPECT_FALSE(IsPlainPath(deep));
}

// What the fuzz target cannot distinguish from a good manifest.
TEST(CloudSyncManifest, RefusesFieldsThatOnlyLookRight) {
    const std::pair<std::string, const char*> rows[] = {
        {R"({"m":[{"path":"a","size":1}]})", "without all its fields"},
        {R"({"m":[{"size":"1"}]})", "a value of a wrong type"},
        {"{\"m\":[" + Entry("a", "1.0") + "]}", "a size that is none"},
        {"{\"m\":[" + Entry("a", "1", ",\"path\":\"b\"") + "]}", "a file of two paths"},
        {"{\"m\":[{\"sha256\":\"BA" + kDigest.substr(2) + "\"}]}", "a digest that is none"},
        {"{\"m\":[" + Entry("a", "1") + "],\"n\":[" + Entry("a", "2") + "]}", "two files of one path"},
        {"{\"m\":[" + Entry("a", "1", ",\"x\":" + std::string(100000, '[')) + "]}", "too deep"},
        {std::string("{}\0{", 4), "no text"},
        {"{}" + std::string(kMaxManifestBytes, ' '), "too large"},
    };
    for (const auto& [text, error] : rows)
        EXPECT_NE(ErrorOf(text).find(error), std::string::npos) << text.substr(0, 200) << ErrorOf(text);
    std::string many = "{\"m\":[" + Entry("0");
    for (size_t i = 1; i <= kMaxManifestFiles; ++i)
        many += "," + Entry(std::to_string(i));
    EXPECT_EQ(ErrorOf(many + "]}"), "the manifest holds too many files");
}

}  // namespace
}  // namespace KXP::Cloud
