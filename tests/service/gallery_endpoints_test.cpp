// Reply shapes of the read-only endpoints, the block files behind the
// addresses they hand out, and the answers to bad queries.

#include "request_counters.h"
#include "service_fixture.h"
#include "support/test_paths.h"

#include <thread>

using namespace marrowfin;
using namespace marrowfin::test;

TEST_F(ServiceTest, GalleryRepliesCarryClassesVersionsAndBlocks) {
    const service::CatalogGallery& g0 = m_catalog.galleries()[0];
    const service::CatalogGallery& g1 = m_catalog.galleries()[1];

    // All galleries: unknown names and repeats are left out, order is the query's.
    const std::string all = post("/gallery/g_all_s?gallery_name=" + Enc(g1.name + ",nope," + g0.name + "," + g1.name));
    EXPECT_EQ("0", Attr(all, "root", "dv"));
    EXPECT_EQ(2, Count(all, "<gallery "));
    EXPECT_LT(all.find("gn=\"" + g1.name + "\""), all.find("gn=\"" + g0.name + "\""));
    EXPECT_EQ(g1.boutique ? "1" : "0", Attr(all, "gallery", "gv"));
    EXPECT_EQ(static_cast<int>(g0.classes.size() + g1.classes.size()), Count(all, "<item "));
    EXPECT_EQ(6 * static_cast<int>(g0.classes.size() + g1.classes.size()), Count(all, "<dwg "));

    const std::string one = post("/gallery/g_all?gallery_name=" + Enc(g0.name));
    EXPECT_EQ(g0.name, Attr(one, "root", "gn"));
    EXPECT_EQ(g0.boutique ? "1" : "0", Attr(one, "root", "gv"));
    const service::CatalogClass& c = g0.classes[0];
    EXPECT_EQ(c.name, Attr(one, "item", "cs"));
    EXPECT_EQ(std::to_string(c.version), Attr(one, "item", "ver"));
    EXPECT_EQ(c.blocks[0].fileName, Attr(one, "dwg", "fn"));
    EXPECT_EQ(std::to_string(c.blocks[0].size), Attr(one, "dwg", "size"));

    const std::string summary = post("/gallery/g_cs_s?gallery_name=" + Enc(g0.name));
    EXPECT_EQ(static_cast<int>(g0.classes.size()), Count(summary, "<item "));
    EXPECT_EQ(0, Count(summary, "<dwg ")) << "a summary has no blocks";
    EXPECT_EQ(0, Count(summary, "b_u="));

    const std::string cls = post("/gallery/g_cs?gallery_name=" + Enc(g0.name) + "&cs=" + Enc(c.name));
    EXPECT_EQ(c.name, Attr(cls, "root", "cs"));
    EXPECT_EQ(6, Count(cls, "<item fn="));
    for (size_t i = 0; i < c.blocks.size(); ++i) EXPECT_NE(std::string::npos, cls.find("hi=\"" + std::string(c.blocks[i].hidden ? "1" : "0")));

    // b_u + "/" + fn is the block, byte for byte, whether the path is escaped or not.
    const std::string base = Attr(cls, "root", "b_u");
    ASSERT_EQ(0u, base.rfind(m_service.baseUrl() + "/files/", 0)) << base;
    const std::string path = base.substr(m_service.baseUrl().size()) + "/" + c.blocks[0].fileName;
    const std::string expected = ReadBytes(m_data + "/blocks/" + g0.name + "/" + c.name + "/" + c.blocks[0].fileName);
    std::string escaped;
    for (unsigned char ch : path) escaped += (ch > 126 || ch == ' ') ? "%" + std::string(1, "0123456789abcdef"[ch >> 4]) + "0123456789abcdef"[ch & 15] : std::string(1, static_cast<char>(ch));
    for (const std::string& p : {path, escaped}) {
        auto res = client().Get(p.c_str());
        ASSERT_TRUE(res) << p;
        EXPECT_EQ(200, res->status) << p;
        EXPECT_EQ(expected, res->body) << p;
    }

    // Bad queries: a reason with HTTP 400, never a crash; missing files 404.
    EXPECT_EQ(400, postStatus("/gallery/g_all?gallery_name=nope"));
    EXPECT_EQ(400, postStatus("/gallery/g_cs?gallery_name=" + Enc(g0.name) + "&cs=nope"));
    EXPECT_EQ(400, postStatus("/gallery/g_all_s"));
    EXPECT_EQ(404, client().Get("/files/../library.tsv")->status);
    EXPECT_EQ(404, client().Get(("/files/" + Enc(g0.name) + "/x/none.dwg").c_str())->status);
    EXPECT_EQ(200, client().Get("/gallery/g_cs_s?gallery_name=" + Enc(g0.name))->status) << "GET works as POST";
    // The one-time forced refresh is the service's to switch on.
    admin("/admin/set?dv=1");
    EXPECT_EQ("1", Attr(post("/gallery/g_all_s?gallery_name=" + Enc(g0.name)), "root", "dv"));
}

TEST_F(ServiceTest, ClassTableHotWordsSearchTilesAndShares) {
    const std::string def = post("/gallery/selpageinfo?sort=def");
    EXPECT_EQ(ReadBytes(m_data + "/selpageinfo_def.xml"), def);
    EXPECT_EQ(ReadBytes(m_data + "/selpageinfo_hot.xml"), post("/gallery/selpageinfo?sort=hot"));
    EXPECT_EQ(ReadBytes(m_data + "/selpageinfo_new.xml"), post("/gallery/selpageinfo?sort=new"));
    EXPECT_EQ(def, post("/gallery/selpageinfo?sort=")) << "an empty sort word gets the default order";
    EXPECT_NE(std::string::npos, post("/gallery/gethotwords").find("<default>"));

    // Search: ver elements first, then items; hidden blocks are never found.
    const service::CatalogClass& c = m_catalog.galleries()[0].classes[0];
    const std::string found = post("/gallery/search_g?search_content=" + Enc(c.name) + "&excepts=");
    EXPECT_EQ("1", Attr(found, "root", "nom"));
    ASSERT_NE(std::string::npos, found.find("<ver t=\"" + std::to_string(c.version) + "\">" + c.name + "</ver>"));
    EXPECT_LT(found.rfind("<ver "), found.find("<item "));
    int visible = 0;
    for (const auto& b : c.blocks) visible += !b.hidden;
    EXPECT_GE(Count(found, "<item "), visible);
    for (const auto& b : c.blocks)
        EXPECT_EQ(!b.hidden, found.find("filename=\"" + b.fileName + "\"") != std::string::npos) << b.fileName;
    EXPECT_EQ(m_catalog.galleries()[0].name, Attr(found, "item", "classify"));
    EXPECT_EQ(200, fetchUrl(Attr(found, "item", "download_url"))->status);
    EXPECT_EQ(0, Count(post("/gallery/search_g?search_content=zzzqqq&excepts="), "<item "));
    admin("/admin/set?nom=0");
    EXPECT_EQ("0", Attr(post("/gallery/search_g?search_content=a&excepts="), "root", "nom"));

    // Tiles: every tile with its picture address; the picture is a PNG.
    const std::string tiles = post("/gallery/gad?type=" + Enc("渠道") + "&img_type=0");
    EXPECT_EQ(3, Count(tiles, "<item "));
    EXPECT_NE(std::string::npos, tiles.find("on=\"0\"")) << "a switched-off tile is still listed";
    auto png = fetchUrl(Attr(tiles, "item", "url"));
    ASSERT_TRUE(png);
    EXPECT_EQ(0u, png->body.rfind("\x89PNG", 0));

    // Sharing is remembered per user; a bad token is refused.
    EXPECT_EQ("success", post("/gallery/sharef?usertoken=" + DemoToken()));
    EXPECT_EQ("1", admin("/admin/shares?usertoken=" + DemoToken()));
    EXPECT_EQ(400, postStatus("/gallery/sharef?usertoken=wrong"));
    EXPECT_EQ(400, postStatus("/gallery/sharef"));
}

TEST_F(ServiceTest, AnswersConcurrentlyAndCountsThePeak) {
    // Eight downloads held at once: they all run together, and the group
    // counter of block files sees all eight.
    const auto& g = m_catalog.galleries()[0];
    ASSERT_EQ("ok", admin("/admin/fault?path=/files/*&hold=3000"));
    std::vector<std::thread> threads;
    std::atomic<int> okCount{0};
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&, i] {
            const auto& c = g.classes[i % g.classes.size()];
            auto res = client().Get(("/files/" + Enc(g.name) + "/" + Enc(c.name) + "/" + Enc(c.blocks[i % 6].fileName)).c_str());
            if (res && res->status == 200) ++okCount;
        });
    }
    for (int i = 0; i < 300 && m_service.counters().get("/files/*").active < 8; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(8, m_service.counters().get("/files/*").active);
    admin("/admin/release");
    for (auto& t : threads) t.join();
    EXPECT_EQ(8, okCount);
    EXPECT_EQ("/files/*\t8\t8\t0\n", admin("/admin/counters?path=/files/*"));
    admin("/admin/counters?reset=1");
    EXPECT_EQ(0, m_service.counters().get("/files/*").count);
}
