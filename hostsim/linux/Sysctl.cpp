#include "hostsim/linux/Sysctl.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "hostsim/linux/Netlink.h"

namespace HostSim::Linux {

namespace {

constexpr const char kNetSettings[] = "/proc/sys/net/";

// Closes a descriptor when it goes.
class Descriptor {
public:
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    ~Descriptor() {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Get() const { return descriptor_; }

private:
    int descriptor_;
};

}  // namespace

std::optional<std::string> ReadNetSetting(const std::string& path) {
    const std::string full = kNetSettings + path;
    const Descriptor file(open(full.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (file.Get() < 0) {
        if (errno == ENOENT) {
            return std::nullopt;
        }
        ThrowKernelError(errno, full);
    }
    std::string value;
    char buffer[512];
    for (;;) {
        const ssize_t got = read(file.Get(), buffer, sizeof buffer);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            ThrowKernelError(errno, full);
        }
        if (got == 0) {
            break;
        }
        value.append(buffer, static_cast<std::size_t>(got));
    }
    while (!value.empty() && value.back() == '\n') {
        value.pop_back();
    }
    return value;
}

void WriteNetSetting(const std::string& path, const std::string& value) {
    const std::string full = kNetSettings + path;
    const Descriptor file(open(full.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW));
    if (file.Get() < 0) {
        ThrowKernelError(errno, full);
    }
    const std::string line = value + "\n";
    if (write(file.Get(), line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        ThrowKernelError(errno);
    }
}

}  // namespace HostSim::Linux
