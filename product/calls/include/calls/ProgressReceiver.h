#pragma once

#include <cstddef>
#include <string_view>

namespace calls {

/// Who wants to know how far an inquiry is. Told from the thread that asks; not to wait for anything.
class ProgressReceiver {
  public:
    ProgressReceiver() = default;
    ProgressReceiver(const ProgressReceiver&) = delete;
    ProgressReceiver& operator=(const ProgressReceiver&) = delete;
    virtual ~ProgressReceiver() = default;

    /// The tool runs this command from now on, "vdkcli -pdinfo -a0". May throw std::bad_alloc.
    virtual void Show(std::string_view command) = 0;

    /// So much of the work is done, where that is known.
    virtual void ShowDone(std::size_t done, std::size_t total) = 0;
};

}  // namespace calls
