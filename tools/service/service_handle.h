#pragma once
// Starting and stopping the stand-in gallery service from a program or a
// test. The service answers on a loopback port with the wire formats of the
// real one, from a data folder written by GenerateSample.

#include <memory>
#include <string>
#include <vector>

namespace marrowfin::service {

class FaultTable;
class RequestCounters;
class UserState;

struct ServiceOptions {
    std::string host = "127.0.0.1";
    int port = 0;  // 0 picks a free port
    std::vector<std::string> faults;  // "PATH?latency=200&status=500", "*?..." for all paths
    int threads = 48;  // concurrent connections served at once
};

// Behaviour switches beyond faults, settable through /admin/set.
struct ServiceSettings {
    std::string nom = "1";  // `nom` of search replies; "0" turns the client's prefetch off
    bool forceRefresh = false;  // `dv` of g_all_s; starts from library.tsv
    int uploadWorkMs = 300;  // time the background processing of an archive takes
    int uploadReplyWaitMs = 0;  // lfupload waits this long for the processing before it answers
    std::string statusWhenDone = "0";  // lfstatu's word after a finished archive
};

class ServiceHandle {
public:
    ServiceHandle();
    ~ServiceHandle();  // stops the service
    ServiceHandle(ServiceHandle&&) noexcept;
    ServiceHandle& operator=(ServiceHandle&&) noexcept;

    bool ok() const;
    const std::string& error() const;
    int port() const;
    std::string baseUrl() const;  // "http://127.0.0.1:PORT", no trailing slash
    void stop();  // idempotent; waits for running answers and uploads

    FaultTable& faults();
    RequestCounters& counters();
    UserState& users();
    ServiceSettings settings() const;
    void setSettings(const ServiceSettings& settings);

    struct Impl;

private:
    std::unique_ptr<Impl> m_impl;
    friend ServiceHandle StartService(const std::string&, const ServiceOptions&);
};

ServiceHandle StartService(const std::string& dataDir, const ServiceOptions& options);
ServiceHandle StartService(const std::string& dataDir, int port = 0);

}  // namespace marrowfin::service
