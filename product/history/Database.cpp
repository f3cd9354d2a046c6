#include "Database.h"

#include "basics/Failure.h"
#include "basics/Words.h"

#include <algorithm>
#include <array>
#include <new>

namespace history {
namespace {

constexpr int kPatience = 1000;                  // milliseconds for somebody else's writing
constexpr int kLongestText = 512 * 1024 * 1024;  // a document of a large server fits several times
constexpr int kPrimaryCode = 0xFF;               // of a code with its details

DatabaseError::Kind KindOf(int code) {
    constexpr std::array<int, 10> kOutside = {
        SQLITE_IOERR,    SQLITE_CANTOPEN, SQLITE_READONLY,  SQLITE_PERM,     SQLITE_AUTH,
        SQLITE_PROTOCOL, SQLITE_NOLFS,    SQLITE_INTERRUPT, SQLITE_INTERNAL, SQLITE_MISUSE};
    switch (code & kPrimaryCode) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return DatabaseError::Kind::Busy;
        case SQLITE_FULL:
            return DatabaseError::Kind::Full;
        default:
            return std::find(kOutside.begin(), kOutside.end(), code & kPrimaryCode) == kOutside.end()
                       ? DatabaseError::Kind::Damaged
                       : DatabaseError::Kind::Unavailable;
    }
}

[[noreturn]] void Fail(sqlite3* database, int code) {
    if ((code & kPrimaryCode) == SQLITE_NOMEM) {
        throw std::bad_alloc();
    }
    const int error = sqlite3_system_errno(database);
    const DatabaseError::Kind kind = KindOf(code);
    std::string words = sqlite3_errmsg(database);
    if (kind == DatabaseError::Kind::Unavailable && error != 0) {
        words += " (" + basics::ErrorText(error) + ")";
    }
    throw DatabaseError(kind, words);
}

/// For a name with parameters behind it.
std::string Escaped(const std::string& path) {
    std::string escaped;
    for (const char character : path) {
        const bool isPlain = basics::IsAlphanumeric(character) ||
                             std::string_view("/-_.~").find(character) != std::string_view::npos;
        escaped += isPlain ? std::string(1, character)
                           : "%" + basics::Digits(static_cast<unsigned char>(character), 2, 16);
    }
    return escaped;
}

sqlite3* Open(const std::string& path, Database::Mode mode) {
    const bool isAlone = mode == Database::Mode::ReadAlone;
    const std::string name = isAlone ? "file:" + Escaped(path) + "?immutable=1" : path;
    const int access =
        mode == Database::Mode::Write ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE : SQLITE_OPEN_READONLY;
    sqlite3* database = nullptr;
    const int code = sqlite3_open_v2(name.c_str(), &database,
                                     access | SQLITE_OPEN_NOMUTEX | (isAlone ? SQLITE_OPEN_URI : 0), nullptr);
    if (code != SQLITE_OK) {
        const std::unique_ptr<sqlite3, int (*)(sqlite3*)> opened(database, sqlite3_close_v2);
        Fail(database, code);  // There is one, unless there was no memory for it.
    }
    return database;
}

}  // namespace

bool Row::IsNull(int column) const {
    return sqlite3_column_type(m_Statement, column) == SQLITE_NULL;
}

std::int64_t Row::Integer(int column) const {
    return sqlite3_column_int64(m_Statement, column);
}

double Row::Number(int column) const {
    return sqlite3_column_double(m_Statement, column);
}

std::string Row::Text(int column) const {
    const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(m_Statement, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_Statement, column));
    return text == nullptr ? "" : std::string(text, size);
}

Statement::Statement(sqlite3* database, std::string_view sql) : m_Statement(nullptr, sqlite3_finalize) {
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v3(database, sql.data(), static_cast<int>(sql.size()),
                                        SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    m_Statement.reset(statement);
    if (code != SQLITE_OK) {
        Fail(database, code);
    }
}

Statement::Ending::~Ending() {
    (void)sqlite3_reset(m_Statement);  // It repeats what the last step said.
    (void)sqlite3_clear_bindings(m_Statement);
}

bool Statement::Step() {
    const int code = sqlite3_step(m_Statement.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        Fail(sqlite3_db_handle(m_Statement.get()), code);
    }
    return code == SQLITE_ROW;
}

void Statement::Bind(int parameter, std::string_view text) {
    const int code =
        sqlite3_bind_text64(m_Statement.get(), parameter, text.data() == nullptr ? "" : text.data(),
                            text.size(), SQLITE_STATIC, SQLITE_UTF8);
    if (code != SQLITE_OK) {
        Fail(sqlite3_db_handle(m_Statement.get()), code);
    }
}

void Statement::BindInteger(int parameter, std::int64_t value) {
    if (const int code = sqlite3_bind_int64(m_Statement.get(), parameter, value); code != SQLITE_OK) {
        Fail(sqlite3_db_handle(m_Statement.get()), code);
    }
}

void Statement::Bind(int parameter, double value) {
    if (const int code = sqlite3_bind_double(m_Statement.get(), parameter, value); code != SQLITE_OK) {
        Fail(sqlite3_db_handle(m_Statement.get()), code);
    }
}

Database::Database(const std::string& path, Mode mode) : m_Handle(Open(path, mode), sqlite3_close_v2) {
    sqlite3* const handle = m_Handle.get();
    (void)sqlite3_extended_result_codes(handle, 1);
    (void)sqlite3_busy_timeout(handle, kPatience);
    (void)sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, kLongestText);
    for (const auto& [option, value] : {std::pair(SQLITE_DBCONFIG_DEFENSIVE, 1),
                                        {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
                                        {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
                                        {SQLITE_DBCONFIG_ENABLE_VIEW, 0}}) {
        (void)sqlite3_db_config(handle, option, value, nullptr);
    }
    if (mode == Mode::Write && sqlite3_db_readonly(handle, "main") == 1) {
        throw DatabaseError(DatabaseError::Kind::Unavailable, "the file may only be read");
    }
}

void Database::Run(const std::string& sql) {
    if (const int code = sqlite3_exec(m_Handle.get(), sql.c_str(), nullptr, nullptr, nullptr);
        code != SQLITE_OK) {
        Fail(m_Handle.get(), code);
    }
}

std::int64_t Database::Integer(std::string_view sql) {
    return Prepare(sql).Integer().value_or(0);
}

std::string Database::Text(std::string_view sql) {
    std::string text;
    Prepare(sql).Each([&text](const Row& row) { text = row.Text(0); });
    return text;
}

void Database::SetTidyAtClose(bool isTidy) noexcept {
    (void)sqlite3_db_config(m_Handle.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, isTidy ? 0 : 1, nullptr);
}

std::int64_t Database::Changes() const {
    return sqlite3_changes64(m_Handle.get());
}

Transaction::~Transaction() {
    if (m_Database == nullptr) {
        return;
    }
    try {
        m_Database->Run("ROLLBACK");
    } catch (const DatabaseError&) {
        return;  // Some failures have rolled it back already.
    } catch (const std::bad_alloc&) {
        return;
    }
}

}  // namespace history
