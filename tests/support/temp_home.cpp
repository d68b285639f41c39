#include "temp_home.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "platform/paths.h"

namespace marrowfin::test {

namespace {
std::string takeEnv(const char* name, bool& had) {
    const char* v = std::getenv(name);
    had = v != nullptr;
    return had ? std::string(v) : std::string();
}
}  // namespace

TempHome::TempHome() {
    std::string pattern = (std::filesystem::temp_directory_path() / "marrowfin-test-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
    m_dir = pattern;
    std::filesystem::create_directories(configDir());
    std::filesystem::create_directories(documentsDir());
    m_oldConfig = takeEnv("XDG_CONFIG_HOME", m_hadConfig);
    m_oldHome = takeEnv("HOME", m_hadHome);
    setenv("XDG_CONFIG_HOME", configDir().c_str(), 1);
    setenv("HOME", m_dir.c_str(), 1);
    ResetPathCachesForTest();
}

TempHome::~TempHome() {
    if (m_hadConfig) setenv("XDG_CONFIG_HOME", m_oldConfig.c_str(), 1); else unsetenv("XDG_CONFIG_HOME");
    if (m_hadHome) setenv("HOME", m_oldHome.c_str(), 1); else unsetenv("HOME");
    ResetPathCachesForTest();
    std::error_code ec;
    std::filesystem::permissions(m_dir, std::filesystem::perms::owner_all, ec);
    std::filesystem::remove_all(m_dir, ec);
}

}  // namespace marrowfin::test
