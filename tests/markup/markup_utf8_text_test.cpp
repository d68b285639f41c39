// A reply's bytes read straight into the document must give exactly what
// decoding them with the platform and setting the text gives: the same text
// to the first NUL, the same replacement of ill-formed bytes, the same index.

#include <gtest/gtest.h>

#include <string>

#include "markup/markup_document.h"
#include "markup_test_util.h"
#include "platform/text.h"

using namespace marrowfin;

TEST(MarkupUtf8Text, ReadsAsTheDecodedTextWouldRead) {
    // Long enough runs of three-byte characters take the vector road.
    std::string cjkRun;
    for (int i = 0; i < 40; ++i) cjkRun += "图块";
    struct Case {
        const char* name;
        std::string bytes;
        bool wellFormed;
    };
    const Case cases[] = {
        {"plain", "<root a=\"1\"><b fn=\"x.dwg\"/></root>", true},
        {"three-byte run", "<root gn=\"" + cjkRun + "\">" + cjkRun + "</root>", true},
        {"four-byte form", "<root t=\"\xF0\x9F\x98\x80\"/>", true},
        {"mark kept as a character", "\xEF\xBB\xBF<root/>", true},
        {"lone continuation", "<root a=\"\x80z\"/>", true},
        {"lead cut by the end", "<root/>\xE5\x9B", true},
        {"overlong", "<root a=\"\xC0\x80\"/>", true},
        {"encoded surrogate", "<root a=\"\xED\xA0\x80\"/>", true},
        {"above the last plane", "<root a=\"\xF5\x80\x80\x80\"/>", true},
        {"run broken by a bad byte", "<root>" + cjkRun.substr(0, 30) + "\xFF" + cjkRun + "</root>", true},
        {"ends at the NUL", std::string("<root/>\0<second/>", 17), true},
        {"NUL before the root", std::string("\0<root/>", 8), false},
        {"empty", "", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        MarkupDocument direct;
        MarkupDocument wide;
        const bool directOk = direct.SetUtf8Text(c.bytes);
        const bool wideOk = wide.SetText(Utf8ToUtf16(c.bytes.substr(0, c.bytes.find('\0'))));
        EXPECT_EQ(directOk, c.wellFormed);
        EXPECT_EQ(directOk, wideOk);
        EXPECT_EQ(std::u16string(direct.Text()), std::u16string(wide.Text()));
        EXPECT_EQ(test::CheckIndex(direct), "");
        ASSERT_EQ(direct.RecordCount(), wide.RecordCount());
        for (uint32_t i = 0; i < direct.RecordCount(); ++i) {
            EXPECT_EQ(direct.Record(i).start, wide.Record(i).start) << i;
            EXPECT_EQ(direct.Record(i).length, wide.Record(i).length) << i;
        }
        if (directOk) {
            ASSERT_TRUE(direct.FindElement(u"root"));
            ASSERT_TRUE(wide.FindElement(u"root"));
            EXPECT_EQ(direct.GetAttribute(u"a"), wide.GetAttribute(u"a"));
            EXPECT_EQ(direct.GetElementText(), wide.GetElementText());
        }
    }

    // A document set from bytes is an ordinary document afterwards: it edits
    // and grows as the one set from the decoded text does.
    const std::string bytes = "<root><item cs=\"\xE7\x94\xB2\"/></root>";
    MarkupDocument direct;
    MarkupDocument wide;
    ASSERT_TRUE(direct.SetUtf8Text(bytes));
    ASSERT_TRUE(wide.SetText(Utf8ToUtf16(bytes)));
    for (MarkupDocument* doc : {&direct, &wide}) {
        ASSERT_TRUE(doc->FindElement(u"root"));
        ASSERT_TRUE(doc->EnterElement());
        ASSERT_TRUE(doc->FindElement(u"item"));
        EXPECT_EQ(doc->GetAttribute(u"cs"), u"甲");
        ASSERT_TRUE(doc->SetAttribute(u"ver", u"2"));
        ASSERT_TRUE(doc->AddElement(u"item", u""));
        EXPECT_EQ(test::CheckIndex(*doc), "");
    }
    EXPECT_EQ(std::u16string(direct.Text()), std::u16string(wide.Text()));
    EXPECT_NE(direct.Text().find(u"<item cs=\"甲\" ver=\"2\"/>"), std::u16string_view::npos);
}
