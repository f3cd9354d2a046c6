#pragma once

#include "qel/IWbemClassObject.h"
#include "qel/QelWindows.h"

#include <utility>

/// The framework objects that one `ExecMethodAsync` holds. Released together, in the order that the framework
/// expects, when the call is through with them or when an exception leaves it. Each may be null.
class CallObjects final {
  public:
    CallObjects() = default;
    ~CallObjects() { Release(); }
    CallObjects(const CallObjects&) = delete;
    CallObjects& operator=(const CallObjects&) = delete;

    void Release() {
        ReleaseOne(m_OutInstance);
        ReleaseOne(m_OutSignature);
        ReleaseOne(m_Class);
        if (m_ClassName != nullptr) {
            SysFreeString(std::exchange(m_ClassName, nullptr));
        }
    }

    BSTR m_ClassName = nullptr;
    IWbemClassObject* m_Class = nullptr;
    IWbemClassObject* m_OutSignature = nullptr;
    IWbemClassObject* m_OutInstance = nullptr;

  private:
    static void ReleaseOne(IWbemClassObject*& object) {
        if (object != nullptr) {
            std::exchange(object, nullptr)->Release();
        }
    }
};
