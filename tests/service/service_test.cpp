// The stand-in service on a free loopback port over a small sample library:
// every fault switch fires and ends, requests no client should send leave it
// standing, damaged and refused archives, and the sample's determinism (its
// search ranking is read through the library's search rows). A raw
// socket reads the answers an HTTP library would smooth over.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <minizip/zip.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <random>

#include "archive_reader.h"
#include "fault_switches.h"
#include "request_counters.h"
#include "sample_generator.h"
#include "service_handle.h"
#include "support/live_service.h"
#include "support/temp_home.h"
#include "support/test_paths.h"
#include "user_state.h"

namespace fs = std::filesystem;
using namespace marrowfin;
using namespace marrowfin::test;
using Clock = std::chrono::steady_clock;

namespace {

struct RawReply {
    bool connected = false;
    std::string bytes;  // everything read until the peer closed
    int status = 0;
    long contentLength = -1;
    std::string body;  // bytes after the head
};

// Sends the request text as it stands and reads until the connection ends
// (or nothing comes for `timeoutMs`).
RawReply RawExchange(int port, const std::string& request, int timeoutMs = 5000) {
    RawReply reply;
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in addr{
        .sin_family = AF_INET, .sin_port = htons(static_cast<uint16_t>(port)), .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
    const timeval wait{timeoutMs / 1000, timeoutMs % 1000 * 1000};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
    reply.connected = connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0;
    if (reply.connected) (void)send(fd, request.data(), request.size(), MSG_NOSIGNAL);
    char buffer[8192];
    for (ssize_t n; reply.connected && (n = recv(fd, buffer, sizeof buffer, 0)) > 0;) reply.bytes.append(buffer, static_cast<size_t>(n));
    close(fd);
    const size_t end = reply.bytes.find("\r\n\r\n"), cl = reply.bytes.substr(0, end).find("Content-Length: ");
    if (reply.bytes.rfind("HTTP/1.1 ", 0) == 0) reply.status = std::atoi(reply.bytes.c_str() + 9);
    if (end != std::string::npos) reply.body = reply.bytes.substr(end + 4);
    if (end != std::string::npos && cl != std::string::npos) reply.contentLength = std::atol(reply.bytes.c_str() + cl + 16);
    return reply;
}

// Archives as the library packs them: parts joined by "//", the user number
// first, directories as entries of no data ending in '/'. Answers the bytes.
std::string MakeZip(const std::string& path, const std::vector<std::pair<std::string, std::string>>& entries) {
    zipFile zip = zipOpen(path.c_str(), APPEND_STATUS_CREATE);
    for (const auto& [name, data] : entries) {
        zip_fileinfo info{};
        zipOpenNewFileInZip(zip, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED, Z_DEFAULT_COMPRESSION);
        if (!data.empty()) zipWriteInFileInZip(zip, data.data(), static_cast<unsigned>(data.size()));
        zipCloseFileInZip(zip);
    }
    zipClose(zip, nullptr);
    return ReadBytes(path);
}

}  // namespace

TEST(ServiceTest, FaultSwitchesMalformedRequestsAndDamagedArchives) {
    TempHome home;
    service::ServiceHandle service = StartLiveService(SampleLibrary({2, 2, 3}));
    auto Client = [&] {
        httplib::Client c("127.0.0.1", service.port());
        c.set_read_timeout(10, 0);
        return c;
    };
    auto Admin = [&](const std::string& pathAndQuery) {
        auto res = Client().Get(pathAndQuery.c_str());
        return res ? res->body : std::string("<no reply>");
    };
    auto Raw = [&](const std::string& path) {
        return RawExchange(service.port(), "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n");
    };
    const std::string path = "/gallery/selpageinfo";
    const std::string full = Raw(path).body;
    ASSERT_GT(full.size(), 100u);
    const long size = static_cast<long>(full.size());
    // The switch, and what a raw client sees with it (the answer, its time in ms).
    const std::pair<const char*, std::function<void(const RawReply&, long)>> table[] = {
        // Two requests in a row, then the counted fault has ended.
        {"status=503&count=2",
         [&](const RawReply& r, long) {
             const int second = Raw(path).status;
             EXPECT_EQ(std::make_tuple(503, 503, 200), std::make_tuple(r.status, second, Raw(path).status));
         }},
        {"empty=1", [](const RawReply& r,
                       long) { EXPECT_EQ(std::make_tuple(200, 0L, std::string()), std::make_tuple(r.status, r.contentLength, r.body)); }},
        {"body=error", [](const RawReply& r, long) { EXPECT_EQ("error", r.body); }},
        // The head promises the whole body, and the connection ends after 40 bytes.
        // An HTTP client sees a failure for these two.
        {"truncate=40",
         [&](const RawReply& r, long) {
             EXPECT_EQ(std::make_tuple(size, full.substr(0, 40), false),
                       std::make_tuple(r.contentLength, r.body, bool(Client().Get(path))));
         }},
        {"drop=1",
         [&](const RawReply& r, long) { EXPECT_TRUE(r.connected && r.bytes.empty() && !Client().Get(path)) << "no byte of an answer"; }},
        {"latency=300", [](const RawReply& r, long ms) { EXPECT_TRUE(r.status == 200 && ms >= 300) << ms; }},
        // 1000 bytes a second: the whole body arrives, and not before its time.
        {"drip=1000", [&](const RawReply& r, long ms) { EXPECT_TRUE(r.body == full && ms >= size - 100) << ms; }},
        {"hold=200", [](const RawReply& r, long ms) { EXPECT_TRUE(r.status == 200 && ms >= 200) << ms; }},
    };
    for (const auto& [fault, check] : table) {
        SCOPED_TRACE(fault);
        ASSERT_EQ("ok", Admin("/admin/fault?path=" + path + "&" + fault));
        const auto start = Clock::now();
        const RawReply r = Raw(path);
        check(r, long(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count()));
        Admin("/admin/clear?path=" + path);
        EXPECT_EQ(full, Raw(path).body) << "cleared, and the server lives on";
    }
    // Bad switches are refused with a reason; admin requests are neither counted nor faulted.
    for (const char* bad : {"latency=abc", "bogus=1", "status=42", "hold=-1"})
        EXPECT_EQ(400, Client().Get(("/admin/fault?path=/x&" + std::string(bad)).c_str())->status) << bad;
    Admin("/admin/fault?status=500");
    EXPECT_TRUE(Admin("/admin/clear") == "ok" && service.counters().get("/admin/clear").count == 0);
    // The most specific pattern wins.
    service::FaultTable faults;
    for (const auto& [pattern, status] :
         std::map<std::string, int>{{"*", 500}, {"/files/*", 501}, {"/files/a/*", 502}, {"/files/a/b.dwg", 503}})
        faults.set(pattern, service::Fault{.status = status});
    for (const auto& [path, status] :
         std::map<std::string, int>{{"/files/a/b.dwg", 503}, {"/files/a/c.dwg", 502}, {"/files/z.dwg", 501}, {"/gallery/g_cs", 500}})
        EXPECT_EQ(status, faults.take(path).status) << path;

    // Requests no client should send leave the server standing.
    const std::string token = service::kDemoUserToken;
    const std::string junk[] = {
        "\r\n\r\n",
        "GARBAGE\r\n\r\n",
        "GET /gallery/g_cs?gallery_name=%ff%fe&cs=%00 HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n",
        "POST /gallery/dwg_collectu?usertoken=" + token +
            "&favorites_id=1&force=0 HTTP/1.1\r\nHost: x\r\nConnection: close\r\nContent-Type: multipart/form-data; boundary=zz\r\n"
            "Content-Length: 20\r\n\r\n--zz\r\nbroken-part\r\n",
        "POST /gallery/lfupload HTTP/1.1\r\nHost: x\r\nConnection: close\r\nContent-Length: 5\r\n\r\nabcde",
        "GET /files/%2e%2e/%2e%2e/etc/passwd HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n",
        "GET /ufiles/abc HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n",
        "GET /gallery/mvff?usertoken=" + token +
            "&ofid=1&favorites_id=99999999999999999999&dwg_id=-1 HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n",
        "POST /gallery/g_all_s?gallery_name=" + std::string(6000, ',') +
            " HTTP/1.1\r\nHost: x\r\nContent-Length: 0\r\nConnection: close\r\n\r\n",
    };
    for (const std::string& request : junk) {
        const RawReply r = RawExchange(service.port(), request, 1000);
        EXPECT_TRUE(r.connected && r.body.find("root:x:") == std::string::npos) << "no file outside the data folder";
    }
    EXPECT_EQ("error", Raw("/gallery/lfupload").body) << "an upload without a file is refused";
    EXPECT_EQ(std::make_pair(Raw("/files/%2e%2e/library.tsv").status, Raw("/gallery/gethotwords").status), std::make_pair(404, 200));

    // Damaged archives are read without a crash; refused ones start nothing.
    const std::string big(200000, 'q');  // more than one read buffer
    const std::string bytes = MakeZip(home.file("good.zip"), {{"1//门窗/", ""}, {"1//门窗//单开门.dwg", big}, {"1/top.dwg", "x"}});
    std::vector<service::ArchiveEntry> entries;
    std::string error;
    ASSERT_TRUE(service::ReadArchive(home.file("good.zip"), entries, error)) << error;
    ASSERT_EQ(3u, entries.size());
    EXPECT_TRUE(entries[0].directory && entries[1].data == big);
    EXPECT_EQ(std::make_pair(entries[1].parts, entries[2].parts),
              std::make_pair(std::vector<std::string>{"1", "门窗", "单开门.dwg"}, std::vector<std::string>{"1", "top.dwg"}));
    EXPECT_FALSE(service::ReadArchive(home.file("missing.zip"), entries, error));
    // Deterministic mutations of the good archive: flipped bytes, cut tails.
    std::mt19937 next(12345);
    int refused = 0;
    for (int round = 0; round < 400; ++round) {
        std::string copy = bytes;
        if (round % 4 == 3) copy.resize(next() % copy.size());
        for (int i = 0; round % 4 != 3 && i < 1 + round % 5; ++i) copy[next() % copy.size()] = static_cast<char>(next());
        WriteBytes(home.file("bad.zip"), copy);
        const bool read = service::ReadArchive(home.file("bad.zip"), entries, error);
        refused += !read;
        EXPECT_TRUE(read || !error.empty());
    }
    EXPECT_GT(refused, 100) << "cut archives lose their directory";

    auto upload = [&](const std::string& archive) {
        httplib::MultipartFormDataItems items = {{"parent_dir", "", "", ""}, {"file", archive, "10001.zip", "application/octet-stream"}};
        auto res = Client().Post("/gallery/lfupload", items);
        return res ? res->body : "<no reply>";
    };
    ASSERT_EQ("ok", Admin("/admin/user?number=20002&token=other"));
    EXPECT_EQ("error", upload("this is no zip"));
    EXPECT_EQ("error", upload(MakeZip(home.file("f.zip"), {{"10001//a//x.dwg", "AC1015x"}, {"20002//a//y.dwg", "AC1015y"}})))
        << "mixed users";
    auto status = [&](const std::string& token) {
        return Client().Post(("/gallery/lfstatu?usertoken=" + token).c_str(), "", "application/x-www-form-urlencoded");
    };
    EXPECT_EQ("0", status(service::kDemoUserToken)->body) << "a refused archive starts nothing";
    EXPECT_EQ(400, status("nobody")->status);
}

TEST(SampleLibrary, SameSeedSameBytesOtherSeedOtherLibrary) {
    TempHome home;
    service::SampleOptions options{3, 2, 3, 42};
    ASSERT_TRUE(service::GenerateSample(home.file("a"), options).ok && service::GenerateSample(home.file("b"), options).ok);
    options.seed = 43;
    ASSERT_TRUE(service::GenerateSample(home.file("c"), options).ok);
    auto snapshot = [](const std::string& dir) {
        std::map<std::string, std::string> files;
        for (const auto& f : fs::recursive_directory_iterator(dir))
            if (f.is_regular_file()) files[fs::relative(f.path(), dir).string()] = ReadBytes(f.path().string());
        return files;
    };
    const auto a = snapshot(home.file("a"));
    EXPECT_TRUE(a == snapshot(home.file("b")) && a.at("library.tsv") != snapshot(home.file("c")).at("library.tsv"));
    EXPECT_FALSE(service::GenerateSample(home.file("bad"), service::SampleOptions{0, 1, 1, 1}).ok);
}
