#include "CheckedLibrary.h"

#include "Document.h"
#include "Property.h"
#include "convlib/EntryPoints.h"

#include <cstring>
#include <limits>
#include <memory>
#include <memory_resource>
#include <unordered_map>
#include <utility>

namespace fuzzing {
namespace {

constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

struct Entry {
    bool isValid;
    std::size_t lastLookThrough;
};

struct Ledger {
    std::pmr::unsynchronized_pool_resource memory;  ///< the sanitizer's own would take most of the time
    std::pmr::unordered_map<const CItemDisp*, Entry> alive{&memory};
    std::size_t looksThrough = 0;
    std::size_t created = 0;
    std::size_t deleted = 0;
    std::size_t interfaces = 0;
    std::size_t creationsLeft = kNever;
    bool hasRefusedAnItem = false;
    bool refusesInterface = false;
    bool hasRefusedTheInterface = false;
    std::string lastDocument;
};
Ledger g_ledger;

/// Before a document is made, everything that was made must be in its list.
class CheckedInterface final : public QelLibIF {
  public:
    std::uint32_t ConvertToXml(int option, const char* kind, ItemList* items, const char** xml) override {
        CheckedLibrary::RequireAliveExactly(*items);
        const std::uint32_t status = m_Real->ConvertToXml(option, kind, items, xml);
        Require(status == 0, "every list of items can be converted");
        g_ledger.lastDocument = *xml;
        RequireDocument(g_ledger.lastDocument, kind, *items, CheckedLibrary::IsValid);
        return status;
    }

  private:
    std::unique_ptr<QelLibIF, DeleteLibIFFunction*> m_Real{CreateLibIF(), DeleteLibIF};
};

}  // namespace
}  // namespace fuzzing

using fuzzing::g_ledger;
using fuzzing::Require;

// By these names the library file that the module loads finds them.
extern "C" {

QelLibIF* TestCreateLibIF() {
    if (g_ledger.refusesInterface) {
        g_ledger.hasRefusedTheInterface = true;
        return nullptr;
    }
    ++g_ledger.interfaces;
    return new fuzzing::CheckedInterface;
}

void TestDeleteLibIF(QelLibIF* converter) {
    Require(converter != nullptr && g_ledger.interfaces == 1, "the interface object is deleted once");
    --g_ledger.interfaces;
    delete converter;
}

CItemDisp* TestCreateItemDisp(const char* parentName, const char* name, const char* value,
                              const char* validFlag) {
    if (g_ledger.creationsLeft == 0) {
        g_ledger.hasRefusedAnItem = true;
        return nullptr;
    }
    g_ledger.creationsLeft -= g_ledger.creationsLeft == fuzzing::kNever ? 0 : 1;
    CItemDisp* const item = CreateItemDisp(parentName, name, value, validFlag);
    if (item != nullptr) {
        g_ledger.alive.emplace(item, fuzzing::Entry{std::strcmp(validFlag, "TRUE") == 0, 0});
        ++g_ledger.created;
    }
    return item;
}

void TestDeleteItemDisp(CItemDisp* item) {
    Require(g_ledger.alive.erase(item) == 1, "an item that is deleted is alive and the library's own");
    ++g_ledger.deleted;
    DeleteItemDisp(item);
}
}

namespace fuzzing {

CMSRAID_MngLib* CheckedLibrary::Wrapper() {
    static CMSRAID_MngLib wrapper;
    wrapper.CreateLibIF = TestCreateLibIF;
    wrapper.DeleteLibIF = TestDeleteLibIF;
    wrapper.CreateItemDisp = TestCreateItemDisp;
    wrapper.DeleteItemDisp = TestDeleteItemDisp;
    return &wrapper;
}

void CheckedLibrary::Begin() {
    RequireNothingAlive();
    RefuseNothing();
    g_ledger.lastDocument.clear();
}

void CheckedLibrary::RefuseNothing() {
    g_ledger.creationsLeft = kNever;
    g_ledger.hasRefusedAnItem = false;
    g_ledger.refusesInterface = false;
    g_ledger.hasRefusedTheInterface = false;
}

void CheckedLibrary::RefuseItemsFrom(std::size_t creation) {
    g_ledger.creationsLeft = creation - 1;
}

void CheckedLibrary::RefuseInterface() {
    g_ledger.refusesInterface = true;
}

bool CheckedLibrary::HasRefusedAnItem() {
    return g_ledger.hasRefusedAnItem;
}

bool CheckedLibrary::HasRefusedTheInterface() {
    return g_ledger.hasRefusedTheInterface;
}

void CheckedLibrary::RequireAliveExactly(const ItemList& items) {
    const std::size_t look = ++g_ledger.looksThrough;
    std::size_t count = 0;
    for (const CItemDisp* const item : items) {
        const auto found = g_ledger.alive.find(item);
        Require(found != g_ledger.alive.end() && std::exchange(found->second.lastLookThrough, look) != look,
                "a list holds items that are alive, each once");
        ++count;
    }
    Require(count == g_ledger.alive.size(), "every item that was made is in the list or was deleted");
}

void CheckedLibrary::RequireNothingAlive() {
    Require(g_ledger.alive.empty() && g_ledger.created == g_ledger.deleted,
            "as many items are deleted as were made");
    Require(g_ledger.interfaces == 0, "no interface object is left");
}

bool CheckedLibrary::IsValid(const CItemDisp& item) {
    return g_ledger.alive.at(&item).isValid;
}

std::string CheckedLibrary::Convert(ItemList& items) {
    std::string xml;
    Require(Wrapper()->XmlConvert(&items, &xml), "every list of items can be converted");
    return xml;
}

const std::string& CheckedLibrary::LastDocument() {
    return g_ledger.lastDocument;
}

}  // namespace fuzzing
