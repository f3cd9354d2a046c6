#pragma once

#include <cstddef>

/// The call that is to fail: which one, and where it was made. The functions of this program that take the
/// place of the system's ask here before they do their work.
namespace faults {

enum class Kind {
    Memory,           ///< any allocation
    Open,             ///< open
    OpenStream,       ///< fopen
    Read,             ///< read, with an error
    InterruptedRead,  ///< read, interrupted by a signal
    Seek,
    Write,
    Close,        ///< close, which closes all the same
    CloseStream,  ///< fclose, which closes all the same
    Stat,
    LinkStat,  ///< lstat
    Fork,
    Wait,             ///< waitpid: the child is gone, and nobody knows how
    InterruptedWait,  ///< waitpid, interrupted by a signal
    Duplicate,        ///< dup2
    Execute,          ///< execlp
    Unlink,
    MakeDirectory,
    LoadLibrary,
    LookUp,        ///< dlsym
    CloseLibrary,  ///< dlclose, which closes all the same
    Trace,         ///< a line of the trace, by exception
};
inline constexpr std::size_t kKinds = 22;

[[nodiscard]] const char* NameOf(Kind kind);

/// What the process was doing when the call failed.
enum class Place {
    LoadingModule,
    Creating,      ///< from the module's load to the end of `create`
    BeforeMethod,  ///< in ExecMethodAsync, before its guarded block
    InMethod,
    AppKey,       ///< the file with the application key
    VersionFile,  ///< the result file of the version query
    Report,       ///< any other result file
    LoadingLibrary,
    MakingItem,
    Converting,  ///< from CreateLibIF to DeleteLibIF
    LineToLose,  ///< a line of the trace that nobody can be told of: of an end, a destructor, a handler
};

/// Which call fails: number `at` of its kind, counted from 1; `isLasting`: and every later one. 0: none.
struct Order {
    Kind kind = Kind::Memory;
    unsigned long at = 0;
    bool isLasting = false;
};

/// Sets the counters back, for this process and the children that it starts from now on, whose calls are
/// counted too.
void StartOrder(const Order& order);

/// Calls are counted, and may fail, while a window is open. The memory that is allocated then is watched.
class Window final {
  public:
    Window();
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
};

/// Windows change nothing from now on.
void EndOrder();

[[nodiscard]] unsigned long CallsOf(Kind kind);

/// How often the order struck, in this process and its children, and where first.
[[nodiscard]] unsigned long TimesStruck();
[[nodiscard]] Place FirstStruckAt();

/// For the functions that stand in for the system's: counts one call; true when it is to fail.
[[nodiscard]] bool Strikes(Kind kind) noexcept;

/// Kept by those functions and by the listener of the trace.
inline Place g_place = Place::LoadingModule;
inline Place g_openedLast = Place::Report;
inline bool g_isVersionQuery = false;

class PlaceScope final {
  public:
    explicit PlaceScope(Place place) : m_Outer(g_place) { g_place = place; }
    ~PlaceScope() { g_place = m_Outer; }
    PlaceScope(const PlaceScope&) = delete;
    PlaceScope& operator=(const PlaceScope&) = delete;

  private:
    Place m_Outer;
};

}  // namespace faults
