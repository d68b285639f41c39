#include <gtest/gtest.h>

#include <cstdint>

#include "store/catalogue.h"
#include "store/seal.h"
#include "store_fixture.h"

namespace marrowfin::test {
namespace {

class Catalogue : public StoreFixture {
protected:
    // The gallery of the expected file Stone.xdb: one complete class and one stale one.
    GalleryNode* BuildStone() {
        GalleryNode* g = AddGallery(u"Stone");
        GalleryNode* granite = AddClass(g, u"Granite", 3, u"http://h/g");
        AddBlock(granite, u"a.dwg", 2048, false);
        AddBlock(granite, u"b&c.dwg", 10, true);
        GalleryNode* marble = AddClass(g, u"Marble", 7, u"http://h/m");
        AddBlock(marble, u"old.dwg", 5, false);
        store.staleClasses[marble->Path()] = 8;
        return g;
    }
    std::u16string FileOf(const std::u16string& name) const { return rootPath + u"/" + name + u"/" + name + u".xdb"; }
    // A fresh empty gallery under the root, as a caller of ReadCatalogue gives it.
    GalleryNode* Reset(const std::u16string& name, bool boutique = false) {
        ClearGalleries();
        return AddGallery(name, boutique);
    }
    void ClearGalleries() {
        for (auto*& g : store.root->dirChildren) SubtreeDeleter()(g);
        store.root->dirChildren.clear();
    }
    // One line per node, for comparing whole trees.
    static std::u16string Dump(const GalleryNode* n, int depth = 0) {
        std::u16string s(depth * 2, u' ');
        s += n->name + u"|" + n->Path() + u"|" + DownloadUrl(*n) + u"|" + W(std::to_string(n->version)) + u"|" +
             W(std::to_string(n->size)) + (n->hidden ? u"|h" : u"|-") + (n->boutique ? u"|b" : u"|-") + u"\n";
        for (auto* c : n->fileChildren) s += Dump(c, depth + 1);
        for (auto* c : n->dirChildren) s += Dump(c, depth + 1);
        return s;
    }
};

TEST_F(Catalogue, WritesTheExactBytes) {
    BuildStone();
    AddGallery(u"Other");
    WriteCatalogue(store, u"Stone");
    EXPECT_EQ(ReadBytes(U8(FileOf(u"Stone"))), DataFile("Stone.xdb"));
    EXPECT_FALSE(FileExists(FileOf(u"Other")));  // only the named gallery

    // An empty name writes every gallery, creating missing folders; an old file is replaced.
    RemoveDirectoryTree(rootPath + u"/Stone");
    WriteBytes(U8(rootPath + u"/Other/Other.xdb"), "old");
    WriteCatalogue(store, u"");
    EXPECT_EQ(ReadBytes(U8(FileOf(u"Stone"))), DataFile("Stone.xdb"));
    EXPECT_EQ(ReadBytes(U8(FileOf(u"Other"))), "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root re=\"" +
                                                  MakeSeal(u"Other", false) + "\">\r</root>\r");

    // Without a root nothing is written.
    GalleryStore bare;
    RemoveFile(FileOf(u"Stone"));
    WriteCatalogue(bare, u"");
    EXPECT_FALSE(FileExists(FileOf(u"Stone")));
}

TEST_F(Catalogue, ReadsBackWhatWasWritten) {
    // A Chinese boutique gallery with hidden blocks round-trips through the file.
    GalleryNode* g = AddGallery(u"建筑图库", true);
    GalleryNode* c1 = AddClass(g, u"门窗", 12, u"http://h/门");
    AddBlock(c1, u"木门 1.dwg", 3000, false)->boutique = true;
    AddBlock(c1, u"窗.dwg", -1, true)->boutique = true;
    AddClass(g, u"空", 0, u"");
    WriteCatalogue(store, u"建筑图库");
    const std::u16string before = Dump(g);

    GalleryNode* fresh = Reset(u"建筑图库", true);
    ASSERT_TRUE(ReadCatalogue(store, u"建筑图库"));
    ASSERT_EQ(store.root->dirChildren.size(), 1u);
    EXPECT_EQ(Dump(fresh), before);
    EXPECT_EQ(fresh->dirChildren[0]->parent, fresh);
    EXPECT_EQ(fresh->dirChildren[0]->fileChildren[0]->OwnerName(), u"门窗");

    // With no gallery in the tree the reader makes one, boutique from the seal.
    ClearGalleries();
    ASSERT_TRUE(ReadCatalogue(store, u"建筑图库"));
    ASSERT_EQ(store.root->dirChildren.size(), 1u);
    GalleryNode* made = store.root->dirChildren[0];
    EXPECT_EQ(made->name, u"建筑图库");
    EXPECT_EQ(made->OwnerName(), kRootName);
    EXPECT_TRUE(made->boutique);
    EXPECT_EQ(Dump(made), before);

    // An existing gallery keeps its own flag; its blocks take the seal's.
    GalleryNode* plain = Reset(u"建筑图库", false);
    ASSERT_TRUE(ReadCatalogue(store, u"建筑图库"));
    EXPECT_FALSE(plain->boutique);
    EXPECT_TRUE(plain->dirChildren[0]->fileChildren[0]->boutique);
}

TEST_F(Catalogue, StaleClassIsWrittenEmptyAndReadEmpty) {
    BuildStone();
    WriteCatalogue(store, u"Stone");
    GalleryNode* g = Reset(u"Stone");
    ASSERT_TRUE(ReadCatalogue(store, u"Stone"));
    ASSERT_EQ(g->dirChildren.size(), 2u);
    GalleryNode* marble = g->dirChildren[1];
    EXPECT_EQ(marble->version, 7);
    EXPECT_EQ(marble->remoteBase, u"http://h/m");
    EXPECT_TRUE(marble->fileChildren.empty());
    ASSERT_EQ(g->dirChildren[0]->fileChildren.size(), 2u);
    EXPECT_EQ(DownloadUrl(*g->dirChildren[0]->fileChildren[1]), u"http://h/g/b&c.dwg");
}

TEST_F(Catalogue, BrokenFilesLeaveTheTreeAsItWas) {
    BuildStone();
    WriteCatalogue(store, u"Stone");
    const std::string good = ReadBytes(U8(FileOf(u"Stone")));
    const size_t seal = good.find("re=\"") + 4;
    const std::string sealText = good.substr(seal, 32);

    auto withSeal = [&](const std::string& s) { return good.substr(0, seal) + s + good.substr(seal + 32); };
    std::string oneDigit = sealText;
    oneDigit[5] = oneDigit[5] == 'A' ? 'B' : 'A';
    std::string nonHex = sealText;
    nonHex[31] = 'Z';
    std::string lower = sealText;
    for (char& ch : lower) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));

    struct Case {
        const char* what;
        std::string bytes;
    };
    const Case broken[] = {
        {"one changed seal digit", withSeal(oneDigit)},
        {"odd length", withSeal(sealText.substr(0, 31))},
        {"not whole blocks", withSeal(sealText.substr(0, 30))},
        {"non-hex digit", withSeal(nonHex)},
        {"empty seal", withSeal("")},
        {"seal of another gallery", withSeal(MakeSeal(u"Ston", false))},
        {"truncated", good.substr(0, good.size() / 2)},
        {"missing root", "\xEF\xBB\xBF<?xml version=\"1.0\"?>\r<top re=\"" + sealText + "\"></top>\r"},
        {"empty file", ""},
    };
    for (const Case& c : broken) {
        GalleryNode* g = Reset(u"Stone");
        const std::u16string before = Dump(store.root);
        WriteBytes(U8(FileOf(u"Stone")), c.bytes);
        EXPECT_FALSE(ReadCatalogue(store, u"Stone")) << c.what;
        EXPECT_EQ(Dump(store.root), before) << c.what;
        EXPECT_TRUE(g->dirChildren.empty()) << c.what;
    }

    // Missing file: nothing either.
    RemoveFile(FileOf(u"Stone"));
    Reset(u"Stone");
    EXPECT_FALSE(ReadCatalogue(store, u"Stone"));

    // The seal alone is checked: a lower-case seal, a changed ver or fn still read.
    std::string edited = withSeal(lower);
    edited.replace(edited.find("ver=\"3\""), 7, "ver=\"9\"");
    edited.replace(edited.find("fn=\"a.dwg\""), 10, "fn=\"q.dwg\"");
    WriteBytes(U8(FileOf(u"Stone")), edited);
    GalleryNode* g = Reset(u"Stone");
    ASSERT_TRUE(ReadCatalogue(store, u"Stone"));
    ASSERT_FALSE(g->dirChildren.empty());
    EXPECT_EQ(g->dirChildren[0]->version, 9);
    EXPECT_EQ(g->dirChildren[0]->fileChildren[0]->name, u"q.dwg");
}

TEST_F(Catalogue, SkipsIncompleteElements) {
    const std::string head =
        "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root re=\"" + MakeSeal(u"G", false) + "\">\r";
    CreateDirectories(rootPath + u"/G");
    WriteBytes(U8(FileOf(u"G")),
               head + "<sub n=\"\" ver=\"1\" u_b=\"x\" ><itm fn=\"lost.dwg\" sz=\"1\" hi=\"0\" /></sub>"
                      "<sub n=\"K\" ver=\"2\" u_b=\"http://k\" >"
                      "<itm fn=\"nohi.dwg\" sz=\"1\" />"
                      "<itm fn=\"\" sz=\"1\" hi=\"0\" />"
                      "<itm fn=\"nosz.dwg\" sz=\"\" hi=\"0\" />"
                      "<itm fn=\"ok.dwg\" sz=\"12abc\" hi=\"yes\" />"
                      "</sub></root>\r");
    GalleryNode* g = Reset(u"G");
    ASSERT_TRUE(ReadCatalogue(store, u"G"));
    ASSERT_EQ(g->dirChildren.size(), 1u);  // the nameless sub goes with its items
    GalleryNode* k = g->dirChildren[0];
    EXPECT_EQ(k->name, u"K");
    EXPECT_EQ(k->Path(), rootPath + u"/G/K");
    ASSERT_EQ(k->fileChildren.size(), 1u);
    GalleryNode* ok = k->fileChildren[0];
    EXPECT_EQ(ok->Path(), rootPath + u"/G/K/ok.dwg");
    EXPECT_EQ(ok->size, 12);
    EXPECT_FALSE(ok->hidden);  // only "1" hides
    EXPECT_EQ(DownloadUrl(*ok), u"http://k/ok.dwg");

    // Without a root node the reader does nothing.
    GalleryStore bare;
    EXPECT_FALSE(ReadCatalogue(bare, u"G"));
}

// The file is the UTF-8 of one composed text. Values with every kind of
// UTF-16 unit (ASCII, two- and three-byte letters, surrogate pairs and lone
// surrogates at the edges of a value) must come out as that conversion gives
// them, whatever way the bytes are put together.
TEST_F(Catalogue, BytesAreTheUtf8OfTheWholeText) {
    const std::u16string pair = u"\U0001F4D0";         // a pair: four bytes
    const std::u16string loneHigh(1, char16_t(0xD83D));  // becomes EF BF BD
    const std::u16string loneLow(1, char16_t(0xDC00));
    GalleryNode* g = AddGallery(u"图库é" + pair, true);
    GalleryNode* a = AddClass(g, u"门窗" + loneHigh, INT32_MIN, u"http://h/" + pair + u"/é");
    AddBlock(a, loneLow + u"a.dwg", INT32_MAX, true);
    AddBlock(a, u"x" + loneHigh, -1, false);
    AddBlock(a, pair + pair + u".dwg", 0, false);
    a->fileChildren.push_back(nullptr);  // a slot a rebuild left empty
    AddBlock(a, u"ü" + loneHigh + loneLow + u"ß", 7, false);
    GalleryNode* stale = AddClass(g, loneLow + u"旧", 5, u"");
    AddBlock(stale, u"gone.dwg", 1, false);
    store.staleClasses[stale->Path()] = 6;
    AddClass(g, u"", 0, u"");
    // Many blocks of one class, to pass any first guess of the file's size.
    GalleryNode* big = AddClass(g, u"大", 2, u"http://h/大");
    for (int i = 0; i < 2000; ++i) AddBlock(big, u"块" + W(std::to_string(i)) + pair + u".dwg", i * 1000, i % 3 == 0);

    std::u16string text = u"\uFEFF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root re=\"" +
                          W(MakeSeal(g->name, true)) + u"\">\r";
    for (const GalleryNode* c : g->dirChildren) {
        text += u"<sub n=\"" + c->name + u"\" ver=\"" + W(std::to_string(c->version)) + u"\" u_b=\"" + c->remoteBase +
                u"\" >";
        if (!store.staleClasses.count(c->Path()))
            for (const GalleryNode* b : c->fileChildren)
                if (b)
                    text += u"<itm fn=\"" + b->name + u"\" sz=\"" + W(std::to_string(b->size)) + u"\" hi=\"" +
                            (b->hidden ? u"1" : u"0") + u"\" />";
        text += u"</sub>";
    }
    text += u"</root>\r";
    const std::string expected = U8(text);
    ASSERT_NE(expected.find("\xEF\xBF\xBD"), std::string::npos);  // the lone units were in there
    EXPECT_EQ(ComposeCatalogue(store, *g), expected);

    WriteCatalogue(store, g->name);
    EXPECT_EQ(ReadBytes(U8(FileOf(g->name))), expected);
    EXPECT_EQ(ReadBytes(U8(FileOf(g->name))).find("gone.dwg"), std::string::npos);

    // What the reader gets back: the big class whole and in order, the
    // surrogate pairs intact.
    const std::u16string name = g->name;
    GalleryNode* fresh = Reset(name, true);
    ASSERT_TRUE(ReadCatalogue(store, name));
    ASSERT_EQ(fresh->dirChildren.size(), 3u);  // the nameless class is skipped on reading
    const GalleryNode* readBig = fresh->dirChildren[2];
    ASSERT_EQ(readBig->fileChildren.size(), 2000u);
    EXPECT_EQ(readBig->fileChildren[1999]->name, u"块1999" + pair + u".dwg");
    EXPECT_EQ(readBig->fileChildren[1999]->Path(), rootPath + u"/" + name + u"/大/块1999" + pair + u".dwg");
    EXPECT_EQ(readBig->fileChildren[1999]->size, 1999000);
    EXPECT_TRUE(readBig->fileChildren[1998]->hidden);
    EXPECT_EQ(DownloadUrl(*readBig->fileChildren[3]), u"http://h/大/块3" + pair + u".dwg");
    EXPECT_EQ(fresh->dirChildren[0]->version, INT32_MIN);
    EXPECT_EQ(fresh->dirChildren[0]->fileChildren[0]->size, INT32_MAX);
    EXPECT_EQ(fresh->dirChildren[0]->fileChildren.size(), 4u);
}

}  // namespace
}  // namespace marrowfin::test
