#include <gtest/gtest.h>

#include "importing/ExifData.h"
#include "importing/JpegMarks.h"
#include "importing/PngMarks.h"
#include "plugin-modules/Gallery/src/media/JpegWalk.h"
#include "plugin-modules/Gallery/src/media/PngWalk.h"
#include "sample-captures/JpegImage.h"
#include "sample-captures/PngImage.h"
#include "tests/support/CaptureBytes.h"

namespace {

using namespace importing;
using namespace std::string_literals;
using samples::PngChunk;
using samples::U16;
using samples::U32;

const CaptureMarks kMarks{"Rustwind Rally", ""};
const samples::Gradient kColours{{255, 0, 0}, {0, 0, 255}};

struct Marked {
    std::string file;
    std::string picture;  // what the plan takes for the picture's data
};

template <typename Plan>
Marked Apply(Plan plan, const std::string& source, const CaptureMarks& marks = kMarks) {
    media::MemorySource bytes(source);
    Marked marked;
    const Splice splice = plan(bytes, source.size(), marks);
    for (const Piece& piece : splice.pieces()) {
        const std::string part = source.substr(piece.from, piece.size);
        EXPECT_EQ(part.size(), piece.size);
        marked.file += piece.bytes + part;
        if (piece.isPicture) marked.picture += part;
    }
    return marked;
}

template <typename Walk>
media::SniffResult Sniff(Walk walk, const std::string& file) {
    media::MemorySource source(file);
    media::ByteCursor cursor(source);
    media::SniffResult result;
    EXPECT_EQ(walk(cursor, result), media::kInspected);
    return result;
}

// A file that is cut off anywhere is refused; one with a wrong byte is, too, or becomes a capture.
template <typename Plan, typename Walk>
void ExpectRefusesParts(Plan plan, Walk walk, const std::string& whole) {
    for (size_t size = 0; size < whole.size(); ++size)
        EXPECT_THROW(Apply(plan, whole.substr(0, size)), ImportError) << size;
    for (size_t at = 0; at < whole.size(); ++at) {
        for (const char byte : {'\0', '\x7F', '\xFF'}) {
            std::string damaged = whole;
            damaged[at] = byte;
            try {
                EXPECT_TRUE(Sniff(walk, Apply(plan, damaged).file).isOwn);
            } catch (const ImportError&) {
            }
        }
    }
}

TEST(MarkPng, AddsTextsAndKeepsEveryByte) {
    const std::string hdr = PngChunk("cICP", "\x09\x10\0\x01"s) + PngChunk("eXIf", "MM\0*");
    const std::string comment = PngChunk("tEXt", "Software\0Some recorder"s);
    const std::string source =
        samples::PngImage(64, 64, kColours, {hdr, comment, comment, comment, comment}) + "after the end";
    const Marked marked = Apply(MarkPng, source);
    const media::SniffResult result = Sniff(media::WalkPng, marked.file);
    EXPECT_TRUE(result.isOwn);
    EXPECT_EQ(result.fileSource, "OVS_Share");
    EXPECT_EQ(result.fileSubType, "Normal");
    EXPECT_EQ(result.drsName, "Rustwind Rally");

    const size_t added = marked.file.size() - source.size();
    EXPECT_EQ(marked.file.substr(0, 33) + marked.file.substr(33 + added), source);
    EXPECT_EQ(marked.picture.find("recorder"), std::string::npos);
    EXPECT_EQ(marked.picture, Apply(MarkPng, samples::PngImage(64, 64, kColours)).picture);
    EXPECT_NE(marked.picture, Apply(MarkPng, samples::PngImage(64, 64, {})).picture);

    const media::SniffResult highlight =
        Sniff(media::WalkPng, Apply(MarkPng, source, {"Rustwind Rally", "Photo finish"}).file);
    EXPECT_EQ(highlight.fileSubType, "Highlight");
    EXPECT_EQ(highlight.highlightName, "Photo finish");
    EXPECT_THROW(Apply(MarkPng, source, {std::string(100, 'g'), ""}), ImportError);
}

TEST(MarkPng, RefusesWhatIsNotWhole) {
    ExpectRefusesParts(MarkPng, media::WalkPng, samples::PngImage(4, 4, kColours));
    const std::string noPixels = samples::PngImage(4, 4, kColours).substr(0, 33) + PngChunk("IEND", "");
    EXPECT_THROW(Apply(MarkPng, noPixels), ImportError);
}

// Exif data of a camera: a link to dates, and a place.
std::string CameraExif(bool isLittle) {
    const auto number = [&](std::string bytes) {
        return isLittle ? std::string(bytes.rbegin(), bytes.rend()) : bytes;
    };
    const auto entry = [&](uint16_t tag, uint16_t type, uint32_t count, const std::string& value) {
        return number(U16(tag)) + number(U16(type)) + number(U32(count)) + value;
    };
    const std::string image = number(U16(4)) + entry(0x0112, 3, 1, isLittle ? "\6\0\0\0"s : "\0\6\0\0"s) +
                              entry(0x0131, 2, 9, number(U32(62))) + entry(0x8769, 4, 1, number(U32(72))) +
                              entry(0x8825, 4, 1, number(U32(110))) + number(U32(0));
    const std::string photo =
        number(U16(1)) + entry(0x9003, 2, 20, number(U32(90))) + number(U32(0)) + "2026:11:22 10:11:12\0"s;
    const std::string place = number(U16(2)) + entry(1, 2, 2, "N\0\0\0"s) + entry(2, 5, 3, number(U32(140))) +
                              number(U32(0)) + number(U32(52)) + number(U32(1)) + number(U32(31)) +
                              number(U32(1)) + number(U32(7)) + number(U32(2));
    return "Exif\0\0"s + (isLittle ? "II*\0"s : "MM\0*"s) + number(U32(8)) + image + "Recorder\0\0"s + photo +
           place;
}

std::string Segment(char marker, const std::string& payload) {
    return "\xFF"s + marker + U16(static_cast<uint16_t>(payload.size() + 2)) + payload;
}

// The start of image, the segments, and the rest of a picture without its segment APP0.
std::string JpegWith(const std::string& segments) {
    return "\xFF\xD8" + segments + samples::JpegImage(16, 16, kColours).substr(20);
}

std::string ValueOf(const ExifDirectory& directory, uint16_t tag) {
    for (const ExifEntry& entry : directory.entries())
        if (entry.tag == tag) return entry.value;
    return "";
}

ExifData ExifOf(const std::string& jpeg) {
    const size_t at = jpeg.find("Exif\0\0"s) + 6;
    return ReadExif(media::ByteView(std::string_view(jpeg).substr(at))).value();
}

TEST(MarkJpeg, IsRecognizedWithOrWithoutSegmentsOfItsOwn) {
    const std::string jfif = samples::JpegImage(16, 16, kColours).substr(2, 18);
    const std::string bare = JpegWith("");
    for (const std::string& segments :
         {jfif, ""s, Segment('\xE0', std::string(900, 'x')), Segment('\xEE', "Adobe\0d\0\0\0\0\0"s),
          jfif + "\xFF\xFF" + Segment('\xFE', "a comment")}) {
        for (const std::string& game : {"Rustwind Rally"s, "Over eleven"s, "G 4"s, std::string(99, 'g')}) {
            const Marked marked = Apply(MarkJpeg, JpegWith(segments), {game, ""});
            const media::SniffResult result = Sniff(media::WalkJpeg, marked.file);
            EXPECT_TRUE(result.isOwn);
            EXPECT_EQ(result.fileSource, "OVS_Share");
            // Readers look for a shorter text where it cannot be.
            EXPECT_EQ(result.drsName, game.size() > 4 ? game : "");
            EXPECT_EQ(marked.picture, Apply(MarkJpeg, bare).picture);
            EXPECT_NE(marked.file.find(bare.substr(2)), std::string::npos);
            EXPECT_EQ(marked.file.find("JFIF") != std::string::npos,
                      segments.find("JFIF") != std::string::npos);
        }
    }
}

TEST(MarkJpeg, CarriesItsExifDataOver) {
    for (const bool isLittle : {true, false}) {
        const std::string xmp = Segment('\xE1', "http://ns.adobe.com/xap/1.0/\0<x/>"s);
        const std::string jpeg = JpegWith(Segment('\xE1', CameraExif(isLittle)) + xmp);
        const std::string marked = Apply(MarkJpeg, jpeg).file;
        EXPECT_TRUE(Sniff(media::WalkJpeg, marked).isOwn);
        EXPECT_NE(marked.find(xmp), std::string::npos);
        EXPECT_EQ(marked.find("Recorder"), std::string::npos);
        EXPECT_EQ(marked.find("Exif\0\0"s), marked.rfind("Exif\0\0"s));
        const ExifData exif = ExifOf(marked);
        EXPECT_EQ(ValueOf(exif.image, exif::kOrientation), U16(6));
        EXPECT_EQ(ValueOf(exif.photo, 0x9003), "2026:11:22 10:11:12\0"s);
        EXPECT_EQ(ValueOf(exif.place, 1), "N\0"s);
        EXPECT_EQ(ValueOf(exif.place, 2), U32(52) + U32(1) + U32(31) + U32(1) + U32(7) + U32(2));
        // Once more changes nothing but the place of what is there.
        EXPECT_EQ(Apply(MarkJpeg, marked).file, marked);
    }
    std::string damaged = CameraExif(false);
    damaged.replace(damaged.size() - 8, 8, "");
    EXPECT_THROW(Apply(MarkJpeg, JpegWith(Segment('\xE1', damaged))), ImportError);
}

// Wherever the Exif data were, and whatever fills up before a marker.
TEST(MarkJpeg, KnowsThePictureAgain) {
    const std::string bare = JpegWith("");
    const std::string end = "\xFF\xFF\xFF" + Segment('\xE5', "x").substr(1) + "\xFF\xD9";
    const std::string exif = Segment('\xE1', CameraExif(true));
    const std::string jpeg = bare.substr(0, bare.size() - 2) + exif + end;
    const Marked marked = Apply(MarkJpeg, jpeg);
    EXPECT_EQ(marked.picture, Apply(MarkJpeg, marked.file).picture);
    EXPECT_EQ(marked.picture, Apply(MarkJpeg, bare).picture);
}

// Readers look at files of 512 bytes and more.
TEST(MarkJpeg, MakesAShortFileLongEnough) {
    const std::string picture = "\xFF\xD8" + Segment('\xC0', "\x08\0\1\0\1\1\1\x11\0"s) +
                                Segment('\xDA', "\1\1\0\0\x3F\0"s) + "x\xFF\xD9";
    const Marked marked = Apply(MarkJpeg, picture);
    EXPECT_TRUE(Sniff(media::WalkJpeg, marked.file).isOwn);
    EXPECT_EQ(marked.picture, picture.substr(2));
}

TEST(MarkJpeg, RefusesWhatIsNotWhole) {
    ExpectRefusesParts(MarkJpeg, media::WalkJpeg, JpegWith(Segment('\xE1', CameraExif(true))));
    EXPECT_THROW(Apply(MarkJpeg, "\xFF\xD8\xFF\xD9"), ImportError);
}

}  // namespace
