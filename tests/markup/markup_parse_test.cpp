// Parsing: well-formed and broken texts, the index, the cursors and values.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "markup/markup_document.h"
#include "markup_test_util.h"

namespace marrowfin {
namespace {

using test::CheckIndex;
using test::HasRecord;
using test::ResultOf;

TEST(MarkupParse, WalksTheCallersReadingOrder) {
    MarkupDocument doc;
    ASSERT_TRUE(doc.SetText(u"<?xml version=\"1.0\"?>\r\n<!-- list -->\r\n<root>"
                            u"<item id=\"1\" name='第一'><path>a/b.dwg</path><size>12</size></item>"
                            u"<other/>"
                            u"<item id=\"2\"><size>7</size><path>c.dwg</path></item>"
                            u"</root>\r\n"))
        << ResultOf(doc);
    EXPECT_EQ(CheckIndex(doc), "");
    EXPECT_TRUE(doc.GetResult().empty()) << ResultOf(doc);
    ASSERT_TRUE(doc.FindElement(u"root"));
    ASSERT_TRUE(doc.EnterElement());
    ASSERT_TRUE(doc.FindElement(u"item"));
    EXPECT_EQ(doc.GetAttribute(u"id"), u"1");
    EXPECT_EQ(doc.GetAttribute(u"name"), u"第一");
    EXPECT_EQ(doc.GetAttribute(u"nam"), u"");
    ASSERT_TRUE(doc.FindChildElement(u"path"));
    EXPECT_EQ(doc.GetChildText(), u"a/b.dwg");
    ASSERT_TRUE(doc.FindChildElement(u"size"));
    EXPECT_EQ(doc.GetChildText(), u"12");
    // Children are looked for forwards from the child cursor only.
    EXPECT_FALSE(doc.FindChildElement(u"path"));
    EXPECT_EQ(doc.GetChildTagName(), u"size");

    ASSERT_TRUE(doc.FindElement(u"item"));
    EXPECT_EQ(doc.GetAttribute(u"id"), u"2");
    EXPECT_EQ(doc.ChildCursor(), 0u);
    ASSERT_TRUE(doc.FindChildElement(u"path"));
    EXPECT_EQ(doc.GetChildText(), u"c.dwg");
    // A failed find leaves the main cursor on the last element found.
    const uint32_t last = doc.MainCursor();
    EXPECT_FALSE(doc.FindElement(u"item"));
    EXPECT_EQ(doc.MainCursor(), last);

    doc.RewindMain();
    ASSERT_TRUE(doc.FindElement());
    EXPECT_EQ(doc.GetAttribute(u"id"), u"1");
    ASSERT_TRUE(doc.FindElement());
    EXPECT_EQ(doc.GetTagName(), u"other");

    // Enter and leave keep the three cursors consistent.
    doc.RewindMain();
    ASSERT_TRUE(doc.FindElement(u"item"));
    ASSERT_TRUE(doc.FindChildElement(u"size"));
    ASSERT_TRUE(doc.EnterElement());
    EXPECT_EQ(doc.GetTagName(), u"size");
    EXPECT_EQ(doc.GetElementText(), u"12");
    ASSERT_TRUE(doc.LeaveElement());
    EXPECT_EQ(doc.GetTagName(), u"item");
    EXPECT_EQ(doc.GetChildTagName(), u"size");
    ASSERT_TRUE(doc.LeaveElement());
    EXPECT_EQ(doc.GetTagName(), u"root");
    EXPECT_FALSE(doc.LeaveElement());
    // Names compare over their whole length.
    doc.RewindMain();
    EXPECT_FALSE(doc.FindElement(u"roo"));
    EXPECT_FALSE(doc.FindElement(u"rootx"));
}

TEST(MarkupParse, EmptyAndNullTexts) {
    MarkupDocument doc;
    EXPECT_FALSE(doc.FindElement());
    EXPECT_FALSE(doc.EnterElement());
    EXPECT_FALSE(doc.SetAttribute(u"a", u"b"));
    ASSERT_TRUE(doc.SetText(u"<a>t</a>"));
    ASSERT_TRUE(doc.FindElement(u"a"));
    EXPECT_FALSE(doc.SetText(nullptr));
    EXPECT_FALSE(doc.FindElement());
    EXPECT_EQ(doc.GetElementText(), u"");
    EXPECT_EQ(doc.RecordCount(), 1u);
    EXPECT_EQ(doc.GetResult(), u"");  // an empty text has no root but is no error record

    EXPECT_FALSE(doc.SetText(u" \r\n\t "));
    EXPECT_TRUE(HasRecord(doc, "no_root_element")) << ResultOf(doc);
    EXPECT_FALSE(doc.SetText(u"just text"));
    EXPECT_TRUE(HasRecord(doc, "no_root_element"));
    // The text ends at an embedded NUL.
    EXPECT_TRUE(doc.SetText(std::u16string_view(u"<a/>\0<b>", 8)));
    EXPECT_EQ(doc.Text(), u"<a/>");
}

// The NUL search goes eight units at a time: a NUL in every lane of a
// block, in the tail behind the last whole block, and none at all.
TEST(MarkupParse, TextEndsAtTheFirstNulWhereverItStands) {
    MarkupDocument doc;
    std::u16string body(37, u'x');
    std::u16string full = u"<a>" + body + u"</a>";
    for (size_t at = 0; at <= full.size(); ++at) {
        std::u16string text = full;
        if (at < text.size()) text[at] = 0;
        text += u'\0';
        text += u"<b/>";
        doc.SetText(text);
        EXPECT_EQ(doc.Text(), std::u16string_view(full).substr(0, at)) << "NUL at " << at;
        EXPECT_EQ(doc.Text().data()[doc.Text().size()], u'\0');
    }
    // Two NULs: the first one counts.
    std::u16string two = full;
    two[20] = 0;
    two[9] = 0;
    doc.SetText(two);
    EXPECT_EQ(doc.Text().size(), 9u);
    // No NUL at all: the whole view, well-formed.
    EXPECT_TRUE(doc.SetText(full));
    EXPECT_EQ(doc.Text(), full);
}

TEST(MarkupParse, AttributeIntoAReusedBuffer) {
    MarkupDocument doc;
    ASSERT_TRUE(doc.SetText(u"<r><e a=\"one\" b=\"\" c=\"x&amp;y&#20013;\"/><e a=\"2\"/></r>"));
    ASSERT_TRUE(doc.FindElement());
    ASSERT_TRUE(doc.EnterElement());
    ASSERT_TRUE(doc.FindElement(u"e"));
    // Present but empty differs from absent only in the result; the buffer
    // never keeps what it held before.
    std::u16string buffer;
    const std::tuple<const char16_t*, bool, const char16_t*> reads[] = {
        {u"a", true, u"one"}, {u"b", true, u""}, {u"zz", false, u""}, {u"c", true, u"x&y\u4E2D"}};
    for (const auto& [name, found, value] : reads) {
        buffer = u"left over from before";
        EXPECT_EQ(doc.GetAttribute(name, buffer), found) << U8(name);
        EXPECT_EQ(buffer, value) << U8(name);
    }
    EXPECT_EQ(buffer, doc.GetAttribute(u"c"));
    EXPECT_FALSE(doc.GetAttribute(u"", buffer));
    // The next element replaces the value; its missing ones read as absent.
    ASSERT_TRUE(doc.FindElement(u"e"));
    EXPECT_TRUE(doc.GetAttribute(u"a", buffer));
    EXPECT_EQ(buffer, u"2");
    EXPECT_FALSE(doc.GetAttribute(u"c", buffer));
    EXPECT_EQ(buffer, u"");
    // No main element: nothing to read.
    doc.LeaveElement();
    doc.RewindMain();
    buffer = u"stale";
    EXPECT_FALSE(doc.GetAttribute(u"a", buffer));
    EXPECT_EQ(buffer, u"");
}

TEST(MarkupParse, BrokenNestingKeepsAnIndex) {
    MarkupDocument doc;
    // An unended child keeps the extent of its start tag and stays a child.
    EXPECT_FALSE(doc.SetText(u"<a><b></a>"));
    EXPECT_TRUE(HasRecord(doc, "unended_start_tag tagname=\"b\" offset=\"3\" offset2=\"7\"")) << ResultOf(doc);
    EXPECT_EQ(CheckIndex(doc), "");
    EXPECT_TRUE(doc.IsIllFormed());
    ASSERT_TRUE(doc.FindElement(u"a"));
    EXPECT_EQ(doc.Record(doc.MainCursor()).length, 10u);
    EXPECT_NE(doc.Record(doc.MainCursor()).levelMarks & MarkupDocument::MarkErrorInside, 0u);
    ASSERT_TRUE(doc.FindChildElement(u"b"));
    const auto& b = doc.Record(doc.ChildCursor());
    EXPECT_EQ(b.length, 3u);
    EXPECT_NE(b.levelMarks & MarkupDocument::MarkUnended, 0u);
    EXPECT_EQ(doc.GetChildText(), u"");

    // A lone end tag is ignored and its element stays whole.
    EXPECT_FALSE(doc.SetText(u"<a></b></a>"));
    EXPECT_TRUE(HasRecord(doc, "lone_end_tag tagname=\"b\" offset=\"3\"")) << ResultOf(doc);
    ASSERT_TRUE(doc.FindElement(u"a"));
    EXPECT_EQ(doc.Record(doc.MainCursor()).length, 11u);
    EXPECT_NE(doc.Record(doc.MainCursor()).levelMarks & MarkupDocument::MarkErrorInside, 0u);
    EXPECT_FALSE(doc.SetText(u"</x>"));
    EXPECT_TRUE(HasRecord(doc, "lone_end_tag"));
    EXPECT_TRUE(HasRecord(doc, "no_root_element"));

    // Two top-level elements: both can be found.
    EXPECT_FALSE(doc.SetText(u"<a/><b/>"));
    EXPECT_TRUE(HasRecord(doc, "root_has_sibling"));
    EXPECT_FALSE(doc.IsIllFormed());
    EXPECT_TRUE(doc.FindElement(u"a"));
    EXPECT_TRUE(doc.FindElement(u"b"));

    // Unended elements at the end of the text: their children move up behind
    // them, with the depths and first marks of the moved subtrees fixed.
    EXPECT_FALSE(doc.SetText(u"<r><u1><c1/><u2><c2><d/></c2><c3/></r>"));
    EXPECT_EQ(CheckIndex(doc), "");
    ASSERT_TRUE(doc.FindElement(u"r"));
    ASSERT_TRUE(doc.EnterElement());
    std::u16string order;
    while (doc.FindElement()) order += doc.GetTagName() + u",";
    EXPECT_EQ(order, u"u1,c1,u2,c2,c3,");
    EXPECT_TRUE(HasRecord(doc, "unended_start_tag tagname=\"u2\" offset=\"12\" offset2=\"35\""));
    EXPECT_TRUE(HasRecord(doc, "unended_start_tag tagname=\"u1\" offset=\"3\" offset2=\"35\""));
    // The unended u2 was reported before its outer u1.
    EXPECT_LT(ResultOf(doc).find("\"u2\""), ResultOf(doc).find("\"u1\""));

    EXPECT_FALSE(doc.SetText(u"<r><a><b>"));
    EXPECT_EQ(CheckIndex(doc), "");
    ASSERT_TRUE(doc.FindElement(u"r"));
    EXPECT_TRUE(doc.FindElement(u"a"));
    EXPECT_TRUE(doc.FindElement(u"b"));
    EXPECT_TRUE(HasRecord(doc, "offset2=\"9\""));
}

TEST(MarkupParse, EveryTokeniserCaseAndItsTruncations) {
    MarkupDocument doc;
    // Text, well-formed, the record expected (or none at all).
    const std::tuple<const char16_t*, bool, const char*> cases[] = {
        {u"<a><?pi x?><!-- c --><![CDATA[<x>]]>t</a>", true, nullptr},
        {u"<!DOCTYPE a [ <!ELEMENT a (#PCDATA)> <!ATTLIST a x CDATA \">\"> <!-- > --> ]><a/>", true, nullptr},
        {u"<!DOCTYPE a [ <!X> ]><a/>", false, "doctype_tag_syntax offset=\"0\""},
        {u"<a><!x></a>", false, "exclamation_tag_syntax offset=\"3\""},
        {u"<a><!-x></a>", false, "comment_tag_syntax offset=\"3\""},
        {u"<a><![x></a>", false, "cdata_section_syntax offset=\"3\""},
        {u"<a>< b</a>", false, "first_tag_syntax offset=\"3\""}, {u"<a><1></a>", false, "first_tag_syntax"},
        {u"<a x=\"1>", false, "unterminated_tag_syntax type=\"start_tag\" offset=\"0\""},
        {u"<a></a", false, "unterminated_tag_syntax type=\"end_tag\" offset=\"3\""},
        {u"<a/><?pi", false, "type=\"processing_instruction\""}, {u"<a/><!-- c ->", false, "type=\"comment\""},
        {u"<a/><![CDATA[ x ]>", false, "type=\"cdata_section\""}, {u"<!DOCTYPE a [", false, "type=\"document_type\""},
        {u"<a/><!x", false, "type=\"tag\""}, {u"<a/><", false, "type=\"tag\""}, {u"<a/><!-->", false, "type=\"comment\""},
        {u"<a/><?>", false, "type=\"processing_instruction\""}, {u"<a/><?", false, "type=\"processing_instruction\""},
        {u"<!DOCTYPE a [<!-", false, "type=\"document_type\""},
    };
    for (const auto& [text, ok, record] : cases) {
        SCOPED_TRACE(U8(text));
        EXPECT_EQ(doc.SetText(text), ok) << ResultOf(doc);
        if (record) {
            EXPECT_TRUE(HasRecord(doc, record)) << ResultOf(doc);
        } else {
            EXPECT_EQ(doc.GetResult(), u"");
        }
        EXPECT_EQ(CheckIndex(doc), "");
        // Every prefix of the text parses without harm and keeps a sound index.
        const std::u16string full(text);
        for (size_t n = 0; n <= full.size(); ++n) {
            doc.SetText(std::u16string_view(full).substr(0, n));
            ASSERT_EQ(CheckIndex(doc), "") << n;
        }
    }
}

TEST(MarkupParse, StartTagQuotingAndEmptyElements) {
    MarkupDocument doc;
    ASSERT_TRUE(doc.SetText(u"<a x='1' y=2 z/>"));
    ASSERT_TRUE(doc.FindElement(u"a"));
    EXPECT_EQ(doc.GetAttribute(u"x"), u"1");
    EXPECT_EQ(doc.GetAttribute(u"y"), u"2");
    EXPECT_EQ(doc.GetAttribute(u"z"), u"z");
    EXPECT_EQ(doc.Record(doc.MainCursor()).length, 16u);

    // '>' inside quotes doesn't end the tag; only the same quote closes.
    ASSERT_TRUE(doc.SetText(u"<a t=\"x>'y\" u='\"'><b/></a>")) << ResultOf(doc);
    ASSERT_TRUE(doc.FindElement(u"a"));
    EXPECT_EQ(doc.GetAttribute(u"t"), u"x>'y");
    EXPECT_EQ(doc.GetAttribute(u"u"), u"\"");
    EXPECT_TRUE(doc.FindChildElement(u"b"));

    // The '/' of an unquoted value doesn't make the element empty.
    ASSERT_TRUE(doc.SetText(u"<r><a href=x/y/>t</a></r>")) << ResultOf(doc);
    ASSERT_TRUE(doc.FindElement(u"r"));
    ASSERT_TRUE(doc.FindChildElement(u"a"));
    EXPECT_EQ(doc.GetChildText(), u"t");
    ASSERT_TRUE(doc.SetText(u"<r><a b=c /><d/></r>")) << ResultOf(doc);
    ASSERT_TRUE(doc.FindElement(u"r"));
    ASSERT_TRUE(doc.FindChildElement(u"a"));
    EXPECT_EQ(doc.GetChildAttribute(u"b"), u"c");
    EXPECT_TRUE(doc.FindChildElement(u"d"));
    // A second '=' doesn't open a value, so its quote doesn't hide the '>'.
    EXPECT_FALSE(doc.SetText(u"<a b==\"x>\"/>"));
    EXPECT_TRUE(HasRecord(doc, "unended_start_tag tagname=\"a\" offset=\"0\" offset2=\"12\"")) << ResultOf(doc);
    // The first attribute of a name wins.
    ASSERT_TRUE(doc.SetText(u"<a k=\"1\" k=\"2\"/>"));
    ASSERT_TRUE(doc.FindElement());
    EXPECT_EQ(doc.GetAttribute(u"k"), u"1");
}

TEST(MarkupParse, ElementTextOfMixedContent) {
    // A '>' in text splits it into two text nodes, both kept.
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"<a>x<!-- c -->y<![CDATA[<z>&amp;]]><?p q?></a>", u"xy<z>&amp;"}, {u"<a><b>t</b></a>", u""},
        {u"<a>1 &lt; 2 &amp;&amp; 3 &gt; 2</a>", u"1 < 2 && 3 > 2"}, {u"<a>b>c<!--x-->d</a>", u"b>cd"}, {u"<a></a>", u""},
    };
    MarkupDocument doc;
    for (const auto& [text, expected] : cases) {
        ASSERT_TRUE(doc.SetText(text)) << U8(text);
        ASSERT_TRUE(doc.FindElement(u"a"));
        EXPECT_EQ(doc.GetElementText(), expected) << U8(text);
    }
}

TEST(MarkupParse, IndexCrossesTheRecordPage) {
    // More than 65,536 elements: records live in a second and third page and
    // the first page is reallocated on the way.
    std::u16string text = u"<root>";
    const int count = 140000;
    for (int i = 0; i < count; ++i) text += u"<i n=\"" + W(std::to_string(i)) + u"\"/>";
    text += u"</root>";
    MarkupDocument doc;
    ASSERT_TRUE(doc.SetText(text));
    EXPECT_EQ(doc.RecordCount(), static_cast<uint32_t>(count + 2));
    EXPECT_EQ(CheckIndex(doc), "");
    ASSERT_TRUE(doc.FindElement(u"root"));
    ASSERT_TRUE(doc.EnterElement());
    int seen = 0;
    while (doc.FindElement(u"i")) {
        if (seen == 65534 || seen == 65535 || seen == 131071 || seen == count - 1) {
            EXPECT_EQ(doc.GetAttribute(u"n"), W(std::to_string(seen)));
        }
        ++seen;
    }
    EXPECT_EQ(seen, count);
    // The last child is found through the first child's previous-sibling word.
    const auto& root = doc.Record(doc.ParentCursor());
    EXPECT_EQ(doc.Record(root.firstChild).prevSibling, static_cast<uint32_t>(count + 1));
}

TEST(MarkupParse, ResultTextIsCapped) {
    std::u16string text = u"<r>";
    for (int i = 0; i < 500; ++i) text += u"</x>";
    text += u"</r>";
    MarkupDocument doc;
    EXPECT_FALSE(doc.SetText(text));
    EXPECT_GE(doc.GetResult().size(), 1000u);
    EXPECT_LT(doc.GetResult().size(), 1100u);
    // A new text empties the records.
    EXPECT_TRUE(doc.SetText(u"<r/>"));
    EXPECT_EQ(doc.GetResult(), u"");
}

// Attributes are read from a cache of the last element's tag; every order of
// reading, misses among hits, more attributes than the cache holds and edits
// between reads must give what a fresh scan gives.
TEST(MarkupParse, AttributesInAnyOrderAndAfterEdits) {
    std::u16string tag = u"<e";
    std::vector<std::pair<std::u16string, std::u16string>> expected;
    for (int i = 0; i < 20; ++i) {
        const std::u16string n = u"a" + W(std::to_string(i));
        const std::u16string v = u"v" + W(std::to_string(i)) + u"&amp;";
        tag += u" " + n + u"=\"" + v + u"\"";
        expected.emplace_back(n, W("v" + std::to_string(i) + "&"));
    }
    // Later duplicates, inside and beyond the cached part, never win.
    tag += u" a3='late' a18='late' na=\"short\" name='全名' names=x>";
    expected.emplace_back(u"na", u"short");
    expected.emplace_back(u"name", u"全名");
    expected.emplace_back(u"names", u"x");
    const std::u16string text = u"<r>" + tag + u"<c k=\"child\"/></e><f k=\"other\"/></r>";

    std::mt19937 random(7);
    for (int round = 0; round < 40; ++round) {
        MarkupDocument doc;
        ASSERT_TRUE(doc.SetText(text)) << ResultOf(doc);
        ASSERT_TRUE(doc.FindElement(u"r"));
        ASSERT_TRUE(doc.EnterElement());
        ASSERT_TRUE(doc.FindElement(u"e"));
        auto order = expected;
        std::shuffle(order.begin(), order.end(), random);
        for (const auto& [n, v] : order) {
            EXPECT_EQ(doc.GetAttribute(n), v) << U8(n) << " in round " << round;
            EXPECT_EQ(doc.GetAttribute(u"missing"), u"");
            EXPECT_EQ(doc.GetAttribute(u"a"), u"");
            EXPECT_EQ(doc.GetAttribute(u"names2"), u"");
        }
        // Reading another element in between and coming back.
        ASSERT_TRUE(doc.FindChildElement(u"c"));
        EXPECT_EQ(doc.GetChildAttribute(u"k"), u"child");
        EXPECT_EQ(doc.GetAttribute(u"a19"), u"v19&");
        EXPECT_EQ(doc.GetChildAttribute(u"k"), u"child");
        EXPECT_EQ(doc.GetChildAttribute(u"a0"), u"");
    }

    // Edits move the cached element's tag or change its values.
    MarkupDocument doc;
    ASSERT_TRUE(doc.SetText(text));
    ASSERT_TRUE(doc.FindElement(u"r"));
    ASSERT_TRUE(doc.EnterElement());
    ASSERT_TRUE(doc.FindElement(u"e"));
    ASSERT_TRUE(doc.FindChildElement(u"c"));
    EXPECT_EQ(doc.GetChildAttribute(u"k"), u"child");
    ASSERT_TRUE(doc.SetAttribute(u"a0", u"a much longer value than before"));
    EXPECT_EQ(doc.GetChildAttribute(u"k"), u"child");
    EXPECT_EQ(doc.GetAttribute(u"a0"), u"a much longer value than before");
    EXPECT_EQ(doc.GetAttribute(u"a1"), u"v1&");
    ASSERT_TRUE(doc.SetAttribute(u"a1", u"1"));
    EXPECT_EQ(doc.GetAttribute(u"a1"), u"1");
    EXPECT_EQ(doc.GetAttribute(u"new"), u"");
    ASSERT_TRUE(doc.SetAttribute(u"new", u"n"));
    EXPECT_EQ(doc.GetAttribute(u"new"), u"n");
    EXPECT_EQ(doc.GetChildAttribute(u"k"), u"child");
    ASSERT_TRUE(doc.FindElement(u"f"));
    EXPECT_EQ(doc.GetAttribute(u"k"), u"other");
    // An edit of the parent moves the child's tag that was read last.
    doc.RewindMain();
    ASSERT_TRUE(doc.FindElement(u"e"));
    EXPECT_EQ(doc.GetAttribute(u"a2"), u"v2&");
    ASSERT_TRUE(doc.LeaveElement());
    EXPECT_EQ(doc.GetChildAttribute(u"a2"), u"v2&");
    ASSERT_TRUE(doc.SetAttribute(u"z", u"long enough to move everything behind it"));
    EXPECT_EQ(doc.GetChildAttribute(u"a2"), u"v2&");
    EXPECT_EQ(doc.GetChildAttribute(u"names"), u"x");
    EXPECT_EQ(CheckIndex(doc), "");
    // A new text empties the cache even where the record numbers agree.
    ASSERT_TRUE(doc.SetText(u"<r><e a2='other'/></r>"));
    ASSERT_TRUE(doc.FindElement(u"r"));
    ASSERT_TRUE(doc.FindChildElement(u"e"));
    EXPECT_EQ(doc.GetChildAttribute(u"a2"), u"other");
}
// Text between tags is skipped several units at a time: every length of text
// before, between and behind the elements must leave each start in place.
TEST(MarkupParse, TextOfEveryLengthAroundTags) {
    for (size_t before = 0; before < 19; ++before) {
        for (size_t between = 0; between < 19; ++between) {
            for (size_t behind : {size_t{0}, size_t{1}, size_t{7}, size_t{8}, size_t{9}, size_t{17}}) {
                const std::u16string text = u"<r>" + std::u16string(before, u'中') + u"<a/>" +
                                            std::u16string(between, u'x') + u"<b>t</b>" + u"</r>" +
                                            std::u16string(behind, u' ');
                MarkupDocument doc;
                ASSERT_TRUE(doc.SetText(text)) << ResultOf(doc);
                ASSERT_TRUE(doc.FindElement(u"r"));
                ASSERT_TRUE(doc.FindChildElement(u"a"));
                EXPECT_EQ(doc.Record(doc.ChildCursor()).start, 3 + before);
                ASSERT_TRUE(doc.FindChildElement(u"b"));
                EXPECT_EQ(doc.Record(doc.ChildCursor()).start, 3 + before + 4 + between);
                EXPECT_EQ(doc.GetChildText(), u"t");
                EXPECT_EQ(doc.Record(0).length, text.size());
            }
        }
    }
    // Text with a '>' in it and no element behind it at all.
    MarkupDocument doc;
    EXPECT_FALSE(doc.SetText(u"text only > and more text of some length"));
    EXPECT_EQ(doc.Record(0).firstChild, 0u);
}

// Quoted values, comments, CDATA sections and declarations are scanned for
// their end several units at a time: every length must end where it ends,
// and a text cut inside one must be reported.
TEST(MarkupParse, ScannedStretchesOfEveryLength) {
    for (size_t n = 0; n < 20; ++n) {
        SCOPED_TRACE(n);
        const std::u16string value(n, u'值');
        const std::u16string inner(n, u'c');
        const std::u16string text = u"<!DOCTYPE r [<!ENTITY e \"" + value + u"\">]><r a=\"" + value + u"\" b='" + value +
                                    u"\"'><!--" + inner + u"--><![CDATA[" + inner + u"]]><?p " + inner + u"?><c/></r>";
        MarkupDocument doc;
        ASSERT_TRUE(doc.SetText(text)) << ResultOf(doc);
        ASSERT_TRUE(doc.FindElement(u"r"));
        EXPECT_EQ(doc.GetAttribute(u"a"), value);
        EXPECT_EQ(doc.GetAttribute(u"b"), value + u"\"");
        EXPECT_EQ(doc.GetElementText(), u"");
        ASSERT_TRUE(doc.FindChildElement(u"c"));
        EXPECT_EQ(doc.Record(doc.ChildCursor()).start, text.size() - 8);
        // Cut inside the value (the start tag is unterminated), the comment,
        // the CDATA section and the declaration.
        const std::pair<std::u16string_view, const char*> cuts[] = {
            {u"<r a=\"", "unterminated_tag_syntax type=\"start_tag\""}, {u"<!--", "type=\"comment\""},
            {u"<![CDATA[", "type=\"cdata_section\""}, {u"<!ENTITY e \"", "type=\"document_type\""}};
        for (const auto& [opener, record] : cuts) {
            EXPECT_FALSE(doc.SetText(text.substr(0, text.find(opener) + opener.size() + n)));
            EXPECT_TRUE(HasRecord(doc, record)) << ResultOf(doc);
        }
    }
}

}  // namespace
}  // namespace marrowfin
