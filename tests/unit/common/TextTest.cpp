#include <gtest/gtest.h>

#include "common/results/Exception.h"
#include "common/text/SafeString.h"
#include "common/text/TextUtil.h"
#include "common/text/TimeUtil.h"

namespace KXP {
namespace {

using Pieces = std::vector<std::string>;

// What a call throws, as the value that a request would end in.
template <typename Call>
std::string Thrown(Call call) {
    try {
        call();
    } catch (...) {
        return ToStr(ExceptionToRetVal());
    }
    return "nothing thrown";
}

TEST(TimeText, OnlyAWholeTimestampHasATime) {
    EXPECT_EQ(HHMMSSTimeTo100ns("1:02:3.045"), (int64_t{3723} * 1000 + 45) * 10000);
    EXPECT_EQ(HHMMSSTimeTo100ns("99:99:99.9"), (int64_t{99} * 3661000 + 9) * 10000);
    for (const char* text :
         {"", "1:2:3", "1:2:3.", "1:2:3.4567", "100:2:3.4", "1:2:3.4 ", "+1:2:3.4", "1:2,3.4"})
        EXPECT_EQ(HHMMSSTimeTo100ns(text), 0) << text;
}

TEST(SafeString, ACopyThatDoesNotFitIsCutOrRefused) {
    constexpr const char* kInvalidArg = "0x8000ffff[0]: KXP::Error::InvalidArg";
    wchar_t buffer[6] = L"old";
    EXPECT_EQ(Thrown([&] { wcscpy_s(buffer, 6, nullptr); }), "0x8000ffff[0]: KXP::Error::InvalidPointer");
    EXPECT_STREQ(buffer, L"");
    EXPECT_EQ(wcscpy_s(buffer, 4, L"abc"), 0);
    EXPECT_EQ(Thrown([&] { wcscpy_s(buffer, 4, L"abcd"); }), kInvalidArg);
    // Not terminated, and not read beyond the count.
    const wchar_t open[3] = {L'a', L'b', L'c'};
    EXPECT_EQ(wcsncpy_s(buffer, 6, open, 3), 0);
    EXPECT_STREQ(buffer, L"abc");
    EXPECT_EQ(Thrown([&] { wcscpy_s(buffer + 2, 4, buffer); }), kInvalidArg) << "overlap";
    for (const size_t count : {size_t{0}, size_t{6}})
        EXPECT_EQ(Thrown([&] { wcsncpy_s(buffer, 6, L"abcdef", count); }), kInvalidArg);
    EXPECT_EQ(wcsncpy_s(buffer, 6, L"abcdef", kTruncate), 80);
    EXPECT_STREQ(buffer, L"abcde");
    EXPECT_EQ(wcsncpy_s(buffer, 6, L"abcde", kTruncate), 0);
}

TEST(TextUtil, SplittingAtACharacterHasNoLastEmptyPiece) {
    EXPECT_EQ(SplitString("a::b::", "::"), (Pieces{"a", "b", ""}));
    EXPECT_EQ(SplitString("", "/"), Pieces{""});
    EXPECT_EQ(SplitString("a//b/", '/'), (Pieces{"a", "", "b"}));
    EXPECT_TRUE(SplitString("", '/').empty());
    EXPECT_EQ(Thrown([] { SplitString("a", ""); }), "0x80070057[0]: Empty delimeter string");
}

}  // namespace
}  // namespace KXP
