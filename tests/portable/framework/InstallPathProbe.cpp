// Prints the install root as seen after the working directory has changed to the one given.
#include "qel/CFileUtility.h"

#include <cstdio>

#include <unistd.h>

int main(int argc, char** argv) {
    if (argc != 2 || ::chdir(argv[1]) != 0) {
        return 2;
    }
    std::printf("%s\n", CFileUtility::GetInstallPath(INSTALLPATH_ROOT).c_str());
    return 0;
}
