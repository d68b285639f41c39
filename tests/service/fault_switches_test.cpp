// Every fault switch on the wire, set through the admin path, the matching
// rules of the fault table, and requests no client should send.

#include "fault_switches.h"
#include "request_counters.h"
#include "service_fixture.h"

#include <chrono>
#include <thread>

using namespace marrowfin;
using namespace marrowfin::test;
using Clock = std::chrono::steady_clock;

namespace {

long MsSince(Clock::time_point t) {
    return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - t).count());
}

}  // namespace

TEST_F(ServiceTest, StatusEmptyBodyAndCountedFaults) {
    const std::string path = "/gallery/gethotwords";
    ASSERT_EQ("ok", admin("/admin/fault?path=" + path + "&status=503&count=2"));
    EXPECT_EQ(503, raw(path).status);
    EXPECT_EQ(503, raw(path).status);
    RawReply r = raw(path);
    EXPECT_EQ(200, r.status) << "a counted fault ends after its count";
    EXPECT_NE(std::string::npos, r.body.find("<hot_words>"));

    admin("/admin/fault?path=" + path + "&empty=1");
    r = raw(path);
    EXPECT_EQ(200, r.status);
    EXPECT_EQ(0, r.contentLength);
    EXPECT_EQ("", r.body);
    admin("/admin/fault?path=" + path + "&body=error");
    EXPECT_EQ("error", raw(path).body);
    admin("/admin/clear?path=" + path);
    EXPECT_NE(std::string::npos, raw(path).body.find("<hot_words>"));

    // Bad switches are refused with a reason and change nothing.
    httplib::Client c = client();
    EXPECT_EQ(400, c.Get("/admin/fault?path=/x&latency=abc")->status);
    EXPECT_EQ(400, c.Get("/admin/fault?path=/x&bogus=1")->status);
    EXPECT_EQ(400, c.Get("/admin/fault?path=/x&status=42")->status);
    // Admin requests are neither counted nor faulted.
    admin("/admin/fault?status=500");
    EXPECT_EQ("ok", admin("/admin/clear"));
    EXPECT_EQ(0, m_service.counters().get("/admin/clear").count);
}

TEST_F(ServiceTest, TruncatedBodiesAndDroppedConnections) {
    const std::string path = "/gallery/selpageinfo?sort=def";
    const std::string full = raw(path).body;
    ASSERT_GT(full.size(), 100u);

    admin("/admin/fault?path=/gallery/selpageinfo&truncate=40");
    RawReply r = raw(path);
    EXPECT_EQ(200, r.status);
    EXPECT_EQ(static_cast<long>(full.size()), r.contentLength) << "the head promises the whole body";
    EXPECT_EQ(full.substr(0, 40), r.body) << "and the connection ends after 40 bytes";
    // An HTTP client sees the short read as a failure.
    EXPECT_FALSE(client().Get(path.c_str()));

    admin("/admin/fault?path=/gallery/selpageinfo&drop=1");
    r = raw(path);
    EXPECT_TRUE(r.connected);
    EXPECT_EQ("", r.bytes) << "no byte of an answer";
    EXPECT_FALSE(client().Get(path.c_str()));
    admin("/admin/clear");
    EXPECT_EQ(full, raw(path).body) << "the server lives on";
}

TEST_F(ServiceTest, LatencyDripAndHold) {
    const std::string path = "/gallery/gethotwords";
    const size_t size = raw(path).body.size();
    admin("/admin/fault?path=" + path + "&latency=300");
    auto start = Clock::now();
    EXPECT_EQ(200, raw(path).status);
    EXPECT_GE(MsSince(start), 300);

    // 20 bytes every 100 ms: the whole body arrives, and not before its time.
    admin("/admin/fault?path=" + path + "&drip=200");
    start = Clock::now();
    RawReply r = raw(path);
    EXPECT_EQ(size, r.body.size());
    EXPECT_GE(MsSince(start), static_cast<long>((size / 20 - 1) * 100));

    // A hold answers when released, or at its bound.
    admin("/admin/fault?path=" + path + "&hold=5000");
    start = Clock::now();
    std::thread held([&] { r = raw(path); });
    while (m_service.counters().get(path).active == 0 && MsSince(start) < 3000) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_EQ("ok", admin("/admin/release"));
    held.join();
    EXPECT_EQ(200, r.status);
    EXPECT_LT(MsSince(start), 4000);
    admin("/admin/fault?path=" + path + "&hold=200");
    start = Clock::now();
    EXPECT_EQ(200, raw(path).status);
    EXPECT_GE(MsSince(start), 200);
}

TEST(FaultTable, MostSpecificMatchWins) {
    service::FaultTable table;
    const std::pair<const char*, int> patterns[] = {{"*", 500}, {"/files/*", 501}, {"/files/a/*", 502}, {"/files/a/b.dwg", 503}};
    for (const auto& [pattern, status] : patterns) {
        service::Fault fault;
        fault.status = status;
        table.set(pattern, fault);
    }
    EXPECT_EQ(503, table.take("/files/a/b.dwg").status);
    EXPECT_EQ(502, table.take("/files/a/c.dwg").status);
    EXPECT_EQ(501, table.take("/files/z.dwg").status);
    EXPECT_EQ(500, table.take("/gallery/g_cs").status);
    table.clear("*");
    EXPECT_FALSE(table.take("/gallery/g_cs").active());

    std::string path, error;
    service::Fault parsed;
    ASSERT_TRUE(service::ParseFaultSwitch("/gallery/g_cs?latency=20&truncate=0&drop&body=x", path, parsed, error)) << error;
    EXPECT_EQ("/gallery/g_cs", path);
    EXPECT_EQ(20, parsed.latencyMs);
    EXPECT_EQ(0, parsed.truncateAt);
    EXPECT_TRUE(parsed.drop);
    EXPECT_EQ("x", parsed.body.value_or(""));
    EXPECT_FALSE(service::ParseFaultSwitch("*?hold=-1", path, parsed, error));

    // A fault's text parses back to the same switches.
    const service::Fault faults[] = {{}, {.latencyMs = 25, .status = 404}, {.emptyBody = true, .remaining = 2},
                                     {.truncateAt = 0, .drop = true}, {.dripBytesPerSecond = 100, .holdMs = 4000}};
    for (const service::Fault& fault : faults) {
        const std::string text = service::FaultText(fault);
        SCOPED_TRACE(text);
        ASSERT_TRUE(service::ParseFaultSwitch("*?" + text, path, parsed, error)) << error;
        EXPECT_EQ(std::tie(parsed.latencyMs, parsed.status, parsed.emptyBody, parsed.truncateAt, parsed.drop,
                           parsed.dripBytesPerSecond, parsed.holdMs, parsed.remaining),
                  std::tie(fault.latencyMs, fault.status, fault.emptyBody, fault.truncateAt, fault.drop,
                           fault.dripBytesPerSecond, fault.holdMs, fault.remaining));
    }
    EXPECT_EQ(service::FaultText({.status = 500, .truncateAt = 10}), "status=500&truncate=10");
}

TEST_F(ServiceTest, MalformedRequestsLeaveTheServerStanding) {
    const std::vector<std::string> junk = {
        "\r\n\r\n",
        "GARBAGE\r\n\r\n",
        std::string("GET /gallery/g_cs?gallery_name=%ff%fe&cs=%00 HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n"),
        "POST /gallery/dwg_collectu?usertoken=" + DemoToken() +
            "&favorites_id=1&force=0 HTTP/1.1\r\nHost: x\r\nConnection: close\r\nContent-Type: multipart/form-data; boundary=zz\r\n"
            "Content-Length: 20\r\n\r\n--zz\r\nbroken-part\r\n",
        "POST /gallery/lfupload HTTP/1.1\r\nHost: x\r\nConnection: close\r\nContent-Length: 5\r\n\r\nabcde",
        "GET /files/%2e%2e/%2e%2e/etc/passwd HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n",
        "GET /ufiles/abc HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n",
        "GET /gallery/mvff?usertoken=" + DemoToken() + "&ofid=1&favorites_id=99999999999999999999&dwg_id=-1 HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n",
        "POST /gallery/g_all_s?gallery_name=" + std::string(6000, ',') + " HTTP/1.1\r\nHost: x\r\nContent-Length: 0\r\nConnection: close\r\n\r\n",
    };
    for (const std::string& request : junk) {
        const RawReply r = RawExchange(m_service.port(), request, 1000);
        EXPECT_TRUE(r.connected);
        EXPECT_EQ(std::string::npos, r.body.find("root:x:")) << "no file outside the data folder";
    }
    EXPECT_EQ(404, raw("/files/%2e%2e/library.tsv").status);
    EXPECT_EQ("error", raw("/gallery/lfupload").body) << "an upload without a file is refused";
    EXPECT_EQ(200, raw("/gallery/gethotwords").status);
}
