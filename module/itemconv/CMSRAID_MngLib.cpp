#include "itemconv/CMSRAID_MngLib.h"

#include "itemconv/MsraidTrace.h"

#include "qel/CFileUtility.h"
#include "qel/QelWindows.h"

#include <dlfcn.h>

#include <memory>

using msraid::kCategory;
using msraid::kFailure;
using msraid::OperationTrace;

namespace {

constexpr const char* kLibraryFile = "libqel_MngSrv_QelLib.so";
constexpr const char* kDocumentKind = "RAID";

std::string FindLibraryFile() {
    const std::string directory = CFileUtility::GetInstallPath(INSTALLPATH_CIM);
    if (directory.empty()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Failed to get INSTALLPATH_CIM.");
        return kLibraryFile;
    }
    return directory + "/" + kLibraryFile;
}

// Null when the missing entry point was not the last one looked up.
const char* LastLoadError() {
    const char* const text = dlerror();
    return text == nullptr ? "" : text;
}

struct CloseLibrary {
    void operator()(void* library) const noexcept { dlclose(library); }
};

template <class Function>
bool LookUp(void* handle, const char* name, Function*& entryPoint) {
    entryPoint = reinterpret_cast<Function*>(dlsym(handle, name));
    return entryPoint != nullptr;
}

}  // namespace

CMSRAID_MngLib::CMSRAID_MngLib() {
    const OperationTrace operation("CMSRAID_MngLib::CMSRAID_MngLib");
}

CMSRAID_MngLib::~CMSRAID_MngLib() {
    const OperationTrace operation("CMSRAID_MngLib::~CMSRAID_MngLib", std::nothrow);
}

void* CMSRAID_MngLib::Load() {
    const OperationTrace operation("CMSRAID_MngLib::MngSrvLibLoad");
    void* const handle = dlopen(FindLibraryFile().c_str(), RTLD_LAZY);
    if (handle == nullptr) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Failed to load MngSrv_QelLib Library(%s).",
                                  LastLoadError());
        return nullptr;
    }
    bool isComplete = LookUp(handle, "CreateLibIF", CreateLibIF);
    isComplete &= LookUp(handle, "DeleteLibIF", DeleteLibIF);
    isComplete &= LookUp(handle, "CreateItemDisp", CreateItemDisp);
    isComplete &= LookUp(handle, "DeleteItemDisp", DeleteItemDisp);
    if (!isComplete) {
        // Meant: the blank before the full stop tells this failure from the other one, and a library that
        // lacks an entry point stays open.
        CTraceUtility::WriteDebug(kCategory, kFailure, "Failed to load MngSrv_QelLib Library(%s) .",
                                  LastLoadError());
        return nullptr;
    }
    return handle;
}

void CMSRAID_MngLib::Unload(void* handle) {
    std::unique_ptr<void, CloseLibrary> library(handle);  // Also where the start line throws.
    const OperationTrace operation("CMSRAID_MngLib::MngSrvLibUnload");
    if (library != nullptr && dlclose(library.release()) != 0) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Unload Library is FAILED (Error=%08x).",
                                  static_cast<unsigned>(GetLastError()));
    }
}

bool CMSRAID_MngLib::XmlConvert(ItemList* items, std::string* xml) {
    const OperationTrace operation("CMSRAID_MngLib::XmlConvert");
    const std::unique_ptr<QelLibIF, DeleteLibIFFunction*> converter(
        CreateLibIF == nullptr ? nullptr : CreateLibIF(), DeleteLibIF);
    if (converter == nullptr) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Failed to initialize QelLibIF.");
        return false;
    }
    const char* text = nullptr;
    const std::uint32_t status = converter->ConvertToXml(0, kDocumentKind, items, &text);
    if (status != 0 || text == nullptr) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Failed to convert XML format %08x.", status);
        return false;
    }
    *xml = text;
    return true;
}
