#include "Ledger.h"

#include <utility>

namespace replay {

void Ledger::Begin(const Orders& orders) {
    *this = Ledger();
    m_Orders = orders;
}

void Ledger::End() {
    if (!m_Alive.empty()) {
        RecordFault(std::to_string(m_Alive.size()) + " items were never deleted");
    }
    if (!m_Interfaces.empty()) {
        RecordFault("a conversion object was never deleted");
    }
}

void Ledger::Unloaded() {
    ++m_Unloads;
    if (!m_Alive.empty()) {
        RecordFault(std::to_string(m_Alive.size()) + " items outlived the library");
    }
    if (!m_Interfaces.empty()) {
        RecordFault("a conversion object outlived the library");
    }
}

void Ledger::MadeInterface(const void* interface) {
    m_Interfaces.insert(interface);
}

bool Ledger::TakeInterface(const void* interface) {
    const bool isKnown = m_Interfaces.erase(interface) == 1;
    if (!isKnown) {
        RecordFault("a conversion object was deleted that is not there");
    }
    return isKnown;
}

bool Ledger::RecordCreation(ItemTexts texts) {
    m_Creations.push_back(std::move(texts));
    return m_Creations.size() != m_Orders.nullItemAt;
}

void Ledger::Made(const CItemDisp* item) {
    m_Alive.insert(item);
    ++m_Created;
}

bool Ledger::Take(const CItemDisp* item) {
    const bool isKnown = m_Alive.erase(item) == 1;
    if (!isKnown) {
        RecordFault("an item was deleted that is not there");
    }
    m_Deleted += isKnown ? 1 : 0;
    return isKnown;
}

void Ledger::RecordConversion(std::vector<ItemTexts> items) {
    if (m_Conversion.has_value()) {
        RecordFault("a second conversion");
    }
    m_Conversion = std::move(items);
}

}  // namespace replay
