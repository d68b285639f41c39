#include "sample_generator.h"
#include "xml_text.h"

#include "dwg_writer.h"
#include "symbol_painter.h"

#include <QImage>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <vector>

namespace fs = std::filesystem;

namespace marrowfin::service {

namespace {

// splitmix64: fixed across compilers and libraries, unlike the distributions
// of <random>, so that a seed means the same library everywhere.
class Rng {
public:
    explicit Rng(uint64_t seed) : m_state(seed) {}
    uint64_t next() {
        uint64_t z = (m_state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    uint32_t below(uint32_t n) { return n ? static_cast<uint32_t>(next() % n) : 0; }

private:
    uint64_t m_state;
};

constexpr uint32_t Bit(SymbolKind k) { return 1u << static_cast<int>(k); }
constexpr uint32_t kOpenings = Bit(SymbolKind::Door) | Bit(SymbolKind::Window);
constexpr uint32_t kFurniture = Bit(SymbolKind::Sofa) | Bit(SymbolKind::Bed) | Bit(SymbolKind::Table);
constexpr uint32_t kSanitary = Bit(SymbolKind::Toilet) | Bit(SymbolKind::Basin);
constexpr uint32_t kElectric = Bit(SymbolKind::Lamp) | Bit(SymbolKind::Socket);

struct GalleryTheme {
    const char* name;
    const char* kind;
    uint32_t symbols;  // the symbols its classes are drawn from first
};

const GalleryTheme kGalleries[] = {
    {"建筑门窗", "建筑", kOpenings},
    {"室内家具", "室内", kFurniture},
    {"卫浴洁具", "室内", kSanitary},
    {"电气图例", "机电", kElectric},
    {"Title Blocks", "建筑", Bit(SymbolKind::TitleBlock)},
    {"Landscape Furniture", "景观", Bit(SymbolKind::Table) | Bit(SymbolKind::Lamp)},
    {"Office Layouts", "室内", Bit(SymbolKind::Table) | Bit(SymbolKind::Sofa) | Bit(SymbolKind::Socket)},
    {"图框标题栏", "建筑", Bit(SymbolKind::TitleBlock)},
    {"厨房设备", "室内", Bit(SymbolKind::Basin) | Bit(SymbolKind::Table)},
    {"照明灯具", "机电", Bit(SymbolKind::Lamp)},
    {"Doors and Windows", "建筑", kOpenings},
    {"Site Plans", "景观", Bit(SymbolKind::Door) | Bit(SymbolKind::Lamp) | Bit(SymbolKind::Table)},
};

struct ClassTheme {
    const char* name;
    SymbolKind symbol;
};

const ClassTheme kClasses[] = {
    {"单开门", SymbolKind::Door},        {"双开门", SymbolKind::Door},
    {"Sliding Doors", SymbolKind::Door}, {"推拉窗", SymbolKind::Window},
    {"平开窗", SymbolKind::Window},      {"Casement Windows", SymbolKind::Window},
    {"沙发", SymbolKind::Sofa},          {"Sofas", SymbolKind::Sofa},
    {"双人床", SymbolKind::Bed},         {"Beds", SymbolKind::Bed},
    {"餐桌椅", SymbolKind::Table},       {"Dining Sets", SymbolKind::Table},
    {"坐便器", SymbolKind::Toilet},      {"WC Pans", SymbolKind::Toilet},
    {"洗手盆", SymbolKind::Basin},       {"Basins", SymbolKind::Basin},
    {"吸顶灯", SymbolKind::Lamp},        {"Ceiling Lights", SymbolKind::Lamp},
    {"插座", SymbolKind::Socket},        {"Sockets", SymbolKind::Socket},
    {"A3图框", SymbolKind::TitleBlock},  {"A1 Title Blocks", SymbolKind::TitleBlock},
};

constexpr int kGalleryPool = sizeof(kGalleries) / sizeof(kGalleries[0]);
constexpr int kClassPool = sizeof(kClasses) / sizeof(kClasses[0]);

struct GalleryPlan {
    std::string name;
    std::string kind;
    bool boutique = false;
    int maxVersion = 0;
    uint32_t hot = 0;
};

std::string FileSafe(std::string text) {
    std::replace(text.begin(), text.end(), ' ', '-');
    return text;
}

bool WriteFile(const fs::path& path, const std::string& bytes, std::string& error) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) {
        error = "cannot write " + path.string();
        return false;
    }
    return true;
}

// The class table in one sort order. Items are galleries, grouped by kind in
// `type` elements; only the first item of a group names its kind, the rest
// inherit it, as the client reads it.
std::string ClassTable(const std::vector<GalleryPlan>& order) {
    std::string x =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n<word>选择图库</word>\n<showdesc>1</showdesc>\n";
    x += "<sort id=\"精品图库\" show=\"精品图库\"><kind>全部</kind><kind>建筑</kind><kind>室内</kind></sort>\n";
    // A sort of another id: skipped by the client, but it uses up kind numbers.
    x += "<sort id=\"推荐图库\" show=\"推荐\"><kind>热门</kind></sort>\n";
    x +=
        "<sort id=\"通用图库\" show=\"通用图库\"><kind>全部</kind><kind>建筑</kind><kind>室内</kind><kind>机电</kind></sort>\n";
    std::vector<std::string> kinds;
    for (const GalleryPlan& g : order)
        if (std::find(kinds.begin(), kinds.end(), g.kind) == kinds.end()) kinds.push_back(g.kind);
    for (const std::string& kind : kinds) {
        x += "<type>\n";
        bool first = true;
        for (const GalleryPlan& g : order) {
            if (g.kind != kind) continue;
            x += "<item>";
            if (first) x += "<kind>" + XmlEscape(kind) + "</kind>";
            first = false;
            x += "<name>" + XmlEscape(g.name) + "</name><describe>" + XmlEscape(g.name) + "常用图块</describe>";
            x += std::string("<gv>") + (g.boutique ? "1" : "0") + "</gv><ver>" + std::to_string(g.maxVersion) +
                 "</ver></item>\n";
        }
        x += "</type>\n";
    }
    x += "</root>\n";
    return x;
}

}  // namespace

// The sample written step by step: folders, the library with its blocks, the
// class tables, the hot words, the tiles. One random stream runs through the
// steps in this order, which is what keeps a seed's sample the same; they stay
// together so that no reordering can change it unnoticed.
SampleResult GenerateSample(const std::string& outDir, const SampleOptions& options) {
    SampleResult result;
    if (options.galleries < 1 || options.classes < 1 || options.blocks < 0) {
        result.error = "galleries and classes must be at least 1, blocks at least 0";
        return result;
    }
    std::error_code ec;
    const fs::path root(outDir);
    fs::create_directories(root, ec);
    // Library files of an earlier run go; state.sqlite and uploads stay.
    fs::remove_all(root / "blocks", ec);
    fs::remove_all(root / "ads", ec);
    fs::create_directories(root / "blocks", ec);
    fs::create_directories(root / "ads", ec);
    if (ec) {
        result.error = "cannot create " + outDir + ": " + ec.message();
        return result;
    }

    Rng rng(options.seed);
    std::vector<int> galleryOrder(kGalleryPool);
    for (int i = 0; i < kGalleryPool; ++i) galleryOrder[i] = i;
    for (int i = kGalleryPool - 1; i > 0; --i) std::swap(galleryOrder[i], galleryOrder[rng.below(i + 1)]);

    std::string library = "# Marrowfin sample library, seed " + std::to_string(options.seed) + "\n";
    library += "dv\t0\n";
    std::vector<GalleryPlan> galleries;
    std::vector<std::string> hotWords;
    for (int g = 0; g < options.galleries; ++g) {
        GalleryPlan plan;
        const GalleryTheme& theme = kGalleries[galleryOrder[g % kGalleryPool]];
        plan.name = theme.name;
        if (g >= kGalleryPool) plan.name += std::to_string(g / kGalleryPool + 1);
        plan.kind = theme.kind;
        plan.boutique = g % 3 == 1;
        plan.hot = rng.below(10000);
        library += "gallery\t" + plan.name + "\t" + (plan.boutique ? "1" : "0") + "\n";

        std::vector<int> classOrder(kClassPool);
        for (int i = 0; i < kClassPool; ++i) classOrder[i] = i;
        for (int i = kClassPool - 1; i > 0; --i) std::swap(classOrder[i], classOrder[rng.below(i + 1)]);
        // Classes that fit the gallery's theme come first, the others fill up.
        std::stable_partition(classOrder.begin(), classOrder.end(),
                              [&](int c) { return (theme.symbols & Bit(kClasses[c].symbol)) != 0; });
        for (int c = 0; c < options.classes; ++c) {
            const ClassTheme& ct = kClasses[classOrder[c % kClassPool]];
            std::string className = ct.name;
            if (c >= kClassPool) className += std::to_string(c / kClassPool + 1);
            const int version = 1 + static_cast<int>(rng.below(5));
            plan.maxVersion = std::max(plan.maxVersion, version);
            library += "class\t" + plan.name + "\t" + className + "\t" + std::to_string(version) + "\n";
            if (g == 0 && c < 4) hotWords.push_back(ct.name);
            const fs::path classDir = root / "blocks" / plan.name / className;
            fs::create_directories(classDir, ec);
            if (ec) {
                result.error = "cannot create " + classDir.string();
                return result;
            }
            ++result.classes;
            for (int b = 0; b < options.blocks; ++b) {
                char number[16];
                std::snprintf(number, sizeof number, "_%03d.dwg", b + 1);
                const std::string fileName = FileSafe(className) + number;
                const bool hidden = rng.below(12) == 0;
                const bool png = rng.below(5) == 0;
                const uint32_t variant = rng.below(1u << 16);
                std::string bytes;
                if (png) {
                    bytes =
                        BuildDwgContainer(PreviewKind::Png, EncodePng(DrawSymbol(ct.symbol, variant, 224, 140, true)));
                } else {
                    bytes = BuildDwgContainer(PreviewKind::Bmp8, EncodeDib8(DrawSymbol(ct.symbol, variant, 180, 120)));
                }
                if (!WriteFile(classDir / fileName, bytes, result.error)) return result;
                result.bytes += static_cast<int64_t>(bytes.size());
                ++result.blocks;
                library +=
                    "block\t" + plan.name + "\t" + className + "\t" + fileName + "\t" + (hidden ? "1" : "0") + "\n";
            }
        }
        galleries.push_back(plan);
        ++result.galleries;
    }
    if (!WriteFile(root / "library.tsv", library, result.error)) return result;

    // Class table in the sorts "def" (library order), "hot" and "new".
    std::vector<GalleryPlan> byHot = galleries;
    std::stable_sort(byHot.begin(), byHot.end(),
                     [](const GalleryPlan& a, const GalleryPlan& b) { return a.hot > b.hot; });
    std::vector<GalleryPlan> byNew = galleries;
    std::stable_sort(byNew.begin(), byNew.end(),
                     [](const GalleryPlan& a, const GalleryPlan& b) { return a.maxVersion > b.maxVersion; });
    if (!WriteFile(root / "selpageinfo_def.xml", ClassTable(galleries), result.error)) return result;
    if (!WriteFile(root / "selpageinfo_hot.xml", ClassTable(byHot), result.error)) return result;
    if (!WriteFile(root / "selpageinfo_new.xml", ClassTable(byNew), result.error)) return result;

    std::string hot = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n<default>门</default>\n<hot_words>";
    for (const std::string& w : hotWords) hot += "<item>" + XmlEscape(w) + "</item>";
    hot += "</hot_words>\n</root>\n";
    if (!WriteFile(root / "hotwords.xml", hot, result.error)) return result;

    // Tiles for the first galleries; the third one is switched off.
    std::string ads = "# key\ton\tname\ttarget\tver\tpicture\n";
    for (int i = 0; i < std::min<int>(3, static_cast<int>(galleries.size())); ++i) {
        const std::string picture = "ad_" + std::to_string(i + 1) + ".png";
        if (!WriteFile(root / "ads" / picture, EncodePng(DrawAdTile(static_cast<uint32_t>(i), 200, 120)), result.error))
            return result;
        ads += galleries[i].name + "\t" + (i == 2 ? "0" : "1") + "\t" + galleries[i].name +
               "精选\thttps://example.com/marrowfin/ad/" + std::to_string(i + 1) + "\t" + std::to_string(i + 1) + "\t" +
               picture + "\n";
    }
    if (!WriteFile(root / "ads.tsv", ads, result.error)) return result;
    result.ok = true;
    return result;
}

}  // namespace marrowfin::service
