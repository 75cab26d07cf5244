#include <gtest/gtest.h>

#include "common/Base64.h"

TEST(Base64, IsDecodedStrictly) {
    std::string bytes;
    for (const auto& [text, plain] : std::initializer_list<std::pair<const char*, const char*>>{
             {"", ""}, {"Zg==", "f"}, {"Zm8=", "fo"}, {"Zm9v", "foo"}, {"+/+/", "\xFB\xFF\xBF"}}) {
        EXPECT_TRUE(KXP::DecodeBase64(text, bytes)) << text;
        EXPECT_EQ(bytes, plain);
    }
    for (const char* text :
         {"Zg", "Zg=", "Zh==", "Zm9=", "Z===", "====", "Zg==Zg==", "Zm9v\n", "Zm 9", "Zm_9"})
        EXPECT_FALSE(KXP::DecodeBase64(text, bytes)) << text;
}
