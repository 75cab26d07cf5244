// gallery-host page: what it prints and opens, and how it ends.
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/host/HostRun.h"
#include "tests/support/TemporaryHome.h"

namespace {

namespace fs = std::filesystem;

// A product root with a page, and programs of the desktop that write to a pipe what they are given.
class PageVerb : public testing::Test {
  protected:
    PageVerb() {
        const fs::path built = fs::path(GALLERY_HOST).parent_path().parent_path();
        home_.folder().MakeFolder("Contents/MacOS");
        fs::copy_file(GALLERY_HOST, program_);
        fs::create_symlink(built / "Frameworks", home_ / "Contents/Frameworks");
        home_.folder().Write("Contents/Resources/page/index.html", "<p>");
        home_.folder().MakeFolder("run");
        EXPECT_EQ(mkfifo((home_ / "given").c_str(), 0600), 0);
        given_ = open((home_ / "given").c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
    }
    ~PageVerb() override { close(given_); }

    ChildProcess::Options WithProgram(const std::string& name, const std::string& script) const {
        const std::string path = home_.folder().Write("bin/" + name, "#!/bin/sh\n" + script + "\n");
        fs::permissions(path, fs::perms::owner_all);
        return Environment((home_ / "bin") + ":/usr/bin:/bin");
    }
    ChildProcess::Options Environment(const std::string& path) const {
        return {{"PATH=" + path, "XDG_RUNTIME_DIR=" + (home_ / "run"), "GIVEN=" + (home_ / "given")},
                program_};
    }
    std::string ReadGiven() const {
        std::string text;
        for (pollfd waiting{given_, POLLIN, 0}; text.empty() || text.back() != '\n';) {
            char bytes[4096];
            if (poll(&waiting, 1, 60000) != 1) return text;
            const ssize_t got = read(given_, bytes, sizeof bytes);
            if (got > 0) text.append(bytes, static_cast<size_t>(got));
        }
        return text;
    }

    const TemporaryHome home_;
    const std::string program_ = home_ / "Contents/MacOS/gallery-host";
    int given_ = -1;
};

TEST_F(PageVerb, LeadsTheBrowserThereByAFileOfTheUsersOwn) {
    const auto environment =
        WithProgram("xdg-open", R"sh(echo "$1 $(stat -c %a "$1") $(cat "$1")" >"$GIVEN")sh");
    ChildProcess child(WithFake({"page", "--port", "0"}), environment);
    ASSERT_TRUE(child.ReadOutUntil("\n")) << child.err;
    EXPECT_EQ(child.out.find("http://127.0.0.1:"), 0u);
    const std::string given = ReadGiven();
    EXPECT_EQ(given.find(home_ / "run/gallery-page-"), 0u) << given;
    for (const char* part : {".html 600 ", "url=http://127.0.0.1:", "/launch?token="})
        EXPECT_TRUE(Contains(given, part)) << given;
    EXPECT_FALSE(Contains(given, child.out.substr(0, child.out.size() - 1))) << "the printed one works, too";
    child.Signal(SIGINT);
    EXPECT_EQ(child.Wait(), 0) << child.err;
    EXPECT_TRUE(fs::is_empty(home_ / "run"));
}

TEST_F(PageVerb, AWindowOfItsOwnEndsTheProgram) {
    ChildProcess child(WithFake({"page", "--app", "--port", "0"}),
                       WithProgram("chromium", R"(echo "$@" >"$GIVEN")"));
    const std::string given = ReadGiven();
    EXPECT_EQ(given.find("--app=file://"), 0u) << given;
    EXPECT_TRUE(Contains(given, " --user-data-dir=" + (home_ / "data/ZORVEX/OvirastreamX/PageProfile-")));
    EXPECT_FALSE(Contains(given, "token"));
    EXPECT_EQ(child.Wait(), 0) << child.err;
    EXPECT_TRUE(fs::is_empty(home_ / "run"));
}

TEST_F(PageVerb, TheDemonstrationLivesInAHomeOfItsOwnAndTheBrowserInTheUsers) {
    auto environment = WithProgram("xdg-open", R"(echo "$HOME" >"$GIVEN")");
    home_.folder().MakeFolder("tmp");
    environment.environment.push_back("TMPDIR=" + (home_ / "tmp"));
    ChildProcess none(WithFake({"page", "--demo", "--port", "0"}), environment);
    EXPECT_EQ(none.Wait(), 1);
    EXPECT_TRUE(Contains(none.err, "cannot start " + (home_ / "Contents/MacOS/demo-gallery"))) << none.err;
    WithProgram("demo-gallery", R"(echo no sound >&2; touch "$1/a")");
    fs::rename(home_ / "bin/demo-gallery", home_ / "Contents/MacOS/demo-gallery");
    ChildProcess child(WithFake({"page", "--demo", "--port", "0"}), environment);
    EXPECT_EQ(ReadGiven(), home_.folder().path() + "\n");
    EXPECT_FALSE(fs::is_empty(home_ / "tmp"));
    child.Signal(SIGINT);
    EXPECT_EQ(child.Wait(), 0);
    EXPECT_TRUE(Contains(child.err, "gallery-host: no sound\n")) << child.err;
    EXPECT_TRUE(fs::is_empty(home_ / "tmp"));
}

TEST_F(PageVerb, SaysWhatIsMissing) {
    const auto run = [this](const std::vector<std::string>& arguments) {
        ChildProcess child(WithFake(arguments), Environment("/nowhere"));
        const int status = child.Wait();
        return std::to_string(status) + " " + child.err;
    };
    EXPECT_EQ(run({"page", "--app"}), "1 gallery-host: --app needs Chromium, which is not installed\n");
    fs::remove_all(home_ / "Contents/Resources");
    const std::string missing = run({"page", "--no-open"});
    EXPECT_TRUE(Contains(missing, "1 gallery-host: the page is not in ") && Contains(missing, "npm"))
        << missing;
}

}  // namespace
