#include "hostsim/values/LocalMac.h"

#include "hostctl/Misc.h"

namespace HostSim {

std::string LocalMacPrefix(MacKind kind) {
    return HostCtl::Misc::StrPrintf("%02x:%02x:", kLocalMacFirstByte, static_cast<unsigned>(kind));
}

std::string LocalMac(MacKind kind, std::uint32_t number) {
    return LocalMacPrefix(kind) + HostCtl::Misc::StrPrintf("%02x:%02x:%02x:%02x", number >> 24,
                                                           (number >> 16) & 0xff,
                                                           (number >> 8) & 0xff, number & 0xff);
}

}  // namespace HostSim
