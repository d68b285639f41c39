#include <gtest/gtest.h>

#include "platform/ini_file.h"
#include "store/catalogue.h"
#include "store/previous_generation.h"
#include "store/seal.h"
#include "store/show_list.h"
#include "store/store_ini.h"
#include "store/store_paths.h"
#include "store_fixture.h"

namespace marrowfin::test {
namespace {

const std::string kHead = "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root re=\"";

class Catalogue : public StoreFixture {
protected:
    std::u16string FileOf(const std::u16string& name) const { return rootPath + u"/" + name + u"/" + name + u".xdb"; }
    // A fresh empty gallery under the root, as a caller of ReadCatalogue gives it (none for an empty name).
    GalleryNode* Reset(const std::u16string& name, bool boutique = false) {
        for (auto*& g : store.root->dirChildren) SubtreeDeleter()(g);
        store.root->dirChildren.clear();
        return name.empty() ? nullptr : AddGallery(name, boutique);
    }
};

// The file Stone.xdb: one complete class and one stale one, written empty and read back empty.
TEST_F(Catalogue, WritesTheExactBytesOfWholeUtf8ReadsThemBackAndRefusesBrokenFiles) {
    GalleryNode* g = AddGallery(u"Stone");
    GalleryNode *granite = AddClass(g, u"Granite", 3, u"http://h/g"), *marble = AddClass(g, u"Marble", 7, u"http://h/m");
    AddBlock(granite, u"a.dwg", 2048, false);
    AddBlock(granite, u"b&c.dwg", 10, true);
    AddBlock(marble, u"old.dwg", 5, false);
    store.staleClasses[marble->Path()] = 8;
    AddGallery(u"Other");
    WriteCatalogue(store, u"Stone");
    EXPECT_TRUE(ReadBytes(Utf16ToUtf8(FileOf(u"Stone"))) == DataFile("Stone.xdb") &&
                !FileExists(FileOf(u"Other")));  // only the named gallery

    // An empty name writes every gallery, making missing folders and replacing old files.
    RemoveDirectoryTree(rootPath + u"/Stone");
    WriteBytes(Utf16ToUtf8(rootPath + u"/Other/Other.xdb"), "old");
    WriteCatalogue(store, u"");
    EXPECT_EQ(ReadBytes(Utf16ToUtf8(FileOf(u"Stone"))) + ReadBytes(Utf16ToUtf8(FileOf(u"Other"))),
              DataFile("Stone.xdb") + kHead + MakeSeal(u"Other", false) + "\">\r</root>\r");

    const std::u16string granitePart = DumpTree(granite);
    GalleryNode* fresh = Reset(u"Stone");
    ASSERT_TRUE(ReadCatalogue(store, u"Stone"));
    ASSERT_EQ(fresh->dirChildren.size(), 2u);
    EXPECT_EQ(fresh->dirChildren[0]->parent, fresh);
    EXPECT_EQ(DumpChildren(fresh), granitePart + u"Stone|Marble|" + rootPath + u"/Stone/Marble|dir|http://h/m|7|0|-|-\n");

    GalleryStore bare;  // without a root nothing is read or written
    WriteCatalogue(bare, u"");
    EXPECT_FALSE(ReadCatalogue(bare, u"Stone"));

    // Whatever UTF-16 units the values hold (pairs, lone surrogates at the edges), the file is
    // whole UTF-8 and the reader gives the tree back, down to the stale class written empty.
    const std::u16string pair = u"\U0001F4D0";
    const std::u16string loneHigh(1, char16_t(0xD83D)), loneLow(1, char16_t(0xDC00));
    g = AddGallery(u"图库é" + pair, true);
    GalleryNode* a = AddClass(g, u"门窗" + loneHigh, INT32_MIN, u"http://h/" + pair + u"/é");
    AddBlock(a, loneLow + u"a.dwg", INT32_MAX, true);
    AddBlock(a, u"x" + loneHigh, -1, false);
    a->fileChildren.push_back(nullptr);  // a slot a rebuild left empty
    AddBlock(a, u"ü" + loneHigh + loneLow + u"ß", 7, false);
    GalleryNode* stale = AddClass(g, loneLow + u"旧", 5, u"");
    AddBlock(stale, u"gone.dwg", 1, false);
    store.staleClasses[stale->Path()] = 6;
    AddClass(g, u"", 0, u"");
    // Many blocks of one class, to pass any first guess of the file's size.
    GalleryNode* big = AddClass(g, u"大" + pair, 2, u"http://h/大");  // a pair at a value's end
    for (int i = 0; i < 2000; ++i) AddBlock(big, u"块" + Utf8ToUtf16(std::to_string(i)) + pair + u".dwg", i * 1000, i % 3 == 0);
    for (GalleryNode* c : {big, a})
        for (GalleryNode* b : c->fileChildren)
            if (b) b->boutique = true;

    // The layout is Stone.xdb's; here the bytes must be whole UTF-8, lone units as U+FFFD.
    WriteCatalogue(store, g->name);
    const std::string bytes = ReadBytes(Utf16ToUtf8(FileOf(g->name)));
    EXPECT_TRUE(IsValidUtf8(bytes) && bytes.find("\xEF\xBF\xBD") != std::string::npos &&
                bytes.find(Utf16ToUtf8(u"块1999" + pair)) != std::string::npos);

    // Read back into a fresh gallery, into none (made, boutique from the seal), and into a
    // plain one (keeps its own flag, its blocks take the seal's): the same classes each time.
    const std::u16string name = g->name;
    for (GalleryNode* b : stale->fileChildren) SubtreeDeleter()(b);
    stale->fileChildren.clear();
    std::u16string before;
    for (const GalleryNode* c : g->dirChildren) before += c->name.empty() ? u"" : DumpTree(c, 1);
    before = Utf8ToUtf16(Utf16ToUtf8(before));  // lone surrogates come back as U+FFFD
    for (int road = 0; road < 3; ++road) {
        SCOPED_TRACE(road);
        Reset(road == 1 ? u"" : name, road == 0);
        ASSERT_TRUE(ReadCatalogue(store, name));
        ASSERT_EQ(store.root->dirChildren.size(), 1u);
        GalleryNode* read = store.root->dirChildren[0];
        EXPECT_TRUE(read->boutique == (road != 2) && read->OwnerName() == kRootName);
        ASSERT_EQ(read->dirChildren.size(), 3u);  // the nameless class is skipped on reading
        std::u16string after;
        for (const GalleryNode* c : read->dirChildren) after += DumpTree(c, 1);
        EXPECT_EQ(after, before);
    }

    // Broken files leave the tree as it was; incomplete elements are skipped.
    const std::string seal = MakeSeal(u"G", false);
    const std::string body = "<sub n=\"K\" ver=\"3\" u_b=\"http://k\" ><itm fn=\"a.dwg\" sz=\"1\" hi=\"0\" /></sub></root>\r";
    const std::string good = kHead + seal + "\">\r" + body;
    auto withSeal = [&](const std::string& s) { return kHead + s + "\">\r" + body; };
    std::string oneDigit = seal;
    oneDigit[5] = oneDigit[5] == 'A' ? 'B' : 'A';
    // (Seals of broken hex are the seal's own test.)
    const std::pair<const char*, std::string> broken[] = {
        {"one changed seal digit", withSeal(oneDigit)},
        {"empty seal", withSeal("")},
        {"seal of another gallery", withSeal(MakeSeal(u"H", false))},
        {"truncated", good.substr(0, good.size() / 2)},
        {"empty file", ""},
        {"missing root", "\xEF\xBB\xBF<?xml version=\"1.0\"?>\r<top re=\"" + seal + "\"></top>\r"},
    };
    CreateDirectories(rootPath + u"/G");
    for (const auto& [what, bytes] : broken) {
        g = Reset(u"G");
        WriteBytes(Utf16ToUtf8(FileOf(u"G")), bytes);
        EXPECT_TRUE(!ReadCatalogue(store, u"G") && g->dirChildren.empty() && store.root->dirChildren.size() == 1u) << what;
    }
    RemoveFile(FileOf(u"G"));
    EXPECT_FALSE(ReadCatalogue(store, u"G"));

    // The seal alone is checked (in either case); elements that lack a part are skipped.
    std::string lower = seal;
    for (char& ch : lower) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    WriteBytes(Utf16ToUtf8(FileOf(u"G")),
               kHead + lower +
                   "\">\r<sub n=\"\" ver=\"1\" u_b=\"x\" >"
                   "<itm fn=\"lost.dwg\" sz=\"1\" hi=\"0\" /></sub><sub n=\"K\" ver=\"9\" u_b=\"http://k\" >"
                   "<itm fn=\"nohi.dwg\" sz=\"1\" /><itm fn=\"\" sz=\"1\" hi=\"0\" />"
                   "<itm fn=\"nosz.dwg\" sz=\"\" hi=\"0\" /><itm fn=\"ok.dwg\" sz=\"12abc\" hi=\"yes\" /></sub></root>\r");
    g = Reset(u"G");
    ASSERT_TRUE(ReadCatalogue(store, u"G"));
    EXPECT_EQ(RootAsR(DumpTree(g), rootPath),
              u"Orsolen|G|R/G|dir||0|0|-|-\n"
              u"  G|K|R/G/K|dir|http://k|9|0|-|-\n"
              u"    K|ok.dwg|R/G/K/ok.dwg|file|http://k/ok.dwg|0|12|-|-\n");
}

// The store folder's other files: versions, the tip, Show.xml and the move from the previous generation.
using Layout = StoreFixture;

std::string ShowXml(const std::vector<std::string>& names) {
    std::string s = "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<root>\r\n";
    for (const auto& n : names) s += "<item describe=\"d-" + n + "\">" + n + "</item>\r\n";
    return s + "</root>\r\n";
}

// The version file, the tip file and Show.xml: at most 101 named items, each name added once.
// (Where catalogues and blocks lie is read back in the synchronisation's tests.)
TEST_F(Layout, VersionTipShowListAndTheMoveFromThePreviousGeneration) {
    EXPECT_TRUE(ReadGalleryVersion(u"G") == 0 && WriteGalleryVersion(u"G", 7) &&
                IniGetString(rootPath + u"/version.ini", u"version", u"g", u"") == u"7");  // keys ignore case
    // 25 characters of buffer: 24 digits are read, the rest is cut.
    IniWriteString(VersionIniPath(), u"version", u"Long", std::u16string(21, u'0') + u"123" + u"456");
    EXPECT_EQ(ReadGalleryVersion(u"Long"), 123);
    // Read once for many galleries, every key answers as its own read does: case folded
    // (non-ASCII too), the first of a key found twice, later sections of the same name,
    // the buffer's cut, a key missing, and nothing at all before the file exists.
    EXPECT_EQ(GalleryVersionsRead().Of(u"G"), 7);
    WriteBytes(Utf16ToUtf8(VersionIniPath()),
               "[version]\r\nG=7\r\nÄpfel=5\r\ng=9\r\n[other]\r\nx=1\r\n"
               "[VERSION]\r\nLong=000000000000000000000123456\r\nx = 3 \r\n");
    const GalleryVersionsRead versions;
    for (const char16_t* key : {u"G", u"g", u"äpfel", u"ÄPFEL", u"Long", u"x", u"other", u""})
        EXPECT_EQ(versions.Of(key), ReadGalleryVersion(key)) << Utf16ToUtf8(key);
    EXPECT_EQ(versions.Of(u"äpfel") * 100 + versions.Of(u"x"), 503);
    RemoveFile(VersionIniPath());
    EXPECT_EQ(GalleryVersionsRead().Of(u"G") + versions.Of(u"G"), 7) << "read once, at the reading";
    EXPECT_TRUE(ReadOldCollectTip() == u"0" && WriteOldCollectTip(u"1") &&
                IniGetString(rootPath + u"/NewInfo.ini", u"OldCollect", u"TIP", u"") == u"1" && ReadShowList(true).empty());
    std::vector<std::string> names{""};  // empty items don't count
    for (int i = 0; i < 150; ++i) names.push_back("g" + std::to_string(i));
    WriteBytes(Utf16ToUtf8(ShowListPath()), ShowXml(names));
    EXPECT_TRUE(ReadShowList(false).size() == 101u && !DirectoryExists(StoreRoot() + u"/g0"));  // without createFolders nothing is made
    const auto items = ReadShowList(true);
    ASSERT_EQ(items.size(), 101u);
    EXPECT_TRUE(items.back().name == u"g100" && DirectoryExists(StoreRoot() + u"/g100") && !DirectoryExists(StoreRoot() + u"/g101"));
    // (More than 101 listed, a new name is still added: the class manager's route test.)

    RemoveDirectoryTree(StoreRoot());
    ASSERT_TRUE(AddGalleryToShowList(u"石材"));  // makes the folder and the list
    WriteBytes(Utf16ToUtf8(ShowListPath()), ShowXml({"A", "B"}));  // the picker's describe attributes stay
    ASSERT_TRUE(AddGalleryToShowList(u"C"));
    const std::string once = ReadBytes(Utf16ToUtf8(ShowListPath()));
    EXPECT_TRUE(!AddGalleryToShowList(u"A") && !AddGalleryToShowList(u"") && ReadBytes(Utf16ToUtf8(ShowListPath())) == once);
    std::u16string listed;
    for (const ShowItem& i : ReadShowList(false)) listed += i.name + u"(" + i.describe + u") ";
    EXPECT_EQ(listed, u"A(d-A) B(d-B) C() ");

    // The move from the previous generation.
    const std::u16string old = Utf8ToUtf16(home.documentsDir()) + u"/Pellicor", flag = old + u"/version.ini";
    CreateDirectories(old);
    WriteBytes(Utf16ToUtf8(old + u"/Show.xml"), ShowXml({"Old"}));
    // After each move: the list here and the flag.
    auto moved = [&] {
        MoveFromPreviousGeneration();
        return std::make_pair(ReadBytes(Utf16ToUtf8(ShowListPath())), IniGetString(flag, u"BrindleMoved", u"flag", u""));
    };
    using Moved = std::pair<std::string, std::u16string>;
    WriteBytes(Utf16ToUtf8(ShowListPath()), ShowXml({"New"}));  // a list here: the old folder is not looked at
    EXPECT_EQ(moved(), Moved(ShowXml({"New"}), u""));
    RemoveFile(ShowListPath());  // none here, flag unset: copied, flag set
    EXPECT_EQ(moved(), Moved(ShowXml({"Old"}), u"1"));
    RemoveFile(ShowListPath());  // flag set: nothing copied
    EXPECT_EQ(moved(), Moved("", u"1"));
    // No old list: the flag is set all the same.
    RemoveFile(flag);
    RemoveFile(old + u"/Show.xml");
    EXPECT_EQ(moved(), Moved("", u"1"));
    // No store folder: the copy makes it.
    RemoveDirectoryTree(StoreRoot());
    RemoveFile(flag);
    WriteBytes(Utf16ToUtf8(old + u"/Show.xml"), ShowXml({"Old"}));
    EXPECT_EQ(moved(), Moved(ShowXml({"Old"}), u"1"));
    EXPECT_TRUE(FileExists(old + u"/Show.xml"));  // the old file stays
}

}  // namespace
}  // namespace marrowfin::test
