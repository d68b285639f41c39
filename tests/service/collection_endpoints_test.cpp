// The collection state machine on the wire: folders, collecting with and
// without force, moving, renaming, deleting, state across a restart, and the
// hand-over of an old collection as an archive polled in the background.

#include "service_fixture.h"

#include <thread>

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

std::string FolderId(const std::string& list, const std::string& name) {
    const size_t at = list.find("favorites_name=\"" + name + "\"");
    if (at == std::string::npos) return "";
    return Between(list, "favorites_id=\"", "\"", list.rfind("favorites_id=\"", at));
}

class CollectionTest : public ServiceTest {
protected:
    // dwg_collectu as a multipart POST, as the library's curl client sends it.
    std::string collect(const std::string& folder, const std::string& name, const std::string& bytes, const std::string& force) {
        httplib::MultipartFormDataItems items = {{"parent_dir", "", "", ""}, {"file", bytes, name, "application/octet-stream"}};
        auto res = client().Post(("/gallery/dwg_collectu?usertoken=" + DemoToken() + "&favorites_id=" + folder + "&force=" + force).c_str(), items);
        return res ? res->body : "<no reply>";
    }
    std::string q(const std::string& path, const std::string& rest) {
        return post("/gallery/" + path + "?type=client&usertoken=" + DemoToken() + rest);
    }
    std::string folders() const { return post("/gallery/get_u_f?usertoken=" + DemoToken()); }
    std::string upload(const std::string& archive) {
        httplib::MultipartFormDataItems items = {{"parent_dir", "", "", ""}, {"file", archive, "10001.zip", "application/octet-stream"}};
        auto res = client().Post("/gallery/lfupload", items);
        return res ? res->body : "<no reply>";
    }
    std::string syncStatus() { return post("/gallery/lfstatu?usertoken=" + DemoToken()); }
};

}  // namespace

TEST_F(CollectionTest, FoldersFromEmptyToFullAndBack) {
    EXPECT_EQ("empty", q("get_u_collect", "&kind=dwg")) << "a fresh user reads the word, not a document";
    const std::string noFolders = folders();
    EXPECT_NE(std::string::npos, noFolders.find("<root>"));
    EXPECT_EQ(std::string::npos, noFolders.find("<favorites"));

    const std::string added = q("favorite", "&operate=add&favorites=" + Enc("收藏夹1"));
    const std::string id1 = FolderId(added, "收藏夹1");
    ASSERT_FALSE(id1.empty()) << added;
    EXPECT_EQ("favorites is exist", q("favorite", "&operate=add&favorites=" + Enc("收藏夹1")));
    EXPECT_EQ("error", q("favorite", "&operate=add&favorites="));
    const std::string second = q("favorite", "&operate=add&favorites=" + Enc("门窗"));
    const std::string id2 = FolderId(second, "门窗");
    EXPECT_FALSE(FolderId(second, "收藏夹1").empty()) << "the add reply lists every folder";
    EXPECT_NE(id1, id2);
    EXPECT_EQ(id2, FolderId(q("get_u_collect", "&kind=dwg"), "门窗"));

    // Rename: to a taken name, of an unknown id, then for real.
    EXPECT_EQ("favorites is exist", q("favorite", "&operate=update&favorites_id=" + id2 + "&newname=" + Enc("收藏夹1")));
    EXPECT_EQ("error", q("favorite", "&operate=update&favorites_id=99999&newname=x"));
    EXPECT_EQ("error", q("favorite", "&operate=update&favorites_id=abc&newname=x"));
    EXPECT_EQ("success", q("favorite", "&operate=update&favorites_id=" + id2 + "&newname=" + Enc("家具")));
    EXPECT_EQ(id2, FolderId(folders(), "家具"));

    // At most 18 folders.
    for (int i = 3; i <= 18; ++i) ASSERT_NE("error", q("favorite", "&operate=add&favorites=f" + std::to_string(i))) << i;
    EXPECT_EQ("error", q("favorite", "&operate=add&favorites=f19"));

    EXPECT_EQ("success", q("favorite", "&favorites_id=" + id2 + "&operate=del"));
    EXPECT_EQ("error", q("favorite", "&favorites_id=" + id2 + "&operate=del")) << "a folder goes only once";
    EXPECT_EQ("", FolderId(folders(), "家具"));

    // Another user sees none of it.
    ASSERT_EQ("ok", admin("/admin/user?number=20002&token=other"));
    EXPECT_EQ("empty", post("/gallery/get_u_collect?type=client&usertoken=other&kind=dwg"));
    EXPECT_EQ(400, postStatus("/gallery/get_u_collect?type=client&usertoken=&kind=dwg"));
}

TEST_F(CollectionTest, CollectMoveRenameDeleteBlocks) {
    const std::string a = FolderId(q("favorite", "&operate=add&favorites=A"), "A");
    const std::string b = FolderId(q("favorite", "&operate=add&favorites=B"), "B");
    const std::string block = SomeBlock(m_data);
    ASSERT_GT(block.size(), 1025u);

    EXPECT_EQ("1", collect(a, "门.dwg", block, "0"));
    EXPECT_EQ("2", collect(a, "门.dwg", block, "0")) << "same name, no force";
    EXPECT_EQ("2", collect(a, "门.dwg", block, "false"));
    const std::string changed = block + "x";
    EXPECT_EQ("1", collect(a, "门.dwg", changed, "1")) << "force replaces";
    EXPECT_EQ("3", collect(a, "bad.dwg", "not a drawing at all", "0"));
    EXPECT_EQ("3", collect("99999", "x.dwg", block, "0"));
    EXPECT_EQ("1", collect(b, "门.dwg", block, "true"));

    std::string list = q("favorite_dwgs", "&favorites_id=" + a);
    const std::string id = Between(list, "dwg_id=\"", "\"");
    EXPECT_EQ(1, Count(list, "<dwg ")) << list;
    EXPECT_EQ("A", Between(list, "dwg_info=\"", "\""));
    // The block's address gives the replaced bytes.
    const std::string url = Between(list, "dwg_url=\"", "\"");
    auto res = fetchUrl(url);
    ASSERT_TRUE(res);
    EXPECT_EQ(changed, res->body);
    // The folder list with blocks carries them under their folder.
    const std::string full = q("get_u_collect", "&kind=dwg&needdwg=1");
    EXPECT_NE(std::string::npos, full.find("size=\"" + std::to_string(changed.size()) + "\""));

    // Move into a folder that has a block of that name: ask, then force.
    EXPECT_EQ("filename is exist", q("mvff", "&ofid=" + a + "&favorites_id=" + b + "&dwg_id=" + id + "&force=0"));
    EXPECT_EQ("error", q("mvff", "&ofid=" + b + "&favorites_id=" + a + "&dwg_id=" + id + "&force=0")) << "wrong source";
    EXPECT_EQ("success", q("mvff", "&ofid=" + a + "&favorites_id=" + b + "&dwg_id=" + id + "&force=1"));
    EXPECT_EQ(std::string::npos, q("favorite_dwgs", "&favorites_id=" + a).find("<dwg "));
    list = q("favorite_dwgs", "&favorites_id=" + b);
    EXPECT_EQ(id, Between(list, "dwg_id=\"", "\"")) << "the moved block replaced the old one";
    EXPECT_EQ("B", Between(list, "dwg_info=\"", "\""));

    // Rename: unknown block, taken name, then for real; the reply is the block alone.
    EXPECT_EQ("1", collect(b, "窗.dwg", block, "0"));
    EXPECT_EQ("file is not exist", q("cdwgrn", "&favorites_id=" + b + "&dwg_id=99999&newname=x.dwg"));
    EXPECT_EQ("filename is exist", q("cdwgrn", "&favorites_id=" + b + "&dwg_id=" + id + "&newname=" + Enc("窗.dwg")));
    const std::string renamed = q("cdwgrn", "&favorites_id=" + b + "&dwg_id=" + id + "&newname=" + Enc("新门.dwg"));
    EXPECT_EQ("新门.dwg", Between(renamed, "filename=\"", "\""));
    EXPECT_EQ(1, Count(renamed, "<dwg ")) << renamed;
    EXPECT_EQ(404, fetchUrl(url)->status) << "the old name is gone";

    EXPECT_EQ("error", q("dwg_collect", "&operate=del&favorites_id=" + a + "&dwg_id=" + id));
    EXPECT_EQ("success", q("dwg_collect", "&operate=del&favorites_id=" + b + "&dwg_id=" + id));
    EXPECT_EQ("error", q("dwg_collect", "&operate=del&favorites_id=" + b + "&dwg_id=" + id));
    EXPECT_EQ("error", q("favorite_dwgs", "&favorites_id=99999"));
}

TEST_F(CollectionTest, EmptyFolderIdAndHandBuiltMultipartAndRestart) {
    // The body a hand-built upload sends: no space before filename, the
    // content type with two blanks, an empty parent_dir.
    const std::string block = SomeBlock(m_data);
    const std::string boundary = "---------------------------7b4a6d158c9Qy2Udf6e";
    const std::string body = "--" + boundary + "\r\nContent-Disposition: form-data; name=\"parent_dir\"\r\n\r\n\r\n--" + boundary +
                       "\r\nContent-Disposition: form-data; name=\"file\";filename=\"椅子.dwg\"\r\nContent-Type: application/octet-stream\r\n\r\n" +
                       block + "\r\n--" + boundary + "--\r\n";
    const std::string request = "POST /gallery/dwg_collectu?usertoken=" + DemoToken() +
                                "&favorites_id=&force=0 HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n"
                                "Content-Type:  multipart/form-data; boundary=" + boundary + "\r\nContent-Length: " +
                                std::to_string(body.size()) + "\r\n\r\n" + body;
    const RawReply reply = RawExchange(m_service.port(), request);
    EXPECT_EQ(200, reply.status);
    EXPECT_EQ("1", reply.body) << "an empty folder id goes to the default folder";
    const std::string list = q("get_u_collect", "&kind=dwg&needdwg=1");
    EXPECT_NE(std::string::npos, list.find("favorites_name=\"收藏夹1\""));
    EXPECT_NE(std::string::npos, list.find("filename=\"椅子.dwg\""));

    // Everything survives a restart of the service.
    restart();
    const std::string again = q("get_u_collect", "&kind=dwg&needdwg=1");
    EXPECT_EQ(list.substr(0, list.find("dwg_url")), again.substr(0, again.find("dwg_url")));
    auto res = fetchUrl(Between(again, "dwg_url=\"", "\""));
    ASSERT_TRUE(res);
    EXPECT_EQ(block, res->body);
}

TEST_F(CollectionTest, BlocksFromBoutiqueGalleriesAreMarked) {
    std::string boutique, plain;
    for (const auto& g : m_catalog.galleries())
        (g.boutique ? boutique : plain) = g.classes[0].blocks[0].fileName;
    ASSERT_FALSE(boutique.empty());
    ASSERT_FALSE(plain.empty());
    const std::string folder = FolderId(q("favorite", "&operate=add&favorites=A"), "A");
    const std::string block = SomeBlock(m_data);
    EXPECT_EQ("1", collect(folder, boutique, block, "0"));
    EXPECT_EQ("1", collect(folder, plain, block, "0"));
    const std::string list = q("get_u_collect", "&kind=dwg&needdwg=1");
    const size_t b = list.find("filename=\"" + boutique + "\"");
    EXPECT_NE(std::string::npos, b) << list;
    EXPECT_EQ("1", Between(list, "gv=\"", "\"", b));
    EXPECT_EQ("0", Between(list, "gv=\"", "\"", list.find("filename=\"" + plain + "\"")));
}

TEST_F(CollectionTest, ArchiveIsTakenInBehindPolls) {
    const std::string drawing = "AC1015" + std::string(2000, 'x');
    // Something in the cloud before: the archive replaces it.
    ASSERT_NE("error", q("favorite", "&operate=add&favorites=old"));
    EXPECT_EQ("0", syncStatus()) << "nothing running";
    EXPECT_EQ("success", post("/gallery/lfsync?usertoken=" + DemoToken() + "&fs=" + Enc("门窗*家具*空的")));
    admin("/admin/set?uploadwork=400");
    const std::string archive = MakeZip(m_home->file("up.zip"), {{"10001//门窗/", ""},
                                                                 {"10001//门窗//单开门.dwg", drawing},
                                                                 {"10001//门窗//notes.txt", "not a block"},
                                                                 {"10001//家具//沙发.DWG", drawing}});
    ASSERT_FALSE(archive.empty());
    EXPECT_EQ("", upload(archive)) << "the service still works: an empty reply";
    EXPECT_EQ("1", syncStatus());
    EXPECT_EQ("error", upload(archive)) << "one archive at a time";
    std::string last = "1";
    for (int i = 0; i < 200 && last == "1"; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        last = syncStatus();
    }
    EXPECT_EQ("0", last);
    const std::string list = q("get_u_collect", "&kind=dwg&needdwg=1");
    EXPECT_EQ(std::string::npos, list.find("favorites_name=\"old\""));
    EXPECT_NE(std::string::npos, list.find("favorites_name=\"空的\"")) << "announced folders exist even when empty";
    EXPECT_NE(std::string::npos, list.find("filename=\"单开门.dwg\" dwg_info=\"门窗\""));
    EXPECT_NE(std::string::npos, list.find("filename=\"沙发.DWG\" dwg_info=\"家具\""));
    EXPECT_EQ(std::string::npos, list.find("notes.txt"));
    EXPECT_EQ("done\t2\t0\t门窗*家具*空的\n", admin("/admin/sync?usertoken=" + DemoToken()));
    EXPECT_EQ("success", post("/gallery/lfupload_end?usertoken=" + DemoToken()));
    EXPECT_EQ("idle\t2\t1\t门窗*家具*空的\n", admin("/admin/sync?usertoken=" + DemoToken()));

    // With time to finish inside the upload request, the reply is "success";
    // and the word after the work can be switched to what a client polls for.
    admin("/admin/set?uploadwork=0&uploadwait=2000&donestatus=success");
    EXPECT_EQ("success", upload(archive));
    EXPECT_EQ("success", syncStatus());
}

TEST_F(CollectionTest, RefusedArchivesAndBadTokens) {
    EXPECT_EQ("error", upload("this is no zip"));
    // Another user's number at the top, or an unknown one.
    ASSERT_EQ("ok", admin("/admin/user?number=20002&token=other"));
    EXPECT_EQ("error", upload(MakeZip(m_home->file("f.zip"), {{"10001//a//x.dwg", "AC1015xxxx"}, {"20002//a//y.dwg", "AC1015yyyy"}})))
        << "mixed users";
    EXPECT_EQ("error", upload(MakeZip(m_home->file("u.zip"), {{"777//a//x.dwg", "AC1015xxxx"}})));
    EXPECT_EQ("0", syncStatus()) << "a refused archive starts nothing";
    EXPECT_EQ(400, postStatus("/gallery/lfstatu?usertoken=nobody"));
    EXPECT_EQ(400, postStatus("/gallery/lfsync?fs=a"));
    EXPECT_EQ(400, postStatus("/gallery/lfupload_end?usertoken="));
}

TEST_F(CollectionTest, UploadCutByRestartIsReportedFailed) {
    admin("/admin/set?uploadwork=5000");
    const std::string archive = MakeZip(m_home->file("up.zip"), {{"10001//a//x.dwg", "AC1015xxxx"}});
    EXPECT_EQ("", upload(archive));
    EXPECT_EQ("1", syncStatus());
    restart();  // the stop ends the work; the next start finds it unfinished
    EXPECT_EQ("error", syncStatus());
    EXPECT_EQ("success", post("/gallery/lfupload_end?usertoken=" + DemoToken()));
    EXPECT_EQ("0", syncStatus());
}
