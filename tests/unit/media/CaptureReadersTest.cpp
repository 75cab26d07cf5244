// The readers of captures: their texts, what they read of odd files, and what they log. How they go from
// place to place is compared with plain forms of them by the fuzz targets.
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "plugin-modules/Gallery/src/media/Mp4Header.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"
#include "plugin-modules/Gallery/src/media/XMPMeta.h"
#include "tests/support/CaptureBytes.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"

namespace {

TEST(XMPMeta, IsNoParserOfXml) {
    const auto content = [](const std::string& text, const std::vector<const char*>& tags) {
        media::XMPMeta xmp(text);
        for (const char* tag : tags)
            EXPECT_EQ(xmp.Descend(tag), 0);
        std::string out = "left over";
        EXPECT_EQ(xmp.GetCurrentString(out), 0);
        return out;
    };
    const struct {
        const char *text, *content;
    } cases[] = {
        {"<ns>a b=\"c\"> \n two words\n </a  > tail", "two words"},
        {"<a>closed by one</ns:a>", "closed by one</ns:a>"},
        {"<a>x<b>y</b>z<</a>", "x<b>y</b>z<</a>"},
        {"   <a> \n </a>", ""},
        {"<a>never closed <", "never closed <"},
        {"<a>&lt;&gt;&amp;&apos;&quot;&#xA;&amp;lt;&nbsp;&LT;&am</a>p;", "<>&'\"\n&lt;&nbsp;&LT;&am"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(content(text, {"a"}), expected);
    EXPECT_EQ(content("<r><a>in</a></r>", {"r", "missing", "a"}), "in");
}

struct CountingSource final : media::ByteSource {
    explicit CountingSource(std::string all) : bytes(std::move(all)) {}
    size_t ReadAt(uint64_t position, char* out, size_t count) override {
        const size_t got = media::MemorySource(bytes).ReadAt(position, out, count);
        bytesRead += got;
        return got;
    }

    const std::string bytes;
    uint64_t bytesRead = 0;
};

TEST(Mp4Header, AFileOfBoxesIsReadOnceAndDoesNotFloodTheLog) {
    const LogCapture log;
    std::string boxes;
    for (int i = 0; i < 50000; ++i)
        boxes += samples::Mp4Box("\xFF\n%s", "");
    CountingSource source(boxes);
    media::Mp4HeaderInfo info;
    EXPECT_EQ(media::ReadMp4Header(source, true, info), 1);
    EXPECT_LT(source.bytesRead, boxes.size() + boxes.size() / 50);
    EXPECT_TRUE(log.HasLine(3, "Box ??%s"));
    EXPECT_EQ(log.Count("Box ??%s"), 1000);
}

class OwnershipSniffer : public testing::Test {
  protected:
    const TempFolder folder_;
};

struct Row {
    const char* name;
    const std::string& bytes;
    const char *fileType, *subType;
    bool isOwn;
};

TEST_F(OwnershipSniffer, ExtensionSelectsTheWalkAndTheBytesDecide) {
    const std::string png = captures::Png(captures::PngText("Description", "") +
                                          captures::PngText("Software", "Ovirastream SHARE"));
    // With a name that is too long.
    std::string jpeg = samples::JpegImage(16, 9, {}, {"", "ZORVEX", "", "", "A game", ""});
    jpeg.replace(jpeg.find(std::string("\0\x0B\0\x07\0\0\0", 7)) + 6, 1, "\x04");
    const LogCapture log;
    const std::string mp4 = captures::Movie(captures::Block("Ovirastream SDK", "{}"));
    for (const Row& row :
         {Row{"A.PNG", png, "image", "Normal", true}, Row{"a.jpg", png, "image", "Unknown", false},
          Row{"a.mp4", png, "video", "Unknown", false}, Row{"a.png2", png, "other", "Unknown", false},
          Row{"png", png, "other", "Unknown", false}, Row{"b.jps", jpeg, "image", "Stereo", true},
          Row{"b.jpeg", jpeg, "other", "Unknown", false}, Row{"c.Mp4", mp4, "video", "Highlight", true}}) {
        media::SniffResult result;
        result.fileSubType = result.highlightName = result.drsName = result.drsProfileName = "before";
        EXPECT_GE(media::SniffFile(folder_.Write(row.name, row.bytes), result), 0) << row.name;
        EXPECT_EQ(result.highlightName + result.drsName + result.drsProfileName, "before")
            << "none of its own";
        EXPECT_EQ(std::string(result.fileType) + result.fileSubType, std::string(row.fileType) + row.subType)
            << row.name;
        EXPECT_EQ(result.isOwn, row.isOwn) << row.name;
    }
    EXPECT_EQ(log.Count("][1]["), 1);
}

TEST_F(OwnershipSniffer, WhatIsNoReadableFileNeverBlocks) {
    ASSERT_EQ(mkfifo((folder_ / "pipe.png").c_str(), 0600), 0);
    folder_.MakeFolder("folder.mp4");
    std::filesystem::create_symlink("/dev/zero", folder_ / "device.jpg");
    const std::string real =
        folder_.Write("real.png", captures::Png(captures::PngText("Software", "Ovirastream SHARE")));
    for (const std::string& path :
         {folder_ / "pipe.png", folder_ / "folder.mp4", folder_ / "device.jpg", folder_ / "missing.jps",
          real + std::string("\0.png", 5), folder_ / (std::string(300, 'x') + ".png")}) {
        media::SniffResult result;
        EXPECT_EQ(static_cast<uint32_t>(media::SniffFile(path, result)), 0x80004005u) << path;
    }
}

TEST_F(OwnershipSniffer, FindsTheMovieBehindFiveGigabytes) {
    constexpr uint64_t kHole = 5'000'000'000;
    const std::string path = folder_.Write("hole.mp4", samples::U32(1) + "mdat" + samples::U64(kHole + 16));
    std::filesystem::resize_file(path, kHole + 16);
    std::ofstream(path, std::ios::binary | std::ios::app)
        << captures::Movie(captures::Block("Ovirastream SDK", "{}"));
    media::SniffResult result;
    EXPECT_EQ(media::SniffFile(path, result), 1);
    EXPECT_TRUE(result.isOwn);
}

}  // namespace
