#include <cstdlib>

#include <gtest/gtest.h>

#include "sample-captures/PngImage.h"
#include "sample-media/MadeMedia.h"
#include "tests/abi/PluginLibrary.h"
#include "tests/support/TempFolder.h"

namespace {

std::string Request(const std::string& file, const std::string& more) {
    return R"({"file":")" + file + "\"" + more + "}";
}

class Thumbnails : public RunningPlugin {
  protected:
    // The text of the thumbnail; "" for none.
    std::string Ask(const std::string& file, const std::string& size = R"(,"width":64,"height":64)") {
        const KXP::Value& answer = RunningPlugin::Ask("GetThumbnail", Request(file, size));
        EXPECT_EQ(answer["_return_code"].GetInt(), 0);
        return answer.HasMember("thumbnail") ? answer["thumbnail"].GetString() : "";
    }

    const TempFolder folder_;
};

TEST_F(Thumbnails, AreOfTheFileAsItIsNow) {
    const std::string path = folder_.Write("a.png", samples::PngImage(640, 360, {{255, 0, 0}, {255, 0, 0}}));
    const std::string red = Ask(path);
    EXPECT_EQ(red.rfind("data:image/png;base64,iVBOR", 0), 0u);
    EXPECT_EQ(Ask(path), red);
    EXPECT_NE(Ask(path, R"(,"width":32,"height":32)"), red);
    folder_.Write("a.png", samples::PngImage(640, 360, {{0, 0, 255}, {0, 0, 255}}));
    EXPECT_NE(Ask(path), red);
    EXPECT_NE(Ask(made::Path({})), "");
    folder_.Write("a.png", "\x89PNG\r\n\x1A\n and nothing more");
    for (const std::string& none : {path, folder_ / "missing.png", folder_.path()})
        EXPECT_EQ(Ask(none), "");
}

#ifndef GALLERY_SANITIZED  // which would have to be loaded ahead of the foreign codecs
TEST(ForeignCodecs, AreNotMistakenForOurs) {
    const TemporaryHome home;
    const TempFolder folder;
    for (const std::string& file :
         {made::Path({}), folder.Write("a.png", samples::PngImage(640, 360, {{1, 2, 3}, {4, 5, 6}}))}) {
        const std::string command = "LD_PRELOAD=" FOREIGN_CODECS " " GALLERY_HOST " thumb '" + file +
                                    "' --size 32x32 -o '" + (folder / "out.png") + "'";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
    }
    EXPECT_TRUE(folder.Has("out.png"));
}
#endif

}  // namespace
