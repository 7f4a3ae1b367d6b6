// `network ip interface add` and `network ip interface remove`: creating a Kelm interface on a
// port group or DVPort in a netstack instance, and removing one by name or connection point.
#include <ctime>

#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/MacAddress.h"
#include "hostctl/NetworkInfo.h"
#include "ip/InterfaceSelection.h"
#include "kelmctl/DVPortImpl.h"
#include "kelmctl/Exec.h"
#include "kelmctl/KelmNicInfoImpl.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "kelmctl/PortGroupImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Type;
using HostCtl::Lib::HostCtlException;
using HostCtl::Network::ConnectionPoint;
using HostCtl::Network::KelmNicTagType;

constexpr char kPortgroupParameter[] = "portgroup-name";
constexpr char kDvsNameParameter[] = "dvs-name";
constexpr char kDvportIdParameter[] = "dvport-id";
constexpr char kMtuParameter[] = "mtu";
constexpr char kRxQueueParameter[] = "num-rxqueue";
constexpr char kMacParameter[] = "mac-address";

constexpr char kInterfaceNamePattern[] = "kelm([0-9]|[1-9][0-9]|1[0-9][0-9]|2[0-4][0-9]|25[0-5])";
constexpr char kDvsNameDescription[] =
    "DVSwitch name of the connection point. This requires --dvport-id to be given in the same "
    "command";
constexpr char kDvportIdDescription[] =
    "DVPort ID of the connection point. This requires --dvs-name to be given in the same command";

constexpr char kOnlyOneConnectionPoint[] =
    "Only one connection point can be specified, vswitch port group or DVPort.";
constexpr char kNeedConnectionPoint[] =
    "A connection point of either vswitch port group name or dvs-name/dvport-id should be "
    "specified. If connection point is DVPort, --dvs-name and --dvport-id must be specified at "
    "the same time.";
constexpr char kInvalidMac[] = "Invalid unicast MAC address specified.";
constexpr char kInvalidConnectionPoint[] = "Invalid vswitch port group or DVPort parameters.";
constexpr char kDaemonFailed[] =
    "Unable to start the TARN daemon. Take a look at /var/log/tarnd.log for more information.";
constexpr char kHowToRemove[] =
    "Please correctly and uniquely specify a way to remove it. A Kelm network interface can be "
    "uniquely specified by --interface-name or --portgroup-name or --dvs-name/--dvport-id. i.e. "
    "Providing its name or its connection point are two ways to uniquely specify a Kelm network "
    "interface.";
constexpr char kNoInterface[] = "Unable to find Kelm network interface with the name ";

// The copy daemon of the provisioning netstack, restarted when an interface joins it.
constexpr char kDaemonScript[] = "/etc/init.d/tarnd ";
constexpr char kDaemonRestart[] = " restart";
constexpr int kDaemonMemoryMb = 24;

// The dedicated netstack instances, each with the tag of the service it carries, in the order
// they are tested.
struct DedicatedNetstack {
    const char* key;
    KelmNicTagType tag;
    bool restartsDaemon;
};
constexpr DedicatedNetstack kDedicatedNetstacks[] = {
    {"glidex", 2, false},
    {"mirrorlock", 3, false},
    {"OrbiqProvisioning", 6, true},
};

constexpr Declare::Parameter kAddParameters[] = {
    {kNetstackParameter, "N", Type::String, false, kNetstackDescription},
    {kPortgroupParameter, "p", Type::String, false,
     "The name of the vswitch port group to add this Kelm network interface to."},
    {kDvsNameParameter, "s", Type::String, false, kDvsNameDescription},
    {kDvportIdParameter, "P", Type::String, false, kDvportIdDescription},
    {.name = kMtuParameter,
     .shortName = "m",
     .type = Type::Int,
     .required = false,
     .description = "Set the MTU setting for a given Kelm network interface on creation",
     .range = true,
     .low = HostCtl::Network::KelmNic::MIN_MTU,
     .high = HostCtl::Network::KelmNic::MAX_MTU},
    {.name = kRxQueueParameter,
     .shortName = "R",
     .type = Type::Int,
     .required = false,
     .description =
         "Set the number of RX dispatch queues for a given Kelm network interface on creation",
     .range = true,
     .low = 1,
     .high = 1000},
    {kMacParameter, "M", Type::String, false,
     "Set the MAC address for the newly created Kelm network interface."},
    {.name = kInterfaceNameParameter,
     .shortName = "i",
     .type = Type::String,
     .required = false,
     .description = "The name of the Kelm network interface to create. This name must be in the "
                    "form kelmX, where X is a number 0-255",
     .regex = kInterfaceNamePattern},
};

constexpr Declare::Parameter kRemoveParameters[] = {
    {kNetstackParameter, "N", Type::String, false, kNetstackDescription},
    {kPortgroupParameter, "p", Type::String, false,
     "The name of the vswitch port group to delete this Kelm network interface from."},
    {kDvsNameParameter, "s", Type::String, false, kDvsNameDescription},
    {kDvportIdParameter, "P", Type::String, false, kDvportIdDescription},
    {.name = kInterfaceNameParameter,
     .shortName = "i",
     .type = Type::String,
     .required = false,
     .description = "The name of the Kelm network interface to remove. This name must be in the "
                    "form kelmX, where X is a number 0-255",
     .regex = kInterfaceNamePattern},
};

enum class ConnectionKind { PortGroup, DVPort };

// Which connection point the parameters mean, by their presence; nothing after the message.
std::optional<ConnectionKind> ChooseConnectionPoint(const Input& input, Output& output) {
    const bool portGroup = input.HasParameter(kPortgroupParameter);
    const bool dvsName = input.HasParameter(kDvsNameParameter);
    const bool dvportId = input.HasParameter(kDvportIdParameter);
    if (dvsName && dvportId) {
        if (portGroup) {
            output.AddErrorMessage(kOnlyOneConnectionPoint);
            return std::nullopt;
        }
        return ConnectionKind::DVPort;
    }
    if (portGroup && !dvsName && !dvportId) {
        return ConnectionKind::PortGroup;
    }
    output.AddErrorMessage(kNeedConnectionPoint);
    return std::nullopt;
}

// The DVPort that `dvs-name` and `dvport-id` name, with a connection id: the port's own, or
// the time now when it has none.
std::unique_ptr<ConnectionPoint> MakeDVPort(const Input& input) {
    const std::string& dvsName = input.GetParameter(kDvsNameParameter);
    try {
        HostCtl::Network::DVPortParam param;
        param.dvsId = HostCtl::Network::NetworkFactory::GetDVSwitchByName(dvsName)->GetDvsId();
        param.dvPortId = input.GetParameter(kDvportIdParameter);
        KelmCtl::Network::DVPortImpl probe(param);
        if (probe.IsValid()) {
            if (probe.GetConnectionId() == 0) {
                probe.SetConnectionId(static_cast<std::uint32_t>(std::time(nullptr)));
            }
            param.connectionId = probe.GetConnectionId();
        }
        return std::make_unique<KelmCtl::Network::DVPortImpl>(param);
    } catch (const HostCtlException& e) {
        throw HostCtlException("Unable to retrieve DVS info by specified DVS name " + dvsName +
                               ". Error was: " + e.what());
    }
}

std::unique_ptr<ConnectionPoint> MakePortGroup(const Input& input) {
    const std::string& name = input.GetParameter(kPortgroupParameter);
    try {
        return std::make_unique<KelmCtl::Network::PortGroupImpl>(name);
    } catch (const HostCtlException& e) {
        throw HostCtlException("Invalid vswitch port group name " + name +
                               ". Error was: " + e.what());
    }
}

// The connection point of the parameters; throws HostCtlException with the message of the
// stage that failed.
std::unique_ptr<ConnectionPoint> MakeConnectionPoint(const Input& input, ConnectionKind kind) {
    return kind == ConnectionKind::PortGroup ? MakePortGroup(input) : MakeDVPort(input);
}

// Puts the tag on the new interface and takes it off the interfaces of the default netstack.
void MoveTag(HostCtl::Network::KelmNic& nic, KelmNicTagType tag) {
    KelmCtl::Network::KelmNicInfoImpl nics;
    nic.AddTag(tag, false);
    for (const auto& bearer : nics.GetKelmNicsByTag(tag)) {
        if (bearer && bearer->GetNetstackInstanceKey() == kDefaultNetstack) {
            bearer->RemoveTag(tag);
        }
    }
}

// Whether the netstack instance of that key exists; the first step of `add`, outside its
// handlers.
bool NetstackExists(const std::string& key) {
    KelmCtl::Network::NetworkInfoImpl networkInfo;
    for (const auto& instance : networkInfo.ListNetstackInstances()) {
        if (instance && instance->GetKey() == key) {
            return true;
        }
    }
    return false;
}

}  // namespace

constexpr Declare::CommandShape kIpInterfaceAddShape = {
    .description = "Add a new Kelm network interface.",
    .parameters = kAddParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(IpInterfaceAdd, kIpInterfaceAddShape) {
    const bool hasNetstack = input->HasParameter(kNetstackParameter);
    const std::string& netstack = input->GetParameter(kNetstackParameter);
    if (hasNetstack && !NetstackExists(netstack)) {
        output->AddErrorMessage("The netstack " + netstack + " does not exist.");
        return;
    }
    const auto kind = ChooseConnectionPoint(*input, *output);
    if (!kind) {
        return;
    }
    HostCtl::Network::MacAddress mac;
    if (input->HasParameter(kMacParameter)) {
        const std::string& text = input->GetParameter(kMacParameter);
        if (!HostCtl::Network::MacAddress::IsValid(text)) {
            output->AddErrorMessage(kInvalidMac);
            return;
        }
        mac = HostCtl::Network::MacAddress(text);
    }
    const auto mtu = static_cast<unsigned>(
        input->HasParameter(kMtuParameter) ? input->GetParameterInt(kMtuParameter) : 0);
    const auto rxQueues = static_cast<unsigned>(
        input->HasParameter(kRxQueueParameter) ? input->GetParameterInt(kRxQueueParameter) : 0);
    const std::string& name = input->GetParameter(kInterfaceNameParameter);
    std::unique_ptr<ConnectionPoint> point;
    try {
        point = MakeConnectionPoint(*input, *kind);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
        return;
    }
    if (!point->IsValid()) {
        output->AddErrorMessage(kInvalidConnectionPoint);
        return;
    }
    try {
        KelmCtl::Network::KelmNicInfoImpl nics;
        HostCtl::Network::IpConfig config;
        const std::string key = hasNetstack ? netstack : std::string(kDefaultNetstack);
        auto nic = nics.AddKelmNic(*point, key, config, mac, 0, mtu, rxQueues, name, false);
        for (const DedicatedNetstack& dedicated : kDedicatedNetstacks) {
            if (key != dedicated.key) {
                continue;
            }
            MoveTag(*nic, dedicated.tag);
            if (dedicated.restartsDaemon) {
                const std::string line = kDaemonScript +
                                         KelmCtl::Util::MakeChildRpKelmOption(kDaemonMemoryMb) +
                                         kDaemonRestart;
                if (KelmCtl::Util::KelmCtl_Exec(line, false, true, false) != 0) {
                    output->AddErrorMessage(kDaemonFailed);
                }
            }
            break;
        }
        config.SetUseIpv6RouterAdvertised(true);
        nic->SetIpConfig(config);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(std::string("Unable to add Kelm network interface. Error was : ") +
                                e.what());
    }
}

constexpr Declare::CommandShape kIpInterfaceRemoveShape = {
    .description =
        "Remove a Kelm network interface from the Ostrel host. A Kelm network interface can be "
        "uniquely specified by --interface-name or --portgroup-name or --dvs-name/--dvport-id. "
        "i.e. Providing its name or its connection point are two ways to uniquely specify a Kelm "
        "network interface.",
    .parameters = kRemoveParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(IpInterfaceRemove, kIpInterfaceRemoveShape) {
    const bool byName = input->HasParameter(kInterfaceNameParameter);
    const bool portGroup = input->HasParameter(kPortgroupParameter);
    const bool dvsName = input->HasParameter(kDvsNameParameter);
    const bool dvportId = input->HasParameter(kDvportIdParameter);
    if ((byName && (portGroup || dvsName)) || (!portGroup && !dvsName && byName == dvportId)) {
        output->AddErrorMessage(kHowToRemove);
        return;
    }
    if (byName) {
        const std::string& name = input->GetParameter(kInterfaceNameParameter);
        try {
            KelmCtl::Network::KelmNicInfoImpl nics;
            if (auto nic = WalkToInterface(nics, name)) {
                nic->Remove();
                output->SetRootObject(MetaBool::New(true));
            } else {
                output->AddErrorMessage(kNoInterface + name);
                output->SetRootObject(MetaBool::New(false));
            }
        } catch (const HostCtlException& e) {
            output->AddErrorMessage(
                std::string("Unable to remove Kelm network interface. Error was : ") + e.what());
        }
        return;
    }
    const auto kind = ChooseConnectionPoint(*input, *output);
    if (!kind) {
        return;
    }
    std::unique_ptr<ConnectionPoint> point;
    try {
        point = MakeConnectionPoint(*input, *kind);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
        return;
    }
    if (!point->IsValid()) {
        output->AddErrorMessage(kInvalidConnectionPoint);
        return;
    }
    try {
        KelmCtl::Network::KelmNicInfoImpl nics;
        const std::string& netstack = input->GetParameter(kNetstackParameter);
        nics.RemoveKelmNic(*point, netstack.empty() ? std::string(kDefaultNetstack) : netstack);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(
            std::string("Unable to remove Kelm network interface. Error was : ") + e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
