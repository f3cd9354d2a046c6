#pragma once

#include "report/CMSRAID_InfoGetter.h"

namespace fuzzing {

/// Opens to the targets what a reader keeps for its derived classes: `reader.*(&ReaderAccess::m_ItemList)`.
struct ReaderAccess : CMSRAID_InfoGetter {
    using CMSRAID_InfoGetter::m_ItemList;
    using CMSRAID_InfoGetter::m_pMngLib;
    using CMSRAID_InfoGetter::m_Reason;
};

/// Opens a private member: explicit instantiations may name it, and `PointerOf` carries its pointer out. A
/// tag names the member's type and declares `PointerOf(Tag)` as its friend.
template <class Tag, typename Tag::Member Pointer>
struct Inside {
    friend constexpr typename Tag::Member PointerOf(Tag /*tag*/) { return Pointer; }
};

}  // namespace fuzzing
