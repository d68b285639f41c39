// marrowfin-service --data DIR [--port N] [--host ADDR] [--fault PATH?pairs]...
// Serves the data folder until SIGINT or SIGTERM; prints the port it listens on.

#include "service_handle.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

#include <unistd.h>

namespace {

volatile std::sig_atomic_t g_stop = 0;

void OnSignal(int) { g_stop = 1; }

int Usage() {
    std::fprintf(
        stderr,
        "usage: marrowfin-service --data DIR [--port N] [--host ADDR] [--fault 'PATH?latency=MS&status=N...']\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    std::string data;
    marrowfin::service::ServiceOptions options;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (i + 1 >= argc) return Usage();
        const std::string value = argv[++i];
        if (arg == "--data") data = value;
        else if (arg == "--port") options.port = std::atoi(value.c_str());
        else if (arg == "--host") options.host = value;
        else if (arg == "--fault") options.faults.push_back(value);
        else return Usage();
    }
    if (data.empty()) return Usage();
    std::signal(SIGINT, OnSignal);
    std::signal(SIGTERM, OnSignal);
    marrowfin::service::ServiceHandle service = marrowfin::service::StartService(data, options);
    if (!service.ok()) {
        std::fprintf(stderr, "marrowfin-service: %s\n", service.error().c_str());
        return 1;
    }
    std::printf("listening on %s port %d\n", options.host.c_str(), service.port());
    std::fflush(stdout);
    while (!g_stop) pause();
    service.stop();
    return 0;
}
