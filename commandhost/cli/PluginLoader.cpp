// Finding the plug-in directory and loading every plug-in in it.
#include <dirent.h>
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "commandhost/cli/CommandHost.h"

namespace CommandHost {

namespace {

constexpr const char* kEntryName = "AutoCli_RegisterNamespaces";

bool IsDirectory(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// The folder that holds the folder of the executable: the build's root, or an install's prefix.
std::string ExecutableRoot() {
    char buffer[4096];
    ssize_t length = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    std::string path(buffer, static_cast<size_t>(std::max<ssize_t>(length, 0)));
    for (int level = 0; level < 2; ++level) {
        size_t slash = path.rfind('/');
        if (slash == std::string::npos) {
            return "..";
        }
        path.resize(slash);
    }
    return path.empty() ? "/" : path;
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
    const std::string root = ExecutableRoot();
    std::string built = root + "/plugins";
    if (IsDirectory(built)) {
        return built;
    }
    std::string installed = root + "/lib/autocli/plugins";
    return IsDirectory(installed) ? installed : built;
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
