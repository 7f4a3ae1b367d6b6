// autocli: loads the plug-ins and runs one command line.
#include <malloc.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "commandhost/cli/Batch.h"
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

// Maps the heap a command works in with one call. A process of one command touches about
// 200 KiB of heap, and touching each page for the first time is a page fault of its own; on a
// virtualised host forty of those cost more than the single madvise that maps them all. The
// heap is grown by a block of that size, which is freed again and kept at the top of the heap
// (neither trimmed nor given its own mapping), and the pages from it to the break are populated.
// A kernel without MADV_POPULATE_WRITE refuses the call, and the pages fault as they would.
void PrefaultHeap() {
    constexpr std::size_t kWorkingHeap = 192 * 1024;
    mallopt(M_MMAP_THRESHOLD, 64 * 1024 * 1024);
    mallopt(M_TRIM_THRESHOLD, 128 * 1024 * 1024);
    mallopt(M_TOP_PAD, 64 * 1024);
    void* block = std::malloc(kWorkingHeap);
    const auto first = reinterpret_cast<std::uintptr_t>(block) & ~std::uintptr_t{4095};
    const auto end = reinterpret_cast<std::uintptr_t>(sbrk(0));
    std::free(block);
    // Under an allocator of its own (a sanitizer's), the block is not on the break's heap.
    if (block && end > first && end - first <= 2 * kWorkingHeap) {
        madvise(reinterpret_cast<void*>(first), end - first, MADV_POPULATE_WRITE);
    }
}

}  // namespace

int main(int argc, char** argv) {
    PrefaultHeap();
    // A reader that went away is a write that fails, reported with status 4, not a silent death.
    std::signal(SIGPIPE, SIG_IGN);
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    FileDescriptorChannel out(STDOUT_FILENO);
    FileDescriptorChannel err(STDERR_FILENO);

    // The command tree lives as long as the process: taking it apart at exit would only free
    // memory, and costs a short command a tenth of its time. So does the command's result.
    static auto* const host = new CommandHost::CommandHost();
    host->KeepResultsUntilExit();
    const CommandHost::GlobalOptions options = CommandHost::ReadGlobalOptions(arguments);
    if (!options.batch.empty()) {
        CommandHost::StopBatchOnSignals();
    }
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
