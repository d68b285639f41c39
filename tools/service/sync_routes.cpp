// Hand-over of an old local collection: the folder announcement, the archive
// upload processed in the background, its state polled by the client.

#include "archive_reader.h"
#include "service_impl.h"

#include <chrono>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace marrowfin::service {

namespace {

bool IsDrawingName(const std::string& name) {
    if (name.size() < 4) return false;
    std::string tail = name.substr(name.size() - 4);
    for (char& c : tail)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return tail == ".dwg";
}

// Replaces the user's collection with the archive's folders and blocks.
bool TakeInArchive(ServiceHandle::Impl& impl, int64_t user, const std::vector<ArchiveEntry>& entries,
                   const std::string& announced, int64_t& files) {
    files = 0;
    std::error_code ec;
    for (int64_t id : impl.users.clearCollection(user))
        fs::remove(fs::path(impl.dataDir) / "collected" / (std::to_string(id) + ".dwg"), ec);
    auto folderId = [&](const std::string& name) -> int64_t {
        if (auto f = impl.users.folderByName(user, name)) return f->id;
        int64_t id = 0;
        return impl.users.addFolder(user, name, &id).empty() ? id : 0;
    };
    // Announced folders exist even when the archive holds nothing for them.
    size_t at = 0;
    while (!announced.empty() && at <= announced.size()) {
        size_t star = announced.find('*', at);
        if (star == std::string::npos) star = announced.size();
        if (star > at) folderId(announced.substr(at, star - at));
        at = star + 1;
    }
    for (const ArchiveEntry& e : entries) {
        if (e.parts.size() < 2) continue;
        if (e.directory) {
            folderId(e.parts[1]);
            continue;
        }
        // A file straight under the top goes to the default folder.
        const std::string folderName = e.parts.size() >= 3 ? e.parts[1] : "收藏夹1";
        const std::string& fileName = e.parts.back();
        if (!IsDrawingName(fileName)) continue;
        const int64_t folder = folderId(folderName);
        if (folder == 0) return false;
        if (auto old = impl.users.blockByName(folder, fileName)) impl.users.deleteBlock(old->id);
        UserBlock block;
        block.folder = folder;
        block.fileName = fileName;
        block.info = folderName;
        block.size = static_cast<int64_t>(e.data.size());
        block.id = impl.users.addBlock(block);
        if (block.id == 0) return false;
        std::ofstream out(fs::path(impl.dataDir) / "collected" / (std::to_string(block.id) + ".dwg"), std::ios::binary);
        out.write(e.data.data(), static_cast<std::streamsize>(e.data.size()));
        if (!out) return false;
        ++files;
    }
    return true;
}

}  // namespace

// The route table: one short handler per address, in one list.
void ServiceHandle::Impl::registerSyncRoutes() {
    auto route = [this](const std::string& name, std::function<Reply(const httplib::Request&)> fn) {
        auto handler = [this, fn](const httplib::Request& req, httplib::Response& res) {
            serve(req, res, [&] { return fn(req); });
        };
        server.Get("/gallery/" + name, handler);
        server.Post("/gallery/" + name, handler);
    };

    route("lfstatu", [this](const httplib::Request& req) {
        auto user = UserOf(*this, req);
        if (!user) return BadRequest("usertoken is invalid");
        const SyncState s = users.sync(*user);
        if (s.state == "working") return Word("1");
        if (s.state == "done") return Word(currentSettings().statusWhenDone);
        if (s.state == "failed") return Word("error");
        return Word("0");
    });

    route("lfsync", [this](const httplib::Request& req) {
        auto user = UserOf(*this, req);
        if (!user) return BadRequest("usertoken is invalid");
        SyncState s = users.sync(*user);
        if (s.state == "working") return Word("error");
        s.folders = req.get_param_value("fs");
        s.state = "idle";
        s.ended = false;
        users.setSync(*user, s);
        return Word("success");
    });

    route("lfupload", [this](const httplib::Request& req) {
        if (!req.has_file("file")) return Word("error");
        const httplib::MultipartFormData file = req.get_file_value("file");
        static std::atomic<int> serial{0};
        const fs::path stored = fs::path(dataDir) / "uploads" / ("upload-" + std::to_string(++serial) + ".zip");
        {
            std::ofstream out(stored, std::ios::binary);
            out.write(file.content.data(), static_cast<std::streamsize>(file.content.size()));
        }
        auto entries = std::make_shared<std::vector<ArchiveEntry>>();
        std::string why;
        if (!ReadArchive(stored.string(), *entries, why) || entries->empty()) return Word("error");
        // The request carries no token: the archive's top folder is the user number.
        std::optional<int64_t> user = UserOf(*this, req);
        if (!user) {
            const std::string& top = entries->front().parts.empty() ? std::string() : entries->front().parts.front();
            const int64_t number = std::atoll(top.c_str());
            if (number > 0 && std::to_string(number) == top && users.userExists(number)) user = number;
        }
        if (!user) return Word("error");
        for (const ArchiveEntry& e : *entries)
            if (e.parts.empty() || e.parts.front() != std::to_string(*user)) return Word("error");
        const ServiceSettings settings = currentSettings();
        const int64_t who = *user;
        {
            // Test and start under one lock: two uploads of a user never both run.
            std::lock_guard lock(uploadMutex);
            SyncState s = users.sync(who);
            if (s.state == "working") return Word("error");
            s.state = "working";
            s.ended = false;
            users.setSync(who, s);
            uploadWorkers.emplace_back([this, who, entries, settings, announced = s.folders] {
                if (!pause(settings.uploadWorkMs)) return;  // stopping: it stays "working", failed at the next start
                int64_t files = 0;
                const bool taken = TakeInArchive(*this, who, *entries, announced, files);
                // Read after the work: an lfupload_end may have come meanwhile.
                SyncState state = users.sync(who);
                state.state = taken ? "done" : "failed";
                state.files = files;
                users.setSync(who, state);
            });
        }
        const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(settings.uploadReplyWaitMs);
        while (std::chrono::steady_clock::now() < until) {
            const std::string now = users.sync(who).state;
            if (now == "done") return Word("success");
            if (now == "failed") return Word("error");
            pause(10);
        }
        // Still working: the empty reply tells the client to poll lfstatu.
        return Word("");
    });

    route("lfupload_end", [this](const httplib::Request& req) {
        auto user = UserOf(*this, req);
        if (!user) return BadRequest("usertoken is invalid");
        SyncState s = users.sync(*user);
        s.ended = true;
        if (s.state != "working") s.state = "idle";
        users.setSync(*user, s);
        return Word("success");
    });
}

void ServiceHandle::Impl::registerAdminRoutes() {
    auto admin = [this](const std::string& name, std::function<Reply(const httplib::Request&)> fn) {
        auto handler = [fn](const httplib::Request& req, httplib::Response& res) {
            // Loopback only; admin requests are never faulted nor counted.
            if (req.remote_addr != "127.0.0.1" && req.remote_addr != "::1" && req.remote_addr != "::ffff:127.0.0.1") {
                res.status = 403;
                res.set_content("admin is loopback only\n", "text/plain");
                return;
            }
            Reply r = fn(req);
            res.status = r.status;
            res.set_content(r.body, r.type.c_str());
        };
        server.Get("/admin/" + name, handler);
        server.Post("/admin/" + name, handler);
    };

    admin("fault", [this](const httplib::Request& req) {
        Fault fault;
        std::string error;
        std::multimap<std::string, std::string> params(req.params.begin(), req.params.end());
        if (!ParseFault(params, fault, error)) return BadRequest(error);
        faults.set(req.get_param_value("path"), fault);
        return Word("ok");
    });
    admin("clear", [this](const httplib::Request& req) {
        if (req.has_param("path")) faults.clear(req.get_param_value("path"));
        else faults.clearAll();
        return Word("ok");
    });
    admin("release", [this](const httplib::Request&) {
        faults.releaseHeld();
        return Word("ok");
    });
    admin("counters", [this](const httplib::Request& req) {
        if (req.get_param_value("reset") == "1") {
            counters.reset();
            return Word("ok");
        }
        std::string text;
        for (const auto& [path, c] : counters.all())
            if (!req.has_param("path") || req.get_param_value("path") == path)
                text += path + "\t" + std::to_string(c.count) + "\t" + std::to_string(c.peak) + "\t" +
                        std::to_string(c.active) + "\n";
        return Word(text);
    });
    admin("user", [this](const httplib::Request& req) {
        const int64_t number = std::atoll(req.get_param_value("number").c_str());
        const std::string token = req.get_param_value("token");
        if (number <= 0 || token.empty()) return BadRequest("number and token are needed");
        return users.addUser(number, token) ? Word("ok") : BadRequest("cannot add the user");
    });
    admin("set", [this](const httplib::Request& req) {
        std::lock_guard lock(settingsMutex);
        ServiceSettings s = settings;
        if (req.has_param("nom")) s.nom = req.get_param_value("nom");
        if (req.has_param("dv")) s.forceRefresh = req.get_param_value("dv") == "1";
        if (req.has_param("uploadwork")) s.uploadWorkMs = std::atoi(req.get_param_value("uploadwork").c_str());
        if (req.has_param("uploadwait")) s.uploadReplyWaitMs = std::atoi(req.get_param_value("uploadwait").c_str());
        if (req.has_param("donestatus")) s.statusWhenDone = req.get_param_value("donestatus");
        settings = s;
        return Word("ok");
    });
    admin("sync", [this](const httplib::Request& req) {
        auto user = UserOf(*this, req);
        if (!user) return BadRequest("usertoken is invalid");
        const SyncState s = users.sync(*user);
        return Word(s.state + "\t" + std::to_string(s.files) + "\t" + (s.ended ? "1" : "0") + "\t" + s.folders + "\n");
    });
    admin("shares", [this](const httplib::Request& req) {
        auto user = UserOf(*this, req);
        if (!user) return BadRequest("usertoken is invalid");
        return Word(std::to_string(users.shareCount(*user)));
    });
}

}  // namespace marrowfin::service
