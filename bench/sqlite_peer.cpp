#include "storage_peer.h"

#include <sqlite3.h>

namespace quobrix::bench {
namespace {

class Statement {
public:
    Statement(sqlite3* database, const char* text) {
        require(sqlite3_prepare_v2(database, text, -1, &statement_, nullptr) == SQLITE_OK, text);
    }
    ~Statement() { sqlite3_finalize(statement_); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    bool row() { return sqlite3_step(statement_) == SQLITE_ROW; }
    sqlite3_stmt* get() { return statement_; }

    void write(const Object& object) {
        sqlite3_bind_int64(statement_, 1, object.id);
        sqlite3_bind_int64(statement_, 2, object.typeId);
        sqlite3_bind_blob64(statement_, 3, object.content.data(), object.content.size(), SQLITE_STATIC);
        require(sqlite3_step(statement_) == SQLITE_DONE, "SQLite: write");
        sqlite3_reset(statement_);
    }
    Object read() {
        const auto* bytes = static_cast<const std::uint8_t*>(sqlite3_column_blob(statement_, 2));
        return {static_cast<std::uint32_t>(sqlite3_column_int64(statement_, 0)),
                static_cast<std::uint32_t>(sqlite3_column_int64(statement_, 1)),
                Bytes(bytes, bytes + sqlite3_column_bytes(statement_, 2))};
    }

private:
    sqlite3_stmt* statement_ = nullptr;
};

/// As durable as our files: rollback journal, every transaction flushed.
class Database {
public:
    Database(const std::filesystem::path& path, int flags) {
        require(sqlite3_open_v2(path.c_str(), &database_, flags, nullptr) == SQLITE_OK, "SQLite: open");
        run("PRAGMA journal_mode=DELETE");
        run("PRAGMA synchronous=FULL");
    }
    ~Database() { sqlite3_close(database_); }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    void run(const char* text) { require(sqlite3_exec(database_, text, nullptr, nullptr, nullptr) == SQLITE_OK, text); }
    sqlite3* get() { return database_; }

private:
    sqlite3* database_ = nullptr;
};

class SqlitePeer final : public StoragePeer {
public:
    void prepare(const Objects& objects) override { objects_ = &objects; }

    void create(const std::filesystem::path& path) override {
        Database database(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
        database.run("BEGIN");
        database.run("CREATE TABLE objects(id INTEGER PRIMARY KEY, type, content)");
        {
            Statement insert(database.get(), "INSERT INTO objects VALUES(?, ?, ?)");
            for (const Object& object : *objects_)
                insert.write(object);
        }
        database.run("COMMIT");
    }

    void readOne(const std::filesystem::path& path, std::uint32_t id) override {
        Database database(path, SQLITE_OPEN_READONLY);
        std::vector<std::uint32_t> ids;
        for (Statement list(database.get(), "SELECT id FROM objects"); list.row();)
            ids.push_back(static_cast<std::uint32_t>(sqlite3_column_int64(list.get(), 0)));
        Statement one(database.get(), "SELECT id, type, content FROM objects WHERE id = ?");
        sqlite3_bind_int64(one.get(), 1, id);
        require(one.row() && !one.read().content.empty(), "SQLite: read one");
    }

    std::size_t readAll(const std::filesystem::path& path) override {
        Database database(path, SQLITE_OPEN_READONLY);
        Objects objects;
        std::size_t bytes = 0;
        for (Statement all(database.get(), "SELECT id, type, content FROM objects"); all.row();) {
            objects.push_back(all.read());
            bytes += objects.back().content.size();
        }
        return bytes;
    }

    void open(const std::filesystem::path& path) override {
        database_ = std::make_unique<Database>(path, SQLITE_OPEN_READWRITE);
        update_ = std::make_unique<Statement>(database_->get(), "REPLACE INTO objects VALUES(?, ?, ?)");
    }

    void save(const Objects& changed) override {
        database_->run("BEGIN");
        for (const Object& object : changed)
            update_->write(object);
        database_->run("COMMIT");
    }

    void close() override {
        update_.reset();
        database_.reset();
    }

private:
    const Objects* objects_ = nullptr;
    std::unique_ptr<Database> database_;
    std::unique_ptr<Statement> update_;
};

} // namespace

std::unique_ptr<StoragePeer> makeSqlitePeer() { return std::make_unique<SqlitePeer>(); }

} // namespace quobrix::bench
