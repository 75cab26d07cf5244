// The hub's own requests on their way through the library, checks against the catalogue included.

#include <array>

#include "tests/abi/GalleryRequests.h"

using HubRequestsTest = GalleryRequests;

TEST_F(HubRequestsTest, AreAnswered) {
    Start();
    const std::string app = R"("app":{"profileName":"Race"})";
    const KXP::Value& pending =
        Ask("EnqueuePendingHighlight", "{" + app + R"(,"highlight":{"groupId":"g","type":"video"}})");
    EXPECT_EQ(pending["highlight"]["id"].GetInt(), 1);
    EXPECT_EQ(Ask("GetHighlightsCount", "{" + app + R"(,"group":{"groupId":"g"}})")["count"].GetInt(), 1);
    const std::array<std::string, 3> rows[] = {
        {"OpenHighlightsGroupSummary", "{" + app + R"(,"groups":[{"groupId":"g"}]})", "0 Success"},
        {"DeleteGroupHighlights", "{" + app + R"(,"groupId":"g"})", "0 Success"},
        {"PreviewPathInfo", R"({"paths":[]})", "0 Success"},
        {"DeletePreview", R"({"previewFilepath":"/x"})", kInvalid + " Preview path is not known"},
        {"WriteEncryptedBitmap", R"({"bitmapImage":"?"})", "-2147024883 The image is no bitmap in base64"},
    };
    for (const auto& [method, payload, result] : rows)
        EXPECT_EQ(Result(method, payload), result) << method;
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
