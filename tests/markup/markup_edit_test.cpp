// Editing: AddElement and SetAttribute, byte for byte and against a re-parse.

#include <gtest/gtest.h>

#include <random>
#include <tuple>

#include "markup/markup_document.h"
#include "markup_test_util.h"

namespace marrowfin {
namespace {

using test::CheckIndex;
using test::ReparsedShape;
using test::ResultOf;
using test::ShapeOf;

// Sets the text, enters the root and finds its child `child`.
void Open(MarkupDocument& doc, const std::u16string& text, const std::u16string& child) {
    doc.SetText(text);
    ASSERT_TRUE(doc.FindElement() && doc.EnterElement() && doc.FindElement(child));
}

TEST(MarkupEdit, AddAndSetKeepTheLayoutAndMatchAReparse) {
    MarkupDocument doc;
    ASSERT_TRUE(doc.AddElement(u"root"));
    EXPECT_EQ(doc.Text(), u"<root/>\r\n");
    ASSERT_TRUE(doc.EnterElement() && doc.AddElement(u"item", u"a") && doc.AddElement(u"item", u"a<b&c>"));
    EXPECT_EQ(doc.Text(), u"<root>\r\n<item>a</item>\r\n<item>a&lt;b&amp;c&gt;</item>\r\n</root>\r\n");
    EXPECT_EQ(doc.GetElementText(), u"a<b&c>");

    // Text; the element opened (empty: into the root, behind its last child); whether an
    // element "x" with the text "t" is added or the attribute is set to "v"; the text after.
    const std::tuple<const char16_t*, const char16_t*, const char16_t*, const char16_t*> cases[] = {
        {u"<r></r>", u"", u"x", u"<r>\r\n<x>t</x>\r\n</r>"},
        // A run of slashes before '>' goes whole, or the parent would stay empty.
        {u"<r x='1' //>", u"", u"x", u"<r x='1' >\r\n<x>t</x>\r\n</r>"},
        // Appending behind the last sibling, as Show.xml is extended.
        {u"<root>\r\n  <g id=\"1\"/>\r\n</root>\r\n", u"", u"x", u"<root>\r\n  <g id=\"1\"/>\r\n<x>t</x>\r\n</root>\r\n"},
        // An unended parent is closed around the new element.
        {u"<r><u a=\"1\"><v/></r>", u"u>", u"n", u"<r><u a=\"1\">\r\n<n>t</n>\r\n</u><v/></r>"},
        // Set: replaced in place (any quoting), appended behind the last attribute.
        {u"<r><a x='1' flag y=2 ><b/></a><c/></r>", u"a", u"=y", u"<r><a x='1' flag y=\"v\" ><b/></a><c/></r>"},
        {u"<r><a x='1' flag y=2 ><b/></a><c/></r>", u"a", u"=flag", u"<r><a x='1' flag=\"v\" y=2 ><b/></a><c/></r>"},
        {u"<r><a x='1' flag y=2 ><b/></a><c/></r>", u"a", u"=new", u"<r><a x='1' flag y=2 new=\"v\" ><b/></a><c/></r>"},
        // Tags whose quoting the attribute scan and the tokeniser read apart: edits stay
        // inside the tag and keep it empty or not as it was.
        {u"<r><a =a=' 1 g/></r>", u"a", u"=n", u"<r><a =a=' 1 g n=\"v\"/></r>"},
        {u"<r><a =a=' 1 g/></r>", u"a", u"=a", u"<r><a =a=\"v\"/></r>"},
        {u"<r><a b=c/></a></r>", u"a", u"=n", u"<r><a b=c/ n=\"v\"></a></r>"},
        {u"<r><a b=c\"/></r>", u"a", u"=n", u"<r><a b=c\" n=\"v\"/></r>"},
        {u"<r><a  ></a></r>", u"a", u"=n", u"<r><a n=\"v\"  ></a></r>"},
        {u"<r><a/></r>", u"a", u"=k", u"<r><a k=\"v\"/></r>"},
    };
    for (const auto& [text, open, op, expected] : cases) {
        SCOPED_TRACE(U8(text) + " " + U8(op));
        doc.SetText(text);
        ASSERT_TRUE(doc.FindElement() && doc.EnterElement());
        const std::u16string child = open;
        if (child.empty()) {
            while (doc.FindElement()) {
            }
        } else {
            ASSERT_TRUE(doc.FindElement(child.substr(0, 1)));
            ASSERT_TRUE(child.size() == 1 || doc.EnterElement());
        }
        ASSERT_TRUE(op[0] == u'=' ? doc.SetAttribute(op + 1, u"v") : doc.AddElement(op, u"t"));
        EXPECT_EQ(doc.Text(), expected);
        EXPECT_EQ(CheckIndex(doc), "");
        EXPECT_EQ(ReparsedShape(doc), ShapeOf(doc));
    }
    // Values are escaped and read back; the cursors still work after the offsets moved.
    doc.SetText(u"<r><a><b/></a><c/></r>");
    ASSERT_TRUE(doc.FindElement() && doc.EnterElement() && doc.FindElement(u"a"));
    ASSERT_TRUE(doc.SetAttribute(u"x", u"say \"hi\" & 'bye' <now>") && doc.SetAttribute(u"y", u"中文"));
    EXPECT_EQ(doc.Text(), u"<r><a x=\"say &quot;hi&quot; &amp; &apos;bye&apos; &lt;now&gt;\" y=\"中文\"><b/></a><c/></r>");
    EXPECT_EQ(doc.GetAttribute(u"x"), u"say \"hi\" & 'bye' <now>");
    ASSERT_TRUE(doc.FindChildElement(u"b") && doc.FindElement(u"c") && doc.LeaveElement());
    EXPECT_EQ(doc.GetTagName(), u"r");
    // Names that would not read back as one name are refused; so is a value that a '='
    // without a value in front would swallow the tag's end with.
    for (const char16_t* name : {u"", u"a b", u"1a"}) EXPECT_FALSE(doc.AddElement(name)) << U8(name);
    EXPECT_FALSE(doc.SetAttribute(u"x=y", u"v"));
    doc.SetText(u"<r><a b= /><c/></r>");
    ASSERT_TRUE(doc.FindElement() && doc.EnterElement() && doc.FindElement(u"a"));
    EXPECT_FALSE(doc.SetAttribute(u"n", u"x\" y"));
    EXPECT_EQ(doc.Text(), u"<r><a b= /><c/></r>");
}

TEST(MarkupEdit, LongRandomRunsMatchAReparse) {
    const char16_t* names[] = {u"root", u"item", u"g", u"cls", u"名字"};
    const char16_t* texts[] = {u"", u"a", u"x<y", u"&amp;", u"中文 text", u"\"q\" 'a'"};
    const char16_t* starts[] = {u"", u"<root/>", u"<root>\r\n  <item a=\"1\">t</item>\r\n</root>", u"<root><u><v></root>"};
    std::mt19937 rng(1234);
    const auto pick = [&](size_t n) { return static_cast<size_t>(rng() % n); };
    for (int run = 0; run < 20; ++run) {
        MarkupDocument doc;
        doc.SetText(starts[run % 4]);
        for (int step = 0; step < 300; ++step) {
            switch (pick(8)) {
            case 0: case 1: doc.AddElement(names[pick(5)], texts[pick(6)]); break;
            case 2: case 3: doc.SetAttribute(names[pick(5)], texts[pick(6)]); break;
            case 4: doc.FindElement(pick(2) ? names[pick(5)] : u""); break;
            case 5: doc.FindChildElement(pick(2) ? names[pick(5)] : u""); doc.EnterElement(); break;
            case 6: doc.LeaveElement(); break;
            case 7: doc.RewindMain(); break;
            }
            ASSERT_EQ(CheckIndex(doc), "") << run << "/" << step;
            if (step % 10 == 0) {
                ASSERT_EQ(ReparsedShape(doc), ShapeOf(doc)) << run << "/" << step << " " << U8(doc.Text());
            }
        }
    }
}

// Many appends grow the records past a page; texts of several megabytes take
// the big-buffer road: set, loaded, grown past their capacity, and released.
TEST(MarkupEdit, BigDocumentsGrowAndRelease) {
    MarkupDocument doc;
    ASSERT_TRUE(doc.AddElement(u"root"));
    ASSERT_TRUE(doc.EnterElement());
    for (int i = 0; i < 70000; ++i) ASSERT_TRUE(doc.AddElement(u"i"));
    EXPECT_EQ(doc.RecordCount(), 70002u);
    EXPECT_EQ(ReparsedShape(doc), ShapeOf(doc));

    const std::u16string filler(5u << 20, u'x');
    Open(doc, u"<r>" + filler + u"<a k=\"v\"/></r>", u"a");
    EXPECT_EQ(doc.GetAttribute(u"k"), u"v");
    ASSERT_TRUE(doc.AddElement(u"b", u"t"));
    EXPECT_EQ(doc.Text().substr(3 + filler.size()), u"<a k=\"v\"/><b>t</b>\r\n</r>");
    const std::string bytes = "<r>" + std::string(6u << 20, 'y') + "<a k=\"\xE4\xB8\xAD\"/></r>";
    ASSERT_TRUE(doc.LoadBytes(bytes)) << ResultOf(doc);
    ASSERT_TRUE(doc.FindElement(u"r"));
    ASSERT_TRUE(doc.FindChildElement(u"a"));
    EXPECT_EQ(doc.GetChildAttribute(u"k"), u"中");
    ASSERT_TRUE(doc.SetText(u"<s/>"));
    EXPECT_EQ(doc.Text(), u"<s/>");
}

}  // namespace
}  // namespace marrowfin
