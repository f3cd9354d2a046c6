#pragma once

#include <stdlib.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace testsupport {

/// Throws std::runtime_error.
inline void WriteFile(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    if (!(file << text).flush()) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

/// "" for a file that cannot be read.
[[nodiscard]] inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A new folder, removed with everything in it. Throws std::system_error.
class TempFolder final {
  public:
    explicit TempFolder(const std::filesystem::path& where = std::filesystem::temp_directory_path()) {
        std::string name = (where / "msraid_test_XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::system_error(errno, std::generic_category(), name);
        }
        m_Path = std::filesystem::canonical(name);
    }
    ~TempFolder() {
        std::error_code ignored;  // What cannot be removed is left to the system's own tidying.
        std::filesystem::remove_all(m_Path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& Path() const { return m_Path; }
    [[nodiscard]] std::string operator/(const std::string& name) const { return (m_Path / name).string(); }
    [[nodiscard]] std::vector<std::string> Names() const { return NamesIn(m_Path); }

    void Write(const std::string& name, const std::string& text) const { WriteFile(m_Path / name, text); }
    [[nodiscard]] std::string Read(const std::string& name) const { return ReadFile(m_Path / name); }

    /// Sorted names of a folder's entries; none for a folder that does not exist.
    [[nodiscard]] static std::vector<std::string> NamesIn(const std::filesystem::path& folder) {
        std::vector<std::string> names;
        if (std::filesystem::exists(folder)) {
            for (const auto& entry : std::filesystem::directory_iterator(folder)) {
                names.push_back(entry.path().filename().string());
            }
            std::sort(names.begin(), names.end());
        }
        return names;
    }

  private:
    std::filesystem::path m_Path;
};

}  // namespace testsupport
