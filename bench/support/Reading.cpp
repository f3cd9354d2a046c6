#include "Reading.h"

#include "DisplayItem.h"
#include "convlib/EntryPoints.h"
#include "itemconv/DisplayItems.h"
#include "readers/CMSRAID_CtrlInfoGetter.h"
#include "readers/CMSRAID_LDInfoGetter.h"
#include "readers/CMSRAID_PDInfoGetter.h"
#include "readers/CMSRAID_PDSMInfoGetter.h"
#include "test_support/ReaderInside.h"

#include <fstream>
#include <memory>
#include <stdexcept>

namespace fuzzing {
struct HandOver {
    using Member = ResultCode (CMSRAID_InfoGetter::*)(std::ifstream&, const std::string&, ItemList&);
    friend constexpr Member PointerOf(HandOver);
};
template struct Inside<HandOver, &CMSRAID_InfoGetter::ParseAndHandOver>;
}  // namespace fuzzing

namespace bench {
namespace {

constexpr const char* kVersion = "4.1";

std::unique_ptr<CMSRAID_InfoGetter> ReaderOf(Kind kind) {
    switch (kind) {
        case Kind::Controllers:
            return std::make_unique<CMSRAID_CtrlInfoGetter>();
        case Kind::LogicalDrives:
            return std::make_unique<CMSRAID_LDInfoGetter>();
        case Kind::SmartTable:
            return std::make_unique<CMSRAID_PDSMInfoGetter>();
        default:
            return std::make_unique<CMSRAID_PDInfoGetter>(kVersion);
    }
}

}  // namespace

CMSRAID_MngLib& Library() {
    static CMSRAID_MngLib library;
    library.CreateLibIF = CreateLibIF;
    library.DeleteLibIF = DeleteLibIF;
    library.CreateItemDisp = CreateItemDisp;
    library.DeleteItemDisp = DeleteItemDisp;
    return library;
}

ItemList Read(Kind kind, const std::string& path) {
    const std::unique_ptr<CMSRAID_InfoGetter> reader = ReaderOf(kind);
    (*reader).*(&fuzzing::ReaderAccess::m_pMngLib) = &Library();
    ItemList items;
    std::ifstream file(path);
    if (((*reader).*PointerOf(fuzzing::HandOver()))(file, path, items) != msraid::kSuccess) {
        throw std::runtime_error("the reader refuses " + path);
    }
    return items;
}

void Delete(ItemList& items) {
    msraid::DeleteItems(&Library(), items);
    items.clear();
}

void WriteItems(std::ostream& out, const ItemList& items) {
    for (const CItemDisp* const item : items) {
        out << item->m_ParentName << '\t' << item->m_Name << '\t' << item->m_Value << '\t'
            << static_cast<const convlib::DisplayItem*>(item)->ValidText() << '\n';
    }
}

ItemList ReadItems(const std::string& path) {
    ItemList items;
    std::ifstream file(path);
    std::string parent;
    std::string name;
    std::string value;
    std::string valid;
    while (std::getline(file, parent, '\t') && std::getline(file, name, '\t') &&
           std::getline(file, value, '\t') && std::getline(file, valid)) {
        items.push_back(CreateItemDisp(parent.c_str(), name.c_str(), value.c_str(), valid.c_str()));
    }
    return items;
}

std::size_t ReadLines(const std::string& path) {
    std::ifstream file(path);
    std::size_t bytes = 0;
    for (std::string line; std::getline(file, line);) {
        bytes += line.size();
    }
    return bytes;
}

ItemList ReadLinesAndMakeItems(const std::string& path, const ItemList& patterns, std::size_t count) {
    ItemList items;
    std::ifstream file(path);
    auto pattern = patterns.begin();
    for (std::string line; std::getline(file, line) || items.size() < count;) {
        // As many for a line as the reader makes of it on average is near enough: only the last ones come
        // late.
        if (items.size() < count) {
            items.push_back(CreateItemDisp((*pattern)->m_ParentName.c_str(), (*pattern)->m_Name.c_str(),
                                           (*pattern)->m_Value.c_str(), "TRUE"));
            pattern = std::next(pattern) == patterns.end() ? patterns.begin() : std::next(pattern);
        }
    }
    return items;
}

}  // namespace bench
