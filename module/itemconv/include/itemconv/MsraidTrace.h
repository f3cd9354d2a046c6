#pragma once

#include "qel/CTraceUtility.h"

#include <exception>
#include <string>

/// The module's trace: one category, four levels, and the pair of lines around every operation.
namespace msraid {

inline constexpr const char* kCategory = "msraid";

inline constexpr int kResult = 1;     ///< results, and the tool command being run
inline constexpr int kFailure = 2;    ///< what went wrong
inline constexpr int kOperation = 4;  ///< start and end of operations
inline constexpr int kException = 8;  ///< exceptions caught

/// Writes "CMSRAID_InfoGetter::Parse [START]" when it is made and "CMSRAID_InfoGetter::Parse [END]" when its
/// operation returns, be it with a failure. An operation that is left by an exception has no end line.
/// Keeps the pointer to the name, which is a literal.
class OperationTrace final {
  public:
    explicit OperationTrace(const char* name) noexcept : m_Name(name) {
        CTraceUtility::WriteDebug(kCategory, kOperation, "%s [START]", m_Name);
    }
    /// The start line shows the report line that the operation begins with.
    OperationTrace(const char* name, const std::string& line) noexcept : m_Name(name) {
        CTraceUtility::WriteDebug(kCategory, kOperation, "%s [START], %s", m_Name, line.c_str());
    }
    ~OperationTrace() {
        if (std::uncaught_exceptions() == m_Exceptions) {
            CTraceUtility::WriteDebug(kCategory, kOperation, "%s [END]", m_Name);
        }
    }
    OperationTrace(const OperationTrace&) = delete;
    OperationTrace& operator=(const OperationTrace&) = delete;

  private:
    const char* m_Name;
    int m_Exceptions = std::uncaught_exceptions();
};

}  // namespace msraid
