// The collection calls against the stand-in service: one road through every
// call with its request line, its reply and what it shows, two users kept
// apart, the folder limit; the same road with each transport failure on
// each path; odd documents.

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <set>

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

// A message in one line: kind, then title/text/second/accept/decline.
std::string Show(const CollectionMessage& m) {
    static const char* kinds[] = {"-", "status ", "line ", "tip "};
    if (m.kind == CollectionMessage::None) return "-";
    return kinds[m.kind] + Utf16ToUtf8(m.title + u"/" + m.text + u"/" + m.second + u"/" + m.accept + u"/" + m.decline);
}

// Blocks as "id filename info size [b] url;", the service's base cut off the url.
std::string Blocks(const std::vector<ListedBlock>& blocks, const std::string& base) {
    std::string out;
    for (const ListedBlock& b : blocks)
        out += Utf16ToUtf8(b.id + u" " + b.filename + u" " + b.info) + " " + std::to_string(b.size) + (b.boutique ? " b " : " ") +
               Utf16ToUtf8(b.url).substr(Utf16ToUtf8(b.url).starts_with(base) ? base.size() : 0) + ";";
    return out;
}
// A document as "<...>", folders as "id name[blocks]"; "noroot", or empty when unparsable.
std::string Describe(const FolderListDocument& d, const std::string& base = "") {
    std::string out = "<";
    for (const ListedFolder& f : d.folders) out += Utf16ToUtf8(f.id + u" " + f.name) + "[" + Blocks(f.blocks, base) + "]";
    return d.shape == DocumentShape::Root ? out + ">" : d.shape == DocumentShape::NoRoot ? "noroot" : "";
}
std::string Describe(const BlockListDocument& d, const std::string& base = "") {
    if (d.shape != DocumentShape::Root) return d.shape == DocumentShape::NoRoot ? "noroot" : "";
    return "<" + Blocks(d.blocks, base) + ">";
}

struct Outcome {
    CollectionReply reply;
    std::string summary;  // the word, "lost", or the document as "<...>"
};

struct Collections : ::testing::Test {
    void SetUp() override {
        // The boutique gallery holds a b.dwg, so a collected b.dwg is marked boutique.
        service = StartLiveService(WriteLibrary(home.file("data"), "gallery\tG\t1\nclass\tG\tC\t1\nblock\tG\tC\tb.dwg\t0"));
        base = service.baseUrl();
        ASSERT_TRUE(service.users().addUser(20001, "ta") && service.users().addUser(20002, "tb"));
        WriteBytes(home.file("门 1.dwg"), "AC1015" + std::string(2000, 'd'));
        WriteBytes(home.file("b.dwg"), "AC1015" + std::string(100, 'd'));
        WriteBytes(home.file("note.txt"), "not a drawing");
    }
    Outcome R(const CollectionReply& r) { return {r, r.delivered ? Utf16ToUtf8(r.text) : "lost"}; }
    template <class Reply>
    Outcome R(const Reply& r) {
        const std::string document = Describe(r.document, base);
        return document.empty() ? R(static_cast<const CollectionReply&>(r)) : Outcome{r, document};
    }
    long Count(const std::string& path) { return service.counters().get("/gallery/" + path).count; }

    struct Step {
        std::string path;
        std::optional<CollectionRoad> road;
        std::function<Outcome()> call;
        bool wire = false;  // the request line goes into the step's line
    };
    // Every call and every refusal, by user ta unless tb is named; ids as the fresh service gives them.
    std::vector<Step> Steps() {
        const std::u16string door = Utf8ToUtf16(home.file("门 1.dwg")), bf = Utf8ToUtf16(home.file("b.dwg")),
                             note = Utf8ToUtf16(home.file("note.txt"));
        const std::u16string odd = u"A&B=C+D;E %41#F";  // every mark that would cut a query short
        return {
            {"get_u_collect", LoadCollection, [=, this] { return R(FetchCollection(a, false)); }, true},
            {"get_u_f", CollectDialogOpen, [=, this] { return R(FetchFolderNames(a)); }, true},
            {"favorite", LoadDefaultFolder, [=, this] { return R(AddFolder(a, kDefaultFolderName)); }, true},
            {"favorite", NewFolderDialog, [=, this] { return R(AddFolder(a, odd)); }, true},
            {"favorite", NewFolderDialog, [=, this] { return R(AddFolder(a, odd)); }},
            {"favorite", NewFolderDialog, [=, this] { return R(AddFolder(a, u"")); }},
            {"favorite", RenameFolderDialog, [=, this] { return R(RenameFolder(a, u"2", u"新 名&1")); }, true},
            {"favorite", RenameFolderDialog, [=, this] { return R(RenameFolder(a, u"2", kDefaultFolderName)); }},
            {"favorite", RenameFolderDialog, [=, this] { return R(RenameFolder(b, u"2", u"x")); }},
            {"dwg_collectu", CollectDialogUpload, [=, this] { return R(CollectBlockFile(a, u"1", door, Ask)); }, true},
            {"dwg_collectu", CollectDialogUpload, [=, this] { return R(CollectBlockFile(a, u"1", door, Ask)); }},
            {"dwg_collectu", CollectDialogReplace, [=, this] { return R(CollectBlockFile(a, u"1", door, Replace)); }, true},
            {"dwg_collectu", AddFromDisk, [=, this] { return R(CollectBlockFile(a, u"1", door, FromDisk)); }, true},
            {"dwg_collectu", {}, [=, this] { return R(CollectBlockFile(a, u"1", door, Synchronise)); }, true},
            {"dwg_collectu", CollectDialogUpload, [=, this] { return R(CollectBlockFile(a, u"1", note, Ask)); }},
            {"dwg_collectu", CollectDialogReplace, [=, this] { return R(CollectBlockFile(a, u"1", note, Replace)); }},
            {"dwg_collectu", AddFromDisk, [=, this] { return R(CollectBlockFile(a, u"9", bf, FromDisk)); }},
            {"dwg_collectu", {}, [=, this] { return R(CollectBlockFile(a, u"2", bf, Ask)); }},
            {"dwg_collectu", {}, [=, this] { return R(CollectBlockFile(a, u"1", bf, Ask)); }},
            {"favorite_dwgs", {}, [=, this] { return R(FetchFolderBlocks(a, u"1")); }, true},
            {"get_u_collect", LoadCollection, [=, this] { return R(FetchCollection(a, true)); }, true},
            {"cdwgrn", RenameBlockDialog, [=, this] { return R(RenameCollectedBlock(a, u"1", u"3", u"门&2.dwg")); }, true},
            {"cdwgrn", RenameBlockDialog, [=, this] { return R(RenameCollectedBlock(a, u"1", u"3", u"b.dwg")); }},
            {"cdwgrn", RenameBlockDialog, [=, this] { return R(RenameCollectedBlock(a, u"2", u"3", u"c.dwg")); }},
            {"mvff", MoveBlockDialog, [=, this] { return R(MoveCollectedBlock(a, u"1", u"2", u"5", false)); }, true},
            {"mvff", MoveBlockDialog, [=, this] { return R(MoveCollectedBlock(a, u"1", u"2", u"5", true)); }, true},
            {"favorite_dwgs", {}, [=, this] { return R(FetchFolderBlocks(a, u"2")); }},
            {"get_u_collect", LoadCollection, [=, this] { return R(FetchCollection(b, false)); }},
            {"dwg_collect", BlockDeletion, [=, this] { return R(DeleteCollectedBlock(b, u"2", u"5")); }},
            {"favorite", FolderDeletion, [=, this] { return R(DeleteFolder(b, u"2")); }},
            {"favorite", NewFolderDialog, [=, this] { return R(AddFolder(b, kDefaultFolderName)); }},
            {"dwg_collect", BlockDeletion, [=, this] { return R(DeleteCollectedBlock(a, u"2", u"5")); }, true},
            {"favorite", FolderDeletion, [=, this] { return R(DeleteFolder(a, u"2")); }, true},
            {"get_u_collect", CheckOldCollection, [=, this] { return R(FetchCollection(a, false)); }},
        };
    }

    TempHome home;
    service::ServiceHandle service;
    std::string base;  // the service's address, cut off the urls
    const std::u16string a = u"ta", b = u"tb";
};

TEST_F(Collections, EveryCallOnTheWireWithItsRefusalsAndTwoUsersApart) {
    Lines seen;
    for (const Step& step : Steps()) {
        const Outcome o = step.call();
        seen.push_back((step.wire ? service.counters().get("/gallery/" + step.path).last.substr(14) + " > " : "") + o.summary + " > " +
                       (step.road ? Show(MessageForReply(*step.road, o.reply)) : "-"));
    }
    const std::string q = "?type=client&usertoken=ta";
    EXPECT_EQ(
        seen,
        (Lines{
            "get_u_collect" + q + "&kind=dwg > empty > -", "get_u_f?usertoken=ta > <> > -",
            "favorite" + q + "&operate=add&favorites=%E6%94%B6%E8%97%8F%E5%A4%B91 > <1 收藏夹1[]> > -",
            "favorite" + q + "&operate=add&favorites=A%26B%3DC%2BD%3BE%20%2541%23F > <1 收藏夹1[]2 A&B=C+D;E %41#F[]> > -",
            "favorites is exist > line /已有此文件，请修改///", "error > line /新建文件夹失败，请重试///",
            "favorite" + q + "&operate=update&favorites_id=2&newname=%E6%96%B0%20%E5%90%8D%261 > success > -",
            "favorites is exist > line /已有此文件，请修改///", "error > line /更改名称失败，请重试///",
            "dwg_collectu?usertoken=ta&favorites_id=1&force=0 > 1 > -", "2 > tip 收藏图块/此位置包含同名图块/是否替换/替换/取消",
            "dwg_collectu?usertoken=ta&favorites_id=1&force=1 > 1 > -", "dwg_collectu?usertoken=ta&favorites_id=1&force=true > 1 > -",
            "dwg_collectu?usertoken=ta&favorites_id=1&force=false > 2 > -", "3 > tip 收藏图块/图块收藏失败，请重试。//确定/", "3 > -",
            "3 > tip Ombrel/收藏失败，然后重试//确定/", "1 > -", "1 > -",
            "favorite_dwgs" + q + "&favorites_id=1 > <3 门 1.dwg 收藏夹1 0 /ufiles/3/门 1.dwg;5 b.dwg 收藏夹1 0 /ufiles/5/b.dwg;> > -",
            "get_u_collect" + q +
                "&kind=dwg&needdwg=1 > <1 收藏夹1[ 门 1.dwg 收藏夹1 2006 /ufiles/3/门 1.dwg; b.dwg 收藏夹1 106 b "
                "/ufiles/5/b.dwg;]2 新 名&1[ b.dwg 新 名&1 106 b /ufiles/4/b.dwg;]> > -",
            "cdwgrn" + q + "&favorites_id=1&dwg_id=3&newname=%E9%97%A8%262.dwg > <3 门&2.dwg 收藏夹1 0 /ufiles/3/门&2.dwg;> > -",
            "filename is exist > line /已有此文件，请修改///", "file is not exist > line /已有此文件，请修改///",
            "mvff" + q +
                "&ofid=1&favorites_id=2&dwg_id=5&force=0 > filename is exist > tip 移动图块/此位置包含同名图块/是否要替换？/替换/取消移动",
            "mvff" + q + "&ofid=1&favorites_id=2&dwg_id=5&force=1 > success > -", "<5 b.dwg 新 名&1 0 /ufiles/5/b.dwg;> > -",
            // The other user sees none of it and can change none of it; his 收藏夹1 is his alone.
            "empty > -", "error > tip 删除图块/删除失败，请重试//确定/", "error > tip 删除文件夹/删除失败，请重试//确定/",
            "<3 收藏夹1[]> > -", "dwg_collect" + q + "&operate=del&favorites_id=2&dwg_id=5 > success > -",
            "favorite" + q + "&favorites_id=2&operate=del > success > -", "<1 收藏夹1[]> > -"}));
    // An unknown token is refused like a failed connection; the 19th folder is refused.
    EXPECT_EQ(Show(MessageForReply(LoadCollection, FetchCollection(u"nobody", false))), "status /加载失败，请连接网络后重试///");
    for (size_t n = 2; n <= 18; ++n) ASSERT_EQ(AddFolder(a, Utf8ToUtf16("f" + std::to_string(n))).document.folders.size(), n);
    EXPECT_EQ(Show(MessageForReply(NewFolderDialog, AddFolder(a, u"f19"))), "line /新建文件夹失败，请重试///");
}

// Each fault on the path of each call alone: the verdict, one request per call (nothing is
// retried), and what the callers show. A refused request changes nothing on the service.
TEST_F(Collections, TransportFailuresOnEveryPath) {
    const std::vector<Step> steps = Steps();
    for (const Step& step : steps) (void)step.call();
    const std::string kept = R(FetchCollection(a, true)).summary;
    auto run = [&](const service::Fault& fault, bool delivered) {
        std::set<std::string> shown;
        for (const Step& step : steps) {
            service.faults().set("/gallery/" + step.path, fault);
            const long before = Count(step.path);
            const CollectionReply reply = step.call().reply;
            service.faults().clearAll();
            if (reply.delivered != delivered || (delivered && !reply.text.empty()) || Count(step.path) != before + 1)
                shown.insert(step.path + " odd");
            if (step.road && MessageForReply(*step.road, reply).kind != CollectionMessage::None)
                shown.insert(step.path + " > " + Show(MessageForReply(*step.road, reply)));
        }
        return shown;
    };
    const std::set<std::string> lost = {"get_u_collect > status /加载失败，请连接网络后重试///",
                                        "favorite > status /加载失败，请连接网络后重试///",
                                        "get_u_collect > tip Ombrel/收藏失败/请先连接网络，然后重试/确定/",
                                        "get_u_f > tip 收藏图块/网络异常，请检查网络后重试//确定/",
                                        "favorite > tip 删除文件夹/删除失败，请检查网络//确定/",
                                        "dwg_collect > tip 删除图块/删除失败/请检查网络后重试/确定/",
                                        "dwg_collectu > tip 收藏图块/网络异常，请检查网络后重试//确定/"};
    EXPECT_EQ(run({.status = 500}, false), lost);
    EXPECT_EQ(R(FetchCollection(a, true)).summary, kept);
    // A refused upload still hands over its page; a word in it is not taken for an answer.
    EXPECT_EQ(run({.status = 500, .body = "3"}, false), lost);
    // (A cut or dropped answer is a failure like a refused one: the transport's test.)
    // An empty body is delivered: only the folder load and the deletions take it for a failure.
    EXPECT_EQ(run({.emptyBody = true}, true), (std::set<std::string>{"get_u_collect > status /加载失败，请连接网络后重试///",
                                                                     "favorite > tip 删除文件夹/删除失败，请重试//确定/",
                                                                     "dwg_collect > tip 删除图块/删除失败，请重试//确定/"}));
}

// Missing attributes read empty and elements out of place are passed over; "empty", an
// empty text and a cut document are no document; a well-formed one without root says so.
TEST(CollectionDocuments, OddDocuments) {
    EXPECT_EQ(Describe(ParseFolderList(u"<root><favorites favorites_id=\"7\"><dwg filename=\"a\" size=\"x\"/><other/>"
                                       u"<dwg gv=\"1\" size=\"12\" dwg_info=\"i\" dwg_url=\"u\"/></favorites>"
                                       u"<dwg filename=\"stray\"/><favorites favorites_name=\"n &amp; m\"/></root>")),
              "<7 [ a  0 ;  i 12 b u;] n & m[]>");
    EXPECT_EQ(Describe(ParseBlockList(u"<root><dwg dwg_id=\"5\" filename=\"x\" dwg_info=\"f\"/><favorites>"
                                      u"<dwg dwg_id=\"6\"/></favorites><dwg/></root>")),
              "<5 x f 0 ;   0 ;>");
    std::string shapes;
    for (const char16_t* text : {u"empty", u"", u"<root><favorites favorites_id=\"1\"", u"<a><root/></a>"})
        shapes += Describe(ParseFolderList(text)) + "|" + Describe(ParseBlockList(text)) + ";";
    EXPECT_EQ(shapes, "|;|;|;noroot|noroot;");
}

}  // namespace
}  // namespace marrowfin::test
