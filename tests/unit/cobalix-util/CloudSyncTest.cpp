// The public calls, of the library in the staged product root.
#include <gtest/gtest.h>

#include "CobalixUtil.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryHome.h"
#include "tests/unit/cobalix-util/CloudServer.h"

namespace KXP {
namespace {

constexpr const char* kRemote = "share/montage/v1";
constexpr const char* kLocal = "Montage/v1";
// The empty file's.
const std::string kManifest =
    R"({"media":[{"path":"a/b","size":0,)"
    R"("sha256":"e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"}]})";

bool Fetch(std::string& manifest) {
    void* context = nullptr;
    const bool fetched = CloudSyncFetchManifestBegin(kRemote, manifest, context);
    CloudSyncFetchManifestEnd(kRemote, kLocal, manifest, context);
    return fetched;
}

TEST(CloudSync, TheEmbeddedCloudHasNothingNew) {
    const TemporaryHome home;
    for (const char* base : {"", "ftp://127.0.0.1", "file:///nowhere"}) {
        const LogCapture log;
        const ScopedEnv url("COBALIX_CLOUD_SYNC_URL", base);
        std::string manifest = "old";
        EXPECT_EQ(Fetch(manifest), *base == '\0') << base << log.Lines().size();
        EXPECT_EQ(manifest, *base ? "" : "{}\n") << base;
        EXPECT_EQ(log.Count("Cloud sync of share/montage/v1 failed: "), *base ? 1 : 0);
    }
    EXPECT_TRUE(CloudSyncObject(kRemote, kLocal, "{}"));
    EXPECT_FALSE(CloudSyncObject(kRemote, kLocal, "{"));
    EXPECT_FALSE(home.folder().Has("data"));
}

TEST(CloudSync, FilesComeUnderTheProductsData) {
    const TemporaryHome home;
    home.folder().Write("cloud/share/montage/v1/manifest.json", kManifest);
    home.folder().Write("cloud/share/montage/v1/a/b", "");
    const ScopedEnv url("COBALIX_CLOUD_SYNC_URL", "file://" + home / "cloud");
    std::string manifest;
    EXPECT_TRUE(Fetch(manifest));
    EXPECT_EQ(manifest, kManifest);
    EXPECT_TRUE(CloudSyncObject(kRemote, kLocal, manifest));
    EXPECT_TRUE(home.folder().Has("data/ZORVEX/OvirastreamX/Montage/v1/a/b"));
}

TEST(CloudSync, AnAbortEndsWhatIsInProgress) {
    const TemporaryHome home;
    const LogCapture log;
    CloudServer server;
    server.Serve("/share/montage/v1/manifest.json", {"{}", CloudServer::kStalling});
    server.Serve("/share/montage/v1/a/b", {"x", CloudServer::kStalling});
    int connections = 0;
    // https leaves the client in the middle of its connecting.
    for (const char* scheme : {"http", "https"}) {
        const ScopedEnv url("COBALIX_CLOUD_SYNC_URL", server.Url("", scheme));
        for (const bool object : {false, true}) {
            bool done = true;
            std::string manifest;
            std::thread call(
                [&] { done = object ? CloudSyncObject(kRemote, kLocal, kManifest) : Fetch(manifest); });
            ASSERT_TRUE(server.connections.WaitFor(++connections));
            const auto start = std::chrono::steady_clock::now();
            CloudSyncAbort();
            call.join();
            // Far below every time-out, and within reach of a busy machine.
            EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
            EXPECT_FALSE(done);
        }
    }
    EXPECT_EQ(log.Count("aborted"), 4);
    server.Serve("/share/montage/v1/manifest.json", {"{}"});
    const ScopedEnv url("COBALIX_CLOUD_SYNC_URL", server.Url());
    std::string manifest;
    EXPECT_TRUE(Fetch(manifest)) << "later calls work";
}

}  // namespace
}  // namespace KXP
