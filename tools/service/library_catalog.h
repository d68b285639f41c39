#pragma once
// The read-only part of the service's data folder: galleries, classes with
// versions, blocks, advertising tiles. Loaded once at start.

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace marrowfin::service {

struct CatalogBlock {
    std::string fileName;
    int64_t size = 0;
    bool hidden = false;
};

struct CatalogClass {
    std::string name;
    int version = 0;
    std::vector<CatalogBlock> blocks;
};

struct CatalogGallery {
    std::string name;
    bool boutique = false;
    std::vector<CatalogClass> classes;
    const CatalogClass* findClass(const std::string& name) const;
};

struct CatalogAd {
    std::string key;
    bool on = false;
    std::string name;
    std::string target;
    std::string ver;
    std::string picture;  // file name under ads/
};

class LibraryCatalog {
public:
    // Reads library.tsv and ads.tsv of the data folder; block sizes come from
    // the files under blocks/. A missing library.tsv gives an empty library.
    bool load(const std::string& dataDir, std::string& error);

    const std::vector<CatalogGallery>& galleries() const { return m_galleries; }
    const CatalogGallery* findGallery(const std::string& name) const;
    const std::vector<CatalogAd>& ads() const { return m_ads; }
    bool forceRefresh() const { return m_forceRefresh; }
    // Whether a block of that file name lies in a boutique gallery; the
    // collection marks blocks collected from there.
    bool isBoutiqueBlock(const std::string& fileName) const { return m_boutiqueBlocks.count(fileName) != 0; }

private:
    std::vector<CatalogGallery> m_galleries;
    std::map<std::string, size_t> m_index;
    std::vector<CatalogAd> m_ads;
    std::set<std::string> m_boutiqueBlocks;
    bool m_forceRefresh = false;
};

std::vector<std::string> SplitTabs(const std::string& line);

}  // namespace marrowfin::service
