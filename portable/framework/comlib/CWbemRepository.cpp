#include "qel/portable/CWbemRepository.h"

#include "comlib/WbemObject.h"

#include <utility>

CWbemRepository* CWbemRepository::Create() {
    return new CWbemRepository;
}

CWbemRepository& CWbemRepository::Process() {
    static CWbemRepository* const repository = [] {
        const auto release = [](CWbemRepository* made) { made->Release(); };
        std::unique_ptr<CWbemRepository, decltype(release)> made(Create());
        for (WbemClass& shipped : qel::ShippedClasses()) {
            made->DeclareClass(std::move(shipped));
        }
        return made.release();
    }();
    return *repository;
}

void CWbemRepository::DeclareClass(WbemClass declaration) {
    auto shared = std::make_shared<const WbemClass>(std::move(declaration));
    const std::lock_guard lock(m_Mutex);
    m_Classes[shared->name] = shared;
}

void CWbemRepository::RemoveClass(const std::string& name) {
    const std::lock_guard lock(m_Mutex);
    m_Classes.erase(name);
}

HRESULT CWbemRepository::GetObject(const std::string& path, long /*flags*/, IWbemContext* /*context*/,
                                   IWbemClassObject** object, void** /*callResult*/) {
    if (object == nullptr) {
        return static_cast<HRESULT>(WBEM_E_INVALID_PARAMETER);
    }
    const std::lock_guard lock(m_Mutex);
    const auto found = m_Classes.find(path);
    if (found == m_Classes.end()) {
        return static_cast<HRESULT>(WBEM_E_NOT_FOUND);
    }
    *object = new qel::WbemClassDefinition(found->second);
    return WBEM_S_NO_ERROR;
}

DWORD CWbemRepository::AddRef() noexcept {
    return m_References.fetch_add(1) + 1;
}

DWORD CWbemRepository::Release() noexcept {
    const DWORD left = m_References.fetch_sub(1) - 1;
    if (left == 0) {
        delete this;
    }
    return left;
}
