// Programs of the host are never run here: the command line is recorded in exec.log of the
// state directory and answered as the host would. A fault entry for "Util::KelmCtl_Exec" (on
// the command line as object) makes the program fail with status 1.
#include "kelmctl/Exec.h"

#include <fcntl.h>
#include <unistd.h>

#include <ctime>

#include "hostctl/HostCtlException.h"
#include "hostctl/Misc.h"
#include "hostsim/Control.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/StateFiles.h"

namespace KelmCtl::Util {

namespace {

constexpr char kExecLogName[] = "exec.log";

// Appends one line to exec.log; a line that can't be written is left out, as a log of a
// program's runs that the host keeps for itself.
void Record(const std::string& commandLine, int status) {
    const std::string directory = HostSim::StateDirectory();
    HostSim::MakePrivateDirectory(directory);
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    char time[32];
    std::strftime(time, sizeof time, "%FT%TZ", &utc);
    const std::string line =
        std::string(time) + " status " + std::to_string(status) + ": " + commandLine + "\n";
    const int log =
        HostSim::OpenStateFile(directory + "/" + kExecLogName, O_WRONLY | O_APPEND | O_CREAT);
    if (log >= 0) {
        static_cast<void>(write(log, line.data(), line.size()));
        close(log);
    }
}

}  // namespace

int KelmCtl_Exec(const std::string& commandLine, bool, bool, bool) {
    int status = 0;
    try {
        HostSim::PassOperation("Util::KelmCtl_Exec", commandLine);
    } catch (const HostCtl::Lib::HostCtlException&) {
        status = 1;
    }
    Record(commandLine, status);
    return status;
}

std::string MakeChildRpKelmOption(int memoryMb) {
    return HostCtl::Misc::StrPrintf("++group=host/kelm/child,mem=%d", memoryMb);
}

}  // namespace KelmCtl::Util
