#include "vswitch/PolicyParameters.h"

#include <boost/regex.hpp>

#include <algorithm>
#include <limits>

#include "kelmctl/PnicImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using HostCtl::Network::LinkCriteriaSelectionPolicy;
using HostCtl::Network::NicTeamingPolicy;
using HostCtl::Network::PortSecurityPolicy;
using HostCtl::Network::ShapingPolicy;
using HostCtl::Network::TeamPolicyType;

constexpr char kLoadBalancingParameter[] = "load-balancing";
constexpr char kFailureDetectionParameter[] = "failure-detection";
constexpr char kNotifySwitchesParameter[] = "notify-switches";
constexpr char kFailbackParameter[] = "failback";
constexpr char kActiveUplinksParameter[] = "active-uplinks";
constexpr char kStandbyUplinksParameter[] = "standby-uplinks";
constexpr char kEnabledParameter[] = "enabled";
constexpr char kAvgBandwidthParameter[] = "avg-bandwidth";
constexpr char kPeakBandwidthParameter[] = "peak-bandwidth";
constexpr char kBurstSizeParameter[] = "burst-size";

constexpr char kPortId[] = "portid";
constexpr char kIpHash[] = "iphash";
constexpr char kMac[] = "mac";
constexpr char kExplicit[] = "explicit";
constexpr char kLink[] = "link";
constexpr char kBeacon[] = "beacon";

constexpr Declare::Choice kLoadBalancingChoices[] = {
    {kPortId, "Route based on the originating virtual port ID."},
    {kIpHash, "Route based on hashing the src and destination IP addresses"},
    {kMac, "Route based on the MAC address of the packet source."},
    {kExplicit,
     "Always use the highest order uplink from the list of active adapters which pass failover "
     "criteria."},
};
constexpr Declare::Choice kFailureDetectionChoices[] = {
    {kLink, "Detect failures based on the NIC link state"},
    {kBeacon, "Detect failures based on active beaconing to the vswitch"},
};

constexpr Declare::Parameter kFailoverParameters[] = {
    {kLoadBalancingParameter,
     "l",
     Declare::Type::String,
     false,
     "Set the load balancing policy for this policy. This can be one of the following options: "
     "%FULLENUM%",
     false,
     0,
     0,
     {},
     kLoadBalancingChoices},
    {kFailureDetectionParameter,
     "f",
     Declare::Type::String,
     false,
     "Set the method of determining how a network outage is detected. %FULLENUM%",
     false,
     0,
     0,
     {},
     kFailureDetectionChoices},
    {kNotifySwitchesParameter, "n", Declare::Type::Bool, false,
     "Indicate whether to send a notification to physical switches on failover"},
    {kFailbackParameter, "b", Declare::Type::Bool, false,
     "Configure whether a NIC will be used immediately when it comes back in service after a "
     "failover"},
    {kActiveUplinksParameter, "a", Declare::Type::String, false,
     "Configure the list of active adapters and their failover order. This list must be a comma "
     "seperated list of values with the uplink name and no spaces. Example:  "
     "--active-uplinks=hwnic0,hwnic3,hwnic7,hwnic1"},
    {kStandbyUplinksParameter, "s", Declare::Type::String, false,
     "Configure the list of standby adapters and their failover order. This list must be a comma "
     "seperated list of values with the uplink name and no spaces. Example:  "
     "--standby-uplinks=hwnic2,hwnic4,hwnic8,hwnic6,hwnic11"},
};

constexpr long kMaximumBandwidth = std::numeric_limits<long>::max();

constexpr Declare::Parameter kShapingParameters[] = {
    {kEnabledParameter, "e", Declare::Type::Bool, false,
     "Indicate whether to enable traffic shaping on this policy. If this is true then the "
     "--avg-bandwidth, --peak-bandwidth and --burst-size options are required."},
    {kAvgBandwidthParameter, "b", Declare::Type::Int, false,
     "The averge bandwidth allowed for this shaping policy. This value is in Kbps (1 Kbps = 1000 "
     "bits/s)",
     true, 1, kMaximumBandwidth},
    {kPeakBandwidthParameter, "k", Declare::Type::Int, false,
     "The peak bandwidth allowed for this shaping policy. This value is in Kbps (1 Kbps = 1000 "
     "bits/s)",
     true, 1, kMaximumBandwidth},
    {kBurstSizeParameter, "t", Declare::Type::Int, false,
     "The largest burst size allowed for this shaping policy. This value is in Kib (1 Kib = 1024 "
     "bits)",
     true, 1, kMaximumBandwidth},
};

constexpr Declare::Parameter kSecurityParameters[] = {
    {kAllowPromiscuousParameter, "o", Declare::Type::Bool, false, kAllowPromiscuousDescription},
    {kAllowMacChangeParameter, "m", Declare::Type::Bool, false, kAllowMacChangeDescription},
    {kAllowForgedTransmitsParameter, "f", Declare::Type::Bool, false,
     kAllowForgedTransmitsDescription},
};

// What a load-balancing word of the user sets, and the word a team policy reads back as.
struct LoadBalancingWord {
    const char* parameterWord;
    const char* renderedWord;
    TeamPolicyType policy;
};
constexpr LoadBalancingWord kLoadBalancingWords[] = {
    {kIpHash, "iphash", HostCtl::Network::TeamPolicyIpHash},
    {kMac, "srcmac", HostCtl::Network::TeamPolicySourceMac},
    {kPortId, "srcport", HostCtl::Network::TeamPolicyOriginatingPort},
    {kExplicit, "explicit", HostCtl::Network::TeamPolicyExplicitOrder},
};
constexpr char kUnknownLoadBalancing[] = "unknown";

// Kbps and Kib to what a shaping policy holds.
constexpr unsigned long kBitsPerSecondPerKbps = 1000;
constexpr unsigned long kBytesPerKib = 128;
constexpr long kShapingOff = -1;

constexpr char kUnknownLoadBalancingMessage[] = "Unknown Load Balancing policy: ";
constexpr char kUnknownFailureDetectionMessage[] = "Unknown failure detection type ";
constexpr char kUnknownActiveNicMessage[] = "Unknown NIC name in active uplinks : ";
constexpr char kUnknownStandbyNicMessage[] = "Unknown NIC name in standby uplinks : ";
constexpr char kNotConnectedMessage[] = "NIC is not connected to the vswitch : ";
constexpr char kDuplicateNicMessage[] = "some NICs appear in the input for more than once.";

bool Contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// Appends to `order` the names of the list that are NICs of the host and uplinks of the switch;
// reports the others.
void CollectUplinks(const std::string& list, const char* unknownMessage,
                    const std::vector<std::string>& connectedUplinks, Output& output,
                    std::vector<std::string>& order) {
    for (std::string& name : SplitUplinks(list)) {
        if (!KelmCtl::Network::PnicImpl::IsValidPnic(name)) {
            output.AddErrorMessage(unknownMessage + name);
        } else if (!Contains(connectedUplinks, name)) {
            output.AddErrorMessage(kNotConnectedMessage + name);
        } else {
            order.push_back(std::move(name));
        }
    }
}

// The standby part of `effective` that the new active list does not name, after `order`.
void KeepStandbyUplinks(const NicTeamingPolicy& effective, std::vector<std::string>& order) {
    const auto& present = effective.uplinkOrder;
    const auto firstStandby = static_cast<std::size_t>(std::max(effective.maxActiveUplinks, 0));
    std::vector<std::string> kept;
    for (std::size_t i = firstStandby; i < present.size(); ++i) {
        if (!Contains(order, present[i])) {
            kept.push_back(present[i]);
        }
    }
    order.insert(order.end(), kept.begin(), kept.end());
}

// The active part of `effective` that the new standby list does not name, ahead of `order`;
// gives the number of active uplinks left. The count starts at the policy's own, which may be
// larger than its order (a profile can say so): only a name the walk takes out lowers it, and
// the walk ends at the end of the order.
int KeepActiveUplinks(const NicTeamingPolicy& effective, std::vector<std::string>& order) {
    std::vector<std::string> present = effective.uplinkOrder;
    long keptActive = effective.maxActiveUplinks;
    std::size_t index = 0;
    while (static_cast<long>(index) < keptActive && index < present.size()) {
        if (Contains(order, present[index])) {
            present.erase(present.begin() + static_cast<long>(index));
            --keptActive;
        } else {
            ++index;
        }
    }
    const long leading = std::clamp<long>(keptActive, 0, static_cast<long>(present.size()));
    order.insert(order.begin(), present.begin(), present.begin() + leading);
    return static_cast<int>(keptActive);
}

bool HasDuplicate(const std::vector<std::string>& names) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (std::find(names.begin() + static_cast<long>(i) + 1, names.end(), names[i]) !=
            names.end()) {
            return true;
        }
    }
    return false;
}

}  // namespace

void AddParameters(const std::shared_ptr<InputSpec>& spec,
                   std::span<const Declare::Parameter> parameters) {
    const auto added = Declare::MakeInputSpec(parameters);
    for (const auto& parameter : added->GetParameters()) {
        spec->AddParameter(parameter);
    }
}

void AddFailoverParameters(const std::shared_ptr<InputSpec>& spec) {
    AddParameters(spec, kFailoverParameters);
}

void AddShapingParameters(const std::shared_ptr<InputSpec>& spec) {
    AddParameters(spec, kShapingParameters);
}

void AddSecurityParameters(const std::shared_ptr<InputSpec>& spec) {
    AddParameters(spec, kSecurityParameters);
}

std::vector<std::string> SplitUplinks(const std::string& uplinks) {
    static const boost::regex separator(",");
    std::vector<std::string> names(
        boost::sregex_token_iterator(uplinks.begin(), uplinks.end(), separator, -1),
        boost::sregex_token_iterator());
    return names;
}

void SetFailoverPolicy(const std::shared_ptr<Input>& input, const std::shared_ptr<Output>& output,
                       NicTeamingPolicy& policy, const NicTeamingPolicy& effectivePolicy,
                       const std::vector<std::string>& connectedUplinks) {
    if (input->HasParameter(kLoadBalancingParameter)) {
        const std::string& word = input->GetParameter(kLoadBalancingParameter);
        const auto found = std::find_if(
            std::begin(kLoadBalancingWords), std::end(kLoadBalancingWords),
            [&word](const LoadBalancingWord& entry) { return word == entry.parameterWord; });
        if (found != std::end(kLoadBalancingWords)) {
            policy.SetTeamingPolicy(found->policy);
        } else {
            output->AddErrorMessage(kUnknownLoadBalancingMessage + word);
        }
    }
    if (input->HasParameter(kFailureDetectionParameter)) {
        const std::string& word = input->GetParameter(kFailureDetectionParameter);
        LinkCriteriaSelectionPolicy criteria;
        if (word == kLink) {
            criteria.SetBeacon(true);
        } else if (word == kBeacon) {
            criteria.SetBeacon(false);
        } else {
            output->AddErrorMessage(kUnknownFailureDetectionMessage + word);
        }
        policy.SetLinkCriteria(criteria);
    }
    if (input->HasParameter(kNotifySwitchesParameter)) {
        policy.SetNotifySwitchOnFailure(input->GetParameterBool(kNotifySwitchesParameter));
    }
    if (input->HasParameter(kFailbackParameter)) {
        policy.SetRollingRestoration(!input->GetParameterBool(kFailbackParameter));
    }
    const bool hasActive = input->HasParameter(kActiveUplinksParameter);
    const bool hasStandby = input->HasParameter(kStandbyUplinksParameter);
    if (!hasActive && !hasStandby) {
        return;
    }
    std::vector<std::string> order;
    if (hasActive) {
        CollectUplinks(input->GetParameter(kActiveUplinksParameter), kUnknownActiveNicMessage,
                       connectedUplinks, *output, order);
        const auto activeCount = static_cast<int>(order.size());
        if (!hasStandby) {
            KeepStandbyUplinks(effectivePolicy, order);
        }
        policy.SetMaxActiveUplinks(activeCount);
    }
    if (hasStandby) {
        CollectUplinks(input->GetParameter(kStandbyUplinksParameter), kUnknownStandbyNicMessage,
                       connectedUplinks, *output, order);
        if (!hasActive) {
            policy.SetMaxActiveUplinks(KeepActiveUplinks(effectivePolicy, order));
        }
    }
    if (HasDuplicate(order)) {
        output->AddErrorMessage(kDuplicateNicMessage);
        return;
    }
    policy.SetUplinkOrder(order);
}

void SetShapingPolicy(const std::shared_ptr<Input>& input, const std::shared_ptr<Output>& output,
                      ShapingPolicy& policy, bool requireAll) {
    bool enabledNow = false;
    if (input->HasParameter(kEnabledParameter)) {
        enabledNow = input->GetParameterBool(kEnabledParameter);
        policy.SetEnabled(enabledNow);
    }
    if (!policy.enabled) {
        return;
    }
    const bool required = enabledNow || requireAll;
    struct ShapingValue {
        const char* parameter;
        unsigned long unit;
        void (ShapingPolicy::*set)(unsigned long);
        const char* missingMessage;
    };
    static constexpr ShapingValue kValues[] = {
        {kAvgBandwidthParameter, kBitsPerSecondPerKbps, &ShapingPolicy::SetAverageBps,
         "Missing required parameter --avg-bandwidth"},
        {kPeakBandwidthParameter, kBitsPerSecondPerKbps, &ShapingPolicy::SetPeakBps,
         "Missing required parameter --peak-bandwidth"},
        {kBurstSizeParameter, kBytesPerKib, &ShapingPolicy::SetBurstSize,
         "Missing required parameter --burst-size"},
    };
    for (const ShapingValue& value : kValues) {
        if (input->HasParameter(value.parameter)) {
            (policy.*value.set)(
                static_cast<unsigned long>(input->GetParameterInt(value.parameter)) * value.unit);
        } else if (required) {
            output->AddErrorMessage(value.missingMessage);
        }
    }
}

void SetSecurityPolicy(const std::shared_ptr<Input>& input, const std::shared_ptr<Output>&,
                       PortSecurityPolicy& policy) {
    if (input->HasParameter(kAllowPromiscuousParameter)) {
        policy.SetAllowPromiscuous(input->GetParameterBool(kAllowPromiscuousParameter));
    }
    if (input->HasParameter(kAllowMacChangeParameter)) {
        policy.SetAllowMacAddressChange(input->GetParameterBool(kAllowMacChangeParameter));
    }
    if (input->HasParameter(kAllowForgedTransmitsParameter)) {
        policy.SetAllowForgedTransmits(input->GetParameterBool(kAllowForgedTransmitsParameter));
    }
}

void RenderFailoverPolicy(MetaStruct& row, const NicTeamingPolicy& policy,
                          const std::vector<std::string>& connectedUplinks) {
    const char* loadBalancing = kUnknownLoadBalancing;
    for (const LoadBalancingWord& entry : kLoadBalancingWords) {
        if (policy.teamPolicy == entry.policy) {
            loadBalancing = entry.renderedWord;
        }
    }
    row.SetField(kLoadBalancingField, loadBalancing);
    constexpr std::uint32_t kBeaconBit = LinkCriteriaSelectionPolicy::kBeaconBit;
    const bool beacon = (policy.linkCriteria.criteriaMask & kBeaconBit) != 0 &&
                        (policy.linkCriteria.criteriaValues & kBeaconBit) == 0;
    row.SetField(kFailureDetectionField, beacon ? kBeacon : kLink);
    row.SetField(kNotifySwitchesField, policy.notifySwitchOnFailure != 0);
    row.SetField(kFailbackField, policy.rollingRestoration == 0);
    const auto& order = policy.uplinkOrder;
    const auto activeCount = static_cast<long>(std::min<std::size_t>(
        static_cast<std::size_t>(std::max(policy.maxActiveUplinks, 0)), order.size()));
    row.SetField(kActiveAdaptersField,
                 std::vector<std::string>(order.begin(), order.begin() + activeCount));
    row.SetField(kStandbyAdaptersField,
                 std::vector<std::string>(order.begin() + activeCount, order.end()));
    std::vector<std::string> unused;
    for (const std::string& uplink : connectedUplinks) {
        if (!Contains(order, uplink)) {
            unused.push_back(uplink);
        }
    }
    row.SetField(kUnusedAdaptersField, unused);
}

void RenderShapingPolicy(MetaStruct& row, const ShapingPolicy& policy) {
    row.SetField(kEnabledField, policy.enabled != 0);
    const auto shown = [&policy](std::uint64_t value, unsigned long unit) {
        return policy.enabled ? static_cast<long>(value) / static_cast<long>(unit) : kShapingOff;
    };
    row.SetField(kAverageBandwidthField, shown(policy.averageBps, kBitsPerSecondPerKbps));
    row.SetField(kPeakBandwidthField, shown(policy.peakBps, kBitsPerSecondPerKbps));
    row.SetField(kBurstSizeField, shown(policy.burstSize, kBytesPerKib));
}

void RenderSecurityPolicy(MetaStruct& row, const PortSecurityPolicy& policy) {
    row.SetField(kAllowPromiscuousField, policy.allowPromiscuous != 0);
    row.SetField(kAllowMacAddressChangeField, policy.allowMacAddressChange != 0);
    row.SetField(kAllowForgedTransmitsField, policy.allowForgedTransmits != 0);
}

void RenderOverrides(MetaStruct& row, std::span<const OverrideColumn> columns,
                     std::uint32_t setFields) {
    for (const OverrideColumn& column : columns) {
        row.SetField(column.field, (setFields & column.bit) != 0);
    }
}

}  // namespace ZanvexCli::NetworkNamespace
