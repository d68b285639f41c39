#include "library_catalog.h"

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace marrowfin::service {

std::vector<std::string> SplitTabs(const std::string& line) {
    std::vector<std::string> parts;
    size_t at = 0;
    for (;;) {
        const size_t tab = line.find('\t', at);
        parts.push_back(line.substr(at, tab == std::string::npos ? std::string::npos : tab - at));
        if (tab == std::string::npos) break;
        at = tab + 1;
    }
    return parts;
}

const CatalogClass* CatalogGallery::findClass(const std::string& className) const {
    for (const CatalogClass& c : classes)
        if (c.name == className) return &c;
    return nullptr;
}

const CatalogGallery* LibraryCatalog::findGallery(const std::string& name) const {
    auto it = m_index.find(name);
    return it == m_index.end() ? nullptr : &m_galleries[it->second];
}

bool LibraryCatalog::load(const std::string& dataDir, std::string& error) {
    m_galleries.clear();
    m_index.clear();
    m_ads.clear();
    m_boutiqueBlocks.clear();
    m_forceRefresh = false;
    const fs::path root(dataDir);
    std::ifstream in(root / "library.tsv");
    std::string line;
    int lineNo = 0;
    while (in && std::getline(in, line)) {
        ++lineNo;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() || line[0] == '#') continue;
        const std::vector<std::string> f = SplitTabs(line);
        const std::string where = "library.tsv line " + std::to_string(lineNo);
        if (f[0] == "dv" && f.size() == 2) {
            m_forceRefresh = f[1] == "1";
        } else if (f[0] == "gallery" && f.size() == 3) {
            m_index[f[1]] = m_galleries.size();
            m_galleries.push_back(CatalogGallery{f[1], f[2] == "1", {}});
        } else if (f[0] == "class" && f.size() == 4) {
            auto it = m_index.find(f[1]);
            if (it == m_index.end()) {
                error = where + ": class of an unknown gallery";
                return false;
            }
            m_galleries[it->second].classes.push_back(CatalogClass{f[2], std::atoi(f[3].c_str()), {}});
        } else if (f[0] == "block" && f.size() == 5) {
            auto it = m_index.find(f[1]);
            CatalogGallery* g = it == m_index.end() ? nullptr : &m_galleries[it->second];
            CatalogClass* c = nullptr;
            if (g)
                for (CatalogClass& k : g->classes)
                    if (k.name == f[2]) c = &k;
            if (!c) {
                error = where + ": block of an unknown class";
                return false;
            }
            std::error_code ec;
            const auto size = fs::file_size(root / "blocks" / f[1] / f[2] / f[3], ec);
            if (ec) {
                error = where + ": missing block file " + f[3];
                return false;
            }
            c->blocks.push_back(CatalogBlock{f[3], static_cast<int64_t>(size), f[4] == "1"});
            if (g->boutique) m_boutiqueBlocks.insert(f[3]);
        } else {
            error = where + ": not understood";
            return false;
        }
    }
    std::ifstream ads(root / "ads.tsv");
    while (ads && std::getline(ads, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() || line[0] == '#') continue;
        const std::vector<std::string> f = SplitTabs(line);
        if (f.size() != 6) {
            error = "ads.tsv: a line without six fields";
            return false;
        }
        m_ads.push_back(CatalogAd{f[0], f[1] == "1", f[2], f[3], f[4], f[5]});
    }
    return true;
}

}  // namespace marrowfin::service
