// autocli-generate: makes the completion scripts and manual pages from the command tree of the
// plug-ins, at build time.
//   autocli-generate [OPTIONS] bash|zsh|man1 TEMPLATE OUTPUT
//   autocli-generate [OPTIONS] man7 NAMESPACE OUTPUT
// OPTIONS: --plugin-dir=DIR to load the plug-ins from, and for the manual pages the release
// they describe, --version=VERSION and --date=YYYY-MM-DD.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>

#include "commandhost/cli/CommandHost.h"
#include "commandhost/generate/Generators.h"

namespace {

constexpr const char* kUsage =
    "Usage: autocli-generate [--plugin-dir=DIR] [--version=VERSION] [--date=DATE] "
    "bash|zsh|man1 TEMPLATE OUTPUT\n"
    "       autocli-generate [--plugin-dir=DIR] [--version=VERSION] [--date=DATE] "
    "man7 NAMESPACE OUTPUT\n";

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    if (!file || !(text << file.rdbuf())) {
        throw std::runtime_error("cannot read " + path);
    }
    return text.str();
}

// Writes `text` to a new file beside `path` and renames it over `path`, so that a reader never
// sees half a file. Neither is opened through a symbolic link.
void ReplaceFile(const std::string& path, const std::string& text) {
    const std::string temporary = path + ".new";
    const int descriptor =
        open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (descriptor < 0) {
        throw std::runtime_error("cannot create " + temporary + ": " + std::strerror(errno));
    }
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t result = write(descriptor, text.data() + written, text.size() - written);
        if (result < 0 && errno == EINTR) {
            continue;
        }
        if (result <= 0) {
            const std::string reason = result < 0 ? std::strerror(errno) : "nothing written";
            close(descriptor);
            unlink(temporary.c_str());
            throw std::runtime_error("cannot write " + temporary + ": " + reason);
        }
        written += static_cast<size_t>(result);
    }
    if (close(descriptor) != 0 || rename(temporary.c_str(), path.c_str()) != 0) {
        const std::string reason = std::strerror(errno);
        unlink(temporary.c_str());
        throw std::runtime_error("cannot write " + path + ": " + reason);
    }
}

// Takes the value of a leading "--name=VALUE" from `arguments`; true when there was one.
bool TakeOption(std::vector<std::string>& arguments, std::string_view name, std::string& value) {
    const std::string prefix = "--" + std::string(name) + "=";
    if (arguments.empty() || !arguments.front().starts_with(prefix)) {
        return false;
    }
    value = arguments.front().substr(prefix.size());
    arguments.erase(arguments.begin());
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    std::string pluginDirectory;
    Generate::Release release;
    while (TakeOption(arguments, "plugin-dir", pluginDirectory) ||
           TakeOption(arguments, "version", release.version) ||
           TakeOption(arguments, "date", release.date)) {
    }
    const bool isManual = !arguments.empty() && arguments[0].starts_with("man");
    if (arguments.size() != 3 || (isManual && (release.version.empty() || release.date.empty()))) {
        std::cerr << kUsage;
        return 2;
    }
    const std::string& kind = arguments[0];
    const std::string& source = arguments[1];
    const std::string& output = arguments[2];
    try {
        CommandHost::CommandHost host;
        host.LoadPlugins(CommandHost::PluginDirectory(pluginDirectory));
        const std::vector<Generate::Node> tree = Generate::WalkTree(*host.GetRoot());
        std::string text;
        if (kind == "bash") {
            text = Generate::BashCompletion(tree, ReadFile(source));
        } else if (kind == "zsh") {
            text = Generate::ZshCompletion(tree, ReadFile(source));
        } else if (kind == "man1") {
            text = Generate::ProgramManual(tree, ReadFile(source), release);
        } else if (kind == "man7") {
            text = Generate::NamespaceManual(tree, source, release);
        } else {
            std::cerr << "autocli-generate: unknown kind '" << kind << "'.\n" << kUsage;
            return 2;
        }
        ReplaceFile(output, text);
    } catch (const std::exception& e) {
        std::cerr << "autocli-generate: " << output << ": " << e.what() << "\n";
        return 1;
    }
    return 0;
}
