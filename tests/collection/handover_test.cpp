// The hand-over of the old local collection against the stand-in service:
// the archive road end to end with the archive's bytes, every fault with the
// old folder checked file by file afterwards, the file-by-file road, and the
// verdicts of the check before a collection action.

#include <gtest/gtest.h>

#include <minizip/unzip.h>
#include <zlib.h>

#include <filesystem>
#include <functional>
#include <map>

#include "collection/cloud_replacement.h"
#include "collection/handover_calls.h"
#include "collection/old_collection_check.h"
#include "fault_switches.h"
#include "net/http_transport.h"
#include "platform/text.h"
#include "request_counters.h"
#include "store/store_ini.h"
#include "store/store_paths.h"
#include "support/live_service.h"
#include "support/temp_home.h"
#include "support/test_paths.h"
#include "user_state.h"

namespace marrowfin::test {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;
using Files = std::map<std::string, std::string>;  // relative path -> bytes; a directory ends in '/'

// Below `dir` in listing order, each directory before what it holds, as the archive lists them.
void Walk(const fs::path& dir, const std::string& prefix, std::vector<std::pair<std::string, std::string>>& out) {
    for (const fs::directory_entry& e : fs::directory_iterator(dir)) {
        const std::string name = prefix + e.path().filename().string();
        out.emplace_back(e.is_directory() ? name + "/" : name, e.is_directory() ? "" : ReadBytes(e.path()));
        if (e.is_directory()) Walk(e.path(), name + "/", out);
    }
}
Files Snapshot(const std::string& dir) {
    std::vector<std::pair<std::string, std::string>> entries;
    if (fs::exists(dir)) Walk(dir, "", entries);
    return Files(entries.begin(), entries.end());
}

struct Handover : ::testing::Test {
    void SetUp() override {
        service = StartLiveService(WriteLibrary(home.file("data"), "gallery\tG\t1\n"));
        ASSERT_TRUE(service.users().addUser(30001, "tk"));
        input = {30001, u"tk", StoreRoot()};
        old = U8(input.root) + "/我的收藏";
        packing = U8(input.root) + "/30001";
    }
    // Three folders, 40 drawings (two in a subfolder, one with an upper-case suffix),
    // a text file and an empty subfolder; one drawing crosses the packer's read piece.
    void MakeOldCollection() {
        const char* folders[] = {"门窗", "Sofa & 床", "空 间"};
        for (int i = 0; i < 40; ++i) {
            const std::string dir = old + "/" + folders[i % 3] + (i < 2 ? "/旧" : "");
            fs::create_directories(dir);
            WriteBytes(dir + "/块" + std::to_string(i) + (i == 7 ? ".DWG" : ".dwg"),
                       "AC1015" + std::string(i == 5 ? 150000 : 100 + i * 37, static_cast<char>('a' + i % 26)));
        }
        WriteBytes(old + "/门窗/说明.txt", "not a drawing");
        fs::create_directories(old + "/空 间/无");
        before = Snapshot(old);
    }
    // The cloud collection as "folder/file" -> the bytes the service hands out.
    Files Cloud() {
        Files cloud;
        for (const ListedFolder& f : FetchCollection(u"tk", true).document.folders)
            for (const ListedBlock& b : f.blocks) {
                const std::string there = home.file("fetched");
                EXPECT_TRUE(DownloadFile(b.url, W(there), 0, 0)) << U8(b.url);
                cloud[U8(f.name + u"/" + b.filename)] = ReadBytes(there);
                fs::remove(there);
            }
        return cloud;
    }
    // The drawings of the old folder as the cloud should hold them: in the folder `where` names.
    Files Expected(const std::function<std::string(const std::string& path)>& where) {
        Files expected;
        for (const auto& [path, bytes] : before)
            if (path.ends_with(".dwg") || path.ends_with(".DWG"))
                expected[where(path) + "/" + fs::path(path).filename().string()] = bytes;
        return expected;
    }
    long Count(const std::string& path) { return service.counters().get("/gallery/" + path).count; }
    std::string Counts() {
        std::string out;
        for (const char* p : {"lfsync", "lfupload", "lfstatu", "get_u_f", "dwg_collectu", "lfupload_end"})
            out += " " + std::to_string(Count(p));
        return out;
    }
    // The disk after a hand-over: the old folder as it was, nothing under the packing name.
    void ExpectDiskAsBefore(const std::string& road) {
        EXPECT_EQ(Snapshot(old), before) << road;
        EXPECT_FALSE(fs::exists(packing)) << road;
    }

    TempHome home;
    service::ServiceHandle service;
    HandoverInput input;
    std::string old, packing;
    Files before;
    const HandoverPacing quick{.busyPauseMs = 5, .busyReplies = 4, .failedRequests = 6};
};

TEST_F(Handover, ThreeFoldersOfFortyDrawingsReachTheCloudInOneArchive) {
    MakeOldCollection();
    EXPECT_EQ(CheckOldCollection(input).step, OldCollectionStep::StartReplacement);
    ASSERT_TRUE(ReplaceCloudCollection(input, {.busyPauseMs = 20}));
    ExpectDiskAsBefore("archive");
    // The service worked on for a while: polled until idle, nothing sent file by file.
    EXPECT_GT(Count("lfstatu"), 1);
    EXPECT_EQ(Counts(), " 1 1 " + std::to_string(Count("lfstatu")) + " 0 0 0");
    // The folders were announced in listing order, each name as it is.
    std::string announced;
    for (const fs::directory_entry& e : fs::directory_iterator(old)) announced += (announced.empty() ? "" : "*") + e.path().filename().string();
    EXPECT_EQ(service.users().sync(30001).folders, announced);
    EXPECT_EQ(Cloud(), Expected([](const std::string& path) { return path.substr(0, path.find('/')); }));
    EXPECT_EQ(ReadOldCollectTip(), u"0");  // the panel writes it
    EXPECT_FALSE(fs::exists(U8(NewInfoIniPath())));

    // The archive stays: every entry in listing order, deflated, no time, no attributes, its data whole.
    std::vector<std::pair<std::string, std::string>> listed;
    Walk(old, "", listed);
    auto entry = [](std::string name, int method, const tm_unz& t, uLong attributes, const std::string& data) {
        return name + " " + std::to_string(method) + " " + std::to_string(t.tm_hour) + ":" + std::to_string(t.tm_min) + ":" +
               std::to_string(t.tm_sec) + " " + std::to_string(t.tm_mday) + "." + std::to_string(t.tm_mon) + "." +
               std::to_string(t.tm_year) + " " + std::to_string(attributes) + " " + std::to_string(data.size()) + "/" +
               std::to_string(std::hash<std::string>{}(data));
    };
    Lines expected, seen;
    for (auto [name, bytes] : listed) {
        for (size_t at = 0; (at = name.find('/', at)) != std::string::npos && at + 1 < name.size(); at += 2) name.insert(at, "/");
        expected.push_back(entry("30001//" + name, Z_DEFLATED, tm_unz{0, 0, 0, 0, 0, 1980}, 0, bytes));
    }
    unzFile zip = unzOpen((packing + ".zip").c_str());
    ASSERT_TRUE(zip);
    for (int r = unzGoToFirstFile(zip); r == UNZ_OK; r = unzGoToNextFile(zip)) {
        char name[512];
        unz_file_info i;
        ASSERT_EQ(unzGetCurrentFileInfo(zip, &i, name, sizeof name, nullptr, 0, nullptr, 0), UNZ_OK);
        std::string data(i.uncompressed_size, '\0');
        ASSERT_EQ(unzOpenCurrentFile(zip), UNZ_OK);
        EXPECT_EQ(unzReadCurrentFile(zip, data.data(), static_cast<unsigned>(data.size())), static_cast<int>(data.size()));
        EXPECT_EQ(unzCloseCurrentFile(zip), UNZ_OK);  // checks the CRC
        seen.push_back(entry(name, static_cast<int>(i.compression_method), i.tmu_date, i.external_fa, data));
    }
    unzClose(zip);
    EXPECT_EQ(seen, expected);

    // The cloud now holds data: the next open asks the user.
    EXPECT_EQ(CheckOldCollection(input).step, OldCollectionStep::AskUser);
}

TEST_F(Handover, EveryFaultLeavesTheOldFolderAsItWas) {
    MakeOldCollection();
    // Replies put in with a status are not carried out: the service never takes an archive in here.
    const service::Fault refused{.status = 503}, silent{.status = 503, .emptyBody = true},
        empty{.status = 200, .emptyBody = true}, error{.status = 200, .body = "error"}, drop{.drop = true},
        busy{.body = "1"}, success{.body = "success"}, three{.status = 200, .body = "3"};
    struct Road {
        std::string name;
        std::vector<std::pair<std::string, service::Fault>> faults;
        int32_t user = 30001;
        bool packingTaken = false;
    };
    const std::vector<Road> roads = {
        {"announcement refused", {{"lfsync", refused}}},
        {"upload refused", {{"lfupload", refused}}},
        {"upload refused in silence, service idle", {{"lfupload", silent}}},
        {"archive rejected", {{"lfupload", error}}},
        {"archive of an unknown user", {}, 30002},
        {"service never done", {{"lfupload", empty}, {"lfstatu", busy}}},
        {"service gone", {{"lfupload", drop}, {"lfstatu", drop}}},
        {"upload broke, service done", {{"lfupload", drop}, {"lfstatu", success}}},
        {"upload answered, then success", {{"lfupload", empty}, {"lfstatu", success}}},
        {"five failed polls, then idle", {{"lfupload", empty}, {"lfstatu", {.drop = true, .remaining = 5}}}},
        {"packing name taken", {}, 30001, true},
        {"packing name taken, a drawing refused", {{"dwg_collectu", three}}, 30001, true},
        {"packing name taken, no folder list", {{"get_u_f", refused}}, 30001, true},
    };
    Lines seen;
    for (const Road& road : roads) {
        service.counters().reset();
        for (const auto& [path, fault] : road.faults) service.faults().set("/gallery/" + path, fault);
        if (road.packingTaken) {
            fs::create_directories(packing);
            WriteBytes(packing + "/mine.txt", "not the old folder");
        }
        const bool done = ReplaceCloudCollection({road.user, u"tk", input.root}, quick);
        service.faults().clearAll();
        EXPECT_EQ(Snapshot(old), before) << road.name;
        EXPECT_EQ(Snapshot(packing), (road.packingTaken ? Files{{"mine.txt", "not the old folder"}} : Files{})) << road.name;
        fs::remove_all(packing);
        seen.push_back(road.name + (done ? " > done" : " > failed") + Counts());
    }
    EXPECT_EQ(seen, (Lines{
        // lfsync lfupload lfstatu get_u_f dwg_collectu lfupload_end
        "announcement refused > failed 1 0 0 0 0 0",
        "upload refused > failed 1 1 0 0 0 0",
        "upload refused in silence, service idle > failed 1 1 1 0 0 0",
        "archive rejected > failed 1 1 0 0 0 0",
        "archive of an unknown user > failed 1 1 0 0 0 0",
        "service never done > failed 1 1 4 0 0 0",
        "service gone > failed 1 1 6 0 0 0",
        "upload broke, service done > done 1 1 1 0 0 0",
        "upload answered, then success > failed 1 1 1 0 0 0",
        "five failed polls, then idle > done 1 1 6 0 0 0",
        "packing name taken > done 1 0 0 1 40 1",
        "packing name taken, a drawing refused > failed 1 0 0 1 1 1",
        "packing name taken, no folder list > failed 1 0 0 1 0 1"}));
}

// The service has a folder named like one of the old ones: its drawings go there,
// the others (those of the subfolder too, by the name of the directory they lie
// in) into the user's first folder. An archive that cannot be written takes this road too.
TEST_F(Handover, FileByFileWhenTheFolderCannotBePacked) {
    MakeOldCollection();
    ASSERT_TRUE(AddFolder(u"tk", u"收藏夹1").delivered && AddFolder(u"tk", u"门窗").delivered);
    fs::create_directories(packing + ".zip");
    ASSERT_TRUE(ReplaceCloudCollection(input, quick));
    ExpectDiskAsBefore("file by file");
    EXPECT_EQ(Count("lfupload"), 0);
    EXPECT_EQ(Cloud(), Expected([](const std::string& path) {
        return path.starts_with("门窗/") && !path.starts_with("门窗/旧/") ? "门窗" : "收藏夹1";
    }));
}

TEST_F(Handover, VerdictsOfTheCheck) {
    auto check = [&](const std::string& name) {
        const OldCollectionVerdict v = CheckOldCollection(input);
        service.faults().clearAll();
        return name + " > " + std::to_string(v.result) + " " + (v.syncStatus ? std::to_string(*v.syncStatus) : "-") +
               (v.startPollTimer ? " timer" : "") + (v.startReplacement ? " replace" : "") + " " + U8(v.message.text);
    };
    const service::Fault busy{.body = "1"}, drop{.drop = true};
    Lines seen;
    seen.push_back(check("nothing old"));
    fs::create_directories(old + "/a/b");
    seen.push_back(check("directories only"));
    service.faults().set("/gallery/lfstatu", busy);
    seen.push_back(check("directories only, transfer running"));
    service.faults().set("/gallery/lfstatu", drop);
    seen.push_back(check("directories only, status lost"));
    // A process that ended while packing left the folder under the user number.
    WriteBytes(old + "/a/b/x.dwg", "AC1015");
    fs::rename(old, packing);
    seen.push_back(check("files, cloud empty"));
    service.faults().set("/gallery/lfstatu", busy);
    seen.push_back(check("files, transfer running"));
    service.faults().set("/gallery/lfstatu", drop);
    seen.push_back(check("files, status lost"));
    service.faults().set("/gallery/get_u_collect", drop);
    seen.push_back(check("files, cloud unreadable"));
    ASSERT_TRUE(AddFolder(u"tk", u"f").delivered);
    seen.push_back(check("files, cloud with data"));
    WriteOldCollectTip(u"1");
    const long asked = Count("lfstatu");
    seen.push_back(check("settled"));
    EXPECT_EQ(Count("lfstatu"), asked);
    EXPECT_EQ(seen, (Lines{"nothing old > 1 - ", "directories only > 1 - ", "directories only, transfer running > 2 2 ",
                           "directories only, status lost > 0 4 ", "files, cloud empty > 2 2 replace ",
                           "files, transfer running > 2 2 timer ", "files, status lost > 0 4 ",
                           "files, cloud unreadable > 0 - 收藏失败", "files, cloud with data > 2 0 ", "settled > 1 - "}));
    // lfstatu's words: only "1" is busy.
    std::string words;
    for (const service::Fault& f : {busy, service::Fault{.body = "0"}, service::Fault{.body = "success"}, drop}) {
        service.faults().set("/gallery/lfstatu", f);
        words += std::to_string(QuerySyncStatus(u"tk"));
    }
    EXPECT_EQ(words, "1002");
}

}  // namespace
}  // namespace marrowfin::test
