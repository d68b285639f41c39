#pragma once
// Per-path request counts and the peak of concurrent requests, so that tests
// can check how a client spreads its requests.

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace marrowfin::service {

struct PathCount {
    long count = 0;  // requests started
    int active = 0;  // running now
    int peak = 0;  // highest `active` seen
    std::string last;  // request line of the latest one: method and target as sent
};

class RequestCounters {
public:
    void enter(const std::vector<std::string>& keys, const std::string& requestLine = {});
    void leave(const std::vector<std::string>& keys);
    PathCount get(const std::string& key) const;
    std::map<std::string, PathCount> all() const;
    void reset();

private:
    mutable std::mutex m_mutex;
    std::map<std::string, PathCount> m_counts;
};

// Counts a request for the lifetime of the scope.
class CountedRequest {
public:
    CountedRequest(RequestCounters& counters, std::vector<std::string> keys, const std::string& requestLine = {})
        : m_counters(counters), m_keys(std::move(keys)) {
        m_counters.enter(m_keys, requestLine);
    }
    ~CountedRequest() { m_counters.leave(m_keys); }
    CountedRequest(const CountedRequest&) = delete;
    CountedRequest& operator=(const CountedRequest&) = delete;

private:
    RequestCounters& m_counters;
    std::vector<std::string> m_keys;
};

}  // namespace marrowfin::service
