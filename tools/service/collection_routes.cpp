// The user's collection: folders and the blocks in them. Reply words are the
// ones the client compares exactly.

#include "service_impl.h"

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace marrowfin::service {

namespace {

bool ToId(const std::string& text, int64_t& id) {
    if (text.empty() || text.size() > 18) return false;
    for (char c : text)
        if (c < '0' || c > '9') return false;
    id = std::atoll(text.c_str());
    return true;
}

std::string BlockUrl(const std::string& base, const UserBlock& b) {
    return base + "/ufiles/" + std::to_string(b.id) + "/" + b.fileName;
}

bool LooksLikeDrawing(const std::string& bytes) { return bytes.size() >= 6 && bytes.compare(0, 4, "AC10") == 0; }

}  // namespace

// The route table: one short handler per address, kept in one list so that
// the service's whole collection surface reads in one place.
void ServiceHandle::Impl::registerCollectionRoutes() {
    auto route = [this](const std::string& name, std::function<Reply(const httplib::Request&, int64_t user)> fn) {
        auto handler = [this, fn](const httplib::Request& req, httplib::Response& res) {
            serve(req, res, [&] {
                auto user = UserOf(*this, req);
                if (!user) return BadRequest("usertoken is invalid");
                return fn(req, *user);
            });
        };
        server.Get("/gallery/" + name, handler);
        server.Post("/gallery/" + name, handler);
    };

    auto folderList = [this](const httplib::Request& req, int64_t user, bool withBlocks) {
        const std::string base = baseOf(req);
        std::string x = XmlHead() + "<root>\n";
        for (const UserFolder& f : users.folders(user)) {
            x += "<favorites favorites_id=\"" + std::to_string(f.id) + "\" favorites_name=\"" + XmlAttr(f.name) + "\"";
            if (!withBlocks) {
                x += "/>\n";
                continue;
            }
            x += ">\n";
            for (const UserBlock& b : users.blocks(f.id)) {
                x += "<dwg filename=\"" + XmlAttr(b.fileName) + "\" dwg_info=\"" + XmlAttr(b.info) + "\" dwg_url=\"" +
                     XmlAttr(BlockUrl(base, b)) + "\" size=\"" + std::to_string(b.size) + "\" gv=\"" +
                     (b.boutique ? "1" : "0") + "\"/>\n";
            }
            x += "</favorites>\n";
        }
        return Xml(x + "</root>\n");
    };

    auto blockList = [this](const httplib::Request& req, const std::vector<UserBlock>& blocks) {
        const std::string base = baseOf(req);
        std::string x = XmlHead() + "<root>\n";
        for (const UserBlock& b : blocks) {
            x += "<dwg dwg_id=\"" + std::to_string(b.id) + "\" filename=\"" + XmlAttr(b.fileName) + "\" dwg_url=\"" +
                 XmlAttr(BlockUrl(base, b)) + "\" dwg_info=\"" + XmlAttr(b.info) + "\"/>\n";
        }
        return Xml(x + "</root>\n");
    };

    route("get_u_f", [folderList](const httplib::Request& req, int64_t user) { return folderList(req, user, false); });

    route("get_u_collect", [this, folderList](const httplib::Request& req, int64_t user) {
        // A user without a folder reads "empty", so that the client creates its default.
        if (users.folders(user).empty()) return Word("empty");
        return folderList(req, user, req.get_param_value("needdwg") == "1");
    });

    route("favorite", [this, folderList](const httplib::Request& req, int64_t user) {
        const std::string operate = req.get_param_value("operate");
        if (operate == "add") {
            const std::string r = users.addFolder(user, req.get_param_value("favorites"));
            if (r == "exists") return Word("favorites is exist");
            if (!r.empty()) return Word("error");
            return folderList(req, user, false);
        }
        int64_t id = 0;
        if (!ToId(req.get_param_value("favorites_id"), id)) return Word("error");
        if (operate == "update") {
            const std::string r = users.renameFolder(user, id, req.get_param_value("newname"));
            if (r == "exists") return Word("favorites is exist");
            return Word(r.empty() ? "success" : "error");
        }
        if (operate == "del") {
            auto gone = users.deleteFolder(user, id);
            if (!gone) return Word("error");
            std::error_code ec;
            for (int64_t b : *gone) fs::remove(fs::path(dataDir) / "collected" / (std::to_string(b) + ".dwg"), ec);
            return Word("success");
        }
        return BadRequest("unknown operate");
    });

    route("favorite_dwgs", [this, blockList](const httplib::Request& req, int64_t user) {
        int64_t id = 0;
        if (!ToId(req.get_param_value("favorites_id"), id) || !users.folder(user, id)) return Word("error");
        return blockList(req, users.blocks(id));
    });

    route("dwg_collect", [this](const httplib::Request& req, int64_t user) {
        if (req.get_param_value("operate") != "del") return BadRequest("unknown operate");
        int64_t folder = 0, id = 0;
        if (!ToId(req.get_param_value("favorites_id"), folder) || !ToId(req.get_param_value("dwg_id"), id))
            return Word("error");
        if (!users.folder(user, folder) || !users.block(folder, id) || !users.deleteBlock(id)) return Word("error");
        std::error_code ec;
        fs::remove(fs::path(dataDir) / "collected" / (std::to_string(id) + ".dwg"), ec);
        return Word("success");
    });

    route("dwg_collectu", [this](const httplib::Request& req, int64_t user) {
        // "1" collected, "2" a block of that name is there (force off), "3" failed.
        if (!req.has_file("file")) return Word("3");
        const httplib::MultipartFormData file = req.get_file_value("file");
        std::string name = file.filename;
        const size_t slash = name.find_last_of("/\\");
        if (slash != std::string::npos) name = name.substr(slash + 1);
        if (name.empty() || !LooksLikeDrawing(file.content)) return Word("3");
        std::optional<UserFolder> folder;
        const std::string folderText = req.get_param_value("favorites_id");
        int64_t folderId = 0;
        if (folderText.empty()) {
            // The client may not know the id of a default folder it just made.
            auto all = users.folders(user);
            if (all.empty()) {
                users.addFolder(user, "收藏夹1");
                all = users.folders(user);
            }
            if (!all.empty()) folder = all.front();
        } else if (ToId(folderText, folderId)) {
            folder = users.folder(user, folderId);
        }
        if (!folder) return Word("3");
        const std::string force = req.get_param_value("force");
        const bool replace = force == "1" || force == "true";
        if (auto existing = users.blockByName(folder->id, name)) {
            if (!replace) return Word("2");
            users.deleteBlock(existing->id);
            std::error_code ec;
            fs::remove(fs::path(dataDir) / "collected" / (std::to_string(existing->id) + ".dwg"), ec);
        }
        UserBlock block;
        block.folder = folder->id;
        block.fileName = name;
        block.info = folder->name;
        block.size = static_cast<int64_t>(file.content.size());
        block.boutique = catalog.isBoutiqueBlock(name);
        block.id = users.addBlock(block);
        if (block.id == 0) return Word("3");
        std::ofstream out(fs::path(dataDir) / "collected" / (std::to_string(block.id) + ".dwg"), std::ios::binary);
        out.write(file.content.data(), static_cast<std::streamsize>(file.content.size()));
        if (!out) {
            users.deleteBlock(block.id);
            return Word("3");
        }
        return Word("1");
    });

    route("mvff", [this](const httplib::Request& req, int64_t user) {
        int64_t from = 0, to = 0, id = 0;
        if (!ToId(req.get_param_value("ofid"), from) || !ToId(req.get_param_value("favorites_id"), to) ||
            !ToId(req.get_param_value("dwg_id"), id))
            return Word("error");
        auto source = users.folder(user, from);
        auto target = users.folder(user, to);
        auto block = source ? users.block(from, id) : std::nullopt;
        if (!source || !target || !block) return Word("error");
        if (from == to) return Word("success");
        const std::string force = req.get_param_value("force");
        if (auto clash = users.blockByName(to, block->fileName)) {
            if (force != "1" && force != "true") return Word("filename is exist");
            users.deleteBlock(clash->id);
            std::error_code ec;
            fs::remove(fs::path(dataDir) / "collected" / (std::to_string(clash->id) + ".dwg"), ec);
        }
        return Word(users.moveBlock(id, to, target->name) ? "success" : "error");
    });

    route("cdwgrn", [this, blockList](const httplib::Request& req, int64_t user) {
        int64_t folder = 0, id = 0;
        if (!ToId(req.get_param_value("favorites_id"), folder) || !ToId(req.get_param_value("dwg_id"), id) ||
            !users.folder(user, folder) || !users.block(folder, id))
            return Word("file is not exist");
        const std::string name = req.get_param_value("newname");
        if (name.empty() || name.find_first_of("/\\") != std::string::npos) return Word("error");
        auto clash = users.blockByName(folder, name);
        if (clash && clash->id != id) return Word("filename is exist");
        if (!users.renameBlock(id, name)) return Word("error");
        // The reply holds the renamed block alone.
        return blockList(req, {*users.blockById(id)});
    });
}

}  // namespace marrowfin::service
