// hostsim: makes, shows and replaces the simulated host's state.
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "hostctl/HostCtlException.h"
#include "hostsim/Control.h"
#include "hostsim/core/Json.h"
#include "hostsim/core/Profile.h"
#include "hostsim/core/Store.h"

namespace {

constexpr const char* kUsage = R"(Usage: hostsim COMMAND [OPTIONS]

Manages the state of the simulated host in its state directory: HOSTSIM_DIR, else
${XDG_STATE_HOME:-$HOME/.local/state}/hostsim. The first use of a directory without a host
makes the built-in default host there.

Commands:
  init [--profile=default|empty|FILE.json] [--scale=N]
                  Replaces the host with a profile (default: the built-in default host).
                  --scale=N makes N copies of the profile's inventory, renumbered
                  (hwnic0..hwnic8 become hwnic0..hwnic(9N-1)).
  export          Writes the whole host as a JSON profile to stdout.
  import FILE.json
                  Replaces the host with the profile in FILE.json.
  reset           Makes the host again from the profile and scale it was last made from.
  --help          Shows this text.
)";

// A command line that can't be carried out: exit status 2.
struct UsageError {
    std::string message;
};

// Standard output that can't be written (a full disk, a closed pipe): exit status 4, so that a
// script never takes a missing or cut export for the host.
struct OutputError {
    std::string reason;
};

// Writes `text` whole to standard output, with write(2): a stream would keep the reason of a
// failure from us.
void WriteOut(const std::string& text) {
    std::size_t written = 0;
    while (written < text.size()) {
        ssize_t result = write(STDOUT_FILENO, text.data() + written, text.size() - written);
        if (result < 0 && errno == EINTR) {
            continue;
        }
        if (result <= 0) {
            throw OutputError{result < 0 ? std::strerror(errno) : "nothing could be written"};
        }
        written += static_cast<std::size_t>(result);
    }
}

bool TakeOption(const std::string& argument, const char* name, std::string& value) {
    std::string prefix = std::string("--") + name + "=";
    if (argument.rfind(prefix, 0) != 0) {
        return false;
    }
    value = argument.substr(prefix.size());
    return true;
}

unsigned ParseScale(const std::string& text) {
    constexpr unsigned long kMostCopies = 10000;
    std::size_t used = 0;
    unsigned long copies = 0;
    try {
        copies = std::stoul(text, &used);
    } catch (const std::exception&) {
        used = 0;
    }
    if (used == 0 || used != text.size() || copies == 0 || copies > kMostCopies) {
        throw UsageError{"--scale takes a whole number from 1 to 10000, not \"" + text + "\""};
    }
    return static_cast<unsigned>(copies);
}

void Init(const std::vector<std::string>& options) {
    std::string profile = "default";
    unsigned copies = 1;
    for (const std::string& option : options) {
        std::string value;
        if (TakeOption(option, "profile", profile)) {
            continue;
        }
        if (TakeOption(option, "scale", value)) {
            copies = ParseScale(value);
            continue;
        }
        throw UsageError{"init takes --profile and --scale, not \"" + option + "\""};
    }
    if (profile == "default" || profile == "empty") {
        HostSim::ReplaceHost(HostSim::Store(), HostSim::BuiltinProfile(profile), copies, profile);
    } else {
        HostSim::ReplaceHost(HostSim::Store(), HostSim::ReadProfileFile(profile), copies, "");
    }
}

int Run(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        std::cerr << kUsage;
        return 2;
    }
    if (arguments[0] == "--help" || arguments[0] == "help") {
        WriteOut(kUsage);
        return 0;
    }
    const std::string& command = arguments[0];
    std::vector<std::string> rest(arguments.begin() + 1, arguments.end());
    if (command == "init") {
        Init(rest);
    } else if (command == "export" && rest.empty()) {
        // A store an older build wrote may hold text that is not UTF-8: replaced, never fatal.
        WriteOut(HostSim::ExportHost(HostSim::Store())
                     .dump(2, ' ', false, HostSim::Json::error_handler_t::replace) +
                 "\n");
    } else if (command == "import" && rest.size() == 1) {
        HostSim::ReplaceHost(HostSim::Store(), HostSim::ReadProfileFile(rest[0]), 1, "");
    } else if (command == "reset" && rest.empty()) {
        HostSim::ResetHost(HostSim::Store());
    } else {
        throw UsageError{"unknown command or wrong arguments: " + command +
                         " (see hostsim --help)"};
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    // A reader that went away is a write that fails, reported with status 4.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return Run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const UsageError& error) {
        std::cerr << "hostsim: " << error.message << "\n";
        return 2;
    } catch (const HostCtl::Lib::HostCtlException& error) {
        std::cerr << "hostsim: " << error.what() << "\n";
        return 1;
    } catch (const OutputError& error) {
        std::cerr << "hostsim: unable to write to standard output: " << error.reason << "\n";
        return 4;
    } catch (const std::exception& error) {
        std::cerr << "hostsim: " << error.what() << "\n";
        return 1;
    }
}
