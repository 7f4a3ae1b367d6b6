// Programs of the host are never run here: the command line is recorded in exec.log of the
// state directory and answered as the host would. A fault entry for "Util::KelmCtl_Exec" (on
// the command line as object) makes the program fail with status 1.
#include "kelmctl/Exec.h"

#include <ctime>
#include <filesystem>
#include <fstream>

#include "hostctl/HostCtlException.h"
#include "hostctl/Misc.h"
#include "hostsim/Control.h"
#include "hostsim/core/Operation.h"

namespace KelmCtl::Util {

namespace {

constexpr char kExecLogName[] = "exec.log";

void Record(const std::string& commandLine, int status) {
    const std::filesystem::path directory = HostSim::StateDirectory();
    std::filesystem::create_directories(directory);
    std::ofstream log(directory / kExecLogName, std::ios::app);
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    char time[32];
    std::strftime(time, sizeof time, "%FT%TZ", &utc);
    log << time << " status " << status << ": " << commandLine << '\n';
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
