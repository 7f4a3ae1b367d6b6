// autocli: loads the plug-ins and runs one command line.
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "commandhost/cli/CommandHost.h"

namespace {

// Writes straight to a file descriptor; the host hands it each text whole, so a result is
// one write. A full disk, a closed or full non-blocking pipe, or any other failure is reported
// back, never taken for success.
class FileDescriptorChannel : public CommandHost::OutputChannel {
public:
    explicit FileDescriptorChannel(int descriptor) : descriptor_(descriptor) {}

    std::string Write(std::string_view text) override {
        std::size_t written = 0;
        while (written < text.size()) {
            ssize_t result = ::write(descriptor_, text.data() + written, text.size() - written);
            if (result < 0 && errno == EINTR) {
                continue;
            }
            if (result < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
                pollfd ready{descriptor_, POLLOUT, 0};
                ::poll(&ready, 1, -1);
                continue;
            }
            if (result < 0) {
                return std::strerror(errno);
            }
            if (result == 0) {
                return "nothing could be written";
            }
            written += static_cast<std::size_t>(result);
        }
        return {};
    }

private:
    int descriptor_;
};

// The terminal's width when the output goes to one, else COLUMNS, else 80.
size_t TerminalWidth() {
    winsize size{};
    if (isatty(STDOUT_FILENO) && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
    if (const char* columns = std::getenv("COLUMNS")) {
        long value = std::strtol(columns, nullptr, 10);
        if (value > 0) {
            return static_cast<size_t>(value);
        }
    }
    return 80;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    FileDescriptorChannel out(STDOUT_FILENO);
    FileDescriptorChannel err(STDERR_FILENO);

    // The command tree lives as long as the process: taking it apart at exit would only free
    // memory, and costs a short command a tenth of its time.
    static auto* const host = new CommandHost::CommandHost();
    const CommandHost::GlobalOptions options = CommandHost::ReadGlobalOptions(arguments);
    if (options.error.empty() && !options.version) {
        try {
            host->LoadPlugins(CommandHost::PluginDirectory(options.pluginDirectory));
        } catch (const std::exception& e) {
            err.Write(std::string(e.what()) + "\n");
            return CommandHost::ExitException;
        }
    }
    host->SetTerminalWidth(TerminalWidth());
    return host->Main(arguments, out, err);
}
