// `network ip interface tag add|remove|get`: the service tags of Kelm interfaces, and the tie
// of the dedicated tags to their netstack instances.
#include <algorithm>

#include "audit/FeatureList.h"
#include "frame/Declaration.h"
#include "hostctl/Host.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"
#include "ip/InterfaceSelection.h"
#include "kelmctl/KelmNicInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using Declare::Type;
using HostCtl::Network::KelmNicTagType;

constexpr char kTagnameParameter[] = "tagname";
constexpr char kTags[] = "Tags";

constexpr char kAddDescription[] =
    "Adds a tag on a given Kelm network interface. Supported tags are: ";
constexpr char kInvalidTag[] = "Invalid tag name ";
constexpr char kSupportedTags[] = "Supported tags are: ";
constexpr char kNoKelmnic[] = "Unable to find kelmnic with name ";
constexpr char kNoInterface[] = "Unable to find an interface with name ";
constexpr char kNetstackMismatch[] = "netstack mismatch for tag";
constexpr char kPredefinedNetstack[] = "Can not remove tag from pre-defined netstack.";

constexpr KelmNicTagType kUnknownTag = 14;
constexpr KelmNicTagType kLastTag = 13;
constexpr char kTagSeparator[] = ", ";

// The three tags that a dedicated netstack instance serves, in the order they are tested.
struct DedicatedTag {
    KelmNicTagType tag;
    const char* netstack;
};
constexpr DedicatedTag kDedicatedTags[] = {
    {2, "glidex"},
    {3, "mirrorlock"},
    {6, "OrbiqProvisioning"},
};

constexpr Field kFields[] = {
    {kTags, FieldType::StringList, 1},
};
constexpr Declare::StructShape kInterfaceTag = {"InterfaceTag", kFields, "IntefaceTag"};

constexpr Declare::OutputParameter kGetOutput[] = {
    {"header:InterfaceTag", "<NONE>"},
};

constexpr char kTagnameDescription[] = "Tag name to assign to the interface";

constexpr Declare::Parameter kAddParameters[] = {
    {kInterfaceNameParameter, "i", Type::String, true,
     "The name of the Kelm network interface on which tags should be set. This name must be an "
     "interface listed in the interface list command."},
    {kTagnameParameter, "t", Type::String, true, kTagnameDescription},
};

constexpr Declare::Parameter kRemoveParameters[] = {
    {kInterfaceNameParameter, "i", Type::String, true,
     "The name of the Kelm network interface from which tags should be removed. This name must "
     "be an interface listed  in the interface list command."},
    {kTagnameParameter, "t", Type::String, true, kTagnameDescription},
};

constexpr Declare::Parameter kGetParameters[] = {
    {kInterfaceNameParameter, "i", Type::String, true, "Name of kelmnic whose tags are to be read"},
};

// The names of the tags 1 to `last`, each followed by ", ", with the last two characters cut.
std::string SupportedTags(KelmNicTagType last) {
    std::string list;
    for (KelmNicTagType tag = 1; tag <= last; ++tag) {
        list += KelmCtl::Network::KelmNicTagIdToName(tag);
        list += kTagSeparator;
    }
    list.resize(list.size() - 2);
    return list;
}

// The tag of `name`, or nothing after the two messages of an unknown name.
std::optional<KelmNicTagType> ReadTag(const std::string& name, Output& output) {
    const KelmNicTagType tag = KelmCtl::Network::KelmNicTagNameToId(name);
    if (tag == kUnknownTag) {
        output.AddErrorMessage(kInvalidTag + name);
        output.AddErrorMessage(kSupportedTags + SupportedTags(kLastTag));
        return std::nullopt;
    }
    return tag;
}

// Whether the tag may go on an interface of `netstack`: a dedicated netstack takes its own tag
// only.
bool FitsNetstack(KelmNicTagType tag, const std::string& netstack) {
    for (const DedicatedTag& dedicated : kDedicatedTags) {
        if (netstack == dedicated.netstack) {
            return tag == dedicated.tag;
        }
    }
    return true;
}

// The description with the tags offered, the last only while the host's feature switch for it
// is on.
std::string DescribeTagAdd() {
    const bool lastTagOffered = *FeatureList.kelmNicDpuTransportTag != 0;
    return kAddDescription + SupportedTags(lastTagOffered ? kLastTag : kLastTag - 1);
}

}  // namespace

constexpr Declare::CommandShape kIpInterfaceTagAddShape = {
    .description = kAddDescription,
    .parameters = kAddParameters,
    .root = Declare::Root::Bool,
    .describe = DescribeTagAdd,
};

NETWORK_COMMAND(IpInterfaceTagAdd, kIpInterfaceTagAddShape) {
    const std::string& name = input->GetParameter(kInterfaceNameParameter);
    const std::string& tagName = input->GetParameter(kTagnameParameter);
    try {
        KelmCtl::Network::KelmNicInfoImpl nics;
        const auto tag = ReadTag(tagName, *output);
        if (!tag) {
            return;
        }
        auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
        for (const DedicatedTag& dedicated : kDedicatedTags) {
            if (dedicated.tag != *tag || networkInfo->GetNetstackState(dedicated.netstack) !=
                                             HostCtl::Network::NetstackInstance::kStateUp) {
                continue;
            }
            std::vector<std::string> users;
            nics.GetKelmNicNamesByInstanceKey(users, dedicated.netstack,
                                              HostCtl::Network::PortsetGetNormal);
            if (!users.empty()) {
                output->AddErrorMessage("Failed to add " + tagName +
                                        " tag when dedicated stack is instantiated");
                return;
            }
        }
        auto nic = nics.GetKelmNicByInterface(name, false, HostCtl::Network::PortsetGetNormal);
        if (!nic) {
            output->AddErrorMessage(kNoKelmnic + name);
            return;
        }
        if (!FitsNetstack(*tag, nic->GetNetstackInstanceKey())) {
            output->AddErrorMessage(kNetstackMismatch + tagName);
            return;
        }
        nic->AddTag(*tag, false);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage("Error setting tag " + tagName + " on interface " + name +
                                ". Error was: " + e.what());
    }
}

constexpr Declare::CommandShape kIpInterfaceTagRemoveShape = {
    .description = "Removes a tag on a given Kelm network interface.",
    .parameters = kRemoveParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(IpInterfaceTagRemove, kIpInterfaceTagRemoveShape) {
    const std::string& name = input->GetParameter(kInterfaceNameParameter);
    const std::string& tagName = input->GetParameter(kTagnameParameter);
    try {
        const auto tag = ReadTag(tagName, *output);
        if (!tag) {
            return;
        }
        KelmCtl::Network::KelmNicInfoImpl nics;
        auto nic = nics.GetKelmNicByInterface(name, false, HostCtl::Network::PortsetGetNormal);
        if (!nic) {
            output->AddErrorMessage(kNoKelmnic + name);
            return;
        }
        const std::string netstack = nic->GetNetstackInstanceKey();
        const auto predefined = HostCtl::Host::GetNetworkInfo()->GetPredefinedNetstackKeys();
        if (std::find(predefined.begin(), predefined.end(), netstack) != predefined.end()) {
            output->AddErrorMessage(kPredefinedNetstack);
            return;
        }
        nic->RemoveTag(*tag);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage("Error removing tag " + tagName + " from interface " + name +
                                ". Error was: " + e.what());
    }
}

constexpr Declare::CommandShape kIpInterfaceTagGetShape = {
    .description = "Gets the tags set on the given Kelm network interface.",
    .formatter = "simple",
    .outputParameters = kGetOutput,
    .parameters = kGetParameters,
    .root = Declare::Root::Struct,
    .structure = &kInterfaceTag,
};

NETWORK_COMMAND(IpInterfaceTagGet, kIpInterfaceTagGetShape) {
    const std::string& name = input->GetParameter(kInterfaceNameParameter);
    try {
        auto result = GetOutputStructure();
        std::vector<std::string> names;
        KelmCtl::Network::KelmNicInfoImpl nics;
        auto nic = WalkToInterface(nics, name);
        if (!nic) {
            output->AddErrorMessage(kNoInterface + name);
            return;
        }
        std::vector<KelmNicTagType> tags;
        nic->GetTags(tags);
        for (const KelmNicTagType tag : tags) {
            names.emplace_back(KelmCtl::Network::KelmNicTagIdToName(tag));
        }
        result->SetField(kTags, names);
        output->SetRootObject(result);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage("Error getting tags on interface " + name +
                                ". Error was: " + e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
