#include "basics/Failure.h"
#include "basics/SavedFile.h"
#include "test_support/TempFolder.h"

namespace basics::test {
namespace {

using testsupport::TempFolder;
using testsupport::WriteFile;

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

std::string WhyNot(const std::string& path, std::size_t mostMebibytes) {
    try {
        return "read " + std::to_string(basics::ReadFile(path, mostMebibytes).size());
    } catch (const Failure& error) {
        return error.what();
    }
}

TEST(SavedFile, IsReadToItsEnd) {
    const TempFolder folder;
    const std::string text(kMebibyte, 'x');
    WriteFile(folder / "saved", text);
    EXPECT_EQ(basics::ReadFile(folder / "saved", 1), text);
    EXPECT_EQ(basics::ReadFile("/dev/null"), "");
}

TEST(SavedFile, HasALimit) {
    const TempFolder folder;
    WriteFile(folder / "saved", std::string(kMebibyte + 1, 'x'));
    EXPECT_EQ(WhyNot(folder / "saved", 1),
              folder / "saved" + " cannot be read: it is larger than 1 MiB, as no RAID document is");
    EXPECT_EQ(WhyNot("/dev/zero", 3),
              "/dev/zero cannot be read: it is larger than 3 MiB, as no RAID document is");
}

TEST(SavedFile, IsNoFolder) {
    const TempFolder folder;
    EXPECT_EQ(WhyNot(folder.Path().string(), 1), folder.Path().string() + " cannot be read: Is a directory");
    EXPECT_EQ(WhyNot(folder / "none", 1), folder / "none" + " cannot be read: No such file or directory");
}

}  // namespace
}  // namespace basics::test
