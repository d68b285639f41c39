#include "service_fixture.h"

#include "user_state.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

namespace marrowfin::test {

void ServiceTest::SetUp() {
    m_home = std::make_unique<TempHome>();
    m_data = m_home->file("service-data");
    const service::SampleResult r = service::GenerateSample(m_data, service::SampleOptions{2, 2, 3, 7});
    ASSERT_TRUE(r.ok) << r.error;
    m_service = service::StartService(m_data, 0);
    ASSERT_TRUE(m_service.ok()) << m_service.error();
}

void ServiceTest::TearDown() {
    m_service.stop();
    m_home.reset();
}

httplib::Client ServiceTest::client() const {
    httplib::Client c("127.0.0.1", m_service.port());
    c.set_connection_timeout(5, 0);
    c.set_read_timeout(10, 0);
    return c;
}

std::string ServiceTest::post(const std::string& pathAndQuery, int* status) const {
    httplib::Client c = client();
    auto res = c.Post(pathAndQuery.c_str(), "", "application/x-www-form-urlencoded");
    if (status) *status = res ? res->status : -1;
    return res ? res->body : std::string("<no reply>");
}

int ServiceTest::postStatus(const std::string& pathAndQuery) const {
    int status = 0;
    post(pathAndQuery, &status);
    return status;
}

RawReply ServiceTest::raw(const std::string& pathAndQuery) const { return RawGet(m_service.port(), pathAndQuery); }

std::string ServiceTest::admin(const std::string& pathAndQuery) const {
    httplib::Client c = client();
    auto res = c.Get(pathAndQuery.c_str());
    return res ? res->body : std::string("<no reply>");
}

std::string DemoToken() { return service::kDemoUserToken; }

RawReply RawExchange(int port, const std::string& request, int timeoutMs) {
    RawReply reply;
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0) return reply;
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(static_cast<uint16_t>(port));
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0) {
        close(fd);
        return reply;
    }
    reply.connected = true;
    (void)send(fd, request.data(), request.size(), MSG_NOSIGNAL);
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    char buffer[8192];
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(until - std::chrono::steady_clock::now()).count();
        if (left <= 0) break;
        pollfd p{fd, POLLIN, 0};
        if (poll(&p, 1, static_cast<int>(left)) <= 0) break;
        const ssize_t n = recv(fd, buffer, sizeof buffer, 0);
        if (n <= 0) break;
        reply.bytes.append(buffer, static_cast<size_t>(n));
    }
    close(fd);
    const size_t end = reply.bytes.find("\r\n\r\n");
    if (reply.bytes.rfind("HTTP/1.1 ", 0) == 0) reply.status = std::atoi(reply.bytes.c_str() + 9);
    if (end != std::string::npos) {
        reply.body = reply.bytes.substr(end + 4);
        const std::string head = reply.bytes.substr(0, end);
        const size_t cl = head.find("Content-Length: ");
        if (cl != std::string::npos) reply.contentLength = std::atol(head.c_str() + cl + 16);
    }
    return reply;
}

RawReply RawGet(int port, const std::string& pathAndQuery) {
    return RawExchange(port, "GET " + pathAndQuery + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n");
}

}  // namespace marrowfin::test
