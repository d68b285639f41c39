// The usual start-tag road against the plain reader: random tags, most of them
// usual attribute lists with a unit here and there that breaks the usual
// shape, at every distance from the text's end.

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "markup/start_tag_wide.h"

namespace marrowfin {
namespace {

std::string Describe(const MarkupNode& n) {
    return "kind " + std::to_string(n.kind) + " length " + std::to_string(n.length) + " name " + std::to_string(n.nameOffset) + ".." +
           std::to_string(n.nameEnd) + (n.empty ? " empty" : "");
}

// The units that steer a tag's scan, blanks and '=' twice as likely.
constexpr char16_t kUnits[] = {u'a', u'b', u'=',  u'=',  u'"', u'"', u'\'',     u'>', u'/',
                               u' ', u' ', u'\n', u'\t', u'<', u'&', u'\u4E2D', u'x', u'1'};

std::u16string RandomTag(std::mt19937& random, int round) {
    auto unit = [&] { return kUnits[random() % std::size(kUnits)]; };
    std::u16string text = round % 3 == 0 ? u"<item" : u"<a";
    if (round % 2 == 0) {
        // Steering units alone, long enough to span blocks of 64 at times.
        const size_t body = random() % (round % 10 == 0 ? 150 : 60);
        for (size_t i = 0; i < body; ++i) text += unit();
        text += u"\">";
    } else {
        // name="value" pairs, values of CJK and steering units other than
        // '"', each unit of the tag broken with a small chance.
        const size_t attributes = random() % 9;
        for (size_t i = 0; i < attributes; ++i) {
            text += u" n" + std::u16string(random() % 4, u'm') + u"=\"";
            for (size_t v = random() % 14; v-- > 0;) {
                const char16_t c = unit();
                text += c == u'"' ? u'\u5757' : c;
            }
            text += u'"';
        }
        text += round % 5 == 0 ? u"/>" : u">";
        if (random() % 4 == 0) text[2 + random() % (text.size() - 2)] = unit();
    }
    text += std::u16string(random() % 70, round % 4 == 0 ? u' ' : u'x');
    return text;
}

// The levels this processor can run: AVX-512 machines run both.
std::vector<WideTags> Levels() {
    std::vector<WideTags> levels;
    if (WideTagLevel() >= WideTags::Avx2) levels.push_back(WideTags::Avx2);
    if (WideTagLevel() >= WideTags::Avx512) levels.push_back(WideTags::Avx512);
    return levels;
}

std::string Read(MarkupTokenizer& tokenizer, size_t at) {
    MarkupNode node;
    tokenizer.Read(at, node);
    return Describe(node);
}

TEST(StartTagWide, TheUsualRoadEndsTagsWhereThePlainReaderDoes) {
    if (Levels().empty()) GTEST_SKIP() << "this processor has neither AVX2 nor AVX-512: only the plain reader runs";
    for (const WideTags level : Levels()) {
        SCOPED_TRACE(level == WideTags::Avx2 ? "AVX2" : "AVX-512");
        std::mt19937 random(20261124);
        int usualReads = 0;
        int emptyTags = 0;
        const int rounds = 40000;
        std::u16string document;
        for (int round = 0; round < rounds; ++round) {
            const std::u16string text = RandomTag(random, round);
            if (round < 4000) document += text;
            SCOPED_TRACE(round);
            std::u16string records;
            MarkupTokenizer plain(text.c_str(), text.size(), &records, false);
            MarkupNode expected;
            plain.Read(0, expected);
            MarkupTokenizer wide(text.c_str(), text.size(), nullptr, level);
            ASSERT_EQ(Read(wide, 0), Describe(expected));

            // The usual road alone: where it answers, the plain reader's tag ends at that '>'.
            size_t nameEnd = 1;
            while (nameEnd < text.size() && !IsMarkupSpace(text[nameEnd]) && text[nameEnd] != u'/' && text[nameEnd] != u'>') ++nameEnd;
            if (const size_t end = UsualStartTagEnd(text.c_str(), text.size(), nameEnd, level); end != 0) {
                ++usualReads;
                emptyTags += expected.empty;
                ASSERT_EQ(expected.kind, NodeStartTag) << "the usual road took a tag the plain reader finds broken";
                ASSERT_EQ(end + 1, expected.length) << "the usual road ended the tag elsewhere";
            }
        }
        // The road must have answered often, for empty tags among others, for the comparison
        // to mean anything.
        EXPECT_GT(usualReads, rounds / 6);
        EXPECT_GT(emptyTags, 500);

        // A "==" astride two blocks of 64: the second '=' opens nothing, so its quote is no value's.
        for (size_t k = 0; k < 140; ++k) {
            const std::u16string text = u"<a " + std::u16string(k, u'b') + u"==\" >\" c=\"v\">" + std::u16string(100, u'x');
            MarkupTokenizer plain(text.c_str(), text.size(), nullptr, false);
            MarkupTokenizer wide(text.c_str(), text.size(), nullptr, level);
            ASSERT_EQ(Read(wide, 0), Read(plain, 0)) << k;
            EXPECT_EQ(UsualStartTagEnd(text.c_str(), text.size(), 2, level), 0u) << k;
        }

        // One tokeniser over a long text of all sorts of tags, where the road rests after
        // runs it cannot read and takes up again: every tag as the plain reader reads it.
        MarkupTokenizer plain(document.c_str(), document.size(), nullptr, false);
        MarkupTokenizer wide(document.c_str(), document.size(), nullptr, level);
        for (size_t at = document.find(u'<'); at != std::u16string::npos; at = document.find(u'<', at + 1))
            ASSERT_EQ(Read(wide, at), Read(plain, at)) << at;
    }
}

}  // namespace
}  // namespace marrowfin
