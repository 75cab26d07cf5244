// What doctor says of a home, and what it mends.
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>

#include "base/FileDescriptor.h"
#include "sample-captures/SampleGallery.h"
#include "tests/host/HostRun.h"
#include "tests/support/TemporaryHome.h"

namespace {

namespace fs = std::filesystem;

class Doctor : public testing::Test {
  protected:
    static Ended Run(const std::vector<std::string>& arguments) {
        ChildProcess child(arguments, {});
        const int status = child.Wait();
        return {status, child.out, child.err};
    }
    // The line of a check that is not "OK", or all that was said.
    static void ExpectLine(int status, const std::string& line, std::vector<std::string> arguments = {}) {
        arguments.insert(arguments.begin(), "doctor");
        const Ended ended = Run(arguments);
        EXPECT_EQ(ended.status, status) << ended.out << ended.err;
        EXPECT_TRUE(Contains(ended.out, line)) << ended.out;
    }

    TemporaryHome home_;
    const std::string gallery_ = home_ / "Videos/ZORVEX/Ovirastream";
    const std::string share_ = home_ / "data/ZORVEX/OvirastreamX/Share/";
};

TEST_F(Doctor, FindsAHomeThatWasNeverUsedAndOneInUseHealthyAndChangesNothing) {
    ExpectLine(0, "none yet; the first start scans the gallery");
    EXPECT_FALSE(fs::exists(home_ / "data") || fs::exists(home_ / "Videos"));
    samples::WriteSampleGallery(gallery_);
    EXPECT_EQ(Run({"list"}).status, 0);
    ExpectLine(0, "15 captures on record, as on the disk");
    const KXP::FileDescriptor lock(open((share_ + "UGCRecord.lock").c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(flock(lock.get(), LOCK_EX), 0);
    ExpectLine(0, "another program uses the gallery's record");
}

TEST_F(Doctor, NamesWhatIsWrongAndMendsWhatIsSafe) {
    samples::WriteSampleGallery(gallery_);
    EXPECT_EQ(Run({"list"}).status, 0);
    fs::remove(gallery_ + "/Nine Lanterns/Temple.png");
    ExpectLine(1, "1 capture on record whose file is gone: " + gallery_ + "/Nine Lanterns/Temple.png");
    EXPECT_TRUE(fs::exists(share_ + "UGCTracker.json"));
    ExpectLine(0, "the next start scans the gallery", {"--fix"});
    EXPECT_FALSE(fs::exists(share_ + "UGCTracker.json"));
    EXPECT_EQ(Run({"list"}).status, 0);
    ExpectLine(0, "14 captures can be read");
    const std::string early = gallery_ + "/Nine Lanterns/Bridge.png";
    fs::last_write_time(early, fs::file_time_type::clock::now() + std::chrono::hours(48));
    ExpectLine(0, "1 capture with a date in the future: " + early);
    // A drive that is away is no reason to forget what was on it.
    fs::create_directory(home_ / "drive");
    fs::rename(gallery_, home_ / "drive/g");
    EXPECT_EQ(Run({"settings", "set", "--path", home_ / "drive/g"}).status, 0);
    fs::remove_all(home_ / "drive");
    ExpectLine(1, "connect its drive", {"--fix"});
    EXPECT_TRUE(fs::exists(share_ + "UGCTracker.json"));
    home_.folder().Write("data/ZORVEX/OvirastreamX/Share/GallerySettings.json", "{\"a\":");
    ExpectLine(1, "GallerySettings.json: it is damaged");
    fs::remove(share_ + "GallerySettings.json");
    ExpectLine(1, "it is missing; install the product again", {"--plugin", home_ / "a/b/c/d/libGallery.so"});
    home_.folder().Write("a/b/c/d/libGallery.so", "no library");
    ExpectLine(1, "libGallery.so: ", {"--plugin", home_ / "a/b/c/d/libGallery.so"});
}

}  // namespace
