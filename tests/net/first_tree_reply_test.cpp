// The first tree built from a reply given byte for byte by a scripted stack:
// which elements become nodes, which gallery each class lands in when names
// lead one another, the catalogues written, and a second run on a thread.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "net/gallery_sync.h"
#include "store/tree_update.h"
#include "net/http_stack.h"
#include "net/http_transport.h"
#include "platform/files.h"
#include "platform/text.h"
#include "store/catalogue.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/show_list.h"
#include "store/store_ini.h"
#include "store/store_paths.h"
#include "support/temp_home.h"
#include "support/test_paths.h"
#include "test_store.h"

using namespace marrowfin;
using marrowfin::test::TempHome;
using marrowfin::test::TestStore;

namespace {

// Answers every form post with the scripted reply and keeps the URLs asked for.
class ReplyStack : public HttpStack {
public:
    std::string reply;
    std::vector<std::string> urls;
    bool PostForm(const std::string& url, const std::string&, std::string& response) override {
        urls.push_back(url);
        response = reply;
        return true;
    }
    bool DownloadFile(const std::string&, const std::u16string&, WindowHandle, uint16_t) override { return false; }
    bool UploadFile(const std::string&, const std::u16string&, const std::u16string&, std::string&,
                    WindowHandle) override {
        return false;
    }
};

// A fresh home whose every request is answered by `stack`.
class FirstTreeReply : public ::testing::Test {
protected:
    FirstTreeReply() {
        for (int32_t n = 0; n < StackCount; ++n) InstallHttpStack(n, &stack);
    }
    ~FirstTreeReply() override { RestoreDefaultHttpStacks(); }
    TempHome home;
    ReplyStack stack;
    TestStore store;
};

// One line per node, for comparing whole trees.
std::u16string Dump(const GalleryNode* n, int depth = 0) {
    std::u16string s(static_cast<size_t>(depth) * 2, u' ');
    s += std::u16string(n->OwnerName()) + u"|" + n->name + u"|" + n->Path() + u"|" + (IsFile(*n) ? kKindFile : kKindDir) +
         u"|" + DownloadUrl(*n) + u"|" +
         W(std::to_string(n->version)) + u"|" + W(std::to_string(n->size)) + (n->hidden ? u"|h" : u"|-") +
         (n->boutique ? u"|b" : u"|-") + u"\n";
    for (auto* c : n->fileChildren) s += Dump(c, depth + 1);
    for (auto* c : n->dirChildren) s += Dump(c, depth + 1);
    return s;
}

GalleryNode* Child(GalleryNode* node, size_t index) {
    return index < node->dirChildren.size() ? node->dirChildren[index] : nullptr;
}

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

TEST_F(FirstTreeReply, EachGalleryGetsItsOwnElementsAndItsCatalogue) {
    stack.reply = kFirstReply;
    for (const char16_t* name : {u"石", u"石材", u"石材10", u"空"}) ASSERT_TRUE(AddGalleryToShowList(name));

    BuildFirstTree(store);
    AdoptTreeUpdates(store);
    EXPECT_EQ(store.syncBusy.load(), 0);
    ASSERT_EQ(stack.urls.size(), 1u);
    const std::string query = "/gallery/g_all_s?gallery_name=" + EscapeRequestUrl(u"石,石材,石材10,空");
    EXPECT_EQ(stack.urls[0].substr(stack.urls[0].size() - query.size()), query);

    GalleryNode* root = store.root;
    ASSERT_NE(root, nullptr);
    const std::u16string r = root->Path();
    ASSERT_EQ(root->dirChildren.size(), 4u);  // the galleries of Show.xml in its order, nothing else
    GalleryNode* stone = Child(root, 0);
    GalleryNode* material = Child(root, 1);
    GalleryNode* ten = Child(root, 2);
    GalleryNode* empty = Child(root, 3);
    EXPECT_EQ(stone->name, u"石");
    EXPECT_EQ(material->name, u"石材");
    EXPECT_EQ(ten->name, u"石材10");
    EXPECT_EQ(empty->name, u"空");

    // The whole tree below the galleries, field by field.
    const std::u16string expected =
        u"Orsolen|石|" + r + u"/石|dir||0|0|-|-\n"
        u"  石|材10|" + r + u"/石/材10|dir|http://h/s|2|0|-|-\n"
        u"    材10|d.dwg|" + r + u"/石/材10/d.dwg|file|http://h/s/d.dwg|0|5|-|-\n"
        u"    材10|f.dwg|" + r + u"/石/材10/f.dwg|file|http://h/s/f.dwg|0|6|-|-\n";
    EXPECT_EQ(Dump(stone), expected);
    EXPECT_EQ(Dump(material), u"Orsolen|石材|" + r + u"/石材|dir||0|0|-|-\n"
                              u"  石材|甲|" + r + u"/石材/甲|dir|http://h/sc|9|0|-|-\n");
    EXPECT_EQ(Dump(ten), u"Orsolen|石材10|" + r + u"/石材10|dir||0|0|-|b\n"
                         u"  石材10|甲|" + r + u"/石材10/甲|dir|http://h/10/甲|4|0|-|-\n"
                         u"    甲|a&b.dwg|" + r + u"/石材10/甲/a&b.dwg|file|http://h/10/甲/a&b.dwg|0|100|h|b\n"
                         u"    甲|c.dwg|" + r + u"/石材10/甲/c.dwg|file|http://h/10/甲/c.dwg|0|20|-|b\n");
    EXPECT_TRUE(empty->dirChildren.empty());
    for (GalleryNode* g : {stone, material, ten}) EXPECT_GT(g->refreshTick, 0u) << U8(g->name);

    // Versions, ticks and catalogues for the three answered galleries only.
    EXPECT_EQ(store.galleryVersions.size(), 3u);
    EXPECT_EQ(store.galleryVersions[u"石材"], 9);
    EXPECT_EQ(ReadGalleryVersion(u"石材10"), 4);
    EXPECT_EQ(ReadGalleryVersion(u"石"), 2);
    EXPECT_EQ(store.galleryFetchTicks.size(), 3u);
    EXPECT_EQ(store.galleryFetchTicks.count(u"空"), 0u);
    EXPECT_TRUE(store.staleClasses.empty());
    EXPECT_FALSE(FileExists(r + u"/空/空.xdb"));
    EXPECT_TRUE(DirectoryExists(r + u"/空"));
    EXPECT_FALSE(DirectoryExists(r + u"/未列"));
    for (GalleryNode* g : {stone, material, ten})
        EXPECT_EQ(test::ReadBytes(U8(g->Path() + u"/" + g->name + u".xdb")), ComposeCatalogue(store, *g)) << U8(g->name);
    EXPECT_NE(test::ReadBytes(U8(r + u"/石材10/石材10.xdb")).find("<itm fn=\"a&b.dwg\" sz=\"100\" hi=\"1\" />"),
              std::string::npos);

    // The catalogues alone rebuild the same galleries when the service is gone.
    stack.reply = "";
    TestStore offline;
    BuildFirstTree(offline);
    AdoptTreeUpdates(offline);
    ASSERT_NE(offline.root, nullptr);
    ASSERT_EQ(offline.root->dirChildren.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        GalleryNode* read = Child(offline.root, i);
        GalleryNode* built = Child(root, i);
        ASSERT_EQ(read->dirChildren.size(), built->dirChildren.size()) << U8(built->name);
        // Blocks read from a catalogue take the gallery's flag from its seal.
        for (size_t c = 0; c < built->dirChildren.size(); ++c)
            EXPECT_EQ(Dump(Child(read, c)), Dump(Child(built, c))) << U8(built->name);
    }
}

TEST_F(FirstTreeReply, ASecondRunOnItsOwnThreadRebuildsInPlace) {
    stack.reply = kFirstReply;
    for (const char16_t* name : {u"石", u"石材", u"石材10"}) ASSERT_TRUE(AddGalleryToShowList(name));
    BuildFirstTree(store);
    AdoptTreeUpdates(store);
    ASSERT_NE(store.root, nullptr);
    GalleryNode* const root = store.root;
    const std::u16string r = root->Path();

    // Downloaded blocks in two classes; only the class whose version rose loses them.
    const std::u16string risen = r + u"/石/材10/d.dwg";
    const std::u16string kept = r + u"/石材10/甲/c.dwg";
    ASSERT_TRUE(CreateDirectories(r + u"/石/材10"));
    ASSERT_TRUE(CreateDirectories(r + u"/石材10/甲"));
    ASSERT_TRUE(WriteFileAtomic(risen, "dwg"));
    ASSERT_TRUE(WriteFileAtomic(kept, "dwg"));
    std::string second = kFirstReply;
    second.replace(second.find("ver=\"2\""), 7, "ver=\"3\"");
    second.replace(second.find("<dwg fn=\"f.dwg\""), 0, "<dwg fn=\"g.dwg\" size=\"7\" hi=\"1\"/>");
    stack.reply = second;

    // The run builds beside the owner, which keeps reading its own tree: that
    // tree changes only when the owner adopts the new one.
    GalleryNode* const oldStone = Child(root, 0);
    const uint64_t epoch = store.treeEpoch;
    std::thread sync([&] { BuildFirstTree(store); });
    while (store.syncBusy.load() != 0 || !TreeUpdatesWaiting(store))
        EXPECT_EQ(Child(root, 0)->dirChildren[0]->version, 2);
    sync.join();
    EXPECT_EQ(Child(root, 0), oldStone);
    EXPECT_EQ(store.treeEpoch, epoch);
    ASSERT_EQ(AdoptTreeUpdates(store).size(), 1u);
    EXPECT_GT(store.treeEpoch, epoch);  // handles into the old galleries are void

    EXPECT_EQ(store.root, root);  // the root survives
    ASSERT_EQ(root->dirChildren.size(), 3u);
    GalleryNode* stone = Child(root, 0);
    ASSERT_EQ(stone->dirChildren.size(), 1u);  // rebuilt, not appended to
    GalleryNode* cls = stone->dirChildren[0];
    EXPECT_EQ(cls->version, 3);
    ASSERT_EQ(cls->fileChildren.size(), 3u);
    EXPECT_EQ(cls->fileChildren[1]->name, u"g.dwg");
    EXPECT_TRUE(cls->fileChildren[1]->hidden);
    EXPECT_FALSE(FileExists(risen));
    EXPECT_FALSE(DirectoryExists(r + u"/石/材10"));
    EXPECT_TRUE(FileExists(kept));
    EXPECT_EQ(ReadGalleryVersion(u"石"), 3);
    EXPECT_NE(test::ReadBytes(U8(r + u"/石/石.xdb")).find("<sub n=\"材10\" ver=\"3\""), std::string::npos);
    EXPECT_EQ(stack.urls.size(), 2u);
}

// A reply that names a gallery twice: the second element compares against
// the catalogue the first one has just written, not the one on disk before
// the run, whatever was read while the request was on the wire.
TEST_F(FirstTreeReply, AGalleryNamedTwiceComparesWithItsNewCatalogue) {
    ASSERT_TRUE(AddGalleryToShowList(u"G"));
    stack.reply =
        "<root dv=\"0\"><gallery gn=\"G\" gv=\"0\">"
        "<item cs=\"A\" b_u=\"http://h/a\" ver=\"1\"><dwg fn=\"x.dwg\" size=\"1\" hi=\"0\"/></item>"
        "<item cs=\"B\" b_u=\"http://h/b\" ver=\"1\"><dwg fn=\"y.dwg\" size=\"1\" hi=\"0\"/></item>"
        "</gallery></root>";
    BuildFirstTree(store);
    AdoptTreeUpdates(store);
    ASSERT_NE(store.root, nullptr);
    const std::u16string g = store.root->Path() + u"/G";
    ASSERT_TRUE(FileExists(g + u"/G.xdb"));
    for (const char16_t* file : {u"/A/x.dwg", u"/B/y.dwg"}) {
        const std::u16string path = g + file;
        ASSERT_TRUE(CreateDirectories(path.substr(0, path.find_last_of(u'/'))));
        ASSERT_TRUE(WriteFileAtomic(path, "dwg"));
    }

    // First element: A unchanged, the catalogue now holds A only. Second
    // element: B at 2 is new against that catalogue, so its folder stays.
    stack.reply =
        "<root dv=\"0\"><gallery gn=\"G\" gv=\"0\">"
        "<item cs=\"A\" b_u=\"http://h/a\" ver=\"1\"><dwg fn=\"x.dwg\" size=\"1\" hi=\"0\"/></item></gallery>"
        "<gallery gn=\"G\" gv=\"0\">"
        "<item cs=\"B\" b_u=\"http://h/b\" ver=\"2\"><dwg fn=\"y.dwg\" size=\"1\" hi=\"0\"/></item></gallery>"
        "</root>";
    BuildFirstTree(store);
    AdoptTreeUpdates(store);
    EXPECT_TRUE(FileExists(g + u"/A/x.dwg"));
    EXPECT_TRUE(FileExists(g + u"/B/y.dwg"));
    ASSERT_EQ(store.root->dirChildren.size(), 1u);
    ASSERT_EQ(store.root->dirChildren[0]->dirChildren.size(), 2u);  // both elements' classes
    EXPECT_NE(test::ReadBytes(U8(g + u"/G.xdb")).find("<sub n=\"B\" ver=\"2\""), std::string::npos);

    // A third run with B risen again against that catalogue does remove it.
    stack.reply =
        "<root dv=\"0\"><gallery gn=\"G\" gv=\"0\">"
        "<item cs=\"B\" b_u=\"http://h/b\" ver=\"3\"><dwg fn=\"y.dwg\" size=\"1\" hi=\"0\"/></item>"
        "</gallery></root>";
    BuildFirstTree(store);
    AdoptTreeUpdates(store);
    EXPECT_FALSE(FileExists(g + u"/B/y.dwg"));
    EXPECT_TRUE(FileExists(g + u"/A/x.dwg"));
}
