#include "platform/system/SettingsStore.h"

#include <sqlite3.h>

#include <chrono>
#include <memory>
#include <thread>

namespace corvane::platform {

namespace {

constexpr const char* kKey = "Quadrexa-labs/QDXCorvane";
constexpr const char* kBytesType = "binary";
constexpr const char* kTextType = "text";
constexpr std::chrono::milliseconds kPatience{
    750};  // for the whole of a call: a window must not hang on a lock
// Shorter than the pause of a process that writes without end, so that it cannot keep others out by luck.
constexpr std::chrono::microseconds kRetry{100};

using Deadline = std::chrono::steady_clock::time_point;

int waitForOthers(void* deadline, int) {
  if (std::chrono::steady_clock::now() >= *static_cast<Deadline*>(deadline)) return 0;
  std::this_thread::sleep_for(kRetry);
  return 1;
}

/// One connection for one call: nothing stays locked or open between calls, whatever the host does meanwhile.
class Connection {
 public:
  Connection(const std::filesystem::path& file, int flags) {
    if (sqlite3_open_v2(file.c_str(), &handle, flags | SQLITE_OPEN_NOMUTEX, nullptr) != SQLITE_OK) return;
    sqlite3_busy_handler(handle, waitForOthers, &deadline);
    usable = true;
  }
  ~Connection() { sqlite3_close(handle); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  bool run(const char* sql) {
    return usable && sqlite3_exec(handle, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
  }

  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  using Statement = std::unique_ptr<sqlite3_stmt, Finalizer>;
  Statement prepare(const char* sql) {
    sqlite3_stmt* made = nullptr;
    if (usable) sqlite3_prepare_v2(handle, sql, -1, &made, nullptr);
    return Statement(made);
  }

 private:
  sqlite3* handle = nullptr;
  Deadline deadline = std::chrono::steady_clock::now() + kPatience;
  bool usable = false;
};

void bindText(sqlite3_stmt* statement, int position, const char* text) {
  sqlite3_bind_text(statement, position, text, -1, SQLITE_STATIC);
}

}  // namespace

bool SqliteSettingsStore::read(const std::string& name, const char* type, Bytes* value) {
  if (file.empty()) return false;
  Connection store(file, SQLITE_OPEN_READWRITE);
  const auto query = store.prepare("SELECT value FROM settings WHERE key = ?1 AND name = ?2 AND type = ?3");
  if (!query) return false;
  bindText(query.get(), 1, kKey);
  bindText(query.get(), 2, name.c_str());
  bindText(query.get(), 3, type);
  if (sqlite3_step(query.get()) != SQLITE_ROW) return false;
  const auto* bytes = static_cast<const std::uint8_t*>(sqlite3_column_blob(query.get(), 0));
  const int count = sqlite3_column_bytes(query.get(), 0);
  value->assign(bytes, bytes + count);
  return true;
}

bool SqliteSettingsStore::write(const std::string& name, const char* type,
                                std::span<const std::uint8_t> value) {
  if (file.empty() || !makeFolder(file.parent_path())) return false;
  Connection store(file, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  // Emptying the journal is a commit as safe as deleting it, and the disk is done sooner.
  if (!store.run("PRAGMA journal_mode = TRUNCATE") || !store.run("PRAGMA synchronous = NORMAL") ||
      !store.run("BEGIN IMMEDIATE") ||
      !store.run("CREATE TABLE IF NOT EXISTS settings"
                 " (key TEXT, name TEXT, type TEXT, value BLOB, PRIMARY KEY (key, name))"))
    return false;  // closing takes the transaction back
  const auto change = store.prepare("INSERT OR REPLACE INTO settings VALUES (?1, ?2, ?3, ?4)");
  if (!change) return false;
  bindText(change.get(), 1, kKey);
  bindText(change.get(), 2, name.c_str());
  bindText(change.get(), 3, type);
  sqlite3_bind_blob64(change.get(), 4, value.data(), value.size(), SQLITE_STATIC);
  return sqlite3_step(change.get()) == SQLITE_DONE && store.run("COMMIT");
}

bool SqliteSettingsStore::readBytes(const std::string& name, Bytes* value) {
  return read(name, kBytesType, value);
}

bool SqliteSettingsStore::readText(const std::string& name, std::string* value) {
  Bytes bytes;
  if (!read(name, kTextType, &bytes)) return false;
  value->assign(bytes.begin(), bytes.end());
  return true;
}

bool SqliteSettingsStore::writeBytes(const std::string& name, std::span<const std::uint8_t> value) {
  return write(name, kBytesType, value);
}

bool SqliteSettingsStore::writeText(const std::string& name, const std::string& value) {
  return write(name, kTextType, {reinterpret_cast<const std::uint8_t*>(value.data()), value.size()});
}

}  // namespace corvane::platform
