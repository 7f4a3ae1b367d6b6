// autocli: loads the plug-ins and runs one command line.
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ostream>
#include <streambuf>

#include "commandhost/cli/CommandHost.h"

namespace {

// Writes straight to a file descriptor; the host hands it each text whole, so a result is
// one write.
class FileDescriptorBuffer : public std::streambuf {
public:
    explicit FileDescriptorBuffer(int descriptor) : descriptor_(descriptor) {}

protected:
    std::streamsize xsputn(const char* text, std::streamsize count) override {
        std::streamsize written = 0;
        while (written < count) {
            ssize_t result =
                ::write(descriptor_, text + written, static_cast<size_t>(count - written));
            if (result < 0 && errno == EINTR) {
                continue;
            }
            if (result <= 0) {
                break;
            }
            written += result;
        }
        return written;
    }

    int_type overflow(int_type character) override {
        if (traits_type::eq_int_type(character, traits_type::eof())) {
            return traits_type::not_eof(character);
        }
        char c = traits_type::to_char_type(character);
        return xsputn(&c, 1) == 1 ? character : traits_type::eof();
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
    FileDescriptorBuffer outBuffer(STDOUT_FILENO);
    FileDescriptorBuffer errBuffer(STDERR_FILENO);
    std::ostream out(&outBuffer);
    std::ostream err(&errBuffer);

    // The command tree lives as long as the process: taking it apart at exit would only free
    // memory, and costs a short command a tenth of its time.
    static auto* const host = new CommandHost::CommandHost();
    const CommandHost::GlobalOptions options = CommandHost::ReadGlobalOptions(arguments);
    if (options.error.empty() && !options.version) {
        try {
            host->LoadPlugins(CommandHost::PluginDirectory(options.pluginDirectory));
        } catch (const std::exception& e) {
            err << e.what() << '\n';
            return CommandHost::ExitException;
        }
    }
    host->SetTerminalWidth(TerminalWidth());
    return host->Main(arguments, out, err);
}
