// The collection calls against the stand-in service: each call's request
// line and reply, two users kept apart, every refusal with the text it
// shows, the transport's failures on every collection path, odd documents.

#include <gtest/gtest.h>

#include <functional>

#include "collection/collection_messages.h"
#include "fault_switches.h"
#include "platform/text.h"
#include "request_counters.h"
#include "support/live_service.h"
#include "support/temp_home.h"
#include "support/test_paths.h"
#include "user_state.h"

namespace marrowfin::test {
namespace {

using Lines = std::vector<std::string>;
using enum CollectionRoad;
using enum CollectForce;

// A boutique gallery holding b.dwg: a collected b.dwg is marked boutique.
const char kLibrary[] = "gallery\tG\t1\nclass\tG\tC\t1\nblock\tG\tC\tb.dwg\t0\n";
const std::string kA = "POST /gallery/";

// A message in one line: kind, then title/text/second/accept/decline.
std::string Show(const CollectionMessage& m) {
    static const char* kinds[] = {"-", "status ", "line ", "tip "};
    if (m.kind == CollectionMessage::None) return "-";
    return kinds[m.kind] + U8(m.title + u"/" + m.text + u"/" + m.second + u"/" + m.accept + u"/" + m.decline);
}

// Each folder as "name[block size gv info, ...]" and each block as "name info".
std::string Describe(const std::vector<ListedFolder>& folders) {
    std::string out;
    for (const ListedFolder& f : folders) {
        out += U8(f.name) + "[";
        for (const ListedBlock& b : f.blocks)
            out += U8(b.filename) + " " + std::to_string(b.size) + (b.boutique ? " b " : " ") + U8(b.info) + ";";
        out += "]";
    }
    return out;
}
std::string Describe(const std::vector<ListedBlock>& blocks) {
    std::string out;
    for (const ListedBlock& b : blocks) out += U8(b.filename) + " " + U8(b.info) + ";";
    return out;
}

struct Collections : ::testing::Test {
    void SetUp() override {
        service = StartLiveService(WriteLibrary(home.file("data"), kLibrary));
        ASSERT_TRUE(service.users().addUser(20002, "tok-b"));
        WriteBytes(home.file("门 1.dwg"), "AC1015" + std::string(2000, 'd'));
        WriteBytes(home.file("b.dwg"), "AC1015" + std::string(100, 'd'));
        WriteBytes(home.file("note.txt"), "not a drawing");
    }
    std::string Wire(const std::string& path) { return service.counters().get("/gallery/" + path).last; }
    std::u16string File(const std::string& name) { return W(home.file(name)); }
    // The id of the folder `name` after adding it.
    std::u16string Make(std::u16string_view token, std::u16string_view name) {
        for (const ListedFolder& f : AddFolder(token, name).document.folders)
            if (f.name == name) return f.id;
        return {};
    }

    TempHome home;
    service::ServiceHandle service;
    const std::u16string a = u"demo-token-10001", b = u"tok-b";
    const std::string q = "?type=client&usertoken=demo-token-10001";
};

TEST_F(Collections, EveryCallOnTheWireAndTwoUsersApart) {
    // No folder yet: the collection answers "empty", the names a bare root.
    EXPECT_TRUE(FetchCollection(a, false).Is(u"empty"));
    EXPECT_EQ(Wire("get_u_collect"), kA + "get_u_collect" + q + "&kind=dwg");
    const FolderListReply bare = FetchFolderNames(a);
    EXPECT_TRUE(bare.delivered && bare.document.shape == DocumentShape::Root && bare.document.folders.empty());
    EXPECT_EQ(Wire("get_u_f"), kA + "get_u_f?usertoken=demo-token-10001");

    // Names reach the service as typed, the marks that would cut the query short included.
    const std::u16string first = Make(a, kDefaultFolderName);
    EXPECT_EQ(Wire("favorite"), kA + "favorite" + q + "&operate=add&favorites=%E6%94%B6%E8%97%8F%E5%A4%B91");
    const std::u16string odd = Make(a, u"A&B=C+D;E %41#F");
    EXPECT_EQ(Wire("favorite"), kA + "favorite" + q + "&operate=add&favorites=A%26B%3DC%2BD%3BE%20%2541%23F");
    ASSERT_FALSE(first.empty() || odd.empty());
    const std::string f1 = U8(first), f2 = U8(odd);
    EXPECT_TRUE(RenameFolder(a, odd, u"新 名&1").Is(u"success"));
    EXPECT_EQ(Wire("favorite"), kA + "favorite" + q + "&operate=update&favorites_id=" + f2 +
                                    "&newname=%E6%96%B0%20%E5%90%8D%261");

    // Uploads: force 0 collects, then asks back; 1 and true replace; false asks back.
    std::string words;
    for (const auto& [force, word] : {std::pair{Ask, "0"}, {Ask, "0"}, {Replace, "1"}, {FromDisk, "true"}, {Synchronise, "false"}}) {
        words += U8(CollectBlockFile(a, first, File("门 1.dwg"), force).text);
        EXPECT_EQ(Wire("dwg_collectu"), kA + "dwg_collectu?usertoken=demo-token-10001&favorites_id=" + f1 + "&force=" + word);
    }
    EXPECT_EQ(words, "12112");
    EXPECT_TRUE(CollectBlockFile(a, first, File("b.dwg"), Ask).Is(u"1"));

    const BlockListReply listed = FetchFolderBlocks(a, first);
    EXPECT_EQ(Wire("favorite_dwgs"), kA + "favorite_dwgs" + q + "&favorites_id=" + f1);
    ASSERT_EQ(Describe(listed.document.blocks), "门 1.dwg 收藏夹1;b.dwg 收藏夹1;");
    const ListedBlock block = listed.document.blocks[0];
    EXPECT_EQ(U8(block.url), service.baseUrl() + "/ufiles/" + U8(block.id) + "/门 1.dwg");
    const FolderListReply all = FetchCollection(a, true);
    EXPECT_EQ(Wire("get_u_collect"), kA + "get_u_collect" + q + "&kind=dwg&needdwg=1");
    EXPECT_EQ(Describe(all.document.folders), "收藏夹1[门 1.dwg 2006 收藏夹1;b.dwg 106 b 收藏夹1;]新 名&1[]");
    EXPECT_EQ(all.document.folders[0].blocks[0].url, block.url);

    const BlockListReply renamed = RenameCollectedBlock(a, first, block.id, u"门&2.dwg");
    EXPECT_EQ(Wire("cdwgrn"), kA + "cdwgrn" + q + "&favorites_id=" + f1 + "&dwg_id=" + U8(block.id) +
                                  "&newname=%E9%97%A8%262.dwg");
    ASSERT_EQ(Describe(renamed.document.blocks), "门&2.dwg 收藏夹1;");
    EXPECT_EQ(renamed.document.blocks[0].id, block.id);
    EXPECT_TRUE(MoveCollectedBlock(a, first, odd, block.id, false).Is(u"success"));
    EXPECT_EQ(Wire("mvff"), kA + "mvff" + q + "&ofid=" + f1 + "&favorites_id=" + f2 + "&dwg_id=" + U8(block.id) + "&force=0");
    EXPECT_EQ(Describe(FetchFolderBlocks(a, odd).document.blocks), "门&2.dwg 新 名&1;");

    // The other user sees none of it and can change none of it; his own 收藏夹1 is his alone.
    EXPECT_TRUE(FetchCollection(b, false).Is(u"empty"));
    EXPECT_TRUE(FetchFolderBlocks(b, odd).Is(u"error"));
    EXPECT_TRUE(DeleteCollectedBlock(b, odd, block.id).Is(u"error"));
    EXPECT_TRUE(DeleteFolder(b, odd).Is(u"error"));
    EXPECT_FALSE(Make(b, kDefaultFolderName).empty());
    EXPECT_EQ(Describe(FetchFolderNames(b).document.folders), "收藏夹1[]");

    EXPECT_TRUE(DeleteCollectedBlock(a, odd, block.id).Is(u"success"));
    EXPECT_EQ(Wire("dwg_collect"), kA + "dwg_collect" + q + "&operate=del&favorites_id=" + f2 + "&dwg_id=" + U8(block.id));
    EXPECT_TRUE(DeleteFolder(a, odd).Is(u"success"));
    EXPECT_EQ(Wire("favorite"), kA + "favorite" + q + "&favorites_id=" + f2 + "&operate=del");
    EXPECT_EQ(Describe(FetchCollection(a, true).document.folders), "收藏夹1[b.dwg 106 b 收藏夹1;]");
}

TEST_F(Collections, RefusalsShowTheirTexts) {
    const std::u16string first = Make(a, kDefaultFolderName), second = Make(a, u"收藏夹2");
    ASSERT_TRUE(CollectBlockFile(a, first, File("b.dwg"), Ask).Is(u"1"));
    ASSERT_TRUE(CollectBlockFile(a, second, File("b.dwg"), Ask).Is(u"1"));
    ASSERT_TRUE(CollectBlockFile(a, first, File("门 1.dwg"), Ask).Is(u"1"));
    const BlockListReply blocks = FetchFolderBlocks(a, first);
    ASSERT_EQ(Describe(blocks.document.blocks), "b.dwg 收藏夹1;门 1.dwg 收藏夹1;");
    const std::u16string bId = blocks.document.blocks[0].id, door = blocks.document.blocks[1].id;

    const std::pair<CollectionRoad, std::function<CollectionReply()>> calls[] = {
        {NewFolderDialog, [&] { return AddFolder(a, u"收藏夹2"); }},
        {NewFolderDialog, [&] { return AddFolder(a, u""); }},
        {RenameFolderDialog, [&] { return RenameFolder(a, second, kDefaultFolderName); }},
        {RenameFolderDialog, [&] { return RenameFolder(a, second, u""); }},
        {RenameFolderDialog, [&] { return RenameFolder(b, second, u"x"); }},  // not his folder
        {FolderDeletion, [&] { return DeleteFolder(a, u"999"); }},
        {BlockDeletion, [&] { return DeleteCollectedBlock(a, second, door); }},
        {CollectDialogUpload, [&] { return CollectBlockFile(a, first, File("b.dwg"), Ask); }},
        {CollectDialogUpload, [&] { return CollectBlockFile(a, first, File("note.txt"), Ask); }},
        {CollectDialogReplace, [&] { return CollectBlockFile(a, first, File("note.txt"), Replace); }},
        {AddFromDisk, [&] { return CollectBlockFile(a, u"999", File("b.dwg"), FromDisk); }},
        {MoveBlockDialog, [&] { return MoveCollectedBlock(a, first, second, bId, false); }},
        {RenameBlockDialog, [&] { return RenameCollectedBlock(a, first, door, u"b.dwg"); }},
        {RenameBlockDialog, [&] { return RenameCollectedBlock(a, second, door, u"c.dwg"); }},
        {LoadCollection, [&] { return FetchCollection(u"nobody", false); }},  // an unknown token: 400
        // Good answers show nothing.
        {LoadCollection, [&] { return FetchCollection(b, false); }},
        {LoadCollection, [&] { return FetchCollection(a, false); }},
        {CollectDialogUpload, [&] { return CollectBlockFile(a, second, File("门 1.dwg"), Ask); }},
        {MoveBlockDialog, [&] { return MoveCollectedBlock(a, first, second, bId, true); }},
        {BlockDeletion, [&] { return DeleteCollectedBlock(a, first, door); }},
    };
    Lines shown;
    for (const auto& [road, call] : calls) {
        const CollectionReply reply = call();
        const std::string text = !reply.delivered ? "lost" : reply.text.starts_with(u"<?xml") ? "doc" : U8(reply.text);
        shown.push_back(text + " > " + Show(MessageForReply(road, reply)));
    }
    EXPECT_EQ(shown, (Lines{"favorites is exist > line /已有此文件，请修改///",
                            "error > line /新建文件夹失败，请重试///",
                            "favorites is exist > line /已有此文件，请修改///",
                            "error > line /更改名称失败，请重试///",
                            "error > line /更改名称失败，请重试///",
                            "error > tip 删除文件夹/删除失败，请重试//确定/",
                            "error > tip 删除图块/删除失败，请重试//确定/",
                            "2 > tip 收藏图块/此位置包含同名图块/是否替换/替换/取消",
                            "3 > tip 收藏图块/图块收藏失败，请重试。//确定/",
                            "3 > -",
                            "3 > tip Ombrel/收藏失败，然后重试//确定/",
                            "filename is exist > tip 移动图块/此位置包含同名图块/是否要替换？/替换/取消移动",
                            "filename is exist > line /已有此文件，请修改///",
                            "file is not exist > line /已有此文件，请修改///",
                            "lost > status /加载失败，请连接网络后重试///",
                            "empty > -", "doc > -", "1 > -", "success > -", "success > -"}));
    // The move replaced the b.dwg that was there; the folder limit refuses a 19th folder.
    const BlockListReply moved = FetchFolderBlocks(a, second);
    EXPECT_EQ(Describe(moved.document.blocks), "b.dwg 收藏夹2;门 1.dwg 收藏夹2;");
    EXPECT_EQ(moved.document.blocks.at(0).id, bId);
    EXPECT_EQ(Describe(FetchFolderBlocks(a, first).document.blocks), "");
    for (int n = 3; n <= 18; ++n) ASSERT_FALSE(Make(a, W("收藏夹" + std::to_string(n))).empty()) << n;
    EXPECT_EQ(Show(MessageForReply(NewFolderDialog, AddFolder(a, u"收藏夹19"))), "line /新建文件夹失败，请重试///");
    EXPECT_EQ(FetchFolderNames(a).document.folders.size(), 18u);
}

// Each fault on each collection path alone: the transport's verdict, one request per call
// (nothing is retried), and what each caller shows for it.
TEST_F(Collections, TransportFailuresOnEveryPath) {
    const std::u16string first = Make(a, kDefaultFolderName), second = Make(a, u"收藏夹2");
    ASSERT_TRUE(CollectBlockFile(a, first, File("b.dwg"), Ask).Is(u"1"));
    struct Call {
        std::optional<CollectionRoad> road;
        std::string path;
        std::function<CollectionReply()> run;
    };
    const Call calls[] = {
        {LoadCollection, "get_u_collect", [&] { return FetchCollection(a, false); }},
        {LoadDefaultFolder, "favorite", [&] { return AddFolder(a, kDefaultFolderName); }},
        {CheckOldCollection, "get_u_collect", [&] { return FetchCollection(a, true); }},
        {CollectDialogOpen, "get_u_f", [&] { return FetchFolderNames(a); }},
        {NewFolderDialog, "favorite", [&] { return AddFolder(a, u"新"); }},
        {RenameFolderDialog, "favorite", [&] { return RenameFolder(a, second, u"x"); }},
        {FolderDeletion, "favorite", [&] { return DeleteFolder(a, second); }},
        {BlockDeletion, "dwg_collect", [&] { return DeleteCollectedBlock(a, first, u"999"); }},
        {CollectDialogUpload, "dwg_collectu", [&] { return CollectBlockFile(a, first, File("b.dwg"), Ask); }},
        {CollectDialogReplace, "dwg_collectu", [&] { return CollectBlockFile(a, first, File("b.dwg"), Replace); }},
        {AddFromDisk, "dwg_collectu", [&] { return CollectBlockFile(a, first, File("b.dwg"), FromDisk); }},
        {MoveBlockDialog, "mvff", [&] { return MoveCollectedBlock(a, first, second, u"999", false); }},
        {RenameBlockDialog, "cdwgrn", [&] { return RenameCollectedBlock(a, first, u"999", u"c.dwg"); }},
        {std::nullopt, "favorite_dwgs", [&] { return FetchFolderBlocks(a, first); }},
    };
    auto run = [&](const service::Fault& fault) {
        Lines lines;
        for (const Call& call : calls) {
            service.faults().set("/gallery/" + call.path, fault);
            const long before = service.counters().get("/gallery/" + call.path).count;
            const CollectionReply reply = call.run();
            service.faults().clearAll();
            lines.push_back(call.path + (reply.delivered ? (reply.text.empty() ? " empty " : " text ") : " lost ") +
                            (service.counters().get("/gallery/" + call.path).count == before + 1 ? "" : "retried ") +
                            (call.road ? Show(MessageForReply(*call.road, reply)) : "-"));
        }
        return lines;
    };
    const Lines lost = {"get_u_collect lost status /加载失败，请连接网络后重试///",
                        "favorite lost status /加载失败，请连接网络后重试///",
                        "get_u_collect lost tip Ombrel/收藏失败/请先连接网络，然后重试/确定/",
                        "get_u_f lost tip 收藏图块/网络异常，请检查网络后重试//确定/",
                        "favorite lost -",
                        "favorite lost -",
                        "favorite lost tip 删除文件夹/删除失败，请检查网络//确定/",
                        "dwg_collect lost tip 删除图块/删除失败/请检查网络后重试/确定/",
                        "dwg_collectu lost tip 收藏图块/网络异常，请检查网络后重试//确定/",
                        "dwg_collectu lost -",
                        "dwg_collectu lost -",
                        "mvff lost -",
                        "cdwgrn lost -",
                        "favorite_dwgs lost -"};
    for (const service::Fault& fault : {service::Fault{.status = 500}, service::Fault{.truncateAt = 5},
                                        service::Fault{.drop = true}}) {
        SCOPED_TRACE(service::FaultText(fault));
        EXPECT_EQ(run(fault), lost);
        // A refused request was not carried out: no folder made, renamed or deleted.
        if (fault.status) {
            EXPECT_EQ(Describe(FetchCollection(a, true).document.folders), "收藏夹1[b.dwg 106 b 收藏夹1;]收藏夹2[]");
        }
    }
    // An empty body is delivered: only the folder load and the deletions take it for a failure.
    EXPECT_EQ(run({.emptyBody = true}),
              (Lines{"get_u_collect empty status /加载失败，请连接网络后重试///", "favorite empty -", "get_u_collect empty -",
                     "get_u_f empty -", "favorite empty -", "favorite empty -",
                     "favorite empty tip 删除文件夹/删除失败，请重试//确定/",
                     "dwg_collect empty tip 删除图块/删除失败，请重试//确定/", "dwg_collectu empty -",
                     "dwg_collectu empty -", "dwg_collectu empty -", "mvff empty -", "cdwgrn empty -",
                     "favorite_dwgs empty -"}));
}

// Missing attributes read empty; elements out of place are passed over; "empty", an empty
// text and a cut document are no document; a well-formed one without root says so.
TEST(CollectionDocuments, OddDocuments) {
    const FolderListDocument folders = ParseFolderList(
        u"<root><favorites favorites_id=\"7\"><dwg filename=\"a.dwg\" size=\"x\"/><other/>"
        u"<dwg gv=\"1\" size=\"12\" dwg_info=\"i\" dwg_url=\"u\"/></favorites><dwg filename=\"stray\"/>"
        u"<favorites favorites_name=\"n &amp; m\"/></root>");
    ASSERT_EQ(folders.shape, DocumentShape::Root);
    EXPECT_EQ(Describe(folders.folders), "[a.dwg 0 ; 12 b i;]n & m[]");
    EXPECT_EQ(U8(folders.folders[0].id + u"," + folders.folders[1].id + u"," + folders.folders[0].blocks[1].url), "7,,u");
    const BlockListDocument blocks =
        ParseBlockList(u"<root><dwg dwg_id=\"5\" filename=\"x\" dwg_info=\"f\"/><favorites><dwg dwg_id=\"6\"/></favorites><dwg/></root>");
    ASSERT_EQ(blocks.shape, DocumentShape::Root);
    EXPECT_EQ(Describe(blocks.blocks), "x f; ;");
    EXPECT_EQ(U8(blocks.blocks[0].id + u"," + blocks.blocks[1].id), "5,");
    using enum DocumentShape;
    for (const auto& [text, shape] : {std::pair<std::u16string, DocumentShape>{u"empty", Unparsable}, {u"", Unparsable},
                                      {u"<root><favorites favorites_id=\"1\"", Unparsable},
                                      {u"<other><favorites favorites_id=\"1\"/></other>", NoRoot}}) {
        EXPECT_EQ(ParseFolderList(text).shape, shape) << U8(text);
        EXPECT_EQ(ParseBlockList(text).shape, shape) << U8(text);
    }
}

}  // namespace
}  // namespace marrowfin::test
