#pragma once

#include "convlib/EntryPoints.h"

#include <memory>
#include <stdexcept>
#include <string>

/// An item list for tests, filled through the library's own entry points; it owns its items.
class Items final {
  public:
    Items() = default;
    Items(const Items&) = delete;
    Items& operator=(const Items&) = delete;
    ~Items() {
        for (CItemDisp* item : m_Owned) {
            DeleteItemDisp(item);
        }
    }

    CItemDisp& Add(const std::string& parentName, const std::string& name, const std::string& value = "",
                   const std::string& validFlag = "TRUE") {
        CItemDisp* const item =
            CreateItemDisp(parentName.c_str(), name.c_str(), value.c_str(), validFlag.c_str());
        if (item == nullptr) {
            throw std::runtime_error("no item");
        }
        m_Owned.push_back(item);
        m_List.push_back(item);
        return *item;
    }

    /// Adds an item whose texts may hold any bytes, NUL included.
    CItemDisp& AddBytes(std::string parentName, std::string name, std::string value) {
        CItemDisp& item = Add("", "");
        item.m_ParentName = std::move(parentName);
        item.m_Name = std::move(name);
        item.m_Value = std::move(value);
        return item;
    }

    /// The list as the library gets it; entries may be added and taken out, the items stay owned here.
    ItemList& List() { return m_List; }

  private:
    ItemList m_List;
    ItemList m_Owned;
};

using LibIFPointer = std::unique_ptr<QelLibIF, DeleteLibIFFunction*>;

inline LibIFPointer MakeLibIF() {
    return {CreateLibIF(), &DeleteLibIF};
}

/// The document made from the items; throws when the conversion fails.
inline std::string Convert(Items& items, const char* kind = "RAID") {
    const LibIFPointer libIF = MakeLibIF();
    const char* xml = nullptr;
    if (libIF->ConvertToXml(0, kind, &items.List(), &xml) != 0) {
        throw std::runtime_error("no document");
    }
    return xml;
}
