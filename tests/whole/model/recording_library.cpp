// A conversion library that converts nothing: it writes down what the module asks of it and obeys the case's
// orders. RECORDING_WITHOUT names an entry point, counted from 1, that this build lacks.
#include "Ledger.h"
#include "itemconv/CItemDisp.h"
#include "itemconv/QelLibIF.h"

#include <string>
#include <vector>

#define RECORDING_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

constexpr const char* kText = "<RAID/>";

class RecordedItem final : public CItemDisp {
  public:
    explicit RecordedItem(const replay::ItemTexts& texts)
        : CItemDisp(texts[0].c_str(), texts[1].c_str(), texts[2].c_str()), m_Flag(texts[3]) {}
    RecordedItem(const RecordedItem&) = delete;
    RecordedItem& operator=(const RecordedItem&) = delete;
    ~RecordedItem() = default;

    std::string m_Flag;
};

class RecordingInterface final : public QelLibIF {
  public:
    std::uint32_t ConvertToXml(int option, const char* kind, ItemList* items, const char** xml) override {
        replay::Ledger& ledger = ReplayLedger();
        if (option != 0 || kind == nullptr || std::string(kind) != "RAID") {
            ledger.RecordFault("converted with another option or kind of document");
        }
        std::vector<replay::ItemTexts> texts;
        for (const CItemDisp* const item : *items) {
            if (!ledger.IsAlive(item)) {
                ledger.RecordFault("an item was converted that is not there");
                continue;
            }
            texts.push_back({item->m_ParentName, item->m_Name, item->m_Value,
                             static_cast<const RecordedItem*>(item)->m_Flag});
        }
        ledger.RecordConversion(std::move(texts));
        const replay::Ledger::Orders& orders = ledger.GetOrders();
        if (orders.convertStatus == 0 && orders.hasText) {
            m_Text = kText;
            *xml = m_Text.c_str();
        }
        return orders.convertStatus;
    }

  private:
    std::string m_Text;
};

[[maybe_unused]] std::string TextOf(const char* text) {
    if (text == nullptr) {
        ReplayLedger().RecordFault("an item was made from a null text");
        return "";
    }
    return text;
}

[[gnu::constructor]] void Load() {
    ReplayLedger().Loaded();
}
[[gnu::destructor]] void Unload() {
    ReplayLedger().Unloaded();
}

}  // namespace

#if RECORDING_WITHOUT != 1
RECORDING_EXPORT QelLibIF* CreateLibIF() {
    if (ReplayLedger().GetOrders().isInterfaceNull) {
        return nullptr;
    }
    auto* const made = new RecordingInterface;
    ReplayLedger().MadeInterface(made);
    return made;
}
#endif

#if RECORDING_WITHOUT != 2
RECORDING_EXPORT void DeleteLibIF(QelLibIF* object) {
    if (ReplayLedger().TakeInterface(object)) {
        delete object;
    }
}
#endif

#if RECORDING_WITHOUT != 3
RECORDING_EXPORT CItemDisp* CreateItemDisp(const char* parentName, const char* name, const char* value,
                                           const char* validFlag) {
    const replay::ItemTexts texts{TextOf(parentName), TextOf(name), TextOf(value), TextOf(validFlag)};
    if (!ReplayLedger().RecordCreation(texts)) {
        return nullptr;
    }
    auto* const made = new RecordedItem(texts);
    ReplayLedger().Made(made);
    return made;
}
#endif

#if RECORDING_WITHOUT != 4
RECORDING_EXPORT void DeleteItemDisp(CItemDisp* item) {
    if (ReplayLedger().Take(item)) {
        delete static_cast<RecordedItem*>(item);
    }
}
#endif
