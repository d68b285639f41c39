#include "live_service.h"

#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <stdexcept>
#include <tuple>

#include "library_catalog.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "request_counters.h"
#include "sample_generator.h"

namespace marrowfin::test {

const std::string& SampleLibrary(const SampleShape& shape) {
    static std::mutex lock;
    static std::map<std::tuple<int, int, int>, std::string> made;
    std::lock_guard<std::mutex> guard(lock);
    const auto key = std::make_tuple(shape.galleries, shape.classes, shape.blocks);
    auto it = made.find(key);
    if (it != made.end()) return it->second;
    std::string dir = (std::filesystem::temp_directory_path() / "marrowfin-sample-XXXXXX").string();
    if (!mkdtemp(dir.data())) throw std::runtime_error("mkdtemp failed");
    service::SampleOptions options;
    options.galleries = shape.galleries;
    options.classes = shape.classes;
    options.blocks = shape.blocks;
    const service::SampleResult result = service::GenerateSample(dir, options);
    if (!result.ok) throw std::runtime_error("sample generation failed: " + result.error);
    // The folder goes with the program.
    static struct Cleanup {
        std::vector<std::string> dirs;
        ~Cleanup() {
            std::error_code ec;
            for (const auto& d : dirs) std::filesystem::remove_all(d, ec);
        }
    } cleanup;
    cleanup.dirs.push_back(dir);
    return made.emplace(key, dir).first->second;
}

std::vector<std::u16string> GalleryNames(const std::string& dataDir) {
    service::LibraryCatalog catalog;
    std::string error;
    std::vector<std::u16string> names;
    if (!catalog.load(dataDir, error)) return names;
    for (const auto& g : catalog.galleries()) names.push_back(Utf8ToUtf16(g.name));
    return names;
}

service::ServiceHandle StartLiveService(const std::string& dataDir) {
    service::ServiceHandle handle = service::StartService(dataDir, 0);
    if (!handle.ok()) throw std::runtime_error("service did not start: " + handle.error());
    WriteOptionString(u"ServiceBase", Utf8ToUtf16(handle.baseUrl()));
    return handle;
}

LiveService::LiveService(const SampleShape& shape)
    : galleries(GalleryNames(SampleLibrary(shape))), handle(StartLiveService(SampleLibrary(shape))) {}

long LiveService::Served(const std::string& path) { return handle.counters().get(path).count; }

}  // namespace marrowfin::test
