// Loading and saving files: marks, declared encodings, detection, NULs.

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <tuple>

#include "markup/markup_document.h"
#include "markup_test_util.h"
#include "support/temp_home.h"
#include "support/test_paths.h"

namespace marrowfin {
namespace {

using test::HasRecord;
using test::ReadBytes;
using test::ResultOf;
using test::WriteBytes;

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
TEST(MarkupFile, EveryFormReadsAndSavesByteForByte) {
    test::TempHome home;
    const std::u16string body = u"<root><item name=\"第一 é\">块 &amp; ü</item></root>";
    const std::u16string decl32 = u"<?xml version=\"1.0\" encoding=\"UTF-32\"?><r>中\U0001F600</r>";
    const std::u16string decl16 = u"<?xml version=\"1.0\" encoding=\"utf-16\"?><r>块</r>";
    const std::u16string gbk = u"<?xml version=\"1.0\" encoding=\"GBK\"?>\r\n<r n=\"图块库\">图块库</r>";
    const std::u16string big5 = u"<?xml encoding=\"big5\"?><r>圖塊</r>", sjis = u"<?xml encoding=\"Shift_JIS\"?><r>ブロック</r>";
    const std::u16string cp1251 = u"<?xml encoding=\"windows-1251\"?><r>Блок</r>", cp1252 = u"<?xml encoding=\"cp1252\"?><r>€uro</r>";
    const std::u16string latin = u"<?xml encoding=\"ISO-8859-1\"?><r>Ølé</r>";
    const std::tuple<std::string, std::u16string, uint32_t, const char*> forms[] = {
        {"\xEF\xBB\xBF" + U8(body), body, MarkupDocument::FlagUtf8Bom, "bom"},
        {"\xFF\xFE" + Utf16Bytes(body, false), body, MarkupDocument::FlagUtf16LeBom, "bom"},
        {"\xFE\xFF" + Utf16Bytes(body, true), body, MarkupDocument::FlagUtf16BeBom, "endian_swap"},
        {U8(body), body, 0, "read encoding=\"UTF-8\""},
        {"<?xml version=\"1.0\" encoding=\"utf-8\"?>" + U8(body), u"<?xml version=\"1.0\" encoding=\"utf-8\"?>" + body, 0,
         "read encoding=\"UTF-8\""},
        {InCodePage(decl32, CpUtf32), decl32, 0, ""},  // no marks: found through the declaration
        {Utf16Bytes(decl16, false), decl16, 0, ""},
        {InCodePage(gbk, 936), gbk, 0, "converted_to encoding=\"UTF-16\""},
        {InCodePage(big5, 950), big5, 0, "converted_to"}, {InCodePage(sjis, 932), sjis, 0, "converted_to"},
        {InCodePage(cp1251, 1251), cp1251, 0, "converted_to"}, {InCodePage(cp1252, 1252), cp1252, 0, "converted_to"},
        {InCodePage(latin, 28591), latin, 0, "converted_to"},
    };
    const std::string in = home.file("in.xml"), out = home.file("out.xml");
    for (const auto& [bytes, text, flags, record] : forms) {
        SCOPED_TRACE(U8(text.substr(0, 50)));
        WriteBytes(in, bytes);
        MarkupDocument doc, fromBytes;
        ASSERT_TRUE(doc.LoadFile(W(in))) << ResultOf(doc);
        EXPECT_EQ(doc.Text(), text);
        EXPECT_EQ(doc.Flags(), flags);
        EXPECT_TRUE(HasRecord(doc, record)) << ResultOf(doc);
        ASSERT_TRUE(fromBytes.LoadBytes(bytes));
        EXPECT_EQ(fromBytes.Text(), doc.Text());
        EXPECT_EQ(fromBytes.GetResult(), doc.GetResult());
        ASSERT_TRUE(doc.SaveFile(W(out))) << ResultOf(doc);
        EXPECT_EQ(ReadBytes(out), bytes);
        // A text set from nothing is written in its declared code page as well.
        MarkupDocument set;
        ASSERT_TRUE(set.SetText(text));
        if (flags == 0) {
            ASSERT_TRUE(set.SaveFile(W(out)));
            EXPECT_EQ(ReadBytes(out), bytes);
        }
    }
    // A character without an equivalent is recorded, and the write still happens.
    MarkupDocument doc;
    ASSERT_TRUE(doc.SetText(u"<?xml encoding=\"iso-8859-1\"?><r>中</r>"));
    ASSERT_TRUE(doc.SaveFile(W(out)));
    EXPECT_TRUE(HasRecord(doc, "conversion_loss")) << ResultOf(doc);
    EXPECT_EQ(ReadBytes(out), "<?xml encoding=\"iso-8859-1\"?><r>?</r>");
}

TEST(MarkupFile, DetectionNulsEmptyFilesAndFailures) {
    test::TempHome home;
    const std::string path = home.file("x.xml");
    const std::string gbk = InCodePage(u"图块", 936);
    const std::u16string meta = u"<html><head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=gbk\"></head>";
    // Bytes on disk, whether UTF-8 was detected, the text read (empty: not read as GBK).
    const std::tuple<std::string, bool, std::u16string> cases[] = {
        {"<r>\xB5\xC4</r>", false, u"<r>\uFFFD\uFFFD</r>"},  // begins with '<': UTF-8 all the same
        {" \xE4\xB8\xAD<r/>", true, u" 中<r/>"},             // else valid UTF-8 is detected
        {" \xFF<r/>", false, u" \uFFFD<r/>"},                // the default code page is UTF-8 here
        // The charset of an html meta counts before </head> only; another first element ends the search.
        {U8(meta) + "<p>" + gbk + "</p></html>", false, meta + u"<p>图块</p></html>"},
        {"<html><head></head><meta content=\"charset=gbk\"><p>" + gbk + "</p></html>", false, u""},
        {"<root><?xml encoding=\"gbk\"?>" + gbk + "</root>", false, u""},
        {std::string("<r>a\0b\0</r>", 11), false, u"<r>ab</r>"},
        {"\xFF\xFE" + Utf16Bytes(std::u16string(u"<r>\0x</r>", 9), false), false, u"<r>x</r>"},
        {"\xFF\xFE" + Utf16Bytes(u"<r/>", false) + "\x01", false, u"<r/>"},  // an odd trailing byte goes
    };
    for (const auto& [bytes, detected, text] : cases) {
        SCOPED_TRACE(bytes);
        WriteBytes(path, bytes);
        MarkupDocument doc;
        doc.LoadFile(W(path));
        EXPECT_EQ(HasRecord(doc, "utf8_detection"), detected) << ResultOf(doc);
        if (text.empty()) {
            EXPECT_EQ(doc.Text().find(u"图块"), std::u16string::npos);
        } else {
            EXPECT_EQ(doc.Text(), text);
        }
    }
    MarkupDocument doc;
    WriteBytes(path, std::string("<r>a\0b\0</r>", 11));
    EXPECT_TRUE(doc.LoadFile(W(path)));
    EXPECT_TRUE(HasRecord(doc, "nulls_removed count=\"2\""));
    WriteBytes(path, "\xEF\xBB\xBF");
    EXPECT_FALSE(doc.LoadFile(W(path)));
    EXPECT_EQ(doc.Flags(), MarkupDocument::FlagUtf8Bom);
    EXPECT_FALSE(doc.FindElement());
    EXPECT_FALSE(doc.LoadFile(W(home.file("missing.xml"))));
    EXPECT_TRUE(HasRecord(doc, "file_error msg=\"No such file or directory\" n=\"2\"")) << ResultOf(doc);

    // Nothing saves as an empty file; a built document as UTF-8 without a mark; a failed
    // write leaves the old file.
    MarkupDocument empty, built;
    EXPECT_TRUE(empty.SaveFile(W(path)));
    EXPECT_EQ(ReadBytes(path), "");
    built.AddElement(u"root", u"图");
    ASSERT_TRUE(built.SaveFile(W(path)));
    EXPECT_EQ(ReadBytes(path), "<root>\xE5\x9B\xBE</root>\r\n");
    ASSERT_EQ(mkdir(home.file("ro").c_str(), 0500), 0);
    if (geteuid() != 0) {
        EXPECT_FALSE(built.SaveFile(W(home.file("ro/x.xml"))));
        EXPECT_TRUE(HasRecord(built, "file_error"));
    }
    EXPECT_FALSE(built.SaveFile(W(home.file("no/such/dir/x.xml"))));
}

}  // namespace
}  // namespace marrowfin
