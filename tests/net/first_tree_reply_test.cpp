// The first tree built from a reply given byte for byte by a scripted stack:
// which elements become nodes, which gallery each class lands in when names
// lead one another, the catalogues written, and a second run on a thread.
// (The catalogues' bytes and the fall-back on them are the store's and the live tests'.)

#include <map>
#include <tuple>

#include "net_world.h"
#include "support/tree_dump.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

// A fresh home whose every request is answered by `stack`.
class FirstTreeReply : public ::testing::Test {
protected:
    FirstTreeReply() {
        for (int32_t n = 0; n < StackCount; ++n) InstallHttpStack(n, &stack);
    }
    ~FirstTreeReply() override { RestoreDefaultHttpStacks(); }
    TempHome home;
    test::ScriptedStack stack;
    TestStore store;
};

const char kFirstReply[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root dv=\"0\">\n"
    // A gallery whose name begins with the names of two earlier galleries,
    // answered first although it is listed last but one.
    "<gallery gn=\"石材10\" gv=\"1\"><item cs=\"甲\" b_u=\"http://h/10/甲\" ver=\"4\">"
    "<dwg fn=\"a&amp;b.dwg\" size=\"100\" hi=\"1\"/><note fn=\"x.dwg\" size=\"1\" hi=\"0\"/>"
    "<dwg fn=\"c.dwg\" size=\"20\"/></item></gallery>\n"
    // Not in Show.xml: skipped.
    "<gallery gn=\"未列\" gv=\"0\"><item cs=\"乙\" b_u=\"u\" ver=\"1\"><dwg fn=\"z.dwg\" size=\"1\" hi=\"0\"/>"
    "</item></gallery>\n"
    "<gallery gn=\"石\" gv=\"0\"><item cs=\"材10\" b_u=\"http://h/s\" ver=\"2\">"
    "<dwg fn=\"d.dwg\" size=\"5\" hi=\"0\"/><dwg fn=\"\" size=\"5\" hi=\"0\"/><dwg fn=\"e.dwg\" size=\"\" hi=\"0\"/>"
    "<dwg fn=\"f.dwg\" size=\"6\" hi=\"0\"/></item>"
    "<item cs=\"\" b_u=\"x\" ver=\"1\"><dwg fn=\"lost.dwg\" size=\"1\" hi=\"0\"/></item>"
    "<item cs=\"无\" ver=\"3\"><dwg fn=\"lost.dwg\" size=\"1\" hi=\"0\"/></item></gallery>\n"
    "<gallery gn=\"石材\" gv=\"0\"><item cs=\"甲\" b_u=\"http://h/sc\" ver=\"9\"></item></gallery>\n"
    "</root>\n";

}  // namespace

// The first run: each listed gallery gets its own elements and its catalogue. A second run on its own thread builds
// beside the owner and rebuilds the galleries in place once adopted.
TEST_F(FirstTreeReply, FirstRunThenASecondRunOnItsOwnThread) {
    stack.reply = kFirstReply;
    for (const char16_t* name : {u"石", u"石材", u"石材10", u"空"}) ASSERT_TRUE(AddGalleryToShowList(name));
    test::BuildAndAdopt(store);
    ASSERT_EQ(std::make_pair(store.syncBusy.load(), stack.urls.size()), std::make_pair(0, size_t{1}));
    EXPECT_TRUE(stack.urls[0].ends_with("/gallery/g_all_s?gallery_name=" + EscapeRequestUrl(u"石,石材,石材10,空")));

    // The galleries of Show.xml in its order, nothing else, each with its own elements.
    GalleryNode* const root = store.root;
    ASSERT_NE(root, nullptr);
    const std::u16string r = root->Path();
    EXPECT_EQ(RootAsR(DumpChildren(root), r),
              u"Orsolen|石|R/石|dir||0|0|-|-\n"
              u"  石|材10|R/石/材10|dir|http://h/s|2|0|-|-\n"
              u"    材10|d.dwg|R/石/材10/d.dwg|file|http://h/s/d.dwg|0|5|-|-\n"
              u"    材10|f.dwg|R/石/材10/f.dwg|file|http://h/s/f.dwg|0|6|-|-\n"
              u"Orsolen|石材|R/石材|dir||0|0|-|-\n"
              u"  石材|甲|R/石材/甲|dir|http://h/sc|9|0|-|-\n"
              u"Orsolen|石材10|R/石材10|dir||0|0|-|b\n"
              u"  石材10|甲|R/石材10/甲|dir|http://h/10/甲|4|0|-|-\n"
              u"    甲|a&b.dwg|R/石材10/甲/a&b.dwg|file|http://h/10/甲/a&b.dwg|0|100|h|b\n"
              u"    甲|c.dwg|R/石材10/甲/c.dwg|file|http://h/10/甲/c.dwg|0|20|-|b\n"
              u"Orsolen|空|R/空|dir||0|0|-|-\n");
    // Versions and catalogues for the three answered galleries only (the fetch ticks: the hour rule's live test).
    EXPECT_TRUE(store.galleryVersions == (std::map<std::u16string, int32_t>{{u"石", 2}, {u"石材", 9}, {u"石材10", 4}}) &&
                ReadGalleryVersion(u"石材10") == 4);
    EXPECT_TRUE(store.staleClasses.empty() && !FileExists(r + u"/空/空.xdb") && DirectoryExists(r + u"/空") &&
                !DirectoryExists(r + u"/未列"));

    // Downloaded blocks in two classes; only the class whose version rose loses them.
    const std::u16string risen = r + u"/石/材10/d.dwg", kept = r + u"/石材10/甲/c.dwg";
    for (const std::u16string& file : {risen, kept})
        ASSERT_TRUE(CreateDirectories(file.substr(0, file.rfind(u'/'))) && WriteFileAtomic(file, "dwg"));
    std::string second = kFirstReply;
    second.replace(second.find("ver=\"2\""), 7, "ver=\"3\"");
    second.replace(second.find("<dwg fn=\"f.dwg\""), 0, "<dwg fn=\"g.dwg\" size=\"7\" hi=\"1\"/>");
    stack.reply = second;

    // The run builds beside the owner, which keeps reading its own tree: that
    // tree changes only when the owner adopts the new one.
    const std::u16string before = test::DumpChildren(root);
    const uint64_t epoch = store.treeEpoch;
    std::thread sync([&] { BuildFirstTree(store); });
    while (store.syncBusy.load() != 0 || !TreeUpdatesWaiting(store)) EXPECT_EQ(root->dirChildren.at(0)->dirChildren[0]->version, 2);
    sync.join();
    EXPECT_EQ(std::make_pair(test::DumpChildren(root), store.treeEpoch), std::make_pair(before, epoch));
    ASSERT_EQ(AdoptTreeUpdates(store).size(), 1u);
    EXPECT_GT(store.treeEpoch, epoch);  // handles into the old galleries are void

    EXPECT_EQ(store.root, root);  // the root survives; the gallery is rebuilt, not appended to
    ASSERT_EQ(root->dirChildren.size(), 4u);
    EXPECT_EQ(RootAsR(DumpTree(root->dirChildren.at(0)), r),
              u"Orsolen|石|R/石|dir||0|0|-|-\n"
              u"  石|材10|R/石/材10|dir|http://h/s|3|0|-|-\n"
              u"    材10|d.dwg|R/石/材10/d.dwg|file|http://h/s/d.dwg|0|5|-|-\n"
              u"    材10|g.dwg|R/石/材10/g.dwg|file|http://h/s/g.dwg|0|7|h|-\n"
              u"    材10|f.dwg|R/石/材10/f.dwg|file|http://h/s/f.dwg|0|6|-|-\n");
    EXPECT_TRUE(!FileExists(risen) && !DirectoryExists(r + u"/石/材10") && FileExists(kept) && ReadGalleryVersion(u"石") == 3);
    // One request per run.
    EXPECT_TRUE(test::ReadBytes(Utf16ToUtf8(r + u"/石/石.xdb")).find("<sub n=\"材10\" ver=\"3\"") != std::string::npos &&
                stack.urls.size() == 2u);
}

// A reply that names a gallery twice: the second element compares against the catalogue
// the first one has just written, not the one on disk before the run.
TEST_F(FirstTreeReply, AGalleryNamedTwiceComparesWithItsNewCatalogue) {
    ASSERT_TRUE(AddGalleryToShowList(u"G"));
    auto item = [](const char* cls, const char* ver, const char* fn) {
        return std::string("<item cs=\"") + cls + "\" b_u=\"http://h/" + cls + "\" ver=\"" + ver + "\"><dwg fn=\"" + fn +
               "\" size=\"1\" hi=\"0\"/></item>";
    };
    auto gallery = [](const std::string& items) { return "<gallery gn=\"G\" gv=\"0\">" + items + "</gallery>"; };
    // The reply; then whether A/x.dwg and B/y.dwg (downloaded after each run) are still on
    // disk, the classes in the tree and the gallery's highest version in version.ini.
    const std::tuple<std::string, bool, bool, size_t, int32_t> runs[] = {
        {gallery(item("A", "1", "x.dwg") + item("B", "1", "y.dwg")), false, false, 2, 1},
        // A unchanged, the catalogue then holds A only: B at 2 is new against it, its folder stays.
        {gallery(item("A", "1", "x.dwg")) + gallery(item("B", "2", "y.dwg")), true, true, 2, 2},
        {gallery(item("B", "3", "y.dwg")), true, false, 1, 3},  // B risen against that catalogue
        // The second element starts from the 5 the first one saved, and leaves it.
        {gallery(item("A", "5", "x.dwg")) + gallery(item("B", "4", "y.dwg")), true, true, 2, 5},
    };
    const std::u16string g = Utf8ToUtf16(home.documentsDir()) + u"/Orsolen/G";
    for (const auto& [reply, keepsA, keepsB, classes, version] : runs) {
        stack.reply = "<root dv=\"0\">" + reply + "</root>";
        test::BuildAndAdopt(store);
        EXPECT_EQ(FileExists(g + u"/A/x.dwg"), keepsA) << reply;
        EXPECT_EQ(FileExists(g + u"/B/y.dwg"), keepsB) << reply;
        EXPECT_EQ(ReadGalleryVersion(u"G"), version) << reply;
        ASSERT_EQ(store.root->dirChildren.size(), 1u);
        EXPECT_EQ(store.root->dirChildren[0]->dirChildren.size(), classes) << reply;
        for (const char16_t* file : {u"/A/x.dwg", u"/B/y.dwg"})
            if (!FileExists(g + file)) {
                ASSERT_TRUE(CreateDirectories(g + std::u16string(file).substr(0, 2)));
                ASSERT_TRUE(WriteFileAtomic(g + file, "dwg"));
            }
    }
    EXPECT_NE(test::ReadBytes(Utf16ToUtf8(g + u"/G.xdb")).find("<sub n=\"B\" ver=\"4\""), std::string::npos);
}
