#pragma once

#include <string>
#include <vector>

/// What the dynamic loader sees of a shared library, read from the file itself (64 bit, this machine's byte
/// order).
struct ElfFile {
    std::vector<std::string> exportedSymbols;  ///< sorted; defined and visible from outside
    std::vector<std::string> uniqueSymbols;    ///< of any of them: the library could never be unloaded
    std::vector<std::string> neededLibraries;  ///< in the file's order

    bool hasExecutableStack = true;     ///< also when the file does not say
    bool hasReadOnlyRelocated = false;  ///< what the loader has relocated becomes read-only
    bool isBoundAtLoad = false;         ///< with the above: no function pointer stays writable

    /// Throws when the file is no such library.
    static ElfFile Read(const std::string& path);
};
