// Stands in the RAID tool's place and does as little as can be: prints the file that is named like its
// arguments, "-pdinfo -nosmart -a0".

#include <fcntl.h>
#include <sys/sendfile.h>
#include <unistd.h>

#include <string>

int main(int count, char** words) {
    std::string path = "/opt/zorbalt/vdk/scenario/";
    for (int at = 1; at < count; ++at) {
        path.append(at > 1 ? " " : "").append(words[at]);
    }
    const int report = ::open(path.c_str(), O_RDONLY);
    constexpr std::size_t kAsMuchAsGoes = 0x7ffff000;
    ssize_t sent = 0;
    do {
        sent = ::sendfile(STDOUT_FILENO, report, nullptr, kAsMuchAsGoes);
    } while (sent > 0);
    return sent == 0 ? 0 : 1;
}
