// Finding the plug-in directory and loading every plug-in in it.
#include <dirent.h>
#include <dlfcn.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "commandhost/cli/CommandHost.h"
#include "cpptools/CallSpec.h"

namespace CommandHost {

namespace {

constexpr const char* kEntryName = "AutoCli_RegisterNamespaces";

// The folder above the one that holds the command host's library: the build's root, or an
// installation's PREFIX/lib/autocli, which keeps the same layout. The loader found the library from
// the executable's own path, so asking it costs no system call, where reading /proc/self/exe would.
std::string InstallRoot() {
    Dl_info library{};
    if (dladdr(reinterpret_cast<const void*>(&CppTools::CallSpec::ParseIntText), &library) == 0 ||
        library.dli_fname == nullptr || library.dli_fname[0] != '/') {
        return "..";
    }
    std::filesystem::path path = std::filesystem::path(library.dli_fname).lexically_normal();
    return path.parent_path().parent_path().string();
}

bool IsPluginName(const char* name) {
    std::string_view text(name);
    return text.size() > 6 && text.starts_with("lib") && text.ends_with(".so");
}

}  // namespace

std::string PluginDirectory(const std::string& option) {
    if (!option.empty()) {
        return option;
    }
    if (const char* environment = std::getenv("AUTOCLI_PLUGIN_DIR");
        environment != nullptr && *environment != '\0') {
        return environment;
    }
    return InstallRoot() + "/plugins";
}

void CommandHost::LoadPlugins(const std::string& directory) {
    DIR* stream = opendir(directory.c_str());
    if (stream == nullptr) {
        throw std::runtime_error("Cannot open the plug-in directory '" + directory +
                                 "': " + std::strerror(errno));
    }
    std::vector<std::string> names;
    while (const dirent* entry = readdir(stream)) {
        if (IsPluginName(entry->d_name)) {
            names.emplace_back(entry->d_name);
        }
    }
    closedir(stream);
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) {
        const std::string path = directory + "/" + name;
        // The tree the plug-in registers lives as long as the process, so it is never closed.
        void* library = dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
        if (library == nullptr) {
            throw std::runtime_error("Cannot load the plug-in '" + path + "': " + dlerror());
        }
        auto entry = reinterpret_cast<RegisterFunction>(dlsym(library, kEntryName));
        if (entry == nullptr) {
            const char* error = dlerror();
            throw std::runtime_error("The plug-in '" + path + "' has no entry " + kEntryName +
                                     ": " + (error != nullptr ? error : "it is null"));
        }
        Register(entry);
    }
}

}  // namespace CommandHost
