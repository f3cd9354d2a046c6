#pragma once

#include <utility>

namespace calls {

/// Owns one reference to a WBEM object; may be empty. `Place()` takes what an out parameter hands over.
template <typename Object>
class WbemPointer final {
  public:
    WbemPointer() = default;

    /// Takes over a reference that the caller owns.
    explicit WbemPointer(Object* object) noexcept : m_Object(object) {}
    WbemPointer(WbemPointer&& other) noexcept : m_Object(std::exchange(other.m_Object, nullptr)) {}
    WbemPointer& operator=(WbemPointer&& other) noexcept {
        if (this != &other) {
            Reset();
            m_Object = std::exchange(other.m_Object, nullptr);
        }
        return *this;
    }
    ~WbemPointer() { Reset(); }

    /// A reference of its own to an object that somebody else owns.
    [[nodiscard]] static WbemPointer Share(Object* object) noexcept {
        if (object != nullptr) {
            object->AddRef();
        }
        return WbemPointer(object);
    }

    [[nodiscard]] Object* Get() const noexcept { return m_Object; }
    [[nodiscard]] Object* operator->() const noexcept { return m_Object; }
    [[nodiscard]] explicit operator bool() const noexcept { return m_Object != nullptr; }

    /// Where an operation stores a reference for this owner. Empty until it does.
    [[nodiscard]] Object** Place() noexcept {
        Reset();
        return &m_Object;
    }

  private:
    void Reset() noexcept {
        if (Object* const object = std::exchange(m_Object, nullptr)) {
            object->Release();
        }
    }

    Object* m_Object = nullptr;
};

}  // namespace calls
