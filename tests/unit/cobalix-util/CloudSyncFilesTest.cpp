#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "libraries/cobalix-util/cloud/Sha256.h"
#include "libraries/cobalix-util/cloud/Sync.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"
#include "tests/unit/cobalix-util/CloudServer.h"

namespace KXP::Cloud {
namespace {

namespace fs = std::filesystem;

std::string EntryOf(const std::string& path, const std::string& body) {
    Sha256 digest;
    digest.Add(body.data(), body.size());
    return R"({"path":")" + path + R"(","size":)" + std::to_string(body.size()) + R"(,"sha256":")" +
           digest.Finish() + "\"}";
}

// A cloud with the remote folder "r", whose files come into "l" of a data folder.
class CloudSyncFiles : public testing::Test {
  protected:
    void Offer(const std::string& path, const std::string& body) {
        server_.Serve("/r/" + path, {body});
        entries_ += (entries_.empty() ? "" : ",") + EntryOf(path, body);
        server_.Serve("/r/manifest.json", {Manifest()});
    }
    std::string Manifest() const { return "{\"media\":[" + entries_ + "]}"; }

    // As callers do; the error's text, or none.
    std::string Run(const StopAsked& stopAsked = [] { return false; }) {
        try {
            Sync sync(Url(server_.Url()), Limits(), stopAsked);
            sync.FetchFiles("r", data_.path(), "l", sync.FetchManifest("r"));
            return "";
        } catch (const Error& error) {
            return error.what();
        }
    }

    // Everything that is no folder, as paths in the local one.
    std::vector<std::string> Files() const {
        std::vector<std::string> files;
        if (!data_.Has("l")) return files;
        for (const auto& entry : fs::recursive_directory_iterator(data_ / "l"))
            if (!entry.is_directory()) files.push_back(entry.path().lexically_relative(data_ / "l"));
        std::sort(files.begin(), files.end());
        return files;
    }
    using Paths = std::vector<std::string>;

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
    EXPECT_EQ(Files(), (Paths{"a.json", "b/c/large", "b/empty"}));
    EXPECT_EQ(data_.Read("l/b/c/large"), large);
    EXPECT_TRUE(log.HasLine(3, "Cloud sync of r: b/c/large, 300000 bytes"));
    EXPECT_TRUE(log.HasLine(3, "Cloud sync of r: 3 of 3 files fetched, 300002 bytes"));

    const int before = server_.Requests();
    EXPECT_EQ(Run(), "");
    EXPECT_EQ(server_.Requests() - before, 1) << "the manifest alone";

    data_.Write("l/a.json", "[]");
    EXPECT_EQ(Run(), "");
    EXPECT_EQ(data_.Read("l/a.json"), "{}") << "of the same size";
    EXPECT_EQ(server_.Requests() - before, 3);
}

TEST_F(CloudSyncFiles, LeavesNothingBesideThem) {
    Offer("good", "good");
    Offer("old", "new");
    data_.Write("l/old", "old");
    const CloudAnswer answers[] = {
        {"bad"},
        {"ne"},
        {"newer"},
        {"new", CloudAnswer::kShort},
        {"new", CloudAnswer::kEndless},
        {"", CloudAnswer::kWell, 500, ""},
    };
    for (const CloudAnswer& answer : answers) {
        server_.Serve("/r/old", answer);
        EXPECT_EQ(Run().rfind("old: ", 0), 0u);
        EXPECT_EQ(Files(), (Paths{"good", "old"}));
        EXPECT_EQ(data_.Read("l/old"), "old");
    }
    server_.Serve("/r/old", {"bad"});
    EXPECT_EQ(Run(), "old: another digest than announced");
    server_.Serve("/r/old", {"ne"});
    EXPECT_EQ(Run(), "old: fewer bytes than announced");
    fs::remove(data_ / "l/old");
    fs::create_directories(data_ / "l/old/folder");
    server_.Serve("/r/old", {"new"});
    EXPECT_NE(Run(), "") << "a folder in the place";
    EXPECT_EQ(Files(), (Paths{"good"}));
}

TEST_F(CloudSyncFiles, AFaultAnywhereInTheManifestFetchesNothing) {
    Offer("good", "good");
    const std::string manifest = "{\"a\":[" + EntryOf("good", "good") + "," + EntryOf("../x", "x") + "]}";
    Sync sync(Url(server_.Url()), Limits(), [] { return false; });
    EXPECT_THROW(sync.FetchFiles("r", data_.path(), "l", manifest), Error);
    EXPECT_THROW(sync.FetchFiles("r", data_.path(), "../l", Manifest()), Error);
    EXPECT_THROW(sync.FetchFiles("/r", data_.path(), "l", Manifest()), Error);
    EXPECT_THROW(sync.FetchManifest("../r"), Error);
    server_.Serve("/r/manifest.json", {manifest});
    EXPECT_EQ(Run(), "manifest.json: the manifest holds a path that may not be used");
    EXPECT_EQ(server_.Requests(), 1);
    EXPECT_FALSE(data_.Has("l"));
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
    Offer("g/new", "new");
    fs::remove(data_ / "l/d");
    ASSERT_EQ(mkfifo((data_ / "l/pipe").c_str(), 0600), 0);
    Offer("pipe", "pipe");
    EXPECT_EQ(Run(), "") << "a pipe is waited for by nobody";
    EXPECT_EQ(outside.Read("f"), "ours");
    EXPECT_EQ(std::distance(fs::directory_iterator(outside.path()), {}), 1);
}

TEST_F(CloudSyncFiles, StopsBetweenFilesAndGoesOnLater) {
    for (const char* name : {"a", "b", "c"})
        Offer(name, name);
    EXPECT_EQ(Run([&] { return server_.Requests() >= 2; }).find("aborted"), 3u);
    EXPECT_LE(server_.Requests(), 3);
    EXPECT_LE(Files().size(), 1u);
    EXPECT_EQ(Run(), "");
    EXPECT_EQ(Files(), (Paths{"a", "b", "c"}));
}

}  // namespace
}  // namespace KXP::Cloud
