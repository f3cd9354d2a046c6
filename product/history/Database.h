#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace history {

/// Why the database did not do something, in words.
class DatabaseError final : public std::runtime_error {
  public:
    enum class Kind {
        Damaged,      ///< what is in the file cannot be used, now or ever
        Unavailable,  ///< the file cannot be reached, read or written as things stand
        Full,         ///< no room; what is stored can be read
        Busy,         ///< somebody else is writing
    };

    DatabaseError(Kind kind, const std::string& words) : std::runtime_error(words), m_Kind(kind) {}
    [[nodiscard]] Kind WhatKind() const noexcept { return m_Kind; }

  private:
    Kind m_Kind;
};

/// The row that a statement has come to. Values that are of another type become what SQLite makes of them.
class Row final {
  public:
    explicit Row(sqlite3_stmt* statement) : m_Statement(statement) {}

    [[nodiscard]] bool IsNull(int column) const;
    [[nodiscard]] std::int64_t Integer(int column) const;
    [[nodiscard]] double Number(int column) const;
    [[nodiscard]] std::string Text(int column) const;

  private:
    sqlite3_stmt* m_Statement;
};

/// A statement that was prepared once and is run many times. Belongs to its database, which must live longer.
class Statement final {
  public:
    Statement(sqlite3* database, std::string_view sql);

    /// Runs it with these values for its parameters; `take` gets the rows one by one.
    template <typename... Values>
    void Each(const std::function<void(const Row&)>& take, const Values&... values) {
        const Ending ending(m_Statement.get());
        int parameter = 0;
        (Bind(++parameter, values), ...);
        while (Step()) {
            take(Row(m_Statement.get()));
        }
    }

    template <typename... Values>
    void Run(const Values&... values) {
        Each([](const Row&) {}, values...);
    }

    /// The first column of the only row; nothing where there is none, or null in it.
    template <typename... Values>
    [[nodiscard]] std::optional<std::int64_t> Integer(const Values&... values) {
        std::optional<std::int64_t> integer;
        Each([&integer](
                 const Row& row) { integer = row.IsNull(0) ? std::nullopt : std::optional(row.Integer(0)); },
             values...);
        return integer;
    }

  private:
    /// Makes a statement ready for the next time, however this time ends.
    class Ending final {
      public:
        explicit Ending(sqlite3_stmt* statement) : m_Statement(statement) {}
        ~Ending();
        Ending(const Ending&) = delete;
        Ending& operator=(const Ending&) = delete;

      private:
        sqlite3_stmt* m_Statement;
    };

    [[nodiscard]] bool Step();
    void Bind(int parameter, std::string_view text);  // which has to stay until the run ends
    void BindInteger(int parameter, std::int64_t value);
    void Bind(int parameter, double value);
    template <typename Integer, typename = std::enable_if_t<std::is_integral_v<Integer>>>
    void Bind(int parameter, Integer value) {
        BindInteger(parameter, static_cast<std::int64_t>(value));
    }
    template <typename Value>
    void Bind(int parameter, const std::optional<Value>& value) {
        if (value) {  // A parameter that is not bound is null.
            Bind(parameter, *value);
        }
    }

    std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> m_Statement;
};

/// An open database. Its file is somebody else's until proved otherwise: nothing that stands in it is run.
/// Everything throws DatabaseError, or std::bad_alloc. One thread.
class Database final {
  public:
    enum class Mode {
        Write,     ///< made where it is not there
        Read,      ///< while others write, too
        ReadAlone  ///< as it is; wrong where anybody writes
    };

    Database(const std::string& path, Mode mode);

    /// One that is in memory alone.
    [[nodiscard]] static Database InMemory() { return Database(":memory:", Mode::Write); }

    /// Several statements without results.
    void Run(const std::string& sql);
    [[nodiscard]] Statement Prepare(std::string_view sql) { return Statement(m_Handle.get(), sql); }
    [[nodiscard]] std::int64_t Integer(std::string_view sql);
    [[nodiscard]] std::string Text(std::string_view sql);

    /// Rows that the last statement has changed.
    [[nodiscard]] std::int64_t Changes() const;

    /// Whether the last one to close it writes what stands beside the file into it. Damage is left as it is.
    void SetTidyAtClose(bool isTidy) noexcept;

    /// Gives back memory that only makes it quicker.
    void Shrink() noexcept { (void)sqlite3_db_release_memory(m_Handle.get()); }

  private:
    std::unique_ptr<sqlite3, int (*)(sqlite3*)> m_Handle;
};

/// What is done until `Commit` is done as a whole or not at all.
class Transaction final {
  public:
    explicit Transaction(Database& database) : m_Database(&database) { m_Database->Run("BEGIN IMMEDIATE"); }
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void Commit() {
        m_Database->Run("COMMIT");
        m_Database = nullptr;
    }

  private:
    Database* m_Database;
};

}  // namespace history
