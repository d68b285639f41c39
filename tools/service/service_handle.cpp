#include "service_impl.h"
#include "xml_text.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <csignal>
#include <filesystem>

namespace fs = std::filesystem;

namespace marrowfin::service {

Reply Word(const std::string& word) { return Reply{200, word, "text/plain; charset=utf-8"}; }
Reply Xml(const std::string& text) { return Reply{200, text, "text/xml; charset=utf-8"}; }
Reply BadRequest(const std::string& reason) { return Reply{400, reason + "\n", "text/plain; charset=utf-8"}; }

std::string XmlAttr(const std::string& text) { return XmlEscape(text); }

std::string XmlHead() { return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"; }

std::optional<int64_t> UserOf(ServiceHandle::Impl& impl, const httplib::Request& req) {
    return impl.users.userOfToken(req.get_param_value("usertoken"));
}

namespace {

int PortOf(const sockaddr_storage& a) {
    if (a.ss_family == AF_INET) return ntohs(reinterpret_cast<const sockaddr_in&>(a).sin_port);
    if (a.ss_family == AF_INET6) return ntohs(reinterpret_cast<const sockaddr_in6&>(a).sin6_port);
    return -1;
}

// httplib hands no socket to a route, so the connection is found by its two
// port numbers, which are unique per connection on one host. The socket is
// shut down, not closed: httplib still owns the descriptor and closes it.
void DropConnection(const httplib::Request& req) {
    DIR* dir = opendir("/proc/self/fd");
    if (!dir) return;
    while (dirent* entry = readdir(dir)) {
        const int fd = std::atoi(entry->d_name);
        if (fd <= 2) continue;
        sockaddr_storage peer{}, local{};
        socklen_t peerLen = sizeof peer, localLen = sizeof local;
        if (getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &peerLen) != 0) continue;
        if (getsockname(fd, reinterpret_cast<sockaddr*>(&local), &localLen) != 0) continue;
        if (PortOf(peer) != req.remote_port || PortOf(local) != req.local_port) continue;
        linger hard{1, 0};
        setsockopt(fd, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
        shutdown(fd, SHUT_RDWR);
        break;
    }
    closedir(dir);
}

std::vector<std::string> CounterKeys(const std::string& path) {
    std::vector<std::string> keys{path};
    for (const char* group : {"/files/", "/ufiles/", "/ad/"}) {
        if (path.rfind(group, 0) == 0) keys.push_back(std::string(group) + "*");
    }
    return keys;
}

}  // namespace

std::string ServiceHandle::Impl::baseOf(const httplib::Request& req) const {
    std::string hostHeader = req.get_header_value("Host");
    if (hostHeader.empty()) hostHeader = host + ":" + std::to_string(port);
    return "http://" + hostHeader;
}

bool ServiceHandle::Impl::pause(int ms) {
    for (int waited = 0; waited < ms; waited += 10) {
        if (stopping) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(std::min(10, ms - waited)));
    }
    return !stopping;
}

void ServiceHandle::Impl::serve(const httplib::Request& req, httplib::Response& res,
                                const std::function<Reply()>& route) {
    CountedRequest counted(counters, CounterKeys(req.path), req.method + " " + req.target);
    const Fault fault = faults.take(req.path);
    if (fault.holdMs > 0) faults.waitHeld(fault.holdMs);
    if (fault.latencyMs > 0) pause(fault.latencyMs);
    if (fault.drop) {
        DropConnection(req);
        res.status = 500;
        return;
    }
    // A refused request is not carried out: a client that sees the status
    // must find the service's state as it was (a folder it failed to delete
    // is still there).
    Reply reply =
        fault.status > 0 ? Reply{fault.status, "fault: status " + std::to_string(fault.status) + "\n"} : route();
    if (fault.body) reply.body = *fault.body;
    if (fault.emptyBody) reply.body.clear();
    res.status = reply.status;
    if (fault.truncateAt >= 0) {
        // The head announces the whole body; the connection ends after
        // `truncateAt` bytes of it, so the client sees a short read.
        auto body = std::make_shared<std::string>(std::move(reply.body));
        const size_t keep = std::min(static_cast<size_t>(fault.truncateAt), body->empty() ? 0 : body->size() - 1);
        const size_t announced = std::max(body->size(), keep + 1);
        res.set_content_provider(announced, reply.type,
                                 [body, keep](size_t offset, size_t length, httplib::DataSink& sink) {
                                     if (offset >= keep) return false;
                                     sink.write(body->data() + offset, std::min(length, keep - offset));
                                     return true;
                                 });
        return;
    }
    if (fault.dripBytesPerSecond > 0) {
        auto body = std::make_shared<std::string>(std::move(reply.body));
        const size_t step = std::max(1, fault.dripBytesPerSecond / 10);
        res.set_content_provider(body->size(), reply.type,
                                 [this, body, step](size_t offset, size_t length, httplib::DataSink& sink) {
                                     const size_t n = std::min({step, length, body->size() - offset});
                                     sink.write(body->data() + offset, n);
                                     return pause(100);
                                 });
        return;
    }
    res.set_content(reply.body, reply.type.c_str());
}

void ServiceHandle::Impl::registerRoutes() {
    registerGalleryRoutes();
    registerCollectionRoutes();
    registerSyncRoutes();
    registerFileRoutes();
    registerAdminRoutes();
    server.set_exception_handler([](const httplib::Request&, httplib::Response& res, std::exception_ptr) {
        res.status = 500;
        res.set_content("internal error\n", "text/plain");
    });
}

void ServiceHandle::Impl::stopAll() {
    if (stopped) return;
    stopped = true;
    stopping = true;
    faults.releaseHeld();
    server.stop();
    if (listener.joinable()) listener.join();
    std::list<std::thread> workers;
    {
        std::lock_guard lock(uploadMutex);
        workers.swap(uploadWorkers);
    }
    for (std::thread& t : workers)
        if (t.joinable()) t.join();
}

ServiceHandle::ServiceHandle() = default;
ServiceHandle::~ServiceHandle() { stop(); }
ServiceHandle::ServiceHandle(ServiceHandle&&) noexcept = default;
ServiceHandle& ServiceHandle::operator=(ServiceHandle&& other) noexcept {
    if (this != &other) {
        stop();
        m_impl = std::move(other.m_impl);
    }
    return *this;
}

bool ServiceHandle::ok() const { return m_impl && m_impl->error.empty() && m_impl->port > 0; }
const std::string& ServiceHandle::error() const {
    static const std::string notStarted = "not started";
    return m_impl ? m_impl->error : notStarted;
}
int ServiceHandle::port() const { return m_impl ? m_impl->port : 0; }
std::string ServiceHandle::baseUrl() const {
    return m_impl ? "http://" + m_impl->host + ":" + std::to_string(m_impl->port) : "";
}
void ServiceHandle::stop() {
    if (m_impl) m_impl->stopAll();
}
FaultTable& ServiceHandle::faults() { return m_impl->faults; }
RequestCounters& ServiceHandle::counters() { return m_impl->counters; }
UserState& ServiceHandle::users() { return m_impl->users; }
ServiceSettings ServiceHandle::settings() const { return m_impl->currentSettings(); }
void ServiceHandle::setSettings(const ServiceSettings& settings) {
    std::lock_guard lock(m_impl->settingsMutex);
    m_impl->settings = settings;
}

ServiceHandle StartService(const std::string& dataDir, int port) {
    ServiceOptions options;
    options.port = port;
    return StartService(dataDir, options);
}

ServiceHandle StartService(const std::string& dataDir, const ServiceOptions& options) {
    // A client that hangs up mid-answer must not end the whole process.
    std::signal(SIGPIPE, SIG_IGN);
    ServiceHandle handle;
    handle.m_impl = std::make_unique<ServiceHandle::Impl>();
    ServiceHandle::Impl& impl = *handle.m_impl;
    impl.dataDir = dataDir;
    impl.host = options.host;
    impl.stopped = false;
    std::error_code ec;
    fs::create_directories(fs::path(dataDir) / "collected", ec);
    fs::create_directories(fs::path(dataDir) / "uploads", ec);
    if (ec) {
        impl.error = "cannot create folders in " + dataDir + ": " + ec.message();
        impl.stopped = true;
        return handle;
    }
    if (!impl.catalog.load(dataDir, impl.error) ||
        !impl.users.open((fs::path(dataDir) / "state.sqlite").string(), impl.error)) {
        impl.stopped = true;
        return handle;
    }
    impl.settings.forceRefresh = impl.catalog.forceRefresh();
    for (const std::string& text : options.faults) {
        std::string path;
        Fault fault;
        if (!ParseFaultSwitch(text, path, fault, impl.error)) {
            impl.stopped = true;
            return handle;
        }
        impl.faults.set(path, fault);
    }
    const int threads = std::max(1, options.threads);
    impl.server.new_task_queue = [threads] { return new httplib::ThreadPool(static_cast<size_t>(threads)); };
    impl.server.set_keep_alive_max_count(100);
    // An idle kept-alive connection holds a pool thread, and stop() waits for
    // it: a short idle time keeps a stop quick.
    impl.server.set_keep_alive_timeout(1);
    impl.server.set_read_timeout(5, 0);
    impl.server.set_payload_max_length(256u << 20);
    impl.registerRoutes();
    if (options.port == 0) {
        impl.port = impl.server.bind_to_any_port(options.host);
    } else if (impl.server.bind_to_port(options.host, options.port)) {
        impl.port = options.port;
    }
    if (impl.port <= 0) {
        impl.error = "cannot listen on " + options.host + ":" + std::to_string(options.port);
        impl.port = 0;
        impl.stopped = true;
        return handle;
    }
    impl.listener = std::thread([&impl] { impl.server.listen_after_bind(); });
    // stop() only ends a loop that runs, so the handle is given out once it does.
    for (int i = 0; i < 2000 && !impl.server.is_running(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return handle;
}

}  // namespace marrowfin::service
