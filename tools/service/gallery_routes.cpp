// Read-only answers: galleries and classes, the class table, hot words,
// search, advertising tiles, sharing.

#include "service_impl.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace fs = std::filesystem;

namespace marrowfin::service {

namespace {

std::string ClassBase(const std::string& base, const std::string& gallery, const std::string& className) {
    // Raw UTF-8: the client percent-encodes a download address itself.
    return base + "/files/" + gallery + "/" + className;
}

std::string BlockElements(const CatalogClass& c, const char* element) {
    std::string x;
    for (const CatalogBlock& b : c.blocks) {
        x += "<";
        x += element;
        x += " fn=\"" + XmlAttr(b.fileName) + "\" size=\"" + std::to_string(b.size) + "\" hi=\"" +
             (b.hidden ? "1" : "0") + "\"/>";
    }
    return x;
}

std::string ClassItem(const std::string& base, const CatalogGallery& g, const CatalogClass& c) {
    return "<item cs=\"" + XmlAttr(c.name) + "\" b_u=\"" + XmlAttr(ClassBase(base, g.name, c.name)) + "\" ver=\"" +
           std::to_string(c.version) + "\">" + BlockElements(c, "dwg") + "</item>\n";
}

std::vector<std::string> SplitOn(const std::string& text, char sep) {
    std::vector<std::string> out;
    size_t at = 0;
    for (;;) {
        const size_t next = text.find(sep, at);
        out.push_back(text.substr(at, next == std::string::npos ? std::string::npos : next - at));
        if (next == std::string::npos) break;
        at = next + 1;
    }
    return out;
}

std::string AsciiLower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

struct RankedHit {
    const CatalogGallery* gallery;
    const CatalogClass* klass;
    const CatalogBlock* block;
};

// Non-hidden blocks found by `text` (ASCII case folded), best first: a name
// (without extension) equal to the text, then names starting with it, then
// names holding it, then blocks found by their class name only. Catalogue
// order within each group; at most 500.
std::vector<RankedHit> RankedSearch(const LibraryCatalog& catalog, const std::string& text) {
    constexpr size_t kMaxHits = 500;
    const std::string needle = AsciiLower(text);
    std::vector<RankedHit> groups[4];
    if (needle.empty()) return {};
    for (const CatalogGallery& g : catalog.galleries()) {
        for (const CatalogClass& c : g.classes) {
            const bool classHit = AsciiLower(c.name).find(needle) != std::string::npos;
            for (const CatalogBlock& b : c.blocks) {
                if (b.hidden) continue;
                const std::string name = AsciiLower(b.fileName);
                const std::string stem = name.substr(0, name.rfind('.'));
                const size_t at = name.find(needle);
                const int group = stem == needle ? 0 : at == 0 ? 1 : at != std::string::npos ? 2 : classHit ? 3 : -1;
                if (group >= 0) groups[group].push_back({&g, &c, &b});
            }
        }
    }
    std::vector<RankedHit> hits;
    for (const auto& group : groups)
        for (const RankedHit& hit : group)
            if (hits.size() < kMaxHits) hits.push_back(hit);
    return hits;
}

bool ReadText(const fs::path& path, std::string& out) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::ostringstream s;
    s << in.rdbuf();
    out = s.str();
    return true;
}

}  // namespace

// The route table: one short handler per address, kept in one list so that
// the service's whole gallery surface reads in one place.
void ServiceHandle::Impl::registerGalleryRoutes() {
    auto route = [this](const std::string& name, std::function<Reply(const httplib::Request&)> fn) {
        auto handler = [this, fn](const httplib::Request& req, httplib::Response& res) {
            serve(req, res, [&] { return fn(req); });
        };
        server.Get("/gallery/" + name, handler);
        server.Post("/gallery/" + name, handler);
    };

    route("g_all_s", [this](const httplib::Request& req) {
        if (!req.has_param("gallery_name")) return BadRequest("gallery_name is missing");
        const std::string base = baseOf(req);
        std::string x = XmlHead() + "<root dv=\"" + (currentSettings().forceRefresh ? "1" : "0") + "\">\n";
        std::set<std::string> sent;
        for (const std::string& name : SplitOn(req.get_param_value("gallery_name"), ',')) {
            const CatalogGallery* g = catalog.findGallery(name);
            // Unknown names are left out, as are repeats.
            if (!g || !sent.insert(name).second) continue;
            x += "<gallery gn=\"" + XmlAttr(g->name) + "\" gv=\"" + (g->boutique ? "1" : "0") + "\">\n";
            for (const CatalogClass& c : g->classes) x += ClassItem(base, *g, c);
            x += "</gallery>\n";
        }
        return Xml(x + "</root>\n");
    });

    route("g_all", [this](const httplib::Request& req) {
        const CatalogGallery* g = catalog.findGallery(req.get_param_value("gallery_name"));
        if (!g) return BadRequest("unknown gallery_name");
        const std::string base = baseOf(req);
        std::string x = XmlHead() + "<root gv=\"" + (g->boutique ? "1" : "0") + "\" gn=\"" + XmlAttr(g->name) + "\">\n";
        for (const CatalogClass& c : g->classes) x += ClassItem(base, *g, c);
        return Xml(x + "</root>\n");
    });

    route("g_cs_s", [this](const httplib::Request& req) {
        const CatalogGallery* g = catalog.findGallery(req.get_param_value("gallery_name"));
        if (!g) return BadRequest("unknown gallery_name");
        std::string x = XmlHead() + "<root gn=\"" + XmlAttr(g->name) + "\" gv=\"" + (g->boutique ? "1" : "0") + "\">\n";
        for (const CatalogClass& c : g->classes)
            x += "<item cs=\"" + XmlAttr(c.name) + "\" ver=\"" + std::to_string(c.version) + "\"/>\n";
        return Xml(x + "</root>\n");
    });

    route("g_cs", [this](const httplib::Request& req) {
        const CatalogGallery* g = catalog.findGallery(req.get_param_value("gallery_name"));
        if (!g) return BadRequest("unknown gallery_name");
        const CatalogClass* c = g->findClass(req.get_param_value("cs"));
        if (!c) return BadRequest("unknown cs");
        std::string x = XmlHead() + "<root cs=\"" + XmlAttr(c->name) + "\" b_u=\"" +
                        XmlAttr(ClassBase(baseOf(req), g->name, c->name)) + "\" ver=\"" + std::to_string(c->version) +
                        "\">\n" + BlockElements(*c, "item") + "\n</root>\n";
        return Xml(x);
    });

    route("selpageinfo", [this](const httplib::Request& req) {
        std::string sort = req.get_param_value("sort");
        // An unknown or empty sort word gets the default order.
        if (sort != "hot" && sort != "new") sort = "def";
        std::string text;
        if (!ReadText(fs::path(dataDir) / ("selpageinfo_" + sort + ".xml"), text)) return Xml(XmlHead() + "<root/>\n");
        return Xml(text);
    });

    route("gethotwords", [this](const httplib::Request&) {
        std::string text;
        if (!ReadText(fs::path(dataDir) / "hotwords.xml", text)) return Xml(XmlHead() + "<root/>\n");
        return Xml(text);
    });

    route("search_g", [this](const httplib::Request& req) {
        const std::string base = baseOf(req);
        std::string items;
        std::vector<const CatalogGallery*> versionOrder;
        for (const RankedHit& hit : RankedSearch(catalog, req.get_param_value("search_content"))) {
            const CatalogGallery& g = *hit.gallery;
            if (std::find(versionOrder.begin(), versionOrder.end(), &g) == versionOrder.end())
                versionOrder.push_back(&g);
            items += "<item filename=\"" + XmlAttr(hit.block->fileName) + "\" classify=\"" + XmlAttr(g.name) +
                     "\" subclass=\"" + XmlAttr(hit.klass->name) + "\" download_url=\"" +
                     XmlAttr(ClassBase(base, g.name, hit.klass->name) + "/" + hit.block->fileName) + "\" size=\"" +
                     std::to_string(hit.block->size) + "\" gv=\"" + (g.boutique ? "1" : "0") + "\"/>\n";
        }
        // The client keeps one cache folder per `classify` (a gallery) and
        // empties it when that name's version rises: the gallery's version
        // is the highest of its classes'.
        std::string x = XmlHead() + "<root nom=\"" + XmlAttr(currentSettings().nom) + "\">\n";
        for (const CatalogGallery* g : versionOrder) {
            int version = 0;
            for (const CatalogClass& c : g->classes) version = std::max(version, c.version);
            x += "<ver t=\"" + std::to_string(version) + "\">" + XmlAttr(g->name) + "</ver>\n";
        }
        return Xml(x + items + "</root>\n");
    });

    route("gad", [this](const httplib::Request& req) {
        // Every channel gets the same tiles, but a request must carry both keys,
        // and img_type as a whole decimal number.
        if (!req.has_param("type") || !req.has_param("img_type")) return BadRequest("type or img_type is missing");
        const std::string imgType = req.get_param_value("img_type");
        if (imgType.empty() || imgType.find_first_not_of("0123456789") != std::string::npos)
            return BadRequest("img_type is not a number");
        const std::string base = baseOf(req);
        std::string x = XmlHead() + "<root>\n";
        for (const CatalogAd& ad : catalog.ads()) {
            x += "<item on=\"" + std::string(ad.on ? "1" : "0") + "\" name=\"" + XmlAttr(ad.name) + "\" url=\"" +
                 XmlAttr(base + "/ad/" + ad.picture) + "\" target=\"" + XmlAttr(ad.target) + "\" ver=\"" +
                 XmlAttr(ad.ver) + "\">" + XmlAttr(ad.key) + "</item>\n";
        }
        return Xml(x + "</root>\n");
    });

    route("sharef", [this](const httplib::Request& req) {
        auto user = UserOf(*this, req);
        if (!user) return BadRequest("usertoken is invalid");
        users.addShare(*user);
        return Word("success");
    });
}

void ServiceHandle::Impl::registerFileRoutes() {
    // Block files, collected blocks and tile pictures, through the same
    // wrapper as the other answers so that faults and counters apply.
    auto file = [this](const std::string& prefix, std::function<fs::path(const httplib::Request&)> locate) {
        server.Get(prefix + "(.*)", [this, locate](const httplib::Request& req, httplib::Response& res) {
            serve(req, res, [&] {
                const fs::path path = locate(req);
                std::string bytes;
                if (path.empty() || !ReadText(path, bytes)) return Reply{404, "not found\n", "text/plain"};
                const bool png = path.extension() == ".png";
                return Reply{200, std::move(bytes), png ? "image/png" : "application/octet-stream"};
            });
        });
    };
    auto safe = [](const std::string& rest) {
        for (const std::string& part : SplitOn(rest, '/'))
            if (part.empty() || part == "." || part == "..") return false;
        return true;
    };
    file("/files/", [this, safe](const httplib::Request& req) {
        const std::string rest = req.matches[1];
        return safe(rest) ? fs::path(dataDir) / "blocks" / rest : fs::path();
    });
    file("/ad/", [this, safe](const httplib::Request& req) {
        const std::string rest = req.matches[1];
        return safe(rest) && rest.find('/') == std::string::npos ? fs::path(dataDir) / "ads" / rest : fs::path();
    });
    file("/ufiles/", [this](const httplib::Request& req) {
        // /ufiles/<block id>/<file name>: the name must be the block's current one.
        const std::string rest = req.matches[1];
        const size_t slash = rest.find('/');
        if (slash == std::string::npos) return fs::path();
        const int64_t id = std::atoll(rest.substr(0, slash).c_str());
        auto block = users.blockById(id);
        if (!block || block->fileName != rest.substr(slash + 1)) return fs::path();
        return fs::path(dataDir) / "collected" / (std::to_string(id) + ".dwg");
    });
}

}  // namespace marrowfin::service
