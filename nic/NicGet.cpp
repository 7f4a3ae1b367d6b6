// `network nic get`: the link configuration of one NIC, with the host's numbers in words.
#include <iterator>

#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/Misc.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "nic/NicCommon.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using HostCtl::Network::PnicDriverInfo;
using HostCtl::Network::PnicInfo;
using HostCtl::Network::PnicPauseParams;

constexpr char kName[] = "Name";
constexpr char kSupportedPorts[] = "Supported Ports";
constexpr char kSupportsAutoNegotiation[] = "Supports Auto Negotiation";
constexpr char kAdvertisedLinkModes[] = "Advertised Link Modes";
constexpr char kAdvertisedAutoNegotiation[] = "Advertised Auto Negotiation";
constexpr char kCableType[] = "Cable Type";
constexpr char kPhyAddress[] = "PHY Address";
constexpr char kVirtualAddress[] = "Virtual Address";
constexpr char kTransceiver[] = "Transceiver";
constexpr char kAutoNegotiation[] = "Auto Negotiation";
constexpr char kSupportsWakeon[] = "Supports Wakeon";
constexpr char kWakeon[] = "Wakeon";
constexpr char kCurrentMessageLevel[] = "Current Message Level";
constexpr char kLinkDetected[] = "Link Detected";
constexpr char kSupportsPause[] = "Supports Pause";
constexpr char kPauseAutonegotiate[] = "Pause Autonegotiate";
constexpr char kPauseRx[] = "Pause RX";
constexpr char kPauseTx[] = "Pause TX";
constexpr char kLinkStatus[] = "Link Status";
constexpr char kDriverInfo[] = "Driver Info";
constexpr char kBackingDpuId[] = "Backing DPU Id";

constexpr char kDriver[] = "Driver";
constexpr char kVersion[] = "Version";
constexpr char kFirmwareVersion[] = "Firmware Version";
constexpr char kBusInfo[] = "Bus Info";

constexpr Field kDriverInfoFields[] = {
    {kDriver, FieldType::String},
    {kVersion, FieldType::String},
    {kFirmwareVersion, FieldType::String},
    {kBusInfo, FieldType::String},
};
constexpr Declare::StructShape kDriverInfoShape = {"NICDriverInfo", kDriverInfoFields};

constexpr Field kNicInfoFields[] = {
    {kName, FieldType::String},
    {kSupportedPorts, FieldType::StringList},
    {kSupportsAutoNegotiation, FieldType::Bool},
    {kAdvertisedLinkModes, FieldType::StringList},
    {kAdvertisedAutoNegotiation, FieldType::Bool},
    {kCableType, FieldType::String},
    {kPhyAddress, FieldType::Int},
    {kVirtualAddress, FieldType::String},
    {kTransceiver, FieldType::String},
    {kAutoNegotiation, FieldType::Bool},
    {kSupportsWakeon, FieldType::Bool},
    {kWakeon, FieldType::StringList},
    {kCurrentMessageLevel, FieldType::Int},
    {kLinkDetected, FieldType::Bool},
    {kSupportsPause, FieldType::Bool},
    {kPauseAutonegotiate, FieldType::Bool},
    {kPauseRx, FieldType::Bool},
    {kPauseTx, FieldType::Bool},
    {kLinkStatus, FieldType::String},
    {kDriverInfo, FieldType::Struct, 0, &kDriverInfoShape},
    {kBackingDpuId, FieldType::String},
};
constexpr Declare::StructShape kNicInfoShape = {"NICInfo", kNicInfoFields};

constexpr Declare::Parameter kParameters[] = {
    {kNicNameParameter, "n", Declare::Type::String, true, kNicNameDescription},
};

// Port numbers as "Supported Ports" and "Cable Type" show them.
constexpr const char* kPortWords[] = {"TP", "AUI", "BNC", "MII", "FIBRE", "DA", "BACKPLANE"};
constexpr const char* kCableWords[] = {"Twisted Pair", "AUI", "BNC",      "MII",
                                       "FIBRE",        "DA",  "BACKPLANE"};
constexpr const char* kLinkModeDuplexWords[] = {"Auto", "Full", "Half"};
constexpr const char* kLinkModeWords[] = {
    "None",    "Unknown", "BaseT",     "BaseX",    "BaseKX",     "BaseSX",         "BaseLX",
    "BaseKR",  "BaseLR",  "BaseSR",    "BaseER",   "BaseTwinax", "BaseTwinaxLong", "BaseLRM",
    "BaseCR1", "BaseKR2", "BaseMLD2",  "BaseKR4",  "BaseKX4",    "BaseCR4",        "BaseSR4",
    "BaseLR4", "BaseR4",  "BaseSGMII", "BaseSFI",  "XLPPI",      "BaseCX-SGMII",   "BaseDR4",
    "BaseFR4", "AUI-8",   "AUI-4",     "BaseSR16", "BaseFR8",    "BaseLR8",        "AUI-16",
    "BaseER4", "BaseER8", "BaseCX4",   "BaseCR2",
};
constexpr const char* kWakeOnWords[] = {
    "PHY Activity",
    "Unicast Messagess",
    "Multicast Messages",
    "Broadcast Messages",
    "ARP",
    "MagicPacket(tm)",
    "Enable SecureOn(tm) Password for                            MagicPacket(tm)",
    "Unsupported",
    "Disabled",
};
constexpr const char* kTransceiverWords[] = {"internal", "external"};

// The word at `index` of `words`, or `fallback` when the index lies outside the table.
template <std::size_t N>
const char* WordAt(const char* const (&words)[N], std::uint64_t index, const char* fallback) {
    return index < N ? words[index] : fallback;
}

std::string LinkModeText(const HostCtl::Network::PnicLinkMode& mode) {
    if (mode.speed == 0) {
        return "Auto";
    }
    return HostCtl::Misc::StrPrintf("%u%s/%s", mode.speed,
                                    WordAt(kLinkModeWords, mode.media, "Unknown"),
                                    WordAt(kLinkModeDuplexWords, mode.duplex, ""));
}

std::shared_ptr<MetaStruct> GetDriverInfoStructure() {
    return Declare::MakeStruct(Declare::PackStruct<kDriverInfoShape>());
}

}  // namespace

constexpr Declare::CommandShape kNicGetShape = {
    .description = "Get the generic configuration of a network device",
    .formatter = "simple",
    .parameters = kParameters,
    .root = Declare::Root::Struct,
    .structure = &kNicInfoShape,
};

NETWORK_COMMAND(NicGet, kNicGetShape) {
    try {
        auto result = GetOutputStructure();
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        const std::string& nicName = input->GetParameter(kNicNameParameter);
        auto pnic = FindPnic(networkInfo, nicName, *output);
        if (!pnic) {
            return;
        }
        PnicInfo info{};
        pnic->GetPnicInfo(info);
        PnicPauseParams pause{};
        pnic->GetPauseParams(pause);
        PnicDriverInfo driverInfo;
        pnic->GetPnicDriverInfo(driverInfo);

        result->SetField(kName, nicName);
        auto ports = MetaList::New(CppTools::MetaObj::MetaTypeString);
        for (std::uint32_t port : info.supportedPorts) {
            ports->Add(WordAt(kPortWords, port, "UNKNOWN"));
        }
        result->SetField(kSupportedPorts, ports);
        result->SetField(kSupportsAutoNegotiation, info.supportsAutoNegotiation != 0);
        auto modes = MetaList::New(CppTools::MetaObj::MetaTypeString);
        for (const auto& mode : info.advertisedLinkModes) {
            modes->Add(LinkModeText(mode));
        }
        result->SetField(kAdvertisedLinkModes, modes);
        result->SetField(kAdvertisedAutoNegotiation, info.advertisedAutoNegotiation != 0);
        result->SetField(kCableType, WordAt(kCableWords, info.port, ""));
        result->SetField(kPhyAddress, static_cast<long>(info.phyAddress));
        result->SetField(kVirtualAddress, info.virtualAddress);
        result->SetField(kTransceiver, WordAt(kTransceiverWords, info.transceiver, ""));
        result->SetField(kAutoNegotiation, info.autoNegotiation != 0);
        auto wakeOn = MetaList::New(CppTools::MetaObj::MetaTypeString);
        if (info.supportsWakeOn != 0) {
            for (auto mode : info.wakeOn) {
                wakeOn->Add(WordAt(kWakeOnWords, mode, "None"));
            }
        } else {
            wakeOn->Add("None");
        }
        result->SetField(kWakeon, wakeOn);
        result->SetField(kSupportsWakeon, info.supportsWakeOn != 0);
        result->SetField(kLinkStatus, info.linkStatus);
        result->SetField(kCurrentMessageLevel, info.supportsMessageLevel != 0
                                                   ? static_cast<long>(info.messageLevel)
                                                   : -1L);
        result->SetField(kLinkDetected, pnic->IsLinkUp());
        result->SetField(kSupportsPause, pause.supported != 0);
        if (pause.supported != 0) {
            result->SetField(kPauseAutonegotiate, pause.autoNegotiation != 0);
            result->SetField(kPauseRx, pause.rxPause != 0);
            result->SetField(kPauseTx, pause.txPause != 0);
        }
        auto driver = GetDriverInfoStructure();
        driver->SetField(kDriver, driverInfo.driver);
        driver->SetField(kVersion, driverInfo.version);
        driver->SetField(kFirmwareVersion, driverInfo.firmwareVersion);
        driver->SetField(kBusInfo, driverInfo.busInfo);
        result->SetField(kDriverInfo, driver);
        result->SetField(kBackingDpuId, BackingDpuId(nicName));
        output->SetRootObject(result);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
