#include "plugin-modules/Gallery/src/endpoints/HighlightRequests.h"
#include "tests/support/TempGallery.h"
#include "tests/unit/hub/HubTest.h"

namespace {

const std::string kRace = R"("app":{"profileName":"Race"})";

class HighlightRequestsTest : public HubTest {
  protected:
    // Puts a video on record; returns its path.
    std::string AddHighlight(const std::string& name, const std::string& group, uint32_t tags) {
        const std::string inner = R"({"MediaType":"Highlight","HighlightGroupId":")" + group +
                                  R"(","HighlightTags":)" + std::to_string(tags) +
                                  R"(,"HighlightSignificance":4})";
        std::string path =
            home_.folder().Write("Videos/ZORVEX/Ovirastream/Race/" + name,
                                 TempGallery::Video(600, 1200, captures::Block("Ovirastream SDK", inner)));
        hub_.GetUGCTracker()->TrackFile(path);
        EXPECT_TRUE(Soon([&] { return hub_.GetUGCTracker()->IsTrackedFile(path); }));
        return path;
    }

    // Returns the summary that is sent: the tracker's worker may still notify of captures.
    std::string Open(const std::string& groups) {
        Ask("OpenHighlightsGroupSummary", requests_, &HighlightRequests::OpenHighlightsGroupSummary,
            "{" + kRace + ",\"groups\":" + groups + "}");
        const std::string sent = module_.TakeSent();
        const size_t at = sent.find(R"(GalleryNotifications {"openSummary")");
        return at == std::string::npos ? "" : sent.substr(at, sent.find('|', at) - at);
    }

    std::string Enqueue(const std::string& payload) {
        return Ask("EnqueuePendingHighlight", requests_, &HighlightRequests::EnqueuePendingHighlight,
                   payload);
    }
    std::string Count(const std::string& group) {
        return Ask("GetHighlightsCount", requests_, &HighlightRequests::GetHighlightsCount,
                   "{" + kRace + ",\"group\":" + group + "}");
    }

    HighlightRequests requests_{hub_};
};

}  // namespace

TEST_F(HighlightRequestsTest, AnExpectedOneIsAnsweredWithItsId) {
    const std::string answer =
        Enqueue("{" + kRace + R"(,"highlight":{"id":99,"groupId":"g","type":"screenshot","tags":2}})");
    EXPECT_EQ(answer.find(R"({"highlight":{"id":1,"definitionId":"",)"), 0u) << answer;
    EXPECT_NE(answer.find(R"("groupId":"g","path":"","type":"screenshot","tags":2)"), std::string::npos);
    EXPECT_NE(answer.find(R"("messageBusReferenceId":"id)"), std::string::npos) << "of the request itself";
    EXPECT_NE(answer.find(R"("profileName":"Race")"), std::string::npos);
    EXPECT_EQ(Count(R"({"groupId":"g"})"), R"({"count":1})");

    const std::string other = Enqueue(R"({"highlight":{"messageBusReferenceId":"r","app":{"name":"own"}}})");
    EXPECT_NE(other.find(R"("messageBusReferenceId":"r\u0000")"), std::string::npos) << other;
    EXPECT_NE(other.find(R"("name":"own")"), std::string::npos);
    EXPECT_NE(other.find(R"("id":2)"), std::string::npos);
}

TEST_F(HighlightRequestsTest, AGroupIsCountedThroughItsMasksAndDeletedWithItsFiles) {
    const std::string a = AddHighlight("a.mp4", "g", 1);
    const std::string b = AddHighlight("b.mp4", "g", 2);
    const std::string c = AddHighlight("c.mp4", "h", 1);
    EXPECT_EQ(Count(R"({"groupId":"g"})"), R"({"count":2})");
    EXPECT_EQ(Count(R"({"groupId":"g","tags":2,"significance":4})"), R"({"count":1})");
    EXPECT_EQ(Count(R"({"groupId":"g","significance":8})"), R"({"count":0})");
    EXPECT_EQ(Count(R"({"groupId":"nobody's"})"), R"({"count":0})");
    // The highest bit, with and without a sign.
    AddHighlight("d.mp4", "g", 2147483648);
    EXPECT_EQ(Count(R"({"groupId":"g","tags":2147483648})"), R"({"count":1})");
    EXPECT_EQ(Count(R"({"groupId":"g","tags":-2147483648})"), R"({"count":1})");
    EXPECT_NE(Open(R"([{"groupId":"g"}])").find("\"highlightTags\":2147483648"), std::string::npos);
    Ask("DeleteGroupHighlights", requests_, &HighlightRequests::DeleteGroupHighlights,
        "{" + kRace + R"(,"groupId":"g"})");
    EXPECT_EQ(result_.text, "Success");
    EXPECT_EQ(Count(R"({"groupId":"g"})"), R"({"count":0})");
    EXPECT_FALSE(std::filesystem::exists(a) || std::filesystem::exists(b));
    EXPECT_TRUE(std::filesystem::exists(c));
}

TEST_F(HighlightRequestsTest, ASummaryHoldsEachRecordOnceInTheOrderOfTheGroups) {
    AddHighlight("a.mp4", "g", 1);
    AddHighlight("b.mp4", "g", 2);
    AddHighlight("c.mp4", "h", 1);
    const std::string sent = Open(R"([{"groupId":"h"},{"groupId":"g","tags":2},{"groupId":"g"}])");
    EXPECT_EQ(sent.find(R"(GalleryNotifications {"openSummary":{"ugc":[{"id":3,)"), 0u) << sent;
    EXPECT_LT(sent.find("b.mp4"), sent.find("a.mp4"));
    EXPECT_EQ(sent.find("b.mp4"), sent.rfind("b.mp4"));

    EXPECT_EQ(Open("[]"), R"(GalleryNotifications {"openSummary":{"ugc":[]}})");
    EXPECT_EQ(Open("[7]"), "");
    EXPECT_EQ(result_.code, static_cast<int32_t>(0x80070057));
}

TEST_F(HighlightRequestsTest, BetweenTwoGalleriesThereIsNoTracker) {
    hub_.EndTracker();
    EXPECT_EQ(Enqueue("{}"), "{}");
    EXPECT_EQ(KXP::ToStr(result_), "0x80004005[0]: No tracker");
}
