#pragma once

#include <pthread.h>

/// Puts off a deferred cancellation of the calling thread for as long as it lives; the thread is cancelled at
/// its next cancellation point after that. An asynchronous one strikes where this begins or ends, which ends
/// the process.
///
/// A tool run waits, pauses and reads files, which are all places where a thread is cancelled. Much of what
/// would then be unwound (destructors that close a file or trace) may not be left that way, and the process
/// would end.
class CancellationHold final {
  public:
    CancellationHold() noexcept { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_Before); }
    ~CancellationHold() { pthread_setcancelstate(m_Before, nullptr); }
    CancellationHold(const CancellationHold&) = delete;
    CancellationHold& operator=(const CancellationHold&) = delete;

  private:
    int m_Before = PTHREAD_CANCEL_ENABLE;
};
