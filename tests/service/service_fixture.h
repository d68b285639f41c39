#pragma once
// A small sample library in a temporary folder and the service started on it
// in-process on a free loopback port, plus a raw socket client for the
// answers that an HTTP library would smooth over (short bodies, drops).

#include "library_catalog.h"
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
    void restart();
    httplib::Client client() const;
    // POST with an empty form body, as the library sends its service calls.
    std::string post(const std::string& pathAndQuery, int* status = nullptr) const;
    int postStatus(const std::string& pathAndQuery) const;
    std::string admin(const std::string& pathAndQuery) const;
    RawReply raw(const std::string& pathAndQuery) const;
    // GET of an address the service handed out, through its path.
    httplib::Result fetchUrl(const std::string& url) const;

    std::unique_ptr<TempHome> m_home;
    std::string m_data;
    service::LibraryCatalog m_catalog;  // of the sample the service serves
    service::ServiceHandle m_service;
};

// Sends the request text as it stands and reads until the connection ends.
RawReply RawExchange(int port, const std::string& request, int timeoutMs = 5000);
RawReply RawGet(int port, const std::string& pathAndQuery);

// A URL query value, percent-encoded.
std::string Enc(const std::string& text);
std::string DemoToken();

// The text between `from` and the next `to`, searched from `start`.
std::string Between(const std::string& text, const std::string& from, const std::string& to, size_t start = 0);
// An attribute of the first `element` start tag at or behind `from`.
std::string Attr(const std::string& xml, const std::string& element, const std::string& name, size_t from = 0);
int Count(const std::string& text, const std::string& what);
// The bytes of the first block file of the sample.
std::string SomeBlock(const std::string& data);

}  // namespace marrowfin::test
