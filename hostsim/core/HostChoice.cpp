#include "hostsim/core/HostChoice.h"

#include <dlfcn.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "hostctl/HostCtlException.h"
#include "hostsim/Control.h"
#include "hostsim/linux/LiveHost.h"

namespace HostSim {

using HostCtl::Lib::HostCtlException;

namespace {

constexpr const char kSimulatedHost[] = "sim";
constexpr const char kLinuxHost[] = "linux";
// Beside the host library, wherever the build or the install put it.
constexpr const char kLiveModule[] = "liblinuxhost.so";
constexpr const char kLiveModuleBeside[] = "$ORIGIN/liblinuxhost.so";

std::optional<std::string>& ChosenHost() {
    static std::optional<std::string> host;
    return host;
}

std::string RequestedHost() {
    if (ChosenHost()) {
        return *ChosenHost();
    }
    const char* host = std::getenv("AUTOCLI_HOST");
    return host != nullptr && *host != '\0' ? host : kSimulatedHost;
}

std::string ModulePath() {
    Dl_info self{};
    if (dladdr(reinterpret_cast<void*>(&LiveHost), &self) == 0 || self.dli_fname == nullptr) {
        return kLiveModule;
    }
    std::string path = self.dli_fname;
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? kLiveModule : path.substr(0, slash + 1) + kLiveModule;
}

// The module is first named by its place beside this library, which the loader knows without a
// look-up; only when that fails is the path asked for, so that the loader's message names it.
// Its functions are bound as they are first called: a command calls few of them.
Live::Host* LoadLiveHost() {
    void* module = dlopen(kLiveModuleBeside, RTLD_LAZY | RTLD_LOCAL);
    if (module == nullptr) {
        module = dlopen(ModulePath().c_str(), RTLD_LAZY | RTLD_LOCAL);
        if (module == nullptr) {
            throw HostCtlException("The Linux host driver can't be loaded: " +
                                   std::string(dlerror()));
        }
    }
    auto* entry = reinterpret_cast<Live::Host* (*)()>(dlsym(module, "HostSim_LiveHost"));
    if (entry == nullptr) {
        throw HostCtlException("The Linux host driver " + ModulePath() + " has no entry");
    }
    return entry();
}

struct Choice {
    bool made = false;
    Live::Host* live = nullptr;
};

Choice& CurrentChoice() {
    static Choice choice;
    return choice;
}

}  // namespace

Live::Host* LiveHost() {
    Choice& choice = CurrentChoice();
    if (choice.made) {
        return choice.live;
    }
    const std::string host = RequestedHost();
    if (host == kLinuxHost) {
        choice.live = LoadLiveHost();
    } else if (host != kSimulatedHost) {
        throw HostCtlException("AUTOCLI_HOST is \"" + host + "\"; the hosts are " + kSimulatedHost +
                               " and " + kLinuxHost);
    }
    choice.made = true;
    return choice.live;
}

void ChooseHost(const std::string& host) {
    ChosenHost() = host;
    CurrentChoice() = {};
}

}  // namespace HostSim
