// The collection state machine on the wire: folders, collecting with and
// without force, moving, renaming, deleting, and state across a restart.

#include "service_fixture.h"
#include "support/test_paths.h"
#include "library_catalog.h"
#include "user_state.h"

#include <filesystem>

namespace fs = std::filesystem;
using namespace marrowfin;
using namespace marrowfin::test;

namespace {

std::string Between(const std::string& text, const std::string& from, const std::string& to, size_t start = 0) {
    const size_t a = text.find(from, start);
    if (a == std::string::npos) return "<none>";
    const size_t b = text.find(to, a + from.size());
    return text.substr(a + from.size(), b - a - from.size());
}

std::string FolderId(const std::string& list, const std::string& name) {
    const size_t at = list.find("favorites_name=\"" + name + "\"");
    if (at == std::string::npos) return "";
    const size_t open = list.rfind("favorites_id=\"", at);
    return Between(list, "favorites_id=\"", "\"", open);
}

int CountOf(const std::string& text, const std::string& what) {
    int n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

std::string SomeBlock(const std::string& data) {
    for (const auto& f : fs::recursive_directory_iterator(data + "/blocks"))
        if (f.is_regular_file()) return ReadBytes(f.path().string());
    return "";
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
};

}  // namespace

TEST_F(CollectionTest, FoldersFromEmptyToFullAndBack) {
    EXPECT_EQ("empty", q("get_u_collect", "&kind=dwg")) << "a fresh user reads the word, not a document";
    const std::string noFolders = post("/gallery/get_u_f?usertoken=" + DemoToken());
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
    EXPECT_EQ(id2, FolderId(post("/gallery/get_u_f?usertoken=" + DemoToken()), "家具"));

    // At most 18 folders.
    for (int i = 3; i <= 18; ++i) ASSERT_NE("error", q("favorite", "&operate=add&favorites=f" + std::to_string(i))) << i;
    EXPECT_EQ("error", q("favorite", "&operate=add&favorites=f19"));

    EXPECT_EQ("success", q("favorite", "&favorites_id=" + id2 + "&operate=del"));
    EXPECT_EQ("error", q("favorite", "&favorites_id=" + id2 + "&operate=del")) << "a folder goes only once";
    EXPECT_EQ("", FolderId(post("/gallery/get_u_f?usertoken=" + DemoToken()), "家具"));

    // Another user sees none of it.
    ASSERT_EQ("ok", admin("/admin/user?number=20002&token=other"));
    EXPECT_EQ("empty", post("/gallery/get_u_collect?type=client&usertoken=other&kind=dwg"));
    int status = 0;
    post("/gallery/get_u_collect?type=client&usertoken=&kind=dwg", &status);
    EXPECT_EQ(400, status);
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
    EXPECT_EQ(1, CountOf(list, "<dwg ")) << list;
    EXPECT_EQ("A", Between(list, "dwg_info=\"", "\""));
    // The block's address gives the replaced bytes.
    const std::string url = Between(list, "dwg_url=\"", "\"");
    auto res = client().Get(url.substr(m_service.baseUrl().size()));
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
    EXPECT_EQ(1, CountOf(renamed, "<dwg ")) << renamed;
    EXPECT_EQ(404, client().Get(url.substr(m_service.baseUrl().size()))->status) << "the old name is gone";

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
    std::string body = "--" + boundary + "\r\nContent-Disposition: form-data; name=\"parent_dir\"\r\n\r\n\r\n--" + boundary +
                       "\r\nContent-Disposition: form-data; name=\"file\";filename=\"椅子.dwg\"\r\nContent-Type: application/octet-stream\r\n\r\n" +
                       block + "\r\n--" + boundary + "--\r\n";
    const std::string request = "POST /gallery/dwg_collectu?usertoken=" + DemoToken() +
                                "&favorites_id=&force=0 HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n"
                                "Content-Type:  multipart/form-data; boundary=" + boundary + "\r\nContent-Length: " +
                                std::to_string(body.size()) + "\r\n\r\n" + body;
    const RawReply reply = RawExchange(m_service.port(), request);
    EXPECT_EQ(200, reply.status);
    EXPECT_EQ("1", reply.body) << "an empty folder id goes to the default folder";
    const std::string folders = q("get_u_collect", "&kind=dwg&needdwg=1");
    EXPECT_NE(std::string::npos, folders.find("favorites_name=\"收藏夹1\""));
    EXPECT_NE(std::string::npos, folders.find("filename=\"椅子.dwg\""));

    // Everything survives a restart of the service.
    restart();
    const std::string again = q("get_u_collect", "&kind=dwg&needdwg=1");
    EXPECT_EQ(folders.substr(0, folders.find("dwg_url")), again.substr(0, again.find("dwg_url")));
    const size_t at = again.find("dwg_url=\"") + 9;
    const std::string url = again.substr(at, again.find('"', at) - at);
    auto res = client().Get(url.substr(m_service.baseUrl().size()));
    ASSERT_TRUE(res);
    EXPECT_EQ(block, res->body);
}

TEST_F(CollectionTest, BlocksFromBoutiqueGalleriesAreMarked) {
    service::LibraryCatalog catalog;
    std::string error;
    ASSERT_TRUE(catalog.load(m_data, error));
    std::string boutique, plain;
    for (const auto& g : catalog.galleries())
        (g.boutique ? boutique : plain) = g.classes[0].blocks[0].fileName;
    ASSERT_FALSE(boutique.empty());
    ASSERT_FALSE(plain.empty());
    const std::string folder = FolderId(q("favorite", "&operate=add&favorites=A"), "A");
    const std::string block = SomeBlock(m_data);
    EXPECT_EQ("1", collect(folder, boutique, block, "0"));
    EXPECT_EQ("1", collect(folder, plain, block, "0"));
    const std::string list = q("get_u_collect", "&kind=dwg&needdwg=1");
    EXPECT_NE(std::string::npos, list.find("filename=\"" + boutique + "\"")) << list;
    const size_t b = list.find("filename=\"" + boutique + "\"");
    const size_t p = list.find("filename=\"" + plain + "\"");
    EXPECT_EQ("1", Between(list, "gv=\"", "\"", b));
    EXPECT_EQ("0", Between(list, "gv=\"", "\"", p));
}
