// The exact requests the transport puts on the wire, read by a bare socket.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

#include "net_world.h"

using namespace marrowfin;
using marrowfin::test::TempHome;

namespace {

// Accepts one connection, keeps the whole request and answers `reply`.
struct OneShotServer {
    explicit OneShotServer(std::string reply) {
        sockaddr_in addr{.sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
        socklen_t len = sizeof addr;
        bind(listener, reinterpret_cast<sockaddr*>(&addr), len);
        getsockname(listener, reinterpret_cast<sockaddr*>(&addr), &len);
        listen(listener, 1);
        base = Utf8ToUtf16("http://127.0.0.1:" + std::to_string(ntohs(addr.sin_port)));
        server = std::thread([this, reply = std::move(reply)] {
            const int c = accept(listener, nullptr, nullptr);
            // Read the head, then as much body as Content-Length announces.
            for (char buf[65536]; c >= 0;) {
                const ssize_t n = recv(c, buf, sizeof buf, 0);
                if (n <= 0) break;
                request.append(buf, static_cast<size_t>(n));
                const size_t head = request.find("\r\n\r\n"), cl = request.find("Content-Length: ");
                if (head != std::string::npos && request.size() >= head + 4 + (cl < head ? std::stoul(request.substr(cl + 16)) : 0)) break;
            }
            if (c >= 0) send(c, reply.data(), reply.size(), MSG_NOSIGNAL), close(c);
        });
    }
    ~OneShotServer() {
        shutdown(listener, SHUT_RDWR);
        close(listener);
        if (server.joinable()) server.join();
    }
    std::string Request() {
        if (server.joinable()) server.join();
        return request;
    }
    int listener = socket(AF_INET, SOCK_STREAM, 0);
    std::u16string base;
    std::string request;
    std::thread server;
};

const std::string kOk = "HTTP/1.1 200 OK\r\nContent-Length: 7\r\nConnection: close\r\n\r\nsuccess";

// Whether `request` holds each of `parts`.
bool Holds(const std::string& request, std::initializer_list<std::string> parts) {
    return std::all_of(parts.begin(), parts.end(), [&](const std::string& p) { return request.find(p) != std::string::npos; });
}

}  // namespace

TEST(WireBytes, FormPostDownloadAndUploadAsTheServiceExpects) {
    TempHome home;
    {
        OneShotServer server(kOk);
        std::u16string out;
        ASSERT_TRUE(PostForm(server.base + u"/gallery/favorite?name=门窗", u"a=1&b=图", out) && out == u"success");
        const std::string r = server.Request();
        EXPECT_TRUE(r.starts_with("POST /gallery/favorite?name=%E9%97%A8%E7%AA%97 HTTP/1.1\r\n") &&
                    r.ends_with("\r\n\r\na=1&b=\xE5\x9B\xBE") && Holds(r, {"\r\nContent-Type: application/x-www-form-urlencoded\r\n"}))
            << r;
    }
    {
        const std::string body(1500, 'z');
        OneShotServer server("HTTP/1.1 200 OK\r\nContent-Length: 1500\r\nConnection: close\r\n\r\n" + body);
        const std::u16string target = Utf8ToUtf16(home.file("x.dwg"));
        ASSERT_TRUE(DownloadFile(server.base + u"/files/门 窗/a b.dwg", target, 0, 0) && test::ReadBytes(Utf16ToUtf8(target)) == body);
        const std::string r = server.Request();
        EXPECT_TRUE(r.starts_with("GET /files/%e9%97%a8%20%e7%aa%97/a%20b.dwg HTTP/1.1\r\n") &&
                    Holds(r, {"\r\nUser-Agent:BRINDLE;charset=utf-8\r\n"}))
            << r;
    }
    {
        test::WriteBytes(home.file("100_收藏.zip"), "PK-bytes");
        OneShotServer server(kOk);
        std::u16string out;
        ASSERT_TRUE(UploadFile(server.base + u"/gallery/lfupload", u"", Utf8ToUtf16(home.file("100_收藏.zip")), out, 0) &&
                    out == u"success");
        EXPECT_TRUE(
            Holds(server.Request(),
                  {"\r\nContent-Type: multipart/form-data; boundary=", "Content-Disposition: form-data; name=\"parent_dir\"\r\n\r\n\r\n",
                   "Content-Disposition: form-data; name=\"file\"; filename=\"100_\xE6\x94\xB6\xE8\x97\x8F.zip\"", "PK-bytes"}))
            << server.Request();
    }
}
