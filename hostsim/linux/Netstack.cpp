#include "hostsim/linux/Netstack.h"

#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "hostctl/HostCtlException.h"
#include "hostsim/linux/Netlink.h"

namespace HostSim::Linux {

NetstackScope::NetstackScope(const std::string& key) {
    if (key == kDefaultNetstack) {
        return;
    }
    if (key.empty() || key.find('/') != std::string::npos || key == "." || key == "..") {
        throw HostCtl::Lib::HostCtlException("There is no netstack instance " + key);
    }
    const std::string path = std::string(kNamedNamespaces) + "/" + key;
    const int target = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (target < 0) {
        if (errno == ENOENT) {
            throw HostCtl::Lib::HostCtlException("There is no netstack instance " + key);
        }
        ThrowKernelError(errno, path);
    }
    home_ = open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
    if (home_ < 0 || setns(target, CLONE_NEWNET) != 0) {
        const int error = errno;
        close(target);
        if (home_ >= 0) {
            close(home_);
        }
        ThrowKernelError(error, path);
    }
    close(target);
}

NetstackScope::~NetstackScope() {
    if (home_ < 0) {
        return;
    }
    // Going back can't fail but for a kernel fault; a process left in another namespace would
    // act on the wrong links, so it stops rather than go on.
    if (setns(home_, CLONE_NEWNET) != 0) {
        std::abort();
    }
    close(home_);
}

}  // namespace HostSim::Linux
