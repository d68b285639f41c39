// The hand-over of an old collection: announce, upload the archive, poll
// while the service works on it in the background, end.

#include "service_fixture.h"
#include "support/test_paths.h"
#include "user_state.h"

#include <minizip/zip.h>

#include <thread>

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

// An archive as the library packs it: parts joined by "//", the user number
// first, directories as entries of no data ending in '/'.
std::string MakeArchive(const std::string& path, const std::vector<std::pair<std::string, std::string>>& entries) {
    zipFile zip = zipOpen(path.c_str(), APPEND_STATUS_CREATE);
    if (!zip) return "";
    for (const auto& [name, data] : entries) {
        zip_fileinfo info{};
        zipOpenNewFileInZip(zip, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED, Z_DEFAULT_COMPRESSION);
        if (!data.empty()) zipWriteInFileInZip(zip, data.data(), static_cast<unsigned>(data.size()));
        zipCloseFileInZip(zip);
    }
    zipClose(zip, nullptr);
    return ReadBytes(path);
}

class SyncTest : public ServiceTest {
protected:
    std::string upload(const std::string& archive, int* status = nullptr) {
        httplib::MultipartFormDataItems items = {{"parent_dir", "", "", ""}, {"file", archive, "10001.zip", "application/octet-stream"}};
        auto res = client().Post("/gallery/lfupload", items);
        if (status) *status = res ? res->status : -1;
        return res ? res->body : "<no reply>";
    }
    std::string status() { return post("/gallery/lfstatu?usertoken=" + DemoToken()); }
};

}  // namespace

TEST_F(SyncTest, ArchiveIsTakenInBehindPolls) {
    const std::string block(2000, 'x');
    const std::string drawing = "AC1015" + block;
    // Something in the cloud before: the archive replaces it.
    ASSERT_NE("error", post("/gallery/favorite?type=client&usertoken=" + DemoToken() + "&operate=add&favorites=old"));
    EXPECT_EQ("0", status()) << "nothing running";
    EXPECT_EQ("success", post("/gallery/lfsync?usertoken=" + DemoToken() + "&fs=" + Enc("门窗*家具*空的")));
    admin("/admin/set?uploadwork=400");
    const std::string archive = MakeArchive(m_home->file("up.zip"), {{"10001//门窗/", ""},
                                                                     {"10001//门窗//单开门.dwg", drawing},
                                                                     {"10001//门窗//notes.txt", "not a block"},
                                                                     {"10001//家具//沙发.DWG", drawing}});
    ASSERT_FALSE(archive.empty());
    EXPECT_EQ("", upload(archive)) << "the service still works: an empty reply";
    EXPECT_EQ("1", status());
    EXPECT_EQ("error", upload(archive)) << "one archive at a time";
    std::string last = "1";
    for (int i = 0; i < 200 && last == "1"; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        last = status();
    }
    EXPECT_EQ("0", last);
    const std::string folders = post("/gallery/get_u_collect?type=client&usertoken=" + DemoToken() + "&kind=dwg&needdwg=1");
    EXPECT_EQ(std::string::npos, folders.find("favorites_name=\"old\""));
    EXPECT_NE(std::string::npos, folders.find("favorites_name=\"空的\"")) << "announced folders exist even when empty";
    EXPECT_NE(std::string::npos, folders.find("filename=\"单开门.dwg\" dwg_info=\"门窗\""));
    EXPECT_NE(std::string::npos, folders.find("filename=\"沙发.DWG\" dwg_info=\"家具\""));
    EXPECT_EQ(std::string::npos, folders.find("notes.txt"));
    EXPECT_EQ("done\t2\t0\t门窗*家具*空的\n", admin("/admin/sync?usertoken=" + DemoToken()));
    EXPECT_EQ("success", post("/gallery/lfupload_end?usertoken=" + DemoToken()));
    EXPECT_EQ("idle\t2\t1\t门窗*家具*空的\n", admin("/admin/sync?usertoken=" + DemoToken()));

    // With time to finish inside the upload request, the reply is "success";
    // and the word after the work can be switched to what a client polls for.
    admin("/admin/set?uploadwork=0&uploadwait=2000&donestatus=success");
    EXPECT_EQ("success", upload(archive));
    EXPECT_EQ("success", status());
}

TEST_F(SyncTest, RefusedArchivesAndBadTokens) {
    EXPECT_EQ("error", upload("this is no zip"));
    // Another user's number at the top, or an unknown one.
    ASSERT_EQ("ok", admin("/admin/user?number=20002&token=other"));
    const std::string foreign = MakeArchive(m_home->file("f.zip"), {{"10001//a//x.dwg", "AC1015xxxx"}, {"20002//a//y.dwg", "AC1015yyyy"}});
    EXPECT_EQ("error", upload(foreign)) << "mixed users";
    const std::string unknown = MakeArchive(m_home->file("u.zip"), {{"777//a//x.dwg", "AC1015xxxx"}});
    EXPECT_EQ("error", upload(unknown));
    EXPECT_EQ("0", status()) << "a refused archive starts nothing";
    int code = 0;
    post("/gallery/lfstatu?usertoken=nobody", &code);
    EXPECT_EQ(400, code);
    post("/gallery/lfsync?fs=a", &code);
    EXPECT_EQ(400, code);
    post("/gallery/lfupload_end?usertoken=", &code);
    EXPECT_EQ(400, code);
}

TEST_F(SyncTest, UploadCutByRestartIsReportedFailed) {
    admin("/admin/set?uploadwork=5000");
    const std::string archive = MakeArchive(m_home->file("up.zip"), {{"10001//a//x.dwg", "AC1015xxxx"}});
    EXPECT_EQ("", upload(archive));
    EXPECT_EQ("1", status());
    restart();  // the stop ends the work; the next start finds it unfinished
    EXPECT_EQ("error", status());
    EXPECT_EQ("success", post("/gallery/lfupload_end?usertoken=" + DemoToken()));
    EXPECT_EQ("0", status());
}
