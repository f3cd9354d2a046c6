#pragma once

#include "itemconv/CMSRAID_MngLib.h"
#include "itemconv/ResultCode.h"

#include "qel/IWbemClassObject.h"

#include <string>

/// What one method call holds: the items read so far, the loaded conversion library, and the reason of its
/// failure.
///
/// When a method is left by an exception the destructor deletes the items and closes the library, in this
/// order and without a word in the trace; a call that came to its end has released both before.
class MethodCall final {
  public:
    /// `library` is the provider's and may be null.
    explicit MethodCall(CMSRAID_MngLib* library) : m_Library(library) {}
    ~MethodCall();
    MethodCall(const MethodCall&) = delete;
    MethodCall& operator=(const MethodCall&) = delete;

    /// Loads the conversion library.
    [[nodiscard]] ResultCode Load();

    /// Closes it, if it was loaded.
    void Unload();

    /// Turns the items into XML text, after a successful `Load`. What to trace about a failure is the
    /// method's own.
    [[nodiscard]] ResultCode Convert();

    /// Stores the XML text in the output instance's "XmlData".
    [[nodiscard]] ResultCode Store(IWbemClassObject* outParams);

    /// Puts a reason code in front and hands `result` back.
    ResultCode Fail(const char* reason, ResultCode result);

    /// Takes over a reader's reason and hands `result` back.
    ResultCode FailAs(const std::string& reason, ResultCode result);

    [[nodiscard]] const std::string& Reason() const { return m_Reason; }

    ItemList m_Items;    ///< of all readers, in order
    ItemList m_Scratch;  ///< of the reader that is at work

  private:
    CMSRAID_MngLib* m_Library;
    void* m_Handle = nullptr;
    std::string m_Reason;
    std::string m_Xml;
};
