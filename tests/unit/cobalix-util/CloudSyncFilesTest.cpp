// The manifest of a folder in the cloud, and the files that it announces.
#include <algorithm>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "libraries/cobalix-util/cloud/Manifest.h"
#include "libraries/cobalix-util/cloud/Placement.h"
#include "libraries/cobalix-util/cloud/Sync.h"
#include "libraries/digest/Sha256.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"
#include "tests/unit/cobalix-util/CloudServer.h"

namespace KXP::Cloud {
namespace {

namespace fs = std::filesystem;

template <typename Work>
std::string ErrorOf(const Work& work) {
    try {
        work();
        return "";
    } catch (const Error& error) {
        return error.what();
    }
}

std::string EntryOf(const std::string& path, const std::string& body, const std::string& size = "",
                    const std::string& more = "") {
    Sha256 digest;
    digest.Add(body.data(), body.size());
    return R"({"path":")" + path + R"(","size":)" + (size.empty() ? std::to_string(body.size()) : size) +
           R"(,"sha256":")" + digest.Finish() + "\"" + more + "}";
}

TEST(CloudSyncManifest, TakesFilesInTheirOrderAndEachOnce) {
    EXPECT_TRUE(ParseManifest(R"( {"media":[]} )").empty());
    const auto files = ParseManifest(
        R"({"z":[)" + EntryOf("b/..c/d.e", "", "0", R"(,"x":{"path":["/"],"size":-1})") + "],\"a\":[" +
        EntryOf("a\xC3\xA9 b", "", "4294967296") + "," + EntryOf("b/..c/d.e", "") + "]}");
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[0].path, "b/..c/d.e");
    EXPECT_EQ(files[1].path, "a\xC3\xA9 b");
    EXPECT_EQ(files[1].size, 4294967296u);
    EXPECT_EQ(files[1].sha256, "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

// What the fuzz target cannot distinguish from a good manifest.
TEST(CloudSyncManifest, RefusesWhatOnlyLooksRight) {
    std::string many = EntryOf("0", "");
    for (size_t i = 1; i <= kMaxManifestFiles; ++i)
        many += "," + EntryOf(std::to_string(i), "");
    const std::pair<std::string, const char*> rows[] = {
        {R"({"path":"a","size":1})", "without all its fields"},
        {R"({"size":"1"})", "a value of a wrong type"},
        {EntryOf("a", "", "1.0"), "a size that is none"},
        {EntryOf("a", "", "", R"(,"path":"b")"), "a file of two paths"},
        {"{\"sha256\":\"" + std::string(64, 'A') + "\"}", "a digest that is none"},
        {EntryOf("a", "1") + "," + EntryOf("a", "2"), "two files of one path"},
        {EntryOf("a", "", "", ",\"x\":" + std::string(100000, '[')), "too deep"},
        {std::string(1, '\0'), "no text"},
        {std::string(kMaxManifestBytes, ' '), "too large"},
        {many, "too many files"},
    };
    for (const auto& [entries, error] : rows) {
        const std::string found = ErrorOf([text = entries] { ParseManifest("{\"m\":[" + text + "]}"); });
        EXPECT_NE(found.find(error), std::string::npos) << entries.substr(0, 200) << found;
    }
    for (const char* path : {"", "/etc/x", "a/../../x", "..", "a/./b", "a//b", "a/", "a\\b", "a\nb", "a\x7F"})
        EXPECT_FALSE(IsPlainPath(path)) << path;
    EXPECT_TRUE(IsPlainPath(std::string(255, 'a')));
    EXPECT_FALSE(IsPlainPath(std::string(256, 'a')));
    std::string deep = "a";
    while (deep.size() <= 1024)
        deep += "/a";
    EXPECT_FALSE(IsPlainPath(deep));
}

// A cloud with the remote folder "r", whose files come into "l" of a data folder.
class CloudSyncFiles : public testing::Test {
  protected:
    void Offer(const std::string& path, const std::string& body) {
        server_.Serve("/r/" + path, {body});
        entries_ += (entries_.empty() ? "" : ",") + EntryOf(path, body);
        server_.Serve("/r/manifest.json", {"{\"media\":[" + entries_ + "]}"});
    }

    // As callers do; returns the error's text, or "".
    std::string Run(const StopAsked& stopAsked = [] { return false; }) {
        return ErrorOf([&] {
            Sync sync(Url(server_.Url()), Limits(), stopAsked);
            sync.FetchFiles("r", data_.path(), "l", sync.FetchManifest("r"));
        });
    }

    // Everything in the local folder that is no folder, with "|" after each path.
    std::string Files() const {
        std::vector<std::string> files;
        for (const auto& entry : fs::recursive_directory_iterator(data_ / "l"))
            if (!entry.is_directory()) files.push_back(entry.path().lexically_relative(data_ / "l"));
        std::sort(files.begin(), files.end());
        std::string all;
        for (const std::string& file : files)
            all += file + "|";
        return all;
    }

    CloudServer server_;
    const TempFolder data_;
    std::string entries_;
};

TEST_F(CloudSyncFiles, BringsWhatIsNotThereAndNothingElse) {
    const LogCapture log;
    const std::string large(300000, 'l');
    Offer("a.json", "{}");
    Offer("b/c/large", large);
    Offer("b/empty", "");
    EXPECT_EQ(Run(), "");
    EXPECT_EQ(Files(), "a.json|b/c/large|b/empty|");
    EXPECT_EQ(data_.Read("l/b/c/large"), large);
    EXPECT_TRUE(log.HasLine(3, "Cloud sync of r: b/c/large, 300000 bytes"));
    EXPECT_TRUE(log.HasLine(3, "Cloud sync of r: 3 of 3 files fetched, 300002 bytes"));

    const int before = server_.requests.Get();
    EXPECT_EQ(Run(), "");
    EXPECT_EQ(server_.requests.Get() - before, 1) << "the manifest alone";
    data_.Write("l/a.json", "[]");
    EXPECT_EQ(Run(), "");
    EXPECT_EQ(data_.Read("l/a.json"), "{}") << "of the same size";
    EXPECT_EQ(server_.requests.Get() - before, 3);
}

TEST_F(CloudSyncFiles, AFailedOneLeavesTheOldFileAlone) {
    Offer("good", "good");
    Offer("old", "new");
    data_.Write("l/old", "old");
    const std::pair<CloudServer::Answer, const char*> rows[] = {
        {{"bad"}, "old: another digest than announced"},
        {{"ne"}, "old: fewer bytes than announced"},
        {{"new", CloudServer::kShort}, "old: transfer closed"},
        {{"new", CloudServer::kEndless}, "old: more bytes than announced"},
    };
    for (const auto& [answer, error] : rows) {
        server_.Serve("/r/old", answer);
        EXPECT_EQ(Run().rfind(error, 0), 0u) << error;
        EXPECT_EQ(Files(), "good|old|");
        EXPECT_EQ(data_.Read("l/old"), "old");
    }
    fs::remove(data_ / "l/old");
    fs::create_directories(data_ / "l/old/folder");
    server_.Serve("/r/old", {"new"});
    EXPECT_NE(Run(), "") << "a folder in the place";
    EXPECT_EQ(Files(), "good|");
}

TEST_F(CloudSyncFiles, AFaultAnywhereInTheManifestFetchesNothing) {
    Offer("good", "good");
    const std::string manifest = "{\"a\":[" + entries_ + "," + EntryOf("../x", "x") + "]}";
    Sync sync(Url(server_.Url()), Limits(), [] { return false; });
    EXPECT_THROW(sync.FetchFiles("r", data_.path(), "l", manifest), Error);
    EXPECT_THROW(sync.FetchFiles("r", data_.path(), "../l", "{}"), Error);
    EXPECT_THROW(sync.FetchFiles("/r", data_.path(), "l", "{}"), Error);
    EXPECT_THROW(sync.FetchManifest("../r"), Error);
    server_.Serve("/r/manifest.json", {manifest});
    EXPECT_EQ(Run(), "manifest.json: the manifest holds a path that may not be used");
    EXPECT_EQ(server_.requests.Get(), 1);
    EXPECT_FALSE(data_.Has("l"));
}

TEST_F(CloudSyncFiles, ADiskThatIsFullOrGoneIsReported) {
    const ManifestFile file{"f", 5, ""};
    const LocalFolder folder(data_ / "l");
    {
        IncomingFile incoming(folder, file);
        const FileSizeLimit full(4);
        EXPECT_EQ(ErrorOf([&] { incoming.Add("12345", 5); }), "cannot write: File too large");
    }
    data_.Write("l/f", "of another size");
    EXPECT_FALSE(folder.Holds(file, [] { return false; }));
    EXPECT_EQ(ErrorOf([&] { LocalFolder(data_ / "l/f"); }), "no local folder: Not a directory");
    fs::remove_all(data_ / "l");
    EXPECT_EQ(ErrorOf([&] { IncomingFile(folder, file); }), "no file to write: No such file or directory");
}

TEST_F(CloudSyncFiles, NoLinkLeadsThemOut) {
    const TempFolder outside;
    outside.Write("f", "theirs");
    Offer("f", "ours");
    data_.MakeFolder("l");
    fs::create_symlink(outside / "f", data_ / "l/f");
    EXPECT_EQ(Run(), "") << "the link itself gives way";
    EXPECT_EQ(fs::symlink_status(data_ / "l/f").type(), fs::file_type::regular);
    outside.Write("f", "ours");
    Offer("d/f", "ours");
    fs::create_directory_symlink(outside.path(), data_ / "l/d");
    EXPECT_EQ(Run(), "d/f: no folder for it");
    fs::remove(data_ / "l/d");
    ASSERT_EQ(mkfifo((data_ / "l/pipe").c_str(), 0600), 0);
    Offer("pipe", "pipe");
    EXPECT_EQ(Run(), "") << "a pipe is waited for by nobody";
    EXPECT_EQ(std::distance(fs::directory_iterator(outside.path()), {}), 1);
}

TEST_F(CloudSyncFiles, StopsBetweenFilesAndGoesOnLater) {
    for (const char* name : {"a", "b", "c"})
        Offer(name, name);
    EXPECT_EQ(Run([&] { return server_.requests.Get() >= 2; }).find("aborted"), 3u);
    EXPECT_LE(server_.requests.Get(), 3);
    EXPECT_LE(Files().size(), 2u) << "one at most";
    EXPECT_EQ(Run(), "");
    EXPECT_EQ(Files(), "a|b|c|");
}

}  // namespace
}  // namespace KXP::Cloud
