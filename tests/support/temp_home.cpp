#include "temp_home.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "platform/paths.h"

namespace marrowfin::test {

namespace {
std::optional<std::string> Swap(const char* name, const std::string& value) {
    const char* old = std::getenv(name);
    std::optional<std::string> kept = old ? std::optional<std::string>(old) : std::nullopt;
    setenv(name, value.c_str(), 1);
    return kept;
}
void Restore(const char* name, const std::optional<std::string>& value) {
    if (value) setenv(name, value->c_str(), 1);
    else unsetenv(name);
}
}  // namespace

TempHome::TempHome() {
    std::string pattern = (std::filesystem::temp_directory_path() / "marrowfin-test-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
    m_dir = pattern;
    std::filesystem::create_directories(configDir());
    std::filesystem::create_directories(documentsDir());
    m_oldConfig = Swap("XDG_CONFIG_HOME", configDir());
    m_oldHome = Swap("HOME", m_dir);
    ResetPathCachesForTest();
}

TempHome::~TempHome() {
    Restore("XDG_CONFIG_HOME", m_oldConfig);
    Restore("HOME", m_oldHome);
    ResetPathCachesForTest();
    std::error_code ec;
    std::filesystem::permissions(m_dir, std::filesystem::perms::owner_all, ec);
    std::filesystem::remove_all(m_dir, ec);
}

}  // namespace marrowfin::test
