// A kernel module of the host, by name.
#pragma once

#include <string>

namespace HostCtl {
// The empty option text, for calls that take options and are given none.
inline const std::string emptyString;
}  // namespace HostCtl

namespace KelmCtl::System {

class ModuleImpl {
public:
    explicit ModuleImpl(std::string name);

    // Reads the module's state from the host.
    void Refresh();
    // Asks the host once, on the first call after construction; later calls answer from what
    // was read.
    bool IsLoaded() {
        if (stale_) {
            Refresh();
            stale_ = false;
        }
        return !notLoaded_;
    }
    // Loads the module with `options`; `persistent` also keeps it loaded across host restarts.
    void Load(const std::string& options, bool persistent);
    void Unload();

private:
    std::string name_;
    bool stale_ = true;
    bool notLoaded_ = true;
};

}  // namespace KelmCtl::System
