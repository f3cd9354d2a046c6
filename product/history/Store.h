#pragma once

#include "Database.h"
#include "Ledger.h"
#include "watch/Watch.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace history {

/// The database that is open for writing, with the statements that are run again and again. What it does not
/// do is thrown as DatabaseError.
class Store final {
  public:
    /// Of a database of this version.
    explicit Store(Database& database);

    /// Everything that stands in the file goes into the ledger.
    void Load(Ledger& ledger);

    /// Writes what waits in the ledger. To be called in a transaction, and followed by `Ledger::Settle` when
    /// that is committed.
    void Write(Ledger& ledger);

    /// The watch's rows, of which only those are written that are others than before.
    void WriteRows(const std::vector<watch::StateRow>& rows);
    void WriteDocument(std::string_view xml);
    void WriteMark(const char* name, std::int64_t value) { m_WriteMark.Run(name, value); }
    [[nodiscard]] std::optional<std::int64_t> Mark(const char* name) { return m_ReadMark.Integer(name); }

    /// A transaction around these: unless it succeeds, nothing of it counts as stored.
    class Attempt final {
      public:
        explicit Attempt(Store& store) : m_Store(&store) {}
        ~Attempt() {
            if (m_Store != nullptr) {
                m_Store->ForgetRows();
            }
        }
        Attempt(const Attempt&) = delete;
        Attempt& operator=(const Attempt&) = delete;
        void Succeed() { m_Store = nullptr; }

      private:
        Store* m_Store;
    };

  private:
    using Hashes = std::unordered_map<std::string, std::size_t>;

    void ForgetRows() {
        m_Rows.reset();
        m_Document.reset();
    }
    void WriteParts(Ledger& ledger);
    void WriteSample(const Ledger::Sample& sample, std::int64_t counter);
    void WriteState(const Ledger::KnownPart& part, std::int64_t id, const State& state);
    [[nodiscard]] std::int64_t NextOf(const char* id, const char* table);
    void LoadValues(Ledger& ledger);
    [[nodiscard]] Hashes LoadRows();

    Database& m_Database;
    Statement m_WritePart, m_WriteState, m_WriteCounter, m_WriteSample, m_WriteEvent, m_WriteDebt, m_PayDebt,
        m_WriteRow, m_RemoveRow, m_WriteDocument, m_WriteMark, m_ReadMark;
    std::optional<Hashes> m_Rows;           ///< of the texts that are stored
    std::optional<std::size_t> m_Document;  ///< hash of the text that is stored
};

}  // namespace history
