#pragma once

#include "itemconv/CItemDisp.h"

#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace replay {

/// Parent name, name, value, valid flag.
using ItemTexts = std::array<std::string, 4>;

/// What the recording library is told to do and what it did, for one case. Stands in the driver, so that it
/// outlives the library, which is unloaded with every call. One thread.
class Ledger final {
  public:
    struct Orders {
        bool isInterfaceNull = false;     ///< CreateLibIF yields null
        std::uint32_t convertStatus = 0;  ///< of ConvertToXml
        bool hasText = true;              ///< whether a conversion with status 0 yields a text
        std::size_t nullItemAt = 0;       ///< this CreateItemDisp, counted from 1, yields null; 0: none
    };

    /// Starts a case.
    void Begin(const Orders& orders);
    /// Ends it: what is still there now was leaked.
    void End();

    // For the library.

    void Loaded() { ++m_Loads; }
    void Unloaded();
    void MadeInterface(const void* interface);
    /// Whether it is one that may be deleted now.
    [[nodiscard]] bool TakeInterface(const void* interface);
    /// Whether the item is to be made.
    [[nodiscard]] bool RecordCreation(ItemTexts texts);
    void Made(const CItemDisp* item);
    /// Whether it is one that may be deleted now.
    [[nodiscard]] bool Take(const CItemDisp* item);
    [[nodiscard]] bool IsAlive(const CItemDisp* item) const { return m_Alive.contains(item); }
    void RecordConversion(std::vector<ItemTexts> items);
    void RecordFault(std::string text) { m_Faults.push_back(std::move(text)); }

    // What came of it.

    [[nodiscard]] const Orders& GetOrders() const { return m_Orders; }
    [[nodiscard]] const std::vector<ItemTexts>& Creations() const { return m_Creations; }
    [[nodiscard]] const std::optional<std::vector<ItemTexts>>& Conversion() const { return m_Conversion; }
    [[nodiscard]] const std::vector<std::string>& Faults() const { return m_Faults; }
    [[nodiscard]] std::size_t Created() const { return m_Created; }
    [[nodiscard]] std::size_t Deleted() const { return m_Deleted; }
    [[nodiscard]] std::size_t Loads() const { return m_Loads; }
    [[nodiscard]] std::size_t Unloads() const { return m_Unloads; }

  private:
    Orders m_Orders;
    std::vector<ItemTexts> m_Creations;
    std::optional<std::vector<ItemTexts>> m_Conversion;
    std::vector<std::string> m_Faults;
    std::set<const CItemDisp*> m_Alive;
    std::set<const void*> m_Interfaces;
    std::size_t m_Created = 0;
    std::size_t m_Deleted = 0;
    std::size_t m_Loads = 0;
    std::size_t m_Unloads = 0;
};

}  // namespace replay

/// The driver's only ledger; the library finds it when it is loaded.
__attribute__((visibility("default"))) replay::Ledger& ReplayLedger();
