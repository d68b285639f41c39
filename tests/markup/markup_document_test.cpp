// Parsing and editing: well-formed and broken texts, the index, the cursors and values;
// AddElement and SetAttribute byte for byte and against a re-parse.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "support/markup_index.h"

namespace marrowfin {
namespace {

using namespace test;

TEST(MarkupParse, WalksTheCallersReadingOrderEveryTokeniserCaseAndAttributeValues) {
    MarkupDocument doc;
    EXPECT_FALSE(doc.FindElement() || doc.SetAttribute(u"a", u"b")) << "nothing set yet";
    ASSERT_TRUE(
        doc.SetText(u"<?xml version=\"1.0\"?>\r\n<!-- list -->\r\n<root>"
                    u"<item id=\"1\" name='第一'><path>a/b.dwg</path><size>12</size></item><other/>"
                    u"<item id=\"2\"><size>7</size><path>c.dwg</path></item></root>\r\n"));
    EXPECT_EQ(doc.GetResult(), u"");
    EXPECT_FALSE(doc.FindElement(u"roo") || doc.FindElement(u"rootx")) << "names compare over their whole length";
    ASSERT_TRUE(doc.FindElement(u"root") && doc.EnterElement() && doc.FindElement(u"item"));
    EXPECT_EQ(doc.GetAttribute(u"name") + u"|" + doc.GetAttribute(u"nam"), u"第一|");
    ASSERT_TRUE(doc.FindChildElement(u"path") && doc.GetChildText() == u"a/b.dwg" && doc.FindChildElement(u"size"));
    EXPECT_FALSE(doc.FindChildElement(u"path")) << "children are looked for forwards only";
    ASSERT_TRUE(doc.EnterElement() && doc.GetElementText() == u"12" && doc.LeaveElement());
    EXPECT_EQ(doc.GetTagName() + u"|" + doc.GetChildTagName(), u"item|size");
    ASSERT_TRUE(doc.FindElement() && doc.GetTagName() == u"other" && doc.FindElement(u"item"));
    EXPECT_EQ(doc.ChildCursor(), 0u);
    ASSERT_TRUE(doc.FindChildElement(u"path") && doc.GetChildText() == u"c.dwg");
    const uint32_t last = doc.MainCursor();
    EXPECT_FALSE(doc.FindElement(u"item"));
    EXPECT_EQ(doc.MainCursor(), last) << "a failed find stays on the last element found";
    ASSERT_TRUE(doc.LeaveElement() && doc.GetTagName() == u"root" && !doc.LeaveElement());

    // An empty text is no error; the text ends at its first NUL, looked for several units at a time.
    EXPECT_TRUE(!doc.SetText(nullptr) && !doc.FindElement() && doc.RecordCount() == 1u && doc.GetResult().empty());
    const std::u16string full = u"<a>" + std::u16string(37, u'x') + u"</a>";
    for (size_t at = 0; at <= full.size(); ++at) {
        std::u16string text = full;
        if (at < text.size()) text[at] = 0;
        doc.SetText(text + std::u16string(1, u'\0') + u"<b/>");
        EXPECT_TRUE(doc.Text() == std::u16string_view(full).substr(0, at) && doc.Text().data()[doc.Text().size()] == u'\0')
            << "NUL at " << at;
    }

    // Every tokeniser case, broken nesting and their truncations.
    // Text, well-formed, the record expected (or none at all).
    const std::tuple<const char16_t*, bool, const char*> cases[] = {
        {u"<a><?pi x?><!-- c --><![CDATA[<x>]]>t</a>", true, nullptr},
        {u"<!DOCTYPE a [ <!ELEMENT a (#PCDATA)> <!ATTLIST a x CDATA \">\"> <!-- > --> ]><a/>", true, nullptr},
        {u"<!DOCTYPE a [ <!X> ]><a/>", false, "doctype_tag_syntax offset=\"0\""},
        {u"<a><!x></a>", false, "exclamation_tag_syntax offset=\"3\""},
        {u"<a><!-x></a>", false, "comment_tag_syntax offset=\"3\""},
        {u"<a><![x></a>", false, "cdata_section_syntax offset=\"3\""},
        {u"<a>< b</a>", false, "first_tag_syntax offset=\"3\""},
        {u"<a><1></a>", false, "first_tag_syntax"},
        {u"<a x=\"1>", false, "unterminated_tag_syntax type=\"start_tag\" offset=\"0\""},
        {u"<a></a", false, "unterminated_tag_syntax type=\"end_tag\" offset=\"3\""},
        {u"<a/><?pi", false, "type=\"processing_instruction\""},
        {u"<a/><!-- c ->", false, "type=\"comment\""},
        {u"<a/><![CDATA[ x ]>", false, "type=\"cdata_section\""},
        {u"<!DOCTYPE a [", false, "type=\"document_type\""},
        {u"<a/><!x", false, "type=\"tag\""},
        {u"<a/><", false, "type=\"tag\""},
        {u"<a/><!-->", false, "type=\"comment\""},
        {u"<a/><?>", false, "type=\"processing_instruction\""},
        {u"</x>", false, "no_root_element"},
        {u" \r\n\t ", false, "no_root_element"},
        {u"just text > more", false, "no_root_element"},
        {u"<!DOCTYPE a [<!-", false, "type=\"document_type\""},
        {u"<r><a><b>", false, "offset2=\"9\""},
        // A second '=' doesn't open a value, so its quote doesn't hide the '>'.
        {u"<a b==\"x>\"/>", false, "unended_start_tag tagname=\"a\" offset=\"0\" offset2=\"12\""},
        // An unended child keeps the extent of its start tag; a lone end tag is ignored;
        // two top-level elements are reported but not ill-formed.
        {u"<a><b></a>", false, "unended_start_tag tagname=\"b\" offset=\"3\" offset2=\"7\""},
        {u"<a></b></a>", false, "lone_end_tag tagname=\"b\" offset=\"3\""},
        {u"<a/><b/>", false, "root_has_sibling"},
        // Unended elements at the end: their children move up behind them, the inner one reported first.
        {u"<r><u1><c1/><u2><c2><d/></c2><c3/></r>", false,
         "unended_start_tag tagname=\"u2\" offset=\"12\" offset2=\"35\"/><unended_start_tag tagname=\"u1\" offset=\"3\" offset2=\"35\""},
    };
    for (const auto& [text, ok, record] : cases) {
        SCOPED_TRACE(Utf16ToUtf8(text));
        EXPECT_EQ(doc.SetText(text), ok) << ResultOf(doc);
        EXPECT_EQ(record ? HasRecord(doc, record) : doc.GetResult().empty(), true) << ResultOf(doc);
        EXPECT_EQ(test::ShapeOf(doc), test::ReparsedShape(doc));
        // Every prefix of the text parses without harm and keeps a sound index.
        const std::u16string full(text);
        for (size_t n = 0; n <= full.size(); ++n) {
            doc.SetText(std::u16string_view(full).substr(0, n));
            ASSERT_EQ(CheckIndex(doc), "") << n;
        }
    }
    doc.SetText(u"<a/><b/>");
    EXPECT_TRUE(!doc.IsIllFormed() && doc.FindElement(u"b"));
    doc.SetText(u"<a><b></a>");
    EXPECT_TRUE(doc.IsIllFormed());
    ASSERT_TRUE(doc.FindElement(u"a") && doc.FindChildElement(u"b"));
    const auto &a = doc.Record(doc.MainCursor()), &b = doc.Record(doc.ChildCursor());
    EXPECT_TRUE(a.length == 10u && b.length == 3u && (a.levelMarks & MarkupDocument::MarkErrorInside) &&
                (b.levelMarks & MarkupDocument::MarkUnended));
    std::u16string many = u"<r>";  // the records of the result are capped
    for (int i = 0; i < 500; ++i) many += u"</x>";
    EXPECT_TRUE(!doc.SetText(many + u"</r>") && doc.GetResult().size() >= 1000u && doc.GetResult().size() < 1100u)
        << doc.GetResult().size();
    doc.SetText(u"<r><u1><c1/><u2><c2><d/></c2><c3/></r>");
    ASSERT_TRUE(doc.FindElement(u"r") && doc.EnterElement());
    std::u16string order;
    while (doc.FindElement()) order += doc.GetTagName() + u",";
    EXPECT_EQ(order, u"u1,c1,u2,c2,c3,");

    // Attribute values, their quoting, a reused buffer and the attribute cache.
    // Text, attribute, value read (nullptr: absent).
    const std::tuple<const char16_t*, const char16_t*, const char16_t*> reads[] = {
        {u"<e a=\"one\" b=\"\"/>", u"a", u"one"},
        {u"<e a=\"one\" b=\"\"/>", u"b", u""},
        {u"<e a=\"one\" b=\"\"/>", u"zz", nullptr},
        {u"<e c=\"x&amp;y&#20013;\"/>", u"c", u"x&y\u4E2D"},
        {u"<a x='1' y=2 z/>", u"y", u"2"},
        {u"<a x='1' y=2 z/>", u"z", u"z"},
        {u"<a t=\"x>'y\" u='\"'><b/></a>", u"t", u"x>'y"},
        {u"<a t=\"x>'y\" u='\"'><b/></a>", u"u", u"\""},
        {u"<a k=\"1\"/>", u"", nullptr},  // (later duplicates are the attribute cache's test)
        // The '/' of an unquoted value doesn't make the element empty.
        {u"<r href=x/y/>t</r>", u"href", u"x/y/"},
        {u"<r href=x/y/>t</r>", nullptr, u"t"},
        // Element text (no attribute named) of mixed content.
        {u"<a>x<!-- c -->y<![CDATA[<z>&amp;]]><?p q?></a>", nullptr, u"xy<z>&amp;"},
        {u"<a><b>t</b></a>", nullptr, u""},
        {u"<a>1 &lt; 2 &amp;&amp; 3 &gt; 2</a>", nullptr, u"1 < 2 && 3 > 2"},
        {u"<a>b>c<!--x-->d</a>", nullptr, u"b>cd"},
    };
    std::u16string buffer;
    for (const auto& [text, name, value] : reads) {
        SCOPED_TRACE(Utf16ToUtf8(text) + " " + (name ? Utf16ToUtf8(name) : "(text)"));
        ASSERT_TRUE(doc.SetText(text) && doc.FindElement()) << ResultOf(doc);
        buffer = u"left over from before";
        if (!name) {
            EXPECT_EQ(doc.GetElementText(), value);
            continue;
        }
        EXPECT_EQ(std::make_pair(doc.GetAttribute(name, buffer), buffer),
                  std::make_pair(value != nullptr, std::u16string(value ? value : u"")));
        // One pass for several names gives what one read per name gives.
        std::u16string scratch[2], own;
        std::u16string_view views[2];
        doc.AttributeViews({name, u"a"}, views, scratch);
        EXPECT_EQ(views[0], value ? value : u"");
        EXPECT_EQ(views[1], doc.AttributeView(u"a", own));
    }
    doc.RewindMain();
    buffer = u"stale";
    EXPECT_TRUE(!doc.GetAttribute(u"k", buffer) && buffer.empty()) << "no main element: nothing to read";

    // Attributes are read from a cache of the last element's tag; every order of reading,
    // misses among hits, more attributes than the cache holds and edits between reads must
    // give what a fresh scan gives.
    std::u16string tag = u"<e";
    std::vector<std::pair<std::u16string, std::u16string>> expected;
    for (int i = 0; i < 20; ++i) {
        const std::u16string n = u"a" + Utf8ToUtf16(std::to_string(i)), v = u"v" + Utf8ToUtf16(std::to_string(i));
        tag += u" " + n + u"=\"" + v + u"&amp;\"";
        expected.emplace_back(n, v + u"&");
    }
    // Later duplicates, inside and beyond the cached part, never win.
    tag += u" a3='late' a18='late' na=\"short\" name='全名' names=x>";
    expected.insert(expected.end(), {{u"na", u"short"}, {u"name", u"全名"}, {u"names", u"x"}, {u"a", u""}, {u"names2", u""}});
    std::mt19937 random(7);
    for (int round = 0; round < 40; ++round) {
        ASSERT_TRUE(doc.SetText(u"<r>" + tag + u"<c k=\"child\"/></e><f k=\"other\"/></r>")) << ResultOf(doc);
        ASSERT_TRUE(doc.FindElement(u"r") && doc.EnterElement() && doc.FindElement(u"e"));
        std::shuffle(expected.begin(), expected.end(), random);
        for (const auto& [n, v] : expected) EXPECT_EQ(doc.GetAttribute(n), v) << Utf16ToUtf8(n) << " in round " << round;
        const std::u16string_view names[3] = {expected[0].first, expected[1].first, expected[2].first};
        std::u16string_view views[3];
        std::u16string scratch[3];
        doc.AttributeViews(names, views, scratch);
        for (int i = 0; i < 3; ++i) EXPECT_EQ(views[i], expected[i].second) << Utf16ToUtf8(names[i]) << " in round " << round;
        ASSERT_TRUE(doc.FindChildElement(u"c"));
        EXPECT_EQ(doc.GetChildAttribute(u"k") + doc.GetAttribute(u"a19") + doc.GetChildAttribute(u"a0"), u"childv19&");
    }
    // Edits move the cached element's tag or change its values; an edit of the parent moves
    // the child's tag that was read last.
    ASSERT_TRUE(doc.SetAttribute(u"a0", u"a much longer value than before") && doc.SetAttribute(u"new", u"n"));
    EXPECT_EQ(doc.GetChildAttribute(u"k") + doc.GetAttribute(u"a0") + doc.GetAttribute(u"a1") + doc.GetAttribute(u"new"),
              u"childa much longer value than beforev1&n");
    ASSERT_TRUE(doc.FindElement(u"f") && doc.GetAttribute(u"k") == u"other");
    doc.RewindMain();
    ASSERT_TRUE(doc.FindElement(u"e") && doc.LeaveElement());
    EXPECT_EQ(doc.GetChildAttribute(u"a2"), u"v2&");
    ASSERT_TRUE(doc.SetAttribute(u"z", u"long enough to move everything behind it"));
    EXPECT_EQ(doc.GetChildAttribute(u"a2") + doc.GetChildAttribute(u"names"), u"v2&x");
    // A new text empties the cache even where the record numbers agree.
    ASSERT_TRUE(doc.SetText(u"<r><e a2='other'/></r>") && doc.FindElement(u"r") && doc.FindChildElement(u"e"));
    EXPECT_EQ(doc.GetChildAttribute(u"a2"), u"other");
}

TEST(MarkupEdit, AddAndSetKeepTheLayoutAndMatchAReparseInLongRandomRunsAndBigDocuments) {
    MarkupDocument doc;
    ASSERT_TRUE(doc.AddElement(u"root"));
    EXPECT_EQ(doc.Text(), u"<root/>\r\n");
    ASSERT_TRUE(doc.EnterElement() && doc.AddElement(u"item", u"a") && doc.AddElement(u"item", u"a<b&c>"));
    EXPECT_TRUE(doc.Text() == u"<root>\r\n<item>a</item>\r\n<item>a&lt;b&amp;c&gt;</item>\r\n</root>\r\n" &&
                doc.GetElementText() == u"a<b&c>");

    // Text; the element opened (empty: into the root, behind its last child); then for each
    // edit, whether an element "x" with the text "t" is added or the attribute is set to "v",
    // and the text after it.
    const std::tuple<const char16_t*, const char16_t*, std::vector<std::pair<const char16_t*, const char16_t*>>> cases[] = {
        {u"<r></r>", u"", {{u"x", u"<r>\r\n<x>t</x>\r\n</r>"}}},
        // A run of slashes before '>' goes whole, or the parent would stay empty.
        {u"<r x='1' //>", u"", {{u"x", u"<r x='1' >\r\n<x>t</x>\r\n</r>"}}},
        // Appending behind the last sibling, as Show.xml is extended.
        {u"<root>\r\n  <g id=\"1\"/>\r\n</root>\r\n", u"", {{u"x", u"<root>\r\n  <g id=\"1\"/>\r\n<x>t</x>\r\n</root>\r\n"}}},
        // An unended parent is closed around the new element.
        {u"<r><u a=\"1\"><v/></r>", u"u>", {{u"n", u"<r><u a=\"1\">\r\n<n>t</n>\r\n</u><v/></r>"}}},
        // Set: replaced in place (any quoting), appended behind the last attribute.
        {u"<r><a x='1' flag y=2 ><b/></a><c/></r>",
         u"a",
         {{u"=y", u"<r><a x='1' flag y=\"v\" ><b/></a><c/></r>"},
          {u"=flag", u"<r><a x='1' flag=\"v\" y=2 ><b/></a><c/></r>"},
          {u"=new", u"<r><a x='1' flag y=2 new=\"v\" ><b/></a><c/></r>"}}},
        // Tags whose quoting the attribute scan and the tokeniser read apart: edits stay
        // inside the tag and keep it empty or not as it was.
        {u"<r><a =a=' 1 g/></r>", u"a", {{u"=n", u"<r><a =a=' 1 g n=\"v\"/></r>"}, {u"=a", u"<r><a =a=\"v\"/></r>"}}},
        {u"<r><a b=c/></a></r>", u"a", {{u"=n", u"<r><a b=c/ n=\"v\"></a></r>"}}},
        {u"<r><a b=c\"/></r>", u"a", {{u"=n", u"<r><a b=c\" n=\"v\"/></r>"}}},
        {u"<r><a  ></a></r>", u"a", {{u"=n", u"<r><a n=\"v\"  ></a></r>"}}},
        {u"<r><a/></r>", u"a", {{u"=k", u"<r><a k=\"v\"/></r>"}}},
    };
    for (const auto& [text, open, edits] : cases)
        for (const auto& [op, expected] : edits) {
            SCOPED_TRACE(Utf16ToUtf8(text) + " " + Utf16ToUtf8(op));
            doc.SetText(text);
            ASSERT_TRUE(doc.FindElement() && doc.EnterElement());
            const std::u16string child = open;
            while (child.empty() && doc.FindElement()) {}
            ASSERT_TRUE(child.empty() || doc.FindElement(child.substr(0, 1)));
            ASSERT_TRUE(child.size() != 2 || doc.EnterElement());
            ASSERT_TRUE(op[0] == u'=' ? doc.SetAttribute(op + 1, u"v") : doc.AddElement(op, u"t"));
            EXPECT_EQ(doc.Text(), expected);
            EXPECT_TRUE(CheckIndex(doc).empty() && ReparsedShape(doc) == ShapeOf(doc)) << CheckIndex(doc);
        }
    // Values are escaped and read back; the cursors still work after the offsets moved.
    doc.SetText(u"<r><a><b/></a><c/></r>");
    ASSERT_TRUE(doc.FindElement() && doc.EnterElement() && doc.FindElement(u"a"));
    ASSERT_TRUE(doc.SetAttribute(u"x", u"say \"hi\" & 'bye' <now>") && doc.SetAttribute(u"y", u"中文"));
    EXPECT_EQ(doc.Text(), u"<r><a x=\"say &quot;hi&quot; &amp; &apos;bye&apos; &lt;now&gt;\" y=\"中文\"><b/></a><c/></r>");
    EXPECT_EQ(doc.GetAttribute(u"x"), u"say \"hi\" & 'bye' <now>");
    ASSERT_TRUE(doc.FindChildElement(u"b") && doc.FindElement(u"c") && doc.LeaveElement() && doc.GetTagName() == u"r");
    // Names that would not read back as one name are refused; so is a value that a '='
    // without a value in front would swallow the tag's end with.
    for (const char16_t* name : {u"", u"a b", u"1a"}) EXPECT_FALSE(doc.AddElement(name)) << Utf16ToUtf8(name);
    EXPECT_FALSE(doc.SetAttribute(u"x=y", u"v"));
    doc.SetText(u"<r><a b= /><c/></r>");
    ASSERT_TRUE(doc.FindElement() && doc.EnterElement() && doc.FindElement(u"a"));
    EXPECT_TRUE(!doc.SetAttribute(u"n", u"x\" y") && doc.Text() == u"<r><a b= /><c/></r>");

    // Long random runs of edits and moves keep an index that a re-parse gives.
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
                case 0:
                case 1: doc.AddElement(names[pick(5)], texts[pick(6)]); break;
                case 2:
                case 3: doc.SetAttribute(names[pick(5)], texts[pick(6)]); break;
                case 4: doc.FindElement(pick(2) ? names[pick(5)] : u""); break;
                case 5:
                    doc.FindChildElement(pick(2) ? names[pick(5)] : u"");
                    doc.EnterElement();
                    break;
                case 6: doc.LeaveElement(); break;
                case 7: doc.RewindMain(); break;
            }
            ASSERT_EQ(CheckIndex(doc), "") << run << "/" << step;
            if (step % 10 == 0) { ASSERT_EQ(ReparsedShape(doc), ShapeOf(doc)) << run << "/" << step << " " << Utf16ToUtf8(doc.Text()); }
        }
    }

    // Many appends grow the records past two pages (65,536 each), and a parse of the text
    // indexes them alike; texts of several megabytes take the big-buffer road: set, loaded,
    // grown past their capacity, and released.
    doc.SetText(u"");
    ASSERT_TRUE(doc.AddElement(u"root") && doc.EnterElement());
    const uint32_t count = 140000;
    for (uint32_t i = 0; i < count; ++i) ASSERT_TRUE(doc.AddElement(u"i", Utf8ToUtf16(std::to_string(i))));
    EXPECT_TRUE(doc.RecordCount() == count + 2 && CheckIndex(doc).empty() && ReparsedShape(doc) == ShapeOf(doc));
    // The last child is found through the first child's previous-sibling word.
    EXPECT_TRUE(doc.Record(doc.Record(doc.ParentCursor()).firstChild).prevSibling == count + 1 &&
                doc.GetElementText() == Utf8ToUtf16(std::to_string(count - 1)));

    const std::u16string filler(5u << 20, u'x');
    doc.SetText(u"<r>" + filler + u"<a k=\"v\"/></r>");
    ASSERT_TRUE(doc.FindElement() && doc.EnterElement() && doc.FindElement(u"a") && doc.GetAttribute(u"k") == u"v" &&
                doc.AddElement(u"b", u"t"));
    EXPECT_EQ(doc.Text().substr(3 + filler.size()), u"<a k=\"v\"/><b>t</b>\r\n</r>");
    const std::string bytes = "<r>" + std::string(6u << 20, 'y') + "<a k=\"\xE4\xB8\xAD\"/></r>";
    ASSERT_TRUE(doc.LoadBytes(bytes)) << ResultOf(doc);
    ASSERT_TRUE(doc.FindElement(u"r") && doc.FindChildElement(u"a") && doc.GetChildAttribute(u"k") == u"中");
    ASSERT_TRUE(doc.SetText(u"<s/>") && doc.Text() == u"<s/>");

    // A reply's bytes as they come: decoded as is, and cut at the first NUL
    // byte, also one inside a character or megabytes in.
    EXPECT_TRUE(doc.SetUtf8Text("<r a=\"\xE4\xB8\xAD\"/>") && doc.Text() == u"<r a=\"中\"/>" &&
                doc.SetUtf8Text(std::string("<r/>\0<x>", 8)) && doc.Text() == u"<r/>");
    doc.SetUtf8Text(std::string("<r/>\xE4\0\xB8\xAD", 8));
    EXPECT_EQ(doc.Text(), u"<r/>\xFFFD");
    const std::string far = "<r>" + std::string(6u << 20, 'y') + "</r>";
    EXPECT_TRUE(doc.SetUtf8Text(far + std::string("\0<x>\0", 5)) && doc.Text().size() == far.size() &&
                doc.Text().substr(far.size() - 4) == u"</r>");
}

}  // namespace
}  // namespace marrowfin
