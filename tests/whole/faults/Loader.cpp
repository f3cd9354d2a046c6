// The dynamic loader's functions of this program, in front of the C library's for the module. They know the
// conversion library by its file name and stand in front of its entry points as well, to know where a fault
// strikes and whether all items are deleted before it is closed.
#include "Loader.h"

#include "Fault.h"
#include "Next.h"
#include "itemconv/QelLibIF.h"

#include <string_view>
#include <utility>

using faults::Kind;
using faults::Next;
using faults::Place;
using faults::PlaceScope;
using faults::Strikes;

namespace {

void* g_library = nullptr;
long g_opened = 0;
long g_items = 0;
long g_itemsAtClose = 0;

bool IsConversionLibrary(const char* path) {
    return path != nullptr && std::string_view(path).ends_with("/libqel_MngSrv_QelLib.so");
}

}  // namespace

extern "C" {

void* dlopen(const char* path, int flags) noexcept {
    static auto* const next = Next<void*(const char*, int)>("dlopen");
    const bool isConversion = IsConversionLibrary(path);
    const PlaceScope scope(isConversion ? Place::LoadingLibrary : faults::g_place);
    if (Strikes(Kind::LoadLibrary)) {
        return next("/no/such/library", flags);  // The loader has its own words for it.
    }
    void* const library = next(path, flags);
    if (library != nullptr && isConversion) {
        g_library = library;
        ++g_opened;
    }
    return library;
}

int dlclose(void* library) noexcept {
    static auto* const next = Next<int(void*)>("dlclose");
    if (library == g_library) {
        --g_opened;
        g_itemsAtClose += g_items;
    }
    const int result = next(library);
    return Strikes(Kind::CloseLibrary) ? -1 : result;
}
}

std::string faults::LibraryFaults() {
    std::string text;
    if (std::exchange(g_itemsAtClose, 0) != 0 || std::exchange(g_items, 0) != 0) {
        text = "items were not deleted before the library was closed";
    } else if (g_opened != 0) {
        text = "the conversion library is open still";
    }
    return text;
}

void faults::CloseLeftLibrary() {
    while (g_opened > 0) {
        dlclose(g_library);
    }
}

void faults::ForgetLoaderError() {
    dlerror();  // Hands it out and keeps it;
    dlerror();  // this one frees it.
}

#ifndef FAULTS_SANITIZED  // Its own library looks functions up from where it stands; nothing may stand
                          // between.

namespace {

CreateLibIFFunction* g_createLibIF = nullptr;
DeleteLibIFFunction* g_deleteLibIF = nullptr;
CreateItemDispFunction* g_createItemDisp = nullptr;
DeleteItemDispFunction* g_deleteItemDisp = nullptr;

QelLibIF* CreateLibIF() {
    faults::g_place = Place::Converting;
    return g_createLibIF();
}

void DeleteLibIF(QelLibIF* converter) {
    g_deleteLibIF(converter);
    faults::g_place = Place::InMethod;
}

CItemDisp* CreateItemDisp(const char* parentName, const char* name, const char* value, const char* flag) {
    const PlaceScope scope(Place::MakingItem);
    CItemDisp* const item = g_createItemDisp(parentName, name, value, flag);
    g_items += item == nullptr ? 0 : 1;
    return item;
}

void DeleteItemDisp(CItemDisp* item) {
    g_items -= item == nullptr ? 0 : 1;
    g_deleteItemDisp(item);
}

template <class Function>
void* StandInFront(void* found, Function*& behind, Function& front) {
    behind = reinterpret_cast<Function*>(found);
    return reinterpret_cast<void*>(&front);
}

}  // namespace

extern "C" void* dlsym(void* library, const char* name) noexcept {
    static auto* const next = Next<void*(void*, const char*)>("dlsym");
    if (Strikes(Kind::LookUp)) {
        return next(library, "no such entry point");
    }
    void* const found = next(library, name);
    if (found == nullptr || library != g_library) {
        return found;
    }
    const std::string_view wanted = name;
    if (wanted == "CreateLibIF") {
        return StandInFront(found, g_createLibIF, CreateLibIF);
    }
    if (wanted == "DeleteLibIF") {
        return StandInFront(found, g_deleteLibIF, DeleteLibIF);
    }
    if (wanted == "CreateItemDisp") {
        return StandInFront(found, g_createItemDisp, CreateItemDisp);
    }
    if (wanted == "DeleteItemDisp") {
        return StandInFront(found, g_deleteItemDisp, DeleteItemDisp);
    }
    return found;
}

#endif
