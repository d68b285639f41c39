#pragma once
// Faults that the stand-in service can be told to inject, globally or per
// request path, so that tests reach every failure road of a client.

#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace marrowfin::service {

struct Fault {
    int latencyMs = 0;  // added before the answer
    int status = 0;  // answer with this HTTP status instead (0: off)
    bool emptyBody = false;  // status 200 (or `status`) with no body
    int truncateAt = -1;  // send this many body bytes, then close (-1: off)
    bool drop = false;  // close the connection without any answer
    int dripBytesPerSecond = 0;  // send the body this slowly (0: off)
    int holdMs = 0;  // hold the answer until released, at most this long
    std::optional<std::string> body{};  // replace the body with this text
    int remaining = -1;  // applies to this many requests; -1: until cleared

    bool active() const {
        return latencyMs > 0 || status > 0 || emptyBody || truncateAt >= 0 || drop || dripBytesPerSecond > 0 ||
               holdMs > 0 || body.has_value();
    }
};

// Parses "latency=200&status=500&empty=1&truncate=10&drop=1&drip=100&hold=2000
// &body=TEXT&count=N" style pairs; unknown keys or bad numbers fail.
bool ParseFault(const std::multimap<std::string, std::string>& params, Fault& out, std::string& error);
// The fault as those pairs, only the switches that are on ("" for none): for
// logs and for naming a fault in a failed check.
std::string FaultText(const Fault& fault);
// Parses a command-line switch "PATH?pairs" ("*" or an empty path: global).
bool ParseFaultSwitch(const std::string& text, std::string& path, Fault& out, std::string& error);

class FaultTable {
public:
    // A path ending in '*' matches every path with that prefix; "*" or an
    // empty path is the global fault.
    void set(const std::string& path, const Fault& fault);
    void clear(const std::string& path);
    void clearAll();
    // The most specific fault for the path (exact, then the longest prefix,
    // then global); counts one use of a fault limited by `remaining`.
    Fault take(const std::string& path);

    // Held answers wait here until released or their bound runs out.
    void waitHeld(int boundMs);
    void releaseHeld();

private:
    std::mutex m_mutex;
    std::map<std::string, Fault> m_paths;
    std::optional<Fault> m_global;
    std::condition_variable m_held;
    uint64_t m_releaseGeneration = 0;
};

}  // namespace marrowfin::service
