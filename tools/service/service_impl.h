#pragma once
// Inside of ServiceHandle: the HTTP server, its data and the answer wrapper
// that applies faults and counts requests. Shared by the route files.

#include "fault_switches.h"
#include "library_catalog.h"
#include "request_counters.h"
#include "service_handle.h"
#include "user_state.h"

#include <httplib.h>

#include <atomic>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

namespace marrowfin::service {

// What a route computes; the wrapper turns it into the answer on the wire.
struct Reply {
    int status = 200;
    std::string body;
    std::string type = "text/plain; charset=utf-8";
};

Reply Word(const std::string& word);
Reply Xml(const std::string& text);
Reply BadRequest(const std::string& reason);

struct ServiceHandle::Impl {
    std::string dataDir;
    std::string error;
    int port = 0;
    std::string host;
    httplib::Server server;
    std::thread listener;
    LibraryCatalog catalog;
    UserState users;
    FaultTable faults;
    RequestCounters counters;
    mutable std::mutex settingsMutex;
    ServiceSettings settings;
    std::mutex uploadMutex;
    std::list<std::thread> uploadWorkers;
    std::atomic<bool> stopping{false};
    bool stopped = false;

    ServiceSettings currentSettings() const {
        std::lock_guard lock(settingsMutex);
        return settings;
    }
    // Base of the addresses handed out: the Host the client used.
    std::string baseOf(const httplib::Request& req) const;
    // Runs a route with counters and faults around it.
    void serve(const httplib::Request& req, httplib::Response& res, const std::function<Reply()>& route);
    void registerRoutes();
    void registerGalleryRoutes();
    void registerCollectionRoutes();
    void registerSyncRoutes();
    void registerAdminRoutes();
    void registerFileRoutes();
    void stopAll();
    // Sleeps in short steps; false when the service is stopping.
    bool pause(int ms);
};

std::string XmlAttr(const std::string& text);
std::string XmlHead();
// A token's user, or an empty optional when the token is missing or unknown.
std::optional<int64_t> UserOf(ServiceHandle::Impl& impl, const httplib::Request& req);

}  // namespace marrowfin::service
