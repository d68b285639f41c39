#pragma once
// A fresh temporary folder per test, with XDG_CONFIG_HOME and the documents
// folder pointed into it, so that no test touches the real home folder.

#include <optional>
#include <string>

namespace marrowfin::test {

class TempHome {
public:
    TempHome();
    ~TempHome();
    TempHome(const TempHome&) = delete;
    TempHome& operator=(const TempHome&) = delete;

    const std::string& dir() const { return m_dir; }
    std::string configDir() const { return m_dir + "/config"; }
    std::string documentsDir() const { return m_dir + "/Documents"; }
    // Path of a file below the folder.
    std::string file(const std::string& relative) const { return m_dir + "/" + relative; }

private:
    std::string m_dir;
    std::optional<std::string> m_oldConfig, m_oldHome;
};

}  // namespace marrowfin::test
