// gallery-host page: what it prints and opens, and how it ends.
#include <filesystem>
#include <string>
#include <vector>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
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
        home_.folder().MakeFolder("bin");
        home_.folder().MakeFolder("run");
        EXPECT_EQ(mkfifo((home_ / "told").c_str(), 0600), 0);
        told_ = open((home_ / "told").c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
    }
    ~PageVerb() override { close(told_); }

    void Install(const std::string& name, const std::string& script) {
        const std::string path = home_.folder().Write("bin/" + name, "#!/bin/sh\n" + script + "\n");
        fs::permissions(path, fs::perms::owner_all);
    }
    ChildProcess::Options Environment(const std::string& path) const {
        return {{"PATH=" + path, "XDG_RUNTIME_DIR=" + (home_ / "run"), "TOLD=" + (home_ / "told")}, program_};
    }
    ChildProcess::Options Environment() const { return Environment((home_ / "bin") + ":/usr/bin:/bin"); }
    std::string ReadTold() const {
        std::string text;
        for (pollfd waiting{told_, POLLIN, 0}; text.empty() || text.back() != '\n';) {
            char bytes[4096];
            if (poll(&waiting, 1, 60000) != 1) return text;
            const ssize_t got = read(told_, bytes, sizeof bytes);
            if (got > 0) text.append(bytes, static_cast<size_t>(got));
        }
        return text;
    }

    const TemporaryHome home_;
    const std::string program_ = home_ / "Contents/MacOS/gallery-host";
    int told_ = -1;
};

TEST_F(PageVerb, LeadsTheBrowserThereByAFileOfTheUsersOwn) {
    Install("xdg-open", R"sh(echo "$1 $(stat -c %a "$1") $(cat "$1")" >"$TOLD")sh");
    ChildProcess child(WithFake({"page", "--port", "0"}), Environment());
    ASSERT_TRUE(child.ReadOutUntil("\n")) << child.err;
    EXPECT_EQ(child.out.find("http://127.0.0.1:"), 0u);
    const std::string told = ReadTold();
    EXPECT_EQ(told.find(home_ / "run/gallery-page-"), 0u) << told;
    EXPECT_TRUE(Contains(told, ".html 600 "));
    EXPECT_TRUE(Contains(told, "url=http://127.0.0.1:"));
    EXPECT_TRUE(Contains(told, "/launch?token="));
    EXPECT_FALSE(Contains(told, child.out.substr(0, child.out.size() - 1))) << "the printed one works, too";
    EXPECT_FALSE(fs::is_empty(home_ / "run"));
    child.Signal(SIGINT);
    EXPECT_EQ(child.Wait(), 0) << child.err;
    EXPECT_TRUE(fs::is_empty(home_ / "run"));
}

TEST_F(PageVerb, AWindowOfItsOwnEndsTheProgram) {
    Install("chromium", R"(echo "$@" >"$TOLD")");
    ChildProcess child(WithFake({"page", "--app", "--port", "0"}), Environment());
    const std::string told = ReadTold();
    EXPECT_EQ(told.find("--app=file://"), 0u) << told;
    EXPECT_TRUE(Contains(told, " --user-data-dir=" + (home_ / "data/ZORVEX/OvirastreamX/PageProfile-")));
    EXPECT_FALSE(Contains(told, "token"));
    EXPECT_EQ(child.Wait(), 0) << child.err;
    EXPECT_TRUE(fs::is_empty(home_ / "run"));

    Install("chromium", R"(echo open >"$TOLD"; exec sleep 600)");
    ChildProcess interrupted(WithFake({"page", "--app", "--port", "0"}), Environment());
    EXPECT_EQ(ReadTold(), "open\n");
    interrupted.Signal(SIGINT);
    EXPECT_EQ(interrupted.Wait(), 0) << "and closes the window";
}

TEST_F(PageVerb, SaysWhatIsMissing) {
    const auto run = [this](const std::vector<std::string>& arguments, const std::string& path = "/nowhere") {
        ChildProcess child(WithFake(arguments), Environment(path));
        const int status = child.Wait();
        return std::to_string(status) + " " + child.err;
    };
    const int taken = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof place;
    ASSERT_EQ(bind(taken, reinterpret_cast<const sockaddr*>(&place), size), 0);
    ASSERT_EQ(listen(taken, 1), 0);
    ASSERT_EQ(getsockname(taken, reinterpret_cast<sockaddr*>(&place), &size), 0);
    const std::string port = std::to_string(ntohs(place.sin_port));
    EXPECT_TRUE(Contains(run({"page", "--no-open", "--port", port}), "cannot serve at port " + port + ": "));
    close(taken);
    EXPECT_EQ(run({"page", "--app"}), "1 gallery-host: --app needs Chromium, which is not installed\n");
    for (const std::vector<std::string>& wrong : {std::vector<std::string>{"page", "--port", "65536"},
                                                  {"page", "--port", "x"},
                                                  {"page", "--app", "--no-open"}})
        EXPECT_EQ(run(wrong).substr(0, 2), "2 ");
    ChildProcess noBrowser(WithFake({"page", "--port", "0"}), Environment("/nowhere"));
    EXPECT_TRUE(noBrowser.ReadErrUntil("cannot open the browser"));
    noBrowser.Signal(SIGINT);
    EXPECT_EQ(noBrowser.Wait(), 0);
    fs::remove_all(home_ / "Contents/Resources");
    const std::string missing = run({"page", "--no-open"});
    EXPECT_TRUE(Contains(missing, "1 gallery-host: the page is not in ") && Contains(missing, "npm"))
        << missing;
}

}  // namespace
