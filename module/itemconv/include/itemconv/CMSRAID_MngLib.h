#pragma once

#include "itemconv/CItemDisp.h"
#include "itemconv/QelLibIF.h"

#include <string>

/// The module's hold on the conversion library `libqel_MngSrv_QelLib.so`, which makes and deletes display
/// items and turns a list of them into XML.
///
/// One method call is: `Load`, items through `CreateItemDisp`, `XmlConvert`, every item through
/// `DeleteItemDisp`, `Unload`. The entry points mean something only between a successful `Load` and its
/// `Unload`; they are null before the first `Load`. The handle is the caller's to keep. One thread at a time.
/// Failures show in results and in the trace. What the trace throws goes on, and `XmlConvert` may throw
/// std::bad_alloc; whatever they had to release has been released then.
class CMSRAID_MngLib {
  public:
    CMSRAID_MngLib();
    CMSRAID_MngLib(const CMSRAID_MngLib&) = delete;
    CMSRAID_MngLib& operator=(const CMSRAID_MngLib&) = delete;
    virtual ~CMSRAID_MngLib();

    /// Opens the library and looks its entry points up. Null: failed; nothing is left for `Unload` then.
    [[nodiscard]] void* Load();

    /// Closes a handle of `Load`, by exception too; null is allowed. All items must be gone.
    void Unload(void* handle);

    /// Stores the XML text of `items` in `*xml`. False: failed, `*xml` is as it was.
    [[nodiscard]] bool XmlConvert(ItemList* items, std::string* xml);

    CreateLibIFFunction* CreateLibIF = nullptr;
    DeleteLibIFFunction* DeleteLibIF = nullptr;
    CreateItemDispFunction* CreateItemDisp = nullptr;
    DeleteItemDispFunction* DeleteItemDisp = nullptr;
};
