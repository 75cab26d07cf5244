// The hub's own requests on their way through the library, checks against the catalogue included.

#include "tests/abi/GalleryRequests.h"

using HubRequestsTest = GalleryRequests;

TEST_F(HubRequestsTest, AreAnswered) {
    Start();
    const std::string app = R"("app":{"profileName":"Race"})";
    const KXP::Value& pending =
        Ask("EnqueuePendingHighlight", "{" + app + R"(,"highlight":{"groupId":"g","type":"video"}})");
    EXPECT_EQ(pending["highlight"]["id"].GetInt(), 1);
    EXPECT_EQ(Ask("GetHighlightsCount", "{" + app + R"(,"group":{"groupId":"g"}})")["count"].GetInt(), 1);
    const std::pair<const char*, std::string> rows[] = {
        {"OpenHighlightsGroupSummary", "{" + app + R"(,"groups":[{"groupId":"g"}]})"},
        {"DeleteGroupHighlights", "{" + app + R"(,"groupId":"g"})"},
        {"PreviewPathInfo", R"({"paths":[]})"},
    };
    for (const auto& [method, payload] : rows)
        EXPECT_EQ(Result(method, payload), "0 Success") << method;
    EXPECT_EQ(Result("DeletePreview", R"({"previewFilepath":"/etc/passwd"})"),
              kInvalid + " Preview path is not known");
    EXPECT_EQ(Result("WriteEncryptedBitmap", R"({"bitmapImage":"?"})"),
              std::to_string(static_cast<int32_t>(0x8007000D)) + " The image is no bitmap in base64");
}

TEST_F(HubRequestsTest, TheProgressOfAMontageIsPassedOnAndAnswered) {
    Start();
    plugin_->OnJsonMessage(Envelope("MontageNotification", "page", "{}", ",\"type\":3073").c_str());
    EXPECT_EQ(Result("UpdateMontageProgress", R"({"progress":12.5})"), "0 Success");
    EXPECT_EQ(container_.All(3, R"("payload":{"progress":12.5)").size(), 1u) << "ahead of the answer";
    EXPECT_NE(Result("UpdateMontageProgress", "{}").find("-"), std::string::npos);
}

TEST_F(HubRequestsTest, ActivityLogsAreGiven) {
    Start();
    EXPECT_EQ(Members(Ask("GetEventData", "{}")), "");
    gallery_.Add("Race/session.edgelog",
                 R"({"session":3,"events":[{"time":"1","name":"n","info":"i","round":2}],)"
                 R"("rounds":[{"number":2,"score1":5,"time":"0"}]})");
    const KXP::Value& recents = Ask("GetEventData", "{}")["recents"];
    ASSERT_EQ(recents.Size(), 1u);
    EXPECT_EQ(KXP::WriteJSONToString(recents[0]),
              R"({"gameName":"Race","session":3,"events":[{"time":"1","name":"n","info":"i","round":2}],)"
              R"("rounds":[{"number":2,"score1":5,"time":"0"}]})");
}
