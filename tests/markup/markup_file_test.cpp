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
    for (char16_t c : text) {
        const char lo = static_cast<char>(c & 0xFF), hi = static_cast<char>(c >> 8);
        out += big ? hi : lo;
        out += big ? lo : hi;
    }
    return out;
}

const std::u16string kBody = u"<root><item name=\"第一 é\">块 &amp; ü</item></root>";

void ExpectBody(MarkupDocument& doc) {
    ASSERT_TRUE(doc.FindElement(u"root"));
    ASSERT_TRUE(doc.FindChildElement(u"item"));
    EXPECT_EQ(doc.GetChildAttribute(u"name"), u"第一 é");
    EXPECT_EQ(doc.GetChildText(), u"块 & ü");
}

TEST(MarkupFile, ReadsAndWritesEveryFormWithAndWithoutMarks) {
    test::TempHome home;
    struct Form {
        const char* label;
        std::string bytes;
        uint32_t flags;
        const char* record;
        const char* written;
    };
    const std::string utf8 = U8(kBody);
    const Form forms[] = {
        {"utf8 bom", "\xEF\xBB\xBF" + utf8, MarkupDocument::FlagUtf8Bom, "bom", "UTF-8"},
        {"utf16le bom", "\xFF\xFE" + Utf16Bytes(kBody, false), MarkupDocument::FlagUtf16LeBom, "bom", "UTF-16LE"},
        {"utf16be bom", "\xFE\xFF" + Utf16Bytes(kBody, true), MarkupDocument::FlagUtf16BeBom, "endian_swap", "UTF-16BE"},
        {"utf8 plain", utf8, 0, "read encoding=\"UTF-8\"", "UTF-8"},
        {"utf8 declared", "<?xml version=\"1.0\" encoding=\"utf-8\"?>" + utf8, 0, "read encoding=\"UTF-8\"", "UTF-8"},
    };
    for (const Form& f : forms) {
        SCOPED_TRACE(f.label);
        const std::string path = home.file("in.xml");
        WriteBytes(path, f.bytes);
        MarkupDocument doc, fromBytes;
        ASSERT_TRUE(doc.LoadFile(W(path))) << ResultOf(doc);
        EXPECT_EQ(doc.Flags(), f.flags);
        EXPECT_TRUE(HasRecord(doc, f.record)) << ResultOf(doc);
        ExpectBody(doc);
        // The same bytes from memory read the same.
        ASSERT_TRUE(fromBytes.LoadBytes(f.bytes));
        EXPECT_EQ(fromBytes.Text(), doc.Text());
        EXPECT_EQ(fromBytes.GetResult(), doc.GetResult());
        EXPECT_EQ(fromBytes.Flags(), doc.Flags());
        // Saved by the same object, the file keeps its form byte for byte.
        const std::string out = home.file("out.xml");
        ASSERT_TRUE(doc.SaveFile(W(out))) << ResultOf(doc);
        EXPECT_EQ(ReadBytes(out), f.bytes);
        const std::string written = "write encoding=\"" + std::string(f.written) + "\" length=\"" + std::to_string(f.bytes.size()) + "\"";
        EXPECT_TRUE(HasRecord(doc, written.c_str())) << ResultOf(doc);
        // The object itself didn't change.
        EXPECT_EQ(doc.Flags(), f.flags);
        EXPECT_EQ(doc.GetChildAttribute(u"name"), u"第一 é");
    }
}

TEST(MarkupFile, DeclaredCodePagesRoundTrip) {
    test::TempHome home;
    const std::string path = home.file("gbk.xml");
    const std::pair<const char*, std::u16string> pages[] = {
        {"GBK", u"图块库"}, {"gb2312", u"图块"}, {"big5", u"圖塊"}, {"Shift_JIS", u"ブロック"},
        {"ISO-8859-1", u"Ølé"}, {"windows-1251", u"Блок"}, {"cp1252", u"€uro"},
    };
    for (const auto& [name, sample] : pages) {
        SCOPED_TRACE(name);
        const std::u16string text = u"<?xml version=\"1.0\" encoding=\"" + W(name) + u"\"?>\r\n<r n=\"" + sample +
                                    u"\">" + sample + u"</r>";
        MarkupDocument doc;
        ASSERT_TRUE(doc.SetText(text));
        ASSERT_TRUE(doc.SaveFile(W(path))) << ResultOf(doc);
        const std::string bytes = ReadBytes(path);
        std::string expected;
        ASSERT_TRUE(Utf16ToCodePage(text, MarkupDocument::CodePageOfEncodingName(W(name)), expected));
        EXPECT_EQ(bytes, expected);
        EXPECT_EQ(bytes.find(U8(sample)), std::string::npos);  // not UTF-8 on disk
        EXPECT_TRUE(HasRecord(doc, "converted_from encoding=\"UTF-16\"")) << ResultOf(doc);
        MarkupDocument back;
        ASSERT_TRUE(back.LoadFile(W(path))) << ResultOf(back);
        EXPECT_EQ(back.Text(), text);
        ASSERT_TRUE(back.FindElement(u"r"));
        EXPECT_EQ(back.GetElementText(), sample);
        EXPECT_TRUE(HasRecord(back, "converted_to encoding=\"UTF-16\""));
    }
    // A character without an equivalent is recorded, and the write still happens.
    MarkupDocument doc;
    ASSERT_TRUE(doc.SetText(u"<?xml encoding=\"iso-8859-1\"?><r>中</r>"));
    ASSERT_TRUE(doc.SaveFile(W(path)));
    EXPECT_TRUE(HasRecord(doc, "conversion_loss")) << ResultOf(doc);
    EXPECT_EQ(ReadBytes(path), "<?xml encoding=\"iso-8859-1\"?><r>?</r>");
}

TEST(MarkupFile, WideFormsWithoutMarksByDeclaration) {
    test::TempHome home;
    const std::string path = home.file("wide.xml");
    // UTF-32 little-endian, found through its declaration, read as 32-bit units.
    const std::u16string text32 = u"<?xml version=\"1.0\" encoding=\"UTF-32\"?><r>中\U0001F600</r>";
    std::string bytes;
    ASSERT_TRUE(Utf16ToCodePage(text32, CpUtf32, bytes));
    ASSERT_EQ(bytes.size() % 4, 0u);
    WriteBytes(path, bytes);
    MarkupDocument doc;
    ASSERT_TRUE(doc.LoadFile(W(path))) << ResultOf(doc);
    EXPECT_EQ(doc.Text(), text32);
    EXPECT_EQ(doc.Flags(), 0u);
    ASSERT_TRUE(doc.SaveFile(W(home.file("wide2.xml"))));
    EXPECT_EQ(ReadBytes(home.file("wide2.xml")), bytes);
    // UTF-16 without a mark, declared.
    const std::u16string text16 = u"<?xml version=\"1.0\" encoding=\"utf-16\"?><r>块</r>";
    WriteBytes(path, Utf16Bytes(text16, false));
    ASSERT_TRUE(doc.LoadFile(W(path))) << ResultOf(doc);
    EXPECT_EQ(doc.Text(), text16);
    ASSERT_TRUE(doc.SaveFile(W(home.file("wide3.xml"))));
    EXPECT_EQ(ReadBytes(home.file("wide3.xml")), Utf16Bytes(text16, false));
}

TEST(MarkupFile, DetectionDefaultsAndHtmlCharset) {
    test::TempHome home;
    const std::string path = home.file("x.xml");
    std::string gbk;
    ASSERT_TRUE(Utf16ToCodePage(u"图块", 936, gbk));
    // Bytes on disk, whether UTF-8 was detected, the text read.
    const std::tuple<std::string, bool, std::u16string> cases[] = {
        // Begins with '<' but isn't valid UTF-8: decoded as UTF-8 all the same.
        {"<r>\xB5\xC4</r>", false, u"<r>\uFFFD\uFFFD</r>"},
        // Begins with something else and is valid UTF-8: detected.
        {" \xE4\xB8\xAD<r/>", true, u" 中<r/>"},
        // Neither: read in the default code page (UTF-8 on this platform).
        {" \xFF<r/>", false, u" \uFFFD<r/>"},
        // The charset of an html meta counts before </head> only; another first element ends the search.
        {"<html><head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=gbk\"></head><p>" + gbk + "</p></html>",
         false, u"<html><head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=gbk\"></head><p>图块</p></html>"},
        {"<html><head></head><meta content=\"charset=gbk\"><p>" + gbk + "</p></html>", false, u""},
        {"<root><?xml encoding=\"gbk\"?>" + gbk + "</root>", false, u""},
    };
    for (const auto& [bytes, detected, text] : cases) {
        SCOPED_TRACE(bytes);
        WriteBytes(path, bytes);
        MarkupDocument doc;
        doc.LoadFile(W(path));
        EXPECT_EQ(HasRecord(doc, "utf8_detection"), detected) << ResultOf(doc);
        if (!text.empty()) {
            EXPECT_EQ(doc.Text(), text);
        } else {
            EXPECT_EQ(doc.Text().find(u"图块"), std::u16string::npos) << "not read as GBK";
        }
    }
}

TEST(MarkupFile, NulsEmptyFilesAndFailures) {
    test::TempHome home;
    const std::string path = home.file("n.xml");
    MarkupDocument doc;
    WriteBytes(path, std::string("<r>a\0b\0</r>", 11));
    EXPECT_TRUE(doc.LoadFile(W(path))) << ResultOf(doc);
    EXPECT_TRUE(HasRecord(doc, "nulls_removed count=\"2\""));
    EXPECT_EQ(doc.Text(), u"<r>ab</r>");
    WriteBytes(path, "\xFF\xFE" + Utf16Bytes(std::u16string(u"<r>\0x</r>", 9), false));
    EXPECT_TRUE(doc.LoadFile(W(path))) << ResultOf(doc);
    EXPECT_EQ(doc.Text(), u"<r>x</r>");
    // An odd trailing byte of UTF-16 is dropped.
    WriteBytes(path, "\xFF\xFE" + Utf16Bytes(u"<r/>", false) + "\x01");
    EXPECT_TRUE(doc.LoadFile(W(path)));
    EXPECT_EQ(doc.Text(), u"<r/>");

    WriteBytes(path, "");
    EXPECT_FALSE(doc.LoadFile(W(path)));
    EXPECT_EQ(doc.Text(), u"");
    EXPECT_FALSE(doc.FindElement());
    WriteBytes(path, "\xEF\xBB\xBF");
    EXPECT_FALSE(doc.LoadFile(W(path)));
    EXPECT_EQ(doc.Flags(), MarkupDocument::FlagUtf8Bom);

    ASSERT_TRUE(doc.SetText(u"<r/>"));
    EXPECT_FALSE(doc.LoadFile(W(home.file("missing.xml"))));
    EXPECT_TRUE(HasRecord(doc, "file_error msg=\"No such file or directory\" n=\"2\"")) << ResultOf(doc);
    EXPECT_FALSE(doc.FindElement());

    // An empty document saves as an empty file (or only its mark).
    MarkupDocument empty;
    EXPECT_TRUE(empty.SaveFile(W(path)));
    EXPECT_EQ(ReadBytes(path), "");
    // A document built from nothing is saved as UTF-8 without a mark.
    MarkupDocument built;
    built.AddElement(u"root", u"图");
    ASSERT_TRUE(built.SaveFile(W(path)));
    EXPECT_EQ(ReadBytes(path), "<root>\xE5\x9B\xBE</root>\r\n");
    // A failed write leaves the old file untouched.
    const std::string dir = home.file("ro");
    ASSERT_EQ(mkdir(dir.c_str(), 0500), 0);
    if (geteuid() != 0) {
        EXPECT_FALSE(built.SaveFile(W(dir + "/x.xml")));
        EXPECT_TRUE(HasRecord(built, "file_error"));
    }
    EXPECT_FALSE(built.SaveFile(W(home.file("no/such/dir/x.xml"))));
}

}  // namespace
}  // namespace marrowfin
