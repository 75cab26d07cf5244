// The verbs about captures, drives and settings: what they request, the order of what they print, and how
// they fail.
#include <csignal>
#include <filesystem>
#include <string>

#include "tests/host/HostRun.h"
#include "tests/support/TempFolder.h"
#include "tests/support/TemporaryHome.h"

namespace {

// `folder_` holds a capture of the product, "a.png", and a file that is none, "foreign.png".
class Verbs : public testing::Test {
  protected:
    TemporaryHome home_;
    const TempFolder folder_;
    const std::string own_ = folder_.Write("a.png", "x");
    const std::string foreign_ = folder_.Write("foreign.png", "x");
    const std::string into_ = folder_.MakeFolder("into");
};

TEST_F(Verbs, AskAndSucceedOrFail) {
    const std::string moved = folder_ / "new/a.png";
    ExpectEach({
        {{"show", own_}, 0, R"("payload":{"file":")" + own_},
        {{"show", foreign_}, 1, "not a capture"},
        {{"show", foreign_ + "x"}, 1, "No such file"},
        {{"recent"}, 0, R"("payload":{"count":10})"},
        {{"stats", "Race"}, 0, R"("payload":{"appName":"Race"})"},
        {{"stats", "Some Game"}, 0, ""},
        {{"stats", "Nope"}, 1, "no game \"Nope\""},
        {{"drives"}, 0, R"("payload":{"drive":"/."})"},
        {{"settings"}, 0, ""},
        {{"settings", "set", "--cap", "off", "--cap-percent", "20", "--temp", into_},
         0,
         R"({"tempFolderPath":")" + into_ + R"(","capacity":{"enabled":false,"capacityPercent":20}})"},
        {{"settings", "set", "--path", "/bad/a/../x"}, 1, R"({"userGalleryPath":"/bad/x"})"},
        {{"cp", foreign_, into_}, 1, "not one of the product's own captures"},
        {{"cp", own_, folder_ / "missing/"}, 1, "there is no folder"},
        {{"cp", own_, folder_.Write("b/a.png", "x"), into_}, 1, "another file goes to"},
        {{"mv", own_, folder_ / "new/"}, 0, R"({"source":")" + own_ + R"(","destination":")" + moved + "\"}"},
        {{"rm", own_, foreign_, own_}, 1, "1 of 2 files"},
        {{"rm", "--dry-run", own_}, 0, R"("method":"GetFileMetadata")"},
    });
    EXPECT_EQ(RunHost({"settings", "set", "--path", "/other", "--timeout", "0.2"}, {}, "rebuilds").status, 4);
}

// The first two answers come in reverse, and the second file fails.
TEST_F(Verbs, ReportEachFileInOrder) {
    const std::string taken = folder_.Write("taken.png", "x");
    const std::string third = folder_.Write("third.png", "x");
    const Ended ended = RunHost({"cp", own_, taken, third, into_, "--json"}, {}, "reverses");
    const auto line = [this](const std::string& name, const std::string& rest) {
        return R"({"file":")" + folder_ / name + R"(","destination":")" + into_ + "/" + name + "\"," + rest +
               "}\n";
    };
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.out,
              line("a.png", R"("ok":true)") +
                  line("taken.png", R"("ok":false,"error":")" + into_ + R"(/taken.png is there already")") +
                  line("third.png", R"("ok":true)"));
}

TEST_F(Verbs, AnInterruptEndsACopyWithWhatIsDone) {
    const std::vector<std::string> copy = {"cp", own_, folder_ / "never.png", into_, "--json"};
    ChildProcess child(WithFake(copy), {});
    ASSERT_TRUE(child.ReadOutUntil(R"("ok":true)")) << child.err;
    child.Signal(SIGINT);
    EXPECT_EQ(child.Wait(), 130);
    EXPECT_TRUE(Contains(child.err, "gallery-host: interrupted; 1 of 2 files")) << child.err;
    std::vector<std::string> late = copy;
    late.insert(late.end(), {"--timeout", "0.3"});
    EXPECT_EQ(RunHost(late).status, 4);
}

TEST_F(Verbs, WriteAThumbnailWholeOrNotAtAll) {
    const std::string png = "\x89PNG\r\n\x1a\n";
    const std::string out = folder_ / "out.png";
    EXPECT_EQ(RunHost({"thumb", own_, "-o", out, "--size", "64x36"}).status, 0);
    EXPECT_EQ(folder_.Read("out.png"), png);
    EXPECT_EQ(RunHost({"thumb", own_, "-o", "-"}).out, png);
    folder_.Write("out.png", "old");
    for (const char* fails : {"none.png", "broken.png"})
        EXPECT_EQ(RunHost({"thumb", folder_ / fails, "-o", out}).status, 1);
    EXPECT_EQ(folder_.Read("out.png"), "old");
    for (const std::string& nowhere : {std::string("/dev/null"), folder_ / "no/o.png"})
        EXPECT_TRUE(Contains(RunHost({"thumb", own_, "-o", nowhere}).err, "cannot write " + nowhere));
    const auto files = std::filesystem::directory_iterator(folder_.path());
    EXPECT_EQ(std::distance(begin(files), end(files)), 4) << "something is left behind";
}

}  // namespace
