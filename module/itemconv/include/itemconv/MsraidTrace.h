#pragma once

#include "qel/CTraceUtility.h"

#include <exception>
#include <new>
#include <string>

/// The module's trace: one category, four levels, and the pair of lines around every operation. A framework's
/// trace may throw; outside of `LoseFailure` that is an exception of the operation that traces.
namespace msraid {

inline constexpr const char* kCategory = "msraid";

inline constexpr int kResult = 1;     ///< results, and the tool command being run
inline constexpr int kFailure = 2;    ///< what went wrong
inline constexpr int kOperation = 4;  ///< start and end of operations
inline constexpr int kException = 8;  ///< exceptions caught

/// Writes what nobody can be told the failure of, in destructors and handlers: a line that throws is lost.
template <class Write>
void LoseFailure(const Write& write) noexcept {
    try {
        write();
    } catch (...) {
        return;
    }
}

/// Writes "CMSRAID_InfoGetter::Parse [START]" when it is made and "CMSRAID_InfoGetter::Parse [END]" when its
/// operation returns, be it with a failure. An operation that is left by an exception has no end line; that
/// of a start line is its own. Keeps the pointer to the name, which is a literal.
class OperationTrace final {
  public:
    explicit OperationTrace(const char* name) : m_Name(name) { WriteStart(); }

    /// The start line shows the report line that the operation begins with.
    OperationTrace(const char* name, const std::string& line) : m_Name(name) {
        CTraceUtility::WriteDebug(kCategory, kOperation, "%s [START], %s", m_Name, line.c_str());
    }

    /// Of a destructor, which no exception may leave.
    OperationTrace(const char* name, std::nothrow_t /*tag*/) noexcept : m_Name(name) {
        LoseFailure([this] { WriteStart(); });
    }

    ~OperationTrace() {
        if (std::uncaught_exceptions() == m_Exceptions) {
            LoseFailure([this] { CTraceUtility::WriteDebug(kCategory, kOperation, "%s [END]", m_Name); });
        }
    }
    OperationTrace(const OperationTrace&) = delete;
    OperationTrace& operator=(const OperationTrace&) = delete;

  private:
    void WriteStart() const { CTraceUtility::WriteDebug(kCategory, kOperation, "%s [START]", m_Name); }

    const char* m_Name;
    int m_Exceptions = std::uncaught_exceptions();
};

}  // namespace msraid
