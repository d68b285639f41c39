#include "user_state.h"

#include <sqlite3.h>

#include <ctime>

namespace marrowfin::service {

namespace {

// One prepared statement, finalised on every road out.
class Statement {
public:
    Statement(sqlite3* db, const char* sql) { sqlite3_prepare_v2(db, sql, -1, &m_stmt, nullptr); }
    ~Statement() { sqlite3_finalize(m_stmt); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    bool ok() const { return m_stmt != nullptr; }
    Statement& bind(int i, int64_t v) {
        sqlite3_bind_int64(m_stmt, i, v);
        return *this;
    }
    Statement& bind(int i, const std::string& v) {
        sqlite3_bind_text(m_stmt, i, v.data(), static_cast<int>(v.size()), SQLITE_TRANSIENT);
        return *this;
    }
    bool step() { return m_stmt && sqlite3_step(m_stmt) == SQLITE_ROW; }
    bool run() { return m_stmt && sqlite3_step(m_stmt) == SQLITE_DONE; }
    int64_t integer(int col) { return sqlite3_column_int64(m_stmt, col); }
    std::string text(int col) {
        const unsigned char* t = sqlite3_column_text(m_stmt, col);
        return t ? std::string(reinterpret_cast<const char*>(t), static_cast<size_t>(sqlite3_column_bytes(m_stmt, col)))
                 : std::string();
    }

private:
    sqlite3_stmt* m_stmt = nullptr;
};

UserBlock ReadBlock(Statement& s) {
    UserBlock b;
    b.id = s.integer(0);
    b.folder = s.integer(1);
    b.fileName = s.text(2);
    b.info = s.text(3);
    b.size = s.integer(4);
    b.boutique = s.integer(5) != 0;
    return b;
}

const char* kBlockColumns = "SELECT id, folder, filename, info, size, gv FROM blocks ";

}  // namespace

UserState::~UserState() {
    if (m_db) sqlite3_close(m_db);
}

bool UserState::exec(const char* sql) { return sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) == SQLITE_OK; }

bool UserState::open(const std::string& path, std::string& error) {
    std::lock_guard lock(m_mutex);
    if (sqlite3_open(path.c_str(), &m_db) != SQLITE_OK) {
        error = "cannot open " + path + ": " + (m_db ? sqlite3_errmsg(m_db) : "out of memory");
        return false;
    }
    sqlite3_busy_timeout(m_db, 2000);
    const bool ok =
        exec("PRAGMA foreign_keys = ON") &&
        exec("CREATE TABLE IF NOT EXISTS users(number INTEGER PRIMARY KEY, token TEXT UNIQUE NOT NULL)") &&
        exec(
            "CREATE TABLE IF NOT EXISTS folders(id INTEGER PRIMARY KEY AUTOINCREMENT, user INTEGER NOT NULL,"
            " name TEXT NOT NULL, UNIQUE(user, name))") &&
        exec(
            "CREATE TABLE IF NOT EXISTS blocks(id INTEGER PRIMARY KEY AUTOINCREMENT, folder INTEGER NOT NULL,"
            " filename TEXT NOT NULL, info TEXT NOT NULL, size INTEGER NOT NULL, gv INTEGER NOT NULL)") &&
        exec(
            "CREATE TABLE IF NOT EXISTS syncs(user INTEGER PRIMARY KEY, state TEXT NOT NULL, folders TEXT NOT NULL,"
            " files INTEGER NOT NULL, ended INTEGER NOT NULL)") &&
        exec(
            "CREATE TABLE IF NOT EXISTS shares(id INTEGER PRIMARY KEY AUTOINCREMENT, user INTEGER NOT NULL,"
            " at INTEGER NOT NULL)");
    if (!ok) {
        error = std::string("cannot set up the state tables: ") + sqlite3_errmsg(m_db);
        return false;
    }
    // An upload that was running when the service stopped cannot finish now.
    exec("UPDATE syncs SET state = 'failed' WHERE state = 'working'");
    Statement s(m_db, "INSERT OR IGNORE INTO users(number, token) VALUES(?, ?)");
    s.bind(1, kDemoUserNumber).bind(2, std::string(kDemoUserToken));
    return s.run();
}

bool UserState::addUser(int64_t number, const std::string& token) {
    std::lock_guard lock(m_mutex);
    Statement s(m_db, "INSERT OR REPLACE INTO users(number, token) VALUES(?, ?)");
    return s.bind(1, number).bind(2, token).run();
}

std::optional<int64_t> UserState::userOfToken(const std::string& token) {
    std::lock_guard lock(m_mutex);
    if (token.empty()) return std::nullopt;
    Statement s(m_db, "SELECT number FROM users WHERE token = ?");
    s.bind(1, token);
    if (!s.step()) return std::nullopt;
    return s.integer(0);
}

bool UserState::userExists(int64_t number) {
    std::lock_guard lock(m_mutex);
    Statement s(m_db, "SELECT 1 FROM users WHERE number = ?");
    return s.bind(1, number).step();
}

std::vector<UserFolder> UserState::folders(int64_t user) {
    std::lock_guard lock(m_mutex);
    std::vector<UserFolder> out;
    Statement s(m_db, "SELECT id, user, name FROM folders WHERE user = ? ORDER BY id");
    s.bind(1, user);
    while (s.step()) out.push_back(UserFolder{s.integer(0), s.integer(1), s.text(2)});
    return out;
}

std::optional<UserFolder> UserState::folder(int64_t user, int64_t id) {
    std::lock_guard lock(m_mutex);
    Statement s(m_db, "SELECT id, user, name FROM folders WHERE user = ? AND id = ?");
    s.bind(1, user).bind(2, id);
    if (!s.step()) return std::nullopt;
    return UserFolder{s.integer(0), s.integer(1), s.text(2)};
}

std::optional<UserFolder> UserState::folderByName(int64_t user, const std::string& name) {
    std::lock_guard lock(m_mutex);
    Statement s(m_db, "SELECT id, user, name FROM folders WHERE user = ? AND name = ?");
    s.bind(1, user).bind(2, name);
    if (!s.step()) return std::nullopt;
    return UserFolder{s.integer(0), s.integer(1), s.text(2)};
}

std::string UserState::addFolder(int64_t user, const std::string& name, int64_t* id) {
    std::lock_guard lock(m_mutex);
    if (name.empty()) return "error";
    if (folderByName(user, name)) return "exists";
    if (folders(user).size() >= static_cast<size_t>(kMaxFolders)) return "error";
    Statement s(m_db, "INSERT INTO folders(user, name) VALUES(?, ?)");
    if (!s.bind(1, user).bind(2, name).run()) return "error";
    if (id) *id = sqlite3_last_insert_rowid(m_db);
    return "";
}

std::string UserState::renameFolder(int64_t user, int64_t id, const std::string& name) {
    std::lock_guard lock(m_mutex);
    if (name.empty() || !folder(user, id)) return "error";
    auto other = folderByName(user, name);
    if (other && other->id != id) return "exists";
    Statement s(m_db, "UPDATE folders SET name = ? WHERE id = ?");
    if (!s.bind(1, name).bind(2, id).run()) return "error";
    // Blocks name their folder in `info`; it follows the folder's new name.
    Statement b(m_db, "UPDATE blocks SET info = ? WHERE folder = ?");
    b.bind(1, name).bind(2, id).run();
    return "";
}

std::optional<std::vector<int64_t>> UserState::deleteFolder(int64_t user, int64_t id) {
    std::lock_guard lock(m_mutex);
    if (!folder(user, id)) return std::nullopt;
    std::vector<int64_t> gone;
    for (const UserBlock& b : blocks(id)) gone.push_back(b.id);
    Statement b(m_db, "DELETE FROM blocks WHERE folder = ?");
    b.bind(1, id).run();
    Statement f(m_db, "DELETE FROM folders WHERE id = ?");
    f.bind(1, id).run();
    return gone;
}

std::vector<UserBlock> UserState::blocks(int64_t folder) {
    std::lock_guard lock(m_mutex);
    std::vector<UserBlock> out;
    Statement s(m_db, (std::string(kBlockColumns) + "WHERE folder = ? ORDER BY id").c_str());
    s.bind(1, folder);
    while (s.step()) out.push_back(ReadBlock(s));
    return out;
}

std::optional<UserBlock> UserState::block(int64_t folder, int64_t id) {
    auto b = blockById(id);
    if (!b || b->folder != folder) return std::nullopt;
    return b;
}

std::optional<UserBlock> UserState::blockById(int64_t id) {
    std::lock_guard lock(m_mutex);
    Statement s(m_db, (std::string(kBlockColumns) + "WHERE id = ?").c_str());
    s.bind(1, id);
    if (!s.step()) return std::nullopt;
    return ReadBlock(s);
}

std::optional<UserBlock> UserState::blockByName(int64_t folder, const std::string& fileName) {
    std::lock_guard lock(m_mutex);
    Statement s(m_db, (std::string(kBlockColumns) + "WHERE folder = ? AND filename = ?").c_str());
    s.bind(1, folder).bind(2, fileName);
    if (!s.step()) return std::nullopt;
    return ReadBlock(s);
}

int64_t UserState::addBlock(const UserBlock& block) {
    std::lock_guard lock(m_mutex);
    Statement s(m_db, "INSERT INTO blocks(folder, filename, info, size, gv) VALUES(?, ?, ?, ?, ?)");
    s.bind(1, block.folder)
        .bind(2, block.fileName)
        .bind(3, block.info)
        .bind(4, block.size)
        .bind(5, block.boutique ? 1 : 0);
    return s.run() ? sqlite3_last_insert_rowid(m_db) : 0;
}

bool UserState::deleteBlock(int64_t id) {
    std::lock_guard lock(m_mutex);
    Statement s(m_db, "DELETE FROM blocks WHERE id = ?");
    return s.bind(1, id).run() && sqlite3_changes(m_db) == 1;
}

bool UserState::moveBlock(int64_t id, int64_t folder, const std::string& info) {
    std::lock_guard lock(m_mutex);
    Statement s(m_db, "UPDATE blocks SET folder = ?, info = ? WHERE id = ?");
    return s.bind(1, folder).bind(2, info).bind(3, id).run() && sqlite3_changes(m_db) == 1;
}

bool UserState::renameBlock(int64_t id, const std::string& fileName) {
    std::lock_guard lock(m_mutex);
    Statement s(m_db, "UPDATE blocks SET filename = ? WHERE id = ?");
    return s.bind(1, fileName).bind(2, id).run() && sqlite3_changes(m_db) == 1;
}

std::vector<int64_t> UserState::clearCollection(int64_t user) {
    std::lock_guard lock(m_mutex);
    std::vector<int64_t> gone;
    exec("BEGIN");
    for (const UserFolder& f : folders(user)) {
        auto ids = deleteFolder(user, f.id);
        if (ids) gone.insert(gone.end(), ids->begin(), ids->end());
    }
    exec("COMMIT");
    return gone;
}

SyncState UserState::sync(int64_t user) {
    std::lock_guard lock(m_mutex);
    SyncState state;
    Statement s(m_db, "SELECT state, folders, files, ended FROM syncs WHERE user = ?");
    s.bind(1, user);
    if (s.step()) {
        state.state = s.text(0);
        state.folders = s.text(1);
        state.files = s.integer(2);
        state.ended = s.integer(3) != 0;
    }
    return state;
}

void UserState::setSync(int64_t user, const SyncState& state) {
    std::lock_guard lock(m_mutex);
    Statement s(m_db, "INSERT OR REPLACE INTO syncs(user, state, folders, files, ended) VALUES(?, ?, ?, ?, ?)");
    s.bind(1, user).bind(2, state.state).bind(3, state.folders).bind(4, state.files).bind(5, state.ended ? 1 : 0).run();
}

void UserState::addShare(int64_t user) {
    std::lock_guard lock(m_mutex);
    Statement s(m_db, "INSERT INTO shares(user, at) VALUES(?, ?)");
    s.bind(1, user).bind(2, static_cast<int64_t>(std::time(nullptr))).run();
}

int UserState::shareCount(int64_t user) {
    std::lock_guard lock(m_mutex);
    Statement s(m_db, "SELECT COUNT(*) FROM shares WHERE user = ?");
    s.bind(1, user);
    return s.step() ? static_cast<int>(s.integer(0)) : 0;
}

}  // namespace marrowfin::service
