#include <gtest/gtest.h>

#include "common/JsonHelpers.h"
#include "common/JsonParse.h"
#include "libraries/share-common/Highlight.h"

namespace {

TEST(Highlight, GoesThroughJsonInItsOrder) {
    const std::string text =
        R"({"id":7,"definitionId":"d","name":"n","groupId":"g","path":"/p","type":"screenshot","tags":-1,)"
        R"("significance":2,"messageBusReferenceId":"r\u0000","videoLengthSeconds":3,"startDelta":-4,)"
        R"("endDelta":5,"eventTimeStamp":"t","app":{"appShortName":"s","profileName":"p","name":"a"}})";
    KXP::Document document;
    ASSERT_FALSE(KXP::ParseJSON(text, document).IsError());
    Highlight highlight;
    Highlight::ParseHighlightJSON(highlight, document);
    EXPECT_EQ(highlight.GetSDKAppInfo().appShortName, "s");
    KXP::Value out;
    Highlight::CreateHighlightJSONValue(highlight, out, document.GetAllocator());
    EXPECT_EQ(KXP::WriteJSONToString(out), text);
}

TEST(Highlight, LacksNothingWhereTheMessageDoes) {
    KXP::Document document;
    ASSERT_FALSE(KXP::ParseJSON(R"({"id":"7","type":"film","app":[]})", document).IsError());
    Highlight highlight;
    highlight.SetId(1);
    highlight.SetType(HighlightType::Screenshot);
    Highlight::ParseHighlightJSON(highlight, document);
    EXPECT_EQ(highlight.GetId(), 0);
    EXPECT_EQ(highlight.GetTypeAsString(), "video");
    EXPECT_EQ(highlight.GetSDKAppInfo().name, "");
    EXPECT_EQ(highlight.GetMessageBusRefid(), std::string(1, '\0')) << "as every reference ends";
    highlight.SetMessageBusRefid("r");
    EXPECT_EQ(highlight.GetMessageBusRefid(), std::string("r\0", 2));
}

}  // namespace
