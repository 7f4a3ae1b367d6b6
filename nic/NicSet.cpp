// `network nic set`: a NIC's link fields, written back as one record, then speed and duplex.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "nic/NicCommon.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::PnicInfo;
using HostCtl::Network::WakeOnMode;

constexpr char kPort[] = "port";
constexpr char kPhyAddress[] = "phy-address";
constexpr char kVirtualAddress[] = "virtual-address";
constexpr char kTransceiverType[] = "transceiver-type";
constexpr char kWakeOnLan[] = "wake-on-lan";
constexpr char kMessageLevel[] = "message-level";
constexpr char kSpeed[] = "speed";
constexpr char kDuplex[] = "duplex";
constexpr char kAuto[] = "auto";

// The port words in the order of their numbers.
constexpr Declare::Choice kPorts[] = {
    {"tp", "Select TP (Twisted Pair) as the device port"},
    {"aui", "Select AUI (Attachment Unit Interface) as the device port"},
    {"bnc", "Select BNC (Bayonet Neill-Concelman) as the device port"},
    {"mii", "Select MII (Media Independent Interface) as the device port"},
    {"fibre", "Select fibre as the device port"},
    {"da", "Select DA (Direct Attach copper) as the device port"},
    {"backplane", "Select Backplane as the device port"},
};
// The transceiver words in the order of their numbers.
constexpr Declare::Choice kTransceivers[] = {
    {"internal", "Set the transceiver type to internal"},
    {"external", "Set the transceiver type to external"},
};
constexpr Declare::Choice kDuplexes[] = {
    {"full", "Set this nic to full duplex"},
    {"half", "Set this nic to half duplex"},
};
constexpr long kSpeeds[] = {10,    100,   1000,  2500,  5000,  10000,  20000,  25000,
                            37500, 40000, 50000, 56000, 75000, 100000, 200000, 400000};
// The wake-on letters in the order of their modes.
constexpr char kWakeOnLetters[] = "pumbags";
constexpr char kFullDuplex[] = "full";

constexpr Declare::Parameter kParameters[] = {
    {kNicNameParameter, "n", Declare::Type::String, true, kNicNameDescription},
    {.name = kPort,
     .shortName = "p",
     .type = Declare::Type::String,
     .required = false,
     .description = "Selects device port. Available device ports are %FULLENUM%",
     .stringChoices = kPorts},
    {kPhyAddress, "P", Declare::Type::Int, false, "Set the PHY address of the device"},
    {kVirtualAddress, "V", Declare::Type::String, false, "Set the virtual address of the device"},
    {.name = kTransceiverType,
     .shortName = "t",
     .type = Declare::Type::String,
     .required = false,
     .description = "Selects transeiver type. Currently only internal and external can be "
                    "specified, in the future future types might be added. Available "
                    "transeiver types are %FULLENUM%",
     .stringChoices = kTransceivers},
    {.name = kWakeOnLan,
     .shortName = "w",
     .type = Declare::Type::String,
     .required = false,
     .description = "Sets Wake-on-LAN options. Not all devices support this. The argument to "
                    "this option is a string of characters specifying which options to "
                    "enable. \np Wake on phy activity\nu Wake on unicast messages\nm Wake on "
                    "multicast messages\nb Wake on broadcast messages\na Wake on ARP\ng Wake "
                    "on MagicPacket(tm)\ns Enable SecureOn(tm) password for MagicPacket(tm)\n",
     .regex = "[pumbagsd]+"},
    {kMessageLevel, "l", Declare::Type::Int, false,
     "Sets the driver message level. Meaning differ per driver."},
    {.name = kSpeed,
     .shortName = "S",
     .type = Declare::Type::Int,
     .required = false,
     .description = "The speed to set this NIC to, in Mbps. Acceptable values are: %ENUM%",
     .intChoices = kSpeeds},
    {.name = kDuplex,
     .shortName = "D",
     .type = Declare::Type::String,
     .required = false,
     .description = "The duplex to set this NIC to. Acceptable values are: %ENUM%",
     .stringChoices = kDuplexes},
    {kAuto, "a", Declare::Type::Flag, false,
     "Set the speed and duplexity settings to autonegotiate."},
};

constexpr char kSpeedWithoutDuplex[] =
    "The --speed and --duplex options must be specified together";
constexpr char kSpeedWithAuto[] =
    "The options --speed and --duplex cannot be specified with the --auto option.";
constexpr char kNoChange[] = "There is no change for nic ";
constexpr char kBadPhyAddress[] = "Invalid PHY address value.";
constexpr char kNoWakeOn[] = "Not Support wol.";
constexpr char kBadWakeOn[] = "Invalid wol value.";
constexpr char kNoMessageLevel[] = "Not Support msglvl.";

// The index of `word` in `choices`, or -1 when it is none of them.
template <std::size_t N>
long ChoiceIndex(const Declare::Choice (&choices)[N], const std::string& word) {
    for (std::size_t i = 0; i < N; ++i) {
        if (word == choices[i].value) {
            return static_cast<long>(i);
        }
    }
    return -1;
}

// Edits `info` by the parameters given, setting the flag of each field that changes; true
// when one did. Refusals are thrown as the host's failures are, before anything is written.
bool GetInfoFromParam(const Input& input, PnicInfo& info) {
    bool changed = false;
    if (input.HasParameter(kPort)) {
        const long port = ChoiceIndex(kPorts, input.GetParameter(kPort));
        if (port >= 0 && static_cast<std::uint32_t>(port) != info.port) {
            info.port = static_cast<std::uint32_t>(port);
            info.portChanged = 1;
            changed = true;
        }
    }
    if (input.HasParameter(kPhyAddress)) {
        const long address = input.GetParameterInt(kPhyAddress);
        if (address != -1) {
            if (address <= 0) {
                throw HostCtlException(kBadPhyAddress);
            }
            if (static_cast<std::uint32_t>(address) != info.phyAddress) {
                info.phyAddress = static_cast<std::uint32_t>(address);
                info.phyAddressChanged = 1;
                changed = true;
            }
        }
    }
    if (input.HasParameter(kVirtualAddress)) {
        const std::string& address = input.GetParameter(kVirtualAddress);
        if (address != info.virtualAddress) {
            info.virtualAddress = address;
            info.virtualAddressChanged = 1;
            changed = true;
        }
    }
    if (input.HasParameter(kTransceiverType)) {
        const long transceiver = ChoiceIndex(kTransceivers, input.GetParameter(kTransceiverType));
        if (transceiver >= 0 && static_cast<std::uint32_t>(transceiver) != info.transceiver) {
            info.transceiver = static_cast<std::uint32_t>(transceiver);
            info.transceiverChanged = 1;
            changed = true;
        }
    }
    if (input.HasParameter(kWakeOnLan)) {
        if (!info.supportsWakeOn) {
            throw HostCtlException(kNoWakeOn);
        }
        info.wakeOnChanged = 1;
        info.wakeOn.clear();
        for (char letter : input.GetParameter(kWakeOnLan)) {
            const char* found =
                std::char_traits<char>::find(kWakeOnLetters, sizeof(kWakeOnLetters) - 1, letter);
            if (found == nullptr) {
                throw HostCtlException(kBadWakeOn);
            }
            info.wakeOn.push_back(static_cast<WakeOnMode>(found - kWakeOnLetters));
        }
        changed = true;
    }
    if (input.HasParameter(kMessageLevel)) {
        if (!info.supportsMessageLevel) {
            throw HostCtlException(kNoMessageLevel);
        }
        const auto level = static_cast<std::uint32_t>(input.GetParameterInt(kMessageLevel));
        if (level != info.messageLevel) {
            info.messageLevel = level;
            info.messageLevelChanged = 1;
            changed = true;
        }
    }
    return changed;
}

}  // namespace

constexpr Declare::CommandShape kNicSetShape = {
    .description = "Set the general options for the specified ethernet device.",
    .parameters = kParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(NicSet, kNicSetShape) {
    const std::string& nicName = input->GetParameter(kNicNameParameter);
    const bool hasSpeed = input->HasParameter(kSpeed);
    const bool hasDuplex = input->HasParameter(kDuplex);
    const bool autoNegotiate = input->IsFlagSet(kAuto);
    if (hasSpeed != hasDuplex) {
        output->AddErrorMessage(kSpeedWithoutDuplex);
        return;
    }
    if (autoNegotiate && hasSpeed) {
        output->AddErrorMessage(kSpeedWithAuto);
        return;
    }
    const bool linkRequest = autoNegotiate || hasSpeed;
    try {
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        auto pnic = FindPnic(networkInfo, nicName, *output);
        if (!pnic) {
            return;
        }
        PnicInfo info{};
        pnic->GetPnicInfo(info);
        const bool changed = GetInfoFromParam(*input, info);
        if (changed) {
            pnic->SetPnicInfo(info);
        } else if (!linkRequest) {
            output->AddErrorMessage(kNoChange + nicName);
            return;
        }
        if (hasSpeed) {
            const auto speed = static_cast<unsigned>(input->GetParameterInt(kSpeed));
            pnic->SetSpeedDuplex(speed, input->GetParameter(kDuplex) == kFullDuplex ? 1 : 2);
        } else if (autoNegotiate) {
            pnic->SetSpeedDuplex(0, 0);
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
