#include <vector>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/media/XMPMeta.h"

namespace {

std::string Content(const std::string& text, const std::vector<const char*>& tags = {"a"}) {
    media::XMPMeta xmp(text);
    for (const char* tag : tags)
        EXPECT_EQ(xmp.Descend(tag), 0);
    std::string out = "left over";
    EXPECT_EQ(xmp.GetCurrentString(out), 0);
    return out;
}

struct Case {
    const char* text;
    const char* content;
};

TEST(XMPMeta, DescendsToTheTrimmedContent) {
    for (const auto& [text, content] :
         {Case{"<?x?>\n<a b=\"c\"> \n two words\n </a> tail", "two words"},
          Case{"<ns:a>opened by a prefix</a>", "opened by a prefix"},
          Case{"<a>closed by one</ns:a>", "closed by one</ns:a>"},
          Case{"<a>x<b>y</b>z<</a>", "x<b>y</b>z<</a>"}, Case{"<a>x</a  >", "x"}, Case{"   <a> \n </a>", ""},
          Case{"<a", "<a"}, Case{"<a>", ""}, Case{"<a>never closed <", "never closed <"},
          Case{"<b>no such element</b>", "<b>no such element</b>"}})
        EXPECT_EQ(Content(text), content);
    EXPECT_EQ(Content("<r><a>in</a></r>", {"r", "missing", "a"}), "in");
}

TEST(XMPMeta, DecodesItsEntitiesOnly) {
    EXPECT_EQ(Content("<a>&lt;&gt;&amp;&apos;&quot;&#xA;</a>"), "<>&'\"\n");
    EXPECT_EQ(Content("<a>&amp;lt;</a>"), "&lt;") << "decoded once";
    EXPECT_EQ(Content("<a>&nbsp;&#65;&LT;&</a>"), "&nbsp;&#65;&LT;&");
    EXPECT_EQ(Content("x&amp;"), "x&");
    EXPECT_EQ(Content("<a>&am</a>p;"), "&am") << "an entity ends with the range";
}

}  // namespace
