#include "hostsim/core/StateFiles.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "hostctl/HostCtlException.h"

namespace HostSim {

using HostCtl::Lib::HostCtlException;

void MakePrivateDirectory(const std::string& directory) {
    // Each folder from the top down: mkdir makes it 0700 at most, whatever the umask.
    for (std::size_t end = directory.find('/', 1);; end = directory.find('/', end + 1)) {
        const std::string folder = directory.substr(0, end);
        if (!folder.empty() && mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
            throw HostCtlException("Unable to create the host state directory " + directory + ": " +
                                   folder + ": " + std::strerror(errno));
        }
        if (end == std::string::npos) {
            break;
        }
    }
    struct stat status {};
    if (stat(directory.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        throw HostCtlException("Unable to create the host state directory " + directory +
                               ": it is not a folder");
    }
}

void CheckDirectoryIsPrivate(const std::string& directory) {
    struct stat status {};
    if (stat(directory.c_str(), &status) == 0 && (status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        throw HostCtlException("The host can't be changed: its state directory " + directory +
                               " can be written by other users (make it private: chmod 700 " +
                               directory + ")");
    }
}

int OpenStateFile(const std::string& path, int flags) {
    return open(path.c_str(), flags | O_NOFOLLOW | O_CLOEXEC, 0600);
}

}  // namespace HostSim
