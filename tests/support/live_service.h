#pragma once
// The stand-in service on a loopback port for tests of the library's network
// roads: a sample library generated once per test program, a running
// service, and the profile's ServiceBase pointed at it.

#include <string>
#include <vector>

#include "service_handle.h"

namespace marrowfin::test {

struct SampleShape {
    int galleries = 3;
    int classes = 4;
    int blocks = 12;
};

// Generates (once per program and shape) and returns the data folder.
const std::string& SampleLibrary(const SampleShape& shape = {});
// A data folder of exactly the given library.tsv text: every block line gets
// a file of `blockBytes` (at least 6) bytes starting with "AC1015". Returns `dir`.
std::string WriteLibrary(const std::string& dir, const std::string& tsv, size_t blockBytes = 2000);
// Gallery names of a data folder, in the service's order, as UTF-16.
std::vector<std::u16string> GalleryNames(const std::string& dataDir);
// Starts the service on a free port and writes ServiceBase into the current profile.
service::ServiceHandle StartLiveService(const std::string& dataDir);

// The stand-in service over a sample library, the current profile pointed at
// it (make the test's home first); stopped with the object. Its fault
// switches are `handle.faults()`.
struct LiveService {
    explicit LiveService(const SampleShape& shape = {});

    std::vector<std::u16string> galleries;  // in the service's order
    service::ServiceHandle handle;

    // Requests that reached `path` (e.g. "/gallery/g_all") so far.
    long Served(const std::string& path);
};

}  // namespace marrowfin::test
