#include "live_service.h"

#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>
#include <stdexcept>
#include <tuple>

#include "library_catalog.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "request_counters.h"
#include "sample_generator.h"
#include "support/test_paths.h"

namespace marrowfin::test {

const std::string& SampleLibrary(const SampleShape& shape) {
    // The generated folders, one per shape, removed with the program.
    static struct Samples : std::map<std::tuple<int, int, int>, std::string> {
        ~Samples() {
            std::error_code ec;
            for (const auto& [shape, dir] : *this) std::filesystem::remove_all(dir, ec);
        }
    } samples;
    std::string& dir = samples[std::make_tuple(shape.galleries, shape.classes, shape.blocks)];
    if (!dir.empty()) return dir;
    std::string made = (std::filesystem::temp_directory_path() / "marrowfin-sample-XXXXXX").string();
    if (!mkdtemp(made.data())) throw std::runtime_error("mkdtemp failed");
    const service::SampleResult result = service::GenerateSample(made, {shape.galleries, shape.classes, shape.blocks});
    if (!result.ok) throw std::runtime_error("sample generation failed: " + result.error);
    return dir = made;
}

std::string WriteLibrary(const std::string& dir, const std::string& tsv, size_t blockBytes) {
    std::filesystem::create_directories(dir);
    std::istringstream lines(tsv);
    for (std::string line; std::getline(lines, line);)
        if (const auto f = service::SplitTabs(line); f.size() == 5 && f[0] == "block") {
            std::filesystem::create_directories(dir + "/blocks/" + f[1] + "/" + f[2]);
            WriteBytes(dir + "/blocks/" + f[1] + "/" + f[2] + "/" + f[3], "AC1015" + std::string(blockBytes - 6, 'b'));
        }
    WriteBytes(dir + "/library.tsv", tsv);
    return dir;
}

std::vector<std::u16string> GalleryNames(const std::string& dataDir) {
    service::LibraryCatalog catalog;
    std::string error;
    std::vector<std::u16string> names;
    if (catalog.load(dataDir, error))
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
