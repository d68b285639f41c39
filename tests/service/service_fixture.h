#pragma once
// A small sample library in a temporary folder and the service started on it
// in-process on a free loopback port, plus a raw socket client for the
// answers that an HTTP library would smooth over (short bodies, drops).

#include "sample_generator.h"
#include "service_handle.h"
#include "support/temp_home.h"
#include "zip_maker.h"

#include <httplib.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace marrowfin::test {

struct RawReply {
    bool connected = false;
    std::string bytes;     // everything read until the peer closed
    int status = 0;
    long contentLength = -1;
    std::string body;      // bytes after the head
};

class ServiceTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    httplib::Client client() const;
    // POST with an empty form body, as the library sends its service calls.
    std::string post(const std::string& pathAndQuery, int* status = nullptr) const;
    int postStatus(const std::string& pathAndQuery) const;
    std::string admin(const std::string& pathAndQuery) const;
    RawReply raw(const std::string& pathAndQuery) const;

    std::unique_ptr<TempHome> m_home;
    std::string m_data;
    service::ServiceHandle m_service;
};

// Sends the request text as it stands and reads until the connection ends.
RawReply RawExchange(int port, const std::string& request, int timeoutMs = 5000);
RawReply RawGet(int port, const std::string& pathAndQuery);
std::string DemoToken();

}  // namespace marrowfin::test
