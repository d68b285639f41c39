// Files and text: marks, declared encodings, detection, NULs; references, escaping, the
// UTF-8 decoder and encoding names to code pages.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <random>

#include "markup/encoding_names.h"
#include "markup/markup_text.h"
#include "markup/utf8_decoder.h"
#include "support/markup_index.h"
#include "support/temp_home.h"
#include "support/test_paths.h"

namespace marrowfin {
namespace {

using namespace test;

std::string Utf16Bytes(std::u16string_view text, bool big) {
    std::string out;
    for (char16_t c : text) out += big ? std::string{char(c >> 8), char(c & 0xFF)} : std::string{char(c & 0xFF), char(c >> 8)};
    return out;
}

std::string InCodePage(const std::u16string& text, uint32_t page) {
    std::string bytes;
    EXPECT_TRUE(Utf16ToCodePage(text, page, bytes));
    return bytes;
}

// Each form is read from a file and from memory alike, and saved back byte for byte.
TEST(MarkupFile, EveryFormReadsAndSavesByteForByteDetectionNulsAndFailures) {
    TempHome home;
    const std::u16string body = u"<root><item name=\"第一 é\">块 &amp; ü</item></root>";
    const std::u16string decl32 = u"<?xml version=\"1.0\" encoding=\"UTF-32\"?><r>中\U0001F600</r>";
    const std::u16string decl16 = u"<?xml version=\"1.0\" encoding=\"utf-16\"?><r>块</r>";
    const std::u16string gbk = u"<?xml version=\"1.0\" encoding=\"GBK\"?>\r\n<r n=\"图块库\">图块库</r>";
    // (Which names give which code pages, and the code pages themselves, have their own tests.)
    const std::u16string latin = u"<?xml encoding=\"ISO-8859-1\"?><r>Ølé</r>";
    const std::tuple<std::string, std::u16string, uint32_t, const char*> forms[] = {
        {"\xEF\xBB\xBF" + Utf16ToUtf8(body), body, MarkupDocument::FlagUtf8Bom, "bom"},
        {"\xFF\xFE" + Utf16Bytes(body, false), body, MarkupDocument::FlagUtf16LeBom, "bom"},
        {"\xFE\xFF" + Utf16Bytes(body, true), body, MarkupDocument::FlagUtf16BeBom, "endian_swap"},
        {Utf16ToUtf8(body), body, 0, "read encoding=\"UTF-8\""},
        {"<?xml version=\"1.0\" encoding=\"utf-8\"?>" + Utf16ToUtf8(body), u"<?xml version=\"1.0\" encoding=\"utf-8\"?>" + body, 0,
         "read encoding=\"UTF-8\""},
        {InCodePage(decl32, CpUtf32), decl32, 0, ""},  // no marks: found through the declaration
        {Utf16Bytes(decl16, false), decl16, 0, ""},
        {InCodePage(gbk, 936), gbk, 0, "converted_to encoding=\"UTF-16\""},
        {InCodePage(latin, 28591), latin, 0, "converted_to"},
    };
    const std::string in = home.file("in.xml"), out = home.file("out.xml");
    for (const auto& [bytes, text, flags, record] : forms) {
        SCOPED_TRACE(Utf16ToUtf8(text.substr(0, 50)));
        WriteBytes(in, bytes);
        MarkupDocument doc, fromBytes;
        ASSERT_TRUE(doc.LoadFile(Utf8ToUtf16(in))) << ResultOf(doc);
        EXPECT_EQ(std::make_pair(doc.Text(), doc.Flags()), std::make_pair(std::u16string_view(text), flags));
        EXPECT_TRUE(HasRecord(doc, record)) << ResultOf(doc);
        EXPECT_TRUE(fromBytes.LoadBytes(bytes) && fromBytes.Text() == doc.Text() && fromBytes.GetResult() == doc.GetResult());
        ASSERT_TRUE(doc.SaveFile(Utf8ToUtf16(out))) << ResultOf(doc);
        EXPECT_EQ(ReadBytes(out), bytes);
        // A text set from nothing is written in its declared code page as well.
        MarkupDocument set;
        EXPECT_TRUE(set.SetText(text) && (flags != 0 || (set.SaveFile(Utf8ToUtf16(out)) && ReadBytes(out) == bytes)));
    }
    // A character without an equivalent is recorded, and the write still happens.
    MarkupDocument doc;
    ASSERT_TRUE(doc.SetText(u"<?xml encoding=\"iso-8859-1\"?><r>中</r>") && doc.SaveFile(Utf8ToUtf16(out)));
    EXPECT_TRUE(HasRecord(doc, "conversion_loss") && ReadBytes(out) == "<?xml encoding=\"iso-8859-1\"?><r>?</r>") << ResultOf(doc);

    // Detection, NULs, empty files and failures.
    const std::string path = home.file("x.xml");
    const std::string gbkBytes = InCodePage(u"图块", 936);
    const std::u16string meta = u"<html><head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=gbk\"></head>";
    // Bytes on disk, whether UTF-8 was detected, the text read (empty: not read as GBK).
    const std::tuple<std::string, bool, std::u16string> cases[] = {
        {"<r>\xB5\xC4</r>", false, u"<r>\uFFFD\uFFFD</r>"},  // begins with '<': UTF-8 all the same
        {" \xE4\xB8\xAD<r/>", true, u" 中<r/>"},  // else valid UTF-8 is detected
        {" \xFF<r/>", false, u" \uFFFD<r/>"},  // the default code page is UTF-8 here
        // The charset of an html meta counts before </head> only; another first element ends the search.
        {Utf16ToUtf8(meta) + "<p>" + gbkBytes + "</p></html>", false, meta + u"<p>图块</p></html>"},
        {"<html><head></head><meta content=\"charset=gbk\"><p>" + gbkBytes + "</p></html>", false, u""},
        {"<root><?xml encoding=\"gbk\"?>" + gbkBytes + "</root>", false, u""},
        {std::string("<r>a\0b\0</r>", 11), false, u"<r>ab</r>"},
        {"\xFF\xFE" + Utf16Bytes(std::u16string(u"<r>\0x</r>", 9), false), false, u"<r>x</r>"},
        {"\xFF\xFE" + Utf16Bytes(u"<r/>", false) + "\x01", false, u"<r/>"},  // an odd trailing byte goes
    };
    for (const auto& [bytes, detected, text] : cases) {
        SCOPED_TRACE(bytes);
        WriteBytes(path, bytes);
        MarkupDocument doc;
        doc.LoadFile(Utf8ToUtf16(path));
        EXPECT_EQ(HasRecord(doc, "utf8_detection"), detected) << ResultOf(doc);
        EXPECT_TRUE(text.empty() ? doc.Text().find(u"图块") == std::u16string::npos : doc.Text() == text) << Utf16ToUtf8(doc.Text());
    }
    WriteBytes(path, std::string("<r>a\0b\0</r>", 11));
    EXPECT_TRUE(doc.LoadFile(Utf8ToUtf16(path)) && HasRecord(doc, "nulls_removed count=\"2\""));
    WriteBytes(path, "\xEF\xBB\xBF");
    EXPECT_TRUE(!doc.LoadFile(Utf8ToUtf16(path)) && doc.Flags() == MarkupDocument::FlagUtf8Bom && !doc.FindElement());
    EXPECT_TRUE(!doc.LoadFile(Utf8ToUtf16(home.file("missing.xml"))) &&
                HasRecord(doc, "file_error msg=\"No such file or directory\" n=\"2\""))
        << ResultOf(doc);

    // Nothing saves as an empty file; a built document as UTF-8 without a mark; a failed
    // write leaves the old file.
    MarkupDocument empty, built;
    EXPECT_TRUE(empty.SaveFile(Utf8ToUtf16(path)) && ReadBytes(path).empty());
    ASSERT_TRUE(built.AddElement(u"root", u"图") && built.SaveFile(Utf8ToUtf16(path)));
    EXPECT_EQ(ReadBytes(path), "<root>\xE5\x9B\xBE</root>\r\n");
    ASSERT_EQ(mkdir(home.file("ro").c_str(), 0500), 0);
    EXPECT_TRUE(geteuid() == 0 || (!built.SaveFile(Utf8ToUtf16(home.file("ro/x.xml"))) && HasRecord(built, "file_error")));
    EXPECT_FALSE(built.SaveFile(Utf8ToUtf16(home.file("no/such/dir/x.xml"))));
}

std::u16string Decode(std::u16string_view s) {
    std::u16string out;
    MarkupDocument::DecodeText(s, out);
    return out;
}

// Upper case at every letter, or at every other one ("uTf-8").
std::u16string Upper(std::u16string_view s, bool everyOther) {
    std::u16string out(s);
    bool up = !everyOther;
    for (char16_t& c : out)
        if (c >= u'a' && c <= u'z') {
            if (up) c = static_cast<char16_t>(c - 32);
            up = up != everyOther;
        }
    return out;
}

TEST(MarkupText, DecodesReferencesAndUtf8LikeThePlatformCodecAndNamesEncodings) {
    EXPECT_EQ(Decode(u"&#65;&#x41;&#X42;&apos;&quot;&lt;&gt;&amp;"), u"AAB'\"<>&");
    EXPECT_EQ(Decode(u"&unknown; & &verylongnamexx; &; &#; &#x; &#0; &#12a;"), u"&unknown; & &verylongnamexx; &; &#; &#x; &#0; &#12a;");
    EXPECT_EQ(Decode(u"&#x1F600;&#1114111;&#1114112;"), u"\U0001F600\U0010FFFF&#1114112;");
    EXPECT_EQ(Decode(u"&thetasym;|&Oslash;&oslash;&OSLASH;&AMP;&Nbsp;&euro;&hellip;&中;"),
              u"\u03D1|\u00D8\u00F8\u00D8&\u00A0\u20AC\u2026&中;");
    // Case pairs keep their own characters; a name in neither case takes the
    // first of the table in any case.
    EXPECT_EQ(Decode(u"&Alpha;&alpha;&ALPHA;&Scaron;&scaron;&Dagger;&dagger;&lArr;&larr;&LARR;&Prime;&prime;"),
              u"\u0391\u03B1\u0391\u0160\u0161\u2021\u2020\u21D0\u2190\u2190\u2033\u2032");
    EXPECT_EQ(Decode(u"&sup1;&sup;&supe;&sub;&nsub;&zwj;&zwnj;&diams;&lt&gt;x&#60;&#x3C;"),
              u"\u00B9\u2283\u2287\u2282\u2284\u200D\u200C\u2666&lt>x<<");
    EXPECT_EQ(Decode(u"a&|&amp"), u"a&|&amp");
    // Markup's own five are read in place: near misses and cut ends must go the table's way.
    EXPECT_EQ(Decode(u"&lt;&gt;&amp;&quot;&apos;|&l;&g;&lt|&gt|&am;&ampx;&quo;&apo;&quott;&aposs;&qout;&apso;|&quot"),
              u"<>&\"'|&l;&g;&lt|&gt|&am;&ampx;&quo;&apo;&quott;&aposs;&qout;&apso;|&quot");
    EXPECT_EQ(Decode(u"&quox;&apox;") + Decode(u"&apos") + Decode(u"&gt;") + Decode(u"x&amp;"), u"&quox;&apox;&apos>x&");
    // A value's view ends before the ';' that follows it in the text.
    const std::u16string_view cut = u"&lt;&amp;&quot;";
    EXPECT_EQ(Decode(cut.substr(0, 3)) + Decode(cut.substr(4, 4)) + Decode(cut.substr(9, 5)), u"&lt&amp&quot");

    // The fast UTF-8 decoder agrees with the platform's codec.
    // Edge sequences, then runs of three-byte forms (long enough for the four-at-a-time
    // path and for the 64-byte blocks of mixed text) with one fault at every place, then
    // mixed markup and CJK across several blocks with one fault at every place, then
    // random byte soup.
    std::vector<std::string> inputs = {"\xC0\xAF", "\xE0\x80\xAF", "\xF4\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80"};
    inputs.push_back(std::string(40, 'x') + "\x80" + std::string(16, 'y'));
    inputs.push_back(std::string("a\0b\0\0c", 6));
    for (size_t prefix = 0; prefix < 3; ++prefix) {
        for (size_t run = 1; run <= 26; ++run) {
            std::string base = std::string(prefix, 'a');
            for (size_t k = 0; k < run; ++k) base += "\xE4\xB8\xAD";
            base += "z";
            for (size_t at = prefix; at < base.size(); ++at) {
                for (const char stray : {'\x80', '\xC3', 'A', '\xE4', '\0'})
                    inputs.push_back(base.substr(0, at) + stray + base.substr(at + 1));
                inputs.push_back(base.substr(0, at));
            }
            for (size_t k = 0; k < run; ++k)
                for (const char* other : {"\xED\xA0\x80", "\xED\xBF\xBF", "\xE0\x80\x80", "\xE0\x9F\xBF", "\xEF\xBF\xBF", "\xED\x9F\xBF",
                                          "\xEE\x80\x80", "\xE0\xA0\x80", "\xF0\x9F\x98\x80"})
                    inputs.push_back(std::string(base).replace(prefix + 3 * k, 3, other));
        }
    }
    std::string mixed;
    while (mixed.size() < 200) mixed += "<item id=\"7\" name=\"\xE5\x88\x86\xE7\xB1\xBB\xC3\xA9\">\xE4\xB8\xAD</item>";
    for (size_t at = 0; at < mixed.size(); ++at) {
        for (const char* other : {"\x80", "\xC1", "\xF0\x9F\x98\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xE0\xA0\x80", "\xED\x9F\xBF"})
            inputs.push_back(std::string(mixed).insert(at, other));
        // A NUL inside a form spoils it, which the codec of the text without it can't see.
        if (static_cast<unsigned char>(mixed[at]) < 0x80) inputs.push_back(std::string(mixed).insert(at, 1, '\0'));
    }
    std::mt19937 rng(7);
    const char alphabet[] = {'a', '<', ' ', '\xE4', '\xB8', '\xAD', '\xC2', '\xA9', '\xF0', '\x9F', '\x80', '\xFF', '\xED', '\xA0'};
    for (int k = 0; k < 2000; ++k)
        for (char& c : inputs.emplace_back(rng() % 160, 'a')) c = alphabet[rng() % sizeof alphabet];
    for (const std::string& in : inputs) {
        std::vector<char16_t> out(in.size() + 1);
        size_t nulls = 1;
        const size_t units = DecodeUtf8Into(reinterpret_cast<const unsigned char*>(in.data()), in.size(), out.data(), nulls);
        std::string withoutNul = in;
        std::erase(withoutNul, '\0');
        ASSERT_EQ(std::u16string(out.data(), units), Utf8ToUtf16(withoutNul)) << in;
        EXPECT_EQ(nulls, in.size() - withoutNul.size());
    }
    // How a reply's bytes read straight into a document compare with the decoded text set,
    // before and after edits, is the fuzz target's check; its kept inputs replay the edges.

    // A name stored in the wrong bucket, in upper case or twice with other pages is not found
    // in some of its cases; so the lookups of every name check the table as well.
    const auto names = EncodingNames();
    for (const EncodingName& e : names) {
        const std::u16string name = e.name;
        SCOPED_TRACE(Utf16ToUtf8(name));
        for (const std::u16string& form : {name, Upper(name, false), Upper(name, true)})
            EXPECT_EQ(CodePageOfEncodingName(form), e.codePage);
        // One unit more or less is another name, unknown unless the table has it.
        for (const std::u16string& other : {name + u"x", name.substr(0, name.size() - 1)})
            EXPECT_TRUE(std::count_if(names.begin(), names.end(), [&](const EncodingName& o) { return other == o.name; }) ||
                        CodePageOfEncodingName(other) == 0u)
                << Utf16ToUtf8(other);
    }
    // "8-ftu" shares the bucket of "utf-8"; "UTF-32" counts only at the start; 99 units at most.
    const std::pair<std::u16string, uint32_t> others[] = {{u"8-ftu", 0},
                                                          {u" utf-8", 0},
                                                          {u"ＵＴＦ-8", 0},
                                                          {std::u16string(u"utf-8\0", 6), 0},
                                                          {u"Utf-32", 0},
                                                          {u"UTF-32BE", 65005},
                                                          {u"utf-8" + std::u16string(94, u' '), 0},
                                                          {u"UTF-32" + std::u16string(93, u'x'), 65005},
                                                          {u"UTF-32" + std::u16string(94, u'x'), 0}};
    for (const auto& [name, page] : others) EXPECT_EQ(CodePageOfEncodingName(name), page) << Utf16ToUtf8(name);
}

}  // namespace
}  // namespace marrowfin
