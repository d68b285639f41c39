#pragma once
// Per-user state of the stand-in service in SQLite (state.sqlite in the data
// folder): users and tokens, collection folders and their blocks, the state
// of collection uploads, shares. It survives restarts of the service.

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

struct sqlite3;

namespace marrowfin::service {

struct UserFolder {
    int64_t id = 0;
    int64_t user = 0;
    std::string name;
};

struct UserBlock {
    int64_t id = 0;
    int64_t folder = 0;
    std::string fileName;
    std::string info;
    int64_t size = 0;
    bool boutique = false;
};

struct SyncState {
    std::string state = "idle";  // idle, working, done, failed
    std::string folders;  // the last lfsync announcement
    int64_t files = 0;  // blocks taken in from the last archive
    bool ended = false;  // lfupload_end came after the last upload
};

// The demo user that every fresh data folder has.
constexpr int64_t kDemoUserNumber = 10001;
constexpr const char* kDemoUserToken = "demo-token-10001";
// A user has at most this many folders, the client's number of folder buttons.
constexpr int kMaxFolders = 18;

class UserState {
public:
    UserState() = default;
    ~UserState();
    UserState(const UserState&) = delete;
    UserState& operator=(const UserState&) = delete;

    bool open(const std::string& path, std::string& error);

    bool addUser(int64_t number, const std::string& token);
    std::optional<int64_t> userOfToken(const std::string& token);
    bool userExists(int64_t number);

    std::vector<UserFolder> folders(int64_t user);
    std::optional<UserFolder> folder(int64_t user, int64_t id);
    std::optional<UserFolder> folderByName(int64_t user, const std::string& name);
    // Empty string on success; "exists" for a taken name; "error" otherwise.
    std::string addFolder(int64_t user, const std::string& name, int64_t* id = nullptr);
    std::string renameFolder(int64_t user, int64_t id, const std::string& name);
    // Returns the ids of the blocks that went with the folder.
    std::optional<std::vector<int64_t>> deleteFolder(int64_t user, int64_t id);

    std::vector<UserBlock> blocks(int64_t folder);
    std::optional<UserBlock> block(int64_t folder, int64_t id);
    std::optional<UserBlock> blockById(int64_t id);
    std::optional<UserBlock> blockByName(int64_t folder, const std::string& fileName);
    int64_t addBlock(const UserBlock& block);
    bool deleteBlock(int64_t id);
    bool moveBlock(int64_t id, int64_t folder, const std::string& info);
    bool renameBlock(int64_t id, const std::string& fileName);
    // Drops every folder and block of the user; returns the dropped block ids.
    std::vector<int64_t> clearCollection(int64_t user);

    SyncState sync(int64_t user);
    void setSync(int64_t user, const SyncState& state);

    void addShare(int64_t user);
    int shareCount(int64_t user);

private:
    bool exec(const char* sql);

    std::recursive_mutex m_mutex;
    sqlite3* m_db = nullptr;
};

}  // namespace marrowfin::service
