// The hand-over of the old local collection against the stand-in service:
// the archive road end to end with the archive's bytes, every fault with the
// old folder checked file by file afterwards, the file-by-file road, and the
// verdicts of the check before a collection action.

#include <gtest/gtest.h>

#include <minizip/unzip.h>

#include <filesystem>
#include <map>

#include "collection/old_collection_check.h"
#include "fault_switches.h"
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
using service::Fault;
using Entries = std::vector<std::pair<std::string, std::string>>;  // path, bytes; a directory ends in '/'

// Below `dir` in listing order, each directory before what it holds, as the archive lists them:
// names joined by `separator` behind `prefix`.
Entries Walk(const fs::path& dir, const std::string& prefix = "", const std::string& separator = "/", Entries out = {}) {
    for (const fs::directory_entry& e : fs::directory_iterator(dir)) {
        const std::string name = prefix + e.path().filename().string();
        out.emplace_back(e.is_directory() ? name + "/" : name, e.is_directory() ? "" : ReadBytes(e.path()));
        if (e.is_directory()) out = Walk(e.path(), name + separator, separator, std::move(out));
    }
    return out;
}

struct Handover : ::testing::Test {
    void SetUp() override {
        service = StartLiveService(WriteLibrary(home.file("data"), "gallery\tG\t1\n"));
        ASSERT_TRUE(service.users().addUser(30001, "tk"));
        // Three folders, 40 drawings (two in a subfolder, one with an upper-case suffix, one
        // crossing the packer's read piece), a text file and an empty subfolder.
        const char* folders[] = {"门窗", "Sofa & 床", "空 间"};
        for (int i = 0; i < 40; ++i) {
            const std::string dir = old + "/" + folders[i % 3] + (i < 2 ? "/旧" : "");
            fs::create_directories(dir);
            WriteBytes(dir + "/块" + std::to_string(i) + (i == 7 ? ".DWG" : ".dwg"),
                       "AC1015" + std::string(i == 5 ? 150000 : 100 + i * 37, static_cast<char>(i * 13)));
        }
        WriteBytes(old + "/门窗/说明.txt", "not a drawing");
        fs::create_directories(old + "/空 间/无");
        before = Walk(old);
    }
    // The cloud collection as "folder/file" -> size.
    std::map<std::string, int64_t> Cloud() {
        std::map<std::string, int64_t> cloud;
        for (const ListedFolder& f : FetchCollection(u"tk", true).document.folders)
            for (const ListedBlock& b : f.blocks) cloud[Utf16ToUtf8(f.name + u"/" + b.filename)] = b.size;
        return cloud;
    }
    // The old drawings as the cloud should hold them, each in the folder `where` names for its path.
    std::map<std::string, int64_t> Expected(std::string (*where)(const std::string&)) {
        std::map<std::string, int64_t> expected;
        for (const auto& [path, bytes] : before)
            if (path.ends_with(".dwg") || path.ends_with(".DWG"))
                expected[where(path) + "/" + fs::path(path).filename().string()] = std::ssize(bytes);
        return expected;
    }
    long Count(const std::string& path) { return service.counters().get("/gallery/" + path).count; }
    std::string Counts() {
        std::string out;
        for (const char* p : {"lfsync", "lfupload", "lfstatu", "get_u_f", "dwg_collectu", "lfupload_end"})
            out += " " + std::to_string(Count(p));
        return out;
    }

    TempHome home;
    service::ServiceHandle service;
    const HandoverInput input{30001, u"tk", StoreRoot()};
    const std::string old = Utf16ToUtf8(input.root) + "/我的收藏", packing = Utf16ToUtf8(input.root) + "/30001";
    Entries before;
};

TEST_F(Handover, ThreeFoldersOfFortyDrawingsReachTheCloudInOneArchive) {
    // (The check's verdicts before and after, replace at once and ask: the panel's road.)
    ASSERT_TRUE(ReplaceCloudCollection(input, {.busyPauseMs = 20}));
    EXPECT_TRUE(Walk(old) == before && !fs::exists(packing));
    // The service worked on for a while: polled until idle, nothing sent file by file.
    EXPECT_TRUE(Count("lfstatu") > 1 && Counts() == " 1 1 " + std::to_string(Count("lfstatu")) + " 0 0 0") << Counts();
    std::string announced;  // the folders in listing order, each name as it is
    for (const auto& e : fs::directory_iterator(old)) announced += (announced.empty() ? "" : "*") + e.path().filename().string();
    EXPECT_EQ(service.users().sync(30001).folders, announced);
    // The panel writes the decision.
    EXPECT_TRUE(Cloud() == Expected([](const std::string& path) { return path.substr(0, path.find('/')); }) &&
                !fs::exists(Utf16ToUtf8(NewInfoIniPath())));

    // The archive stays: every entry in listing order, deflated, no time, no attributes, its data whole.
    constexpr uLong kZeroDate = 1 << 21;  // what all-zero date fields become: day 0 of month 0, 1980
    auto line = [](const std::string& name, uLong method, uLong date, uLong attributes, const std::string& data) {
        return name + " " + std::to_string(method) + " " + std::to_string(date) + " " + std::to_string(attributes) + " " +
               std::to_string(data.size()) + "/" + std::to_string(std::hash<std::string>{}(data));
    };
    std::vector<std::string> expected, seen;
    for (const auto& [name, bytes] : Walk(old, "30001//", "//")) expected.push_back(line(name, Z_DEFLATED, kZeroDate, 0, bytes));
    unzFile zip = unzOpen((packing + ".zip").c_str());
    for (int r = unzGoToFirstFile(zip); r == UNZ_OK; r = unzGoToNextFile(zip)) {
        char name[512] = "";
        unz_file_info i{};
        unzGetCurrentFileInfo(zip, &i, name, sizeof name, nullptr, 0, nullptr, 0);
        std::string data(i.uncompressed_size, '\0');
        const bool whole =
            unzOpenCurrentFile(zip) == UNZ_OK && unzReadCurrentFile(zip, data.data(), unsigned(data.size())) == int(data.size());
        // Closing checks the CRC.
        seen.push_back(line(name, i.compression_method, i.dosDate, i.external_fa, data) +
                       (whole && unzCloseCurrentFile(zip) == UNZ_OK ? "" : " broken"));
    }
    unzClose(zip);
    EXPECT_EQ(seen, expected);
}

// Counts: lfsync lfupload lfstatu get_u_f dwg_collectu lfupload_end. Replies put in with a status
// are not carried out, so the service never takes an archive in here. When the folder cannot be
// packed, its drawings go one by one into the service's folder named like the directory each lies
// in (门窗), else into the user's first folder.
TEST_F(Handover, EveryFaultLeavesTheOldFolderAsItWas) {
    ASSERT_TRUE(AddFolder(u"tk", u"收藏夹1").delivered && AddFolder(u"tk", u"门窗").delivered);
    const Fault refused{.status = 503}, page{.status = 503, .body = "success"}, silent{.status = 503, .emptyBody = true},
        empty{.status = 200, .emptyBody = true}, error{.status = 200, .body = "error"}, drop{.drop = true}, busy{.body = "1"},
        success{.body = "success"};
    // Name, faults, outcome, and what stands under the packing name or the archive's name.
    using Road = std::tuple<std::string, std::vector<std::pair<std::string, Fault>>, std::string, std::string>;
    for (const auto& [road, faults, outcome, blocker] : std::vector<Road>{
             {"announcement refused", {{"lfsync", refused}}, "failed 1 0 0 0 0 0", ""},
             {"upload refused, its page saying success", {{"lfupload", page}}, "failed 1 1 0 0 0 0", ""},
             {"upload refused in silence, service idle", {{"lfupload", silent}}, "failed 1 1 1 0 0 0", ""},
             {"archive rejected", {{"lfupload", error}}, "failed 1 1 0 0 0 0", ""},
             {"service never done", {{"lfupload", empty}, {"lfstatu", busy}}, "failed 1 1 4 0 0 0", ""},
             {"service gone", {{"lfupload", drop}, {"lfstatu", drop}}, "failed 1 1 6 0 0 0", ""},
             {"upload broke, service done", {{"lfupload", drop}, {"lfstatu", success}}, "done 1 1 1 0 0 0", ""},
             {"upload answered, then success", {{"lfupload", empty}, {"lfstatu", success}}, "failed 1 1 1 0 0 0", ""},
             {"five failed polls, then idle", {{"lfupload", empty}, {"lfstatu", {.drop = true, .remaining = 5}}}, "done 1 1 6 0 0 0", ""},
             {"packing name taken", {}, "done 1 0 0 1 40 1", "/mine.txt"},
             {"archive name taken", {}, "done 1 0 0 1 40 1", ".zip/mine.txt"},
             {"packing name taken, a drawing refused", {{"dwg_collectu", {.status = 200, .body = "3"}}}, "failed 1 0 0 1 1 1", "/mine.txt"},
             {"packing name taken, no folder list", {{"get_u_f", refused}}, "failed 1 0 0 1 0 1", "/mine.txt"}}) {
        service.counters().reset();
        for (const auto& [path, fault] : faults) service.faults().set("/gallery/" + path, fault);
        if (!blocker.empty()) {
            fs::create_directories(fs::path(packing + blocker).parent_path());
            WriteBytes(packing + blocker, "not ours");
        }
        const bool done = ReplaceCloudCollection(input, {.busyPauseMs = 5, .busyReplies = 4, .failedRequests = 6});
        service.faults().clearAll();
        EXPECT_EQ((done ? "done" : "failed") + Counts(), outcome) << road;
        EXPECT_EQ(Walk(old), before) << road;
        EXPECT_EQ(ReadBytes(packing + blocker), blocker.empty() ? "" : "not ours") << road;
        EXPECT_EQ(fs::exists(packing), blocker == "/mine.txt") << road;
        fs::remove_all(packing), fs::remove_all(packing + ".zip");
    }
    EXPECT_EQ(Cloud(), Expected([](const std::string& path) -> std::string {
                  return path.starts_with("门窗/") && !path.starts_with("门窗/旧/") ? "门窗" : "收藏夹1";
              }));
}

TEST_F(Handover, VerdictsOfTheCheck) {
    auto check = [&](std::vector<std::pair<std::string, Fault>> faults = {}) {
        for (const auto& [path, fault] : faults) service.faults().set("/gallery/" + path, fault);
        const OldCollectionVerdict v = CheckOldCollection(input);
        service.faults().clearAll();
        return std::to_string(v.result) + " " + (v.syncStatus ? std::to_string(*v.syncStatus) : "-") + (v.startPollTimer ? " timer" : "") +
               (v.startReplacement ? " replace" : "") + " " + Utf16ToUtf8(v.message.text);
    };
    const Fault busy{.body = "1"}, drop{.drop = true};
    // A process that ended while packing left the folder under the user number: it gets its name back.
    fs::rename(old, packing);
    EXPECT_EQ(check({{"lfstatu", busy}}), "2 2 timer ");
    EXPECT_EQ(check({{"lfstatu", drop}}), "0 4 ");
    EXPECT_EQ(check({{"get_u_collect", drop}}), "0 - 收藏失败");
    // (An empty cloud replaced at once, a full one asked about: the panel's road.)
    ASSERT_TRUE(AddFolder(u"tk", u"f").delivered);
    // Directories without a file are no old data; only "1" means a transfer is running.
    for (const auto& [path, bytes] : before)
        if (!path.ends_with("/")) fs::remove(old + "/" + path);
    EXPECT_EQ(check({{"lfstatu", {.body = "success"}}}), "1 - ");
    EXPECT_EQ(check({{"lfstatu", busy}}), "2 2 ");
    WriteOldCollectTip(u"1");
    const long asked = Count("lfstatu");
    EXPECT_EQ(check(), "1 - ");
    EXPECT_EQ(Count("lfstatu"), asked);  // a settled decision asks nobody
}

}  // namespace
}  // namespace marrowfin::test
