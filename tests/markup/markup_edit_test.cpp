// Editing: AddElement and SetAttribute against a re-parse of the result.

#include <gtest/gtest.h>

#include <random>
#include <tuple>
#include <vector>

#include "markup/markup_document.h"
#include "markup_test_util.h"

namespace marrowfin {
namespace {

using test::CheckIndex;
using test::ResultOf;

// The index in document order, independent of record numbers.
using Shape = std::vector<std::tuple<uint32_t, uint32_t, uint32_t, uint32_t>>;
Shape ShapeOf(const MarkupDocument& doc) {
    Shape shape;
    uint32_t e = doc.Record(0).firstChild;
    while (e != 0) {
        const auto& r = doc.Record(e);
        shape.emplace_back(r.start, r.length, r.tagLengths, r.levelMarks & (0xFFFF | MarkupDocument::MarkFirst));
        if (r.firstChild != 0) {
            e = r.firstChild;
            continue;
        }
        while (e != 0 && doc.Record(e).nextSibling == 0) e = doc.Record(e).parent;
        if (e != 0) e = doc.Record(e).nextSibling;
    }
    return shape;
}

TEST(MarkupEdit, BuildsTheDocumentedLayout) {
    MarkupDocument doc;
    ASSERT_TRUE(doc.AddElement(u"root"));
    EXPECT_EQ(doc.Text(), u"<root/>\r\n");
    ASSERT_TRUE(doc.EnterElement());
    ASSERT_TRUE(doc.AddElement(u"item", u"a"));
    EXPECT_EQ(doc.Text(), u"<root>\r\n<item>a</item>\r\n</root>\r\n");
    ASSERT_TRUE(doc.AddElement(u"item", u"a<b&c>"));
    EXPECT_EQ(doc.Text(), u"<root>\r\n<item>a</item>\r\n<item>a&lt;b&amp;c&gt;</item>\r\n</root>\r\n");
    EXPECT_EQ(doc.GetElementText(), u"a<b&c>");
    EXPECT_EQ(CheckIndex(doc), "");

    // An empty parent pair gets a line end before its first element.
    ASSERT_TRUE(doc.SetText(u"<r></r>"));
    ASSERT_TRUE(doc.FindElement(u"r"));
    ASSERT_TRUE(doc.EnterElement());
    ASSERT_TRUE(doc.AddElement(u"x"));
    EXPECT_EQ(doc.Text(), u"<r>\r\n<x/>\r\n</r>");

    // A run of slashes before '>' goes whole, or the parent would stay empty.
    ASSERT_TRUE(doc.SetText(u"<r x='1' //>"));
    ASSERT_TRUE(doc.FindElement(u"r"));
    ASSERT_TRUE(doc.EnterElement());
    ASSERT_TRUE(doc.AddElement(u"x"));
    EXPECT_EQ(doc.Text(), u"<r x='1' >\r\n<x/>\r\n</r>");
    EXPECT_EQ(CheckIndex(doc), "");

    // An unended parent is closed around the new element.
    EXPECT_FALSE(doc.SetText(u"<r><u a=\"1\"><v/></r>"));
    ASSERT_TRUE(doc.FindElement(u"r"));
    ASSERT_TRUE(doc.FindChildElement(u"u"));
    ASSERT_TRUE(doc.EnterElement());
    ASSERT_TRUE(doc.EnterElement());
    ASSERT_TRUE(doc.AddElement(u"n", u"t"));
    EXPECT_EQ(doc.Text(), u"<r><u a=\"1\">\r\n<n>t</n>\r\n</u><v/></r>");
    EXPECT_EQ(CheckIndex(doc), "");
    EXPECT_EQ(doc.Record(doc.ParentCursor()).levelMarks & MarkupDocument::MarkUnended, 0u);
    MarkupDocument again;
    EXPECT_TRUE(again.SetText(doc.Text()));
    EXPECT_EQ(ShapeOf(again), ShapeOf(doc));

    // Appending behind the last sibling after a failed find, as Show.xml is extended.
    ASSERT_TRUE(doc.SetText(u"<root>\r\n  <g id=\"1\"/>\r\n  <g id=\"2\"/>\r\n</root>\r\n"));
    ASSERT_TRUE(doc.FindElement(u"root"));
    ASSERT_TRUE(doc.EnterElement());
    while (doc.FindElement(u"g")) {
    }
    ASSERT_TRUE(doc.AddElement(u"g"));
    ASSERT_TRUE(doc.SetAttribute(u"id", u"3"));
    EXPECT_EQ(doc.Text(), u"<root>\r\n  <g id=\"1\"/>\r\n  <g id=\"2\"/>\r\n<g id=\"3\"/>\r\n</root>\r\n");

    // Names that would not read back as one name are refused.
    EXPECT_FALSE(doc.AddElement(u""));
    EXPECT_FALSE(doc.AddElement(u"a b"));
    EXPECT_FALSE(doc.AddElement(u"1a"));
    EXPECT_FALSE(doc.SetAttribute(u"x=y", u"v"));
}

TEST(MarkupEdit, SetAttributeReplacesOrAppends) {
    MarkupDocument doc;
    ASSERT_TRUE(doc.SetText(u"<r><a x='1' flag y=2 ><b/></a><c/></r>"));
    ASSERT_TRUE(doc.FindElement(u"r"));
    ASSERT_TRUE(doc.FindChildElement(u"a"));
    ASSERT_TRUE(doc.EnterElement());
    ASSERT_TRUE(doc.SetAttribute(u"x", u"say \"hi\" & 'bye' <now>"));
    ASSERT_TRUE(doc.SetAttribute(u"y", u"22"));
    ASSERT_TRUE(doc.SetAttribute(u"flag", u"on"));
    ASSERT_TRUE(doc.SetAttribute(u"new", u"中文"));
    EXPECT_EQ(doc.Text(),
              u"<r><a x=\"say &quot;hi&quot; &amp; &apos;bye&apos; &lt;now&gt;\" flag=\"on\" y=\"22\" new=\"中文\" ><b/></a><c/></r>");
    EXPECT_EQ(doc.GetAttribute(u"x"), u"say \"hi\" & 'bye' <now>");
    EXPECT_EQ(doc.GetAttribute(u"new"), u"中文");
    EXPECT_EQ(CheckIndex(doc), "");
    MarkupDocument again;
    ASSERT_TRUE(again.SetText(doc.Text()));
    EXPECT_EQ(ShapeOf(again), ShapeOf(doc));
    // The cursors still work after the offsets moved.
    ASSERT_TRUE(doc.FindChildElement(u"b"));
    EXPECT_EQ(doc.GetChildTagName(), u"b");
    ASSERT_TRUE(doc.FindElement(u"c"));
    ASSERT_TRUE(doc.LeaveElement());
    EXPECT_EQ(doc.GetTagName(), u"r");

    ASSERT_TRUE(doc.SetText(u"<e/>"));
    ASSERT_TRUE(doc.FindElement());
    ASSERT_TRUE(doc.SetAttribute(u"k", u""));
    EXPECT_EQ(doc.Text(), u"<e k=\"\"/>");

    // Tags whose quoting the attribute scan and the tokeniser read apart:
    // edits stay inside the tag and keep it empty or not as it was.
    const std::tuple<const char16_t*, const char16_t*, const char16_t*> cases[] = {
        {u"<r><a =a=' 1 g/></r>", u"n", u"<r><a =a=' 1 g n=\"v\"/></r>"},
        {u"<r><a =a=' 1 g/></r>", u"a", u"<r><a =a=\"v\"/></r>"},
        {u"<r><a b=c/></a></r>", u"n", u"<r><a b=c/ n=\"v\"></a></r>"},
        {u"<r><a b=c\"/></r>", u"n", u"<r><a b=c\" n=\"v\"/></r>"},
        {u"<r><a  ></a></r>", u"n", u"<r><a n=\"v\"  ></a></r>"},
    };
    for (const auto& [text, name, expected] : cases) {
        SCOPED_TRACE(U8(text));
        doc.SetText(text);
        ASSERT_TRUE(doc.FindElement(u"r"));
        ASSERT_TRUE(doc.EnterElement());
        ASSERT_TRUE(doc.FindElement(u"a"));
        ASSERT_TRUE(doc.SetAttribute(name, u"v"));
        EXPECT_EQ(doc.Text(), expected);
        MarkupDocument again;
        again.SetText(doc.Text());
        EXPECT_EQ(ShapeOf(again), ShapeOf(doc));
    }

    // A tag ending in a '=' without a value would take the new attribute as
    // that value, and a quote in it would swallow the tag's end: refused.
    const std::u16string dangling = u"<r><a b= /><c/></r>";
    doc.SetText(dangling);
    ASSERT_TRUE(doc.FindElement(u"r"));
    ASSERT_TRUE(doc.EnterElement());
    ASSERT_TRUE(doc.FindElement(u"a"));
    EXPECT_FALSE(doc.SetAttribute(u"n", u"x\" y"));
    EXPECT_EQ(doc.Text(), dangling);
}

TEST(MarkupEdit, LongRandomRunsMatchAReparse) {
    const char16_t* names[] = {u"root", u"item", u"g", u"cls", u"名字"};
    const char16_t* texts[] = {u"", u"a", u"x<y", u"&amp;", u"中文 text", u"\"q\" 'a'"};
    std::mt19937 rng(1234);
    for (int run = 0; run < 20; ++run) {
        MarkupDocument doc;
        const std::u16string starts[] = {u"", u"<root/>", u"<root>\r\n  <item a=\"1\">t</item>\r\n</root>",
                                         u"<root><u><v></root>"};
        doc.SetText(starts[run % 4]);
        for (int step = 0; step < 300; ++step) {
            const auto pick = [&](size_t n) { return static_cast<size_t>(rng() % n); };
            switch (pick(8)) {
            case 0: case 1: doc.AddElement(names[pick(5)], texts[pick(6)]); break;
            case 2: case 3: doc.SetAttribute(names[pick(5)], texts[pick(6)]); break;
            case 4: doc.FindElement(pick(2) ? names[pick(5)] : u""); break;
            case 5: doc.FindChildElement(pick(2) ? names[pick(5)] : u""); doc.EnterElement(); break;
            case 6: doc.LeaveElement(); break;
            case 7: doc.RewindMain(); break;
            }
            ASSERT_EQ(CheckIndex(doc), "") << run << "/" << step;
            if (step % 10 == 0 || step == 299) {
                MarkupDocument again;
                again.SetText(doc.Text());
                ASSERT_EQ(ShapeOf(again), ShapeOf(doc)) << run << "/" << step << " " << U8(doc.Text());
            }
        }
    }
}

TEST(MarkupEdit, ManyAppendsGrowTheTextByHalf) {
    MarkupDocument doc;
    ASSERT_TRUE(doc.AddElement(u"root"));
    ASSERT_TRUE(doc.EnterElement());
    for (int i = 0; i < 70000; ++i) {
        ASSERT_TRUE(doc.AddElement(u"i"));
    }
    EXPECT_EQ(doc.RecordCount(), 70002u);
    EXPECT_EQ(CheckIndex(doc), "");
    MarkupDocument again;
    ASSERT_TRUE(again.SetText(doc.Text())) << ResultOf(again);
    EXPECT_EQ(ShapeOf(again), ShapeOf(doc));
}

// Texts of several megabytes take the big-buffer road: set, loaded, grown by
// an edit past their capacity, and released for a small text again.
TEST(MarkupEdit, BigTextsGrowAndRelease) {
    const std::u16string filler(5u << 20, u'x');
    MarkupDocument doc;
    ASSERT_TRUE(doc.SetText(u"<r>" + filler + u"<a k=\"v\"/></r>")) << ResultOf(doc);
    ASSERT_TRUE(doc.FindElement(u"r"));
    ASSERT_TRUE(doc.EnterElement());
    ASSERT_TRUE(doc.FindElement(u"a"));
    EXPECT_EQ(doc.GetAttribute(u"k"), u"v");
    ASSERT_TRUE(doc.AddElement(u"b", u"t"));
    EXPECT_EQ(doc.Text().substr(3 + filler.size()), u"<a k=\"v\"/><b>t</b>\r\n</r>");
    EXPECT_EQ(CheckIndex(doc), "");

    std::string bytes = "<r>" + std::string(6u << 20, 'y') + "<a k=\"\xE4\xB8\xAD\"/></r>";
    ASSERT_TRUE(doc.LoadBytes(bytes)) << ResultOf(doc);
    ASSERT_TRUE(doc.FindElement(u"r"));
    ASSERT_TRUE(doc.FindChildElement(u"a"));
    EXPECT_EQ(doc.GetChildAttribute(u"k"), u"中");
    EXPECT_EQ(doc.Text().size(), bytes.size() - 2);

    ASSERT_TRUE(doc.SetText(u"<s/>"));
    EXPECT_EQ(doc.Text(), u"<s/>");
    EXPECT_TRUE(doc.FindElement(u"s"));
}

}  // namespace
}  // namespace marrowfin
