// What the policy commands of switches and port groups share: declaring the failover, shaping
// and security parameters, applying them to a policy, splitting uplink lists, and rendering a
// policy into a result struct.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "frame/Declaration.h"
#include "hostctl/NetworkPolicy.h"

namespace ZanvexCli::NetworkNamespace {

inline constexpr char kAllowPromiscuousParameter[] = "allow-promiscuous";
inline constexpr char kAllowMacChangeParameter[] = "allow-mac-change";
inline constexpr char kAllowForgedTransmitsParameter[] = "allow-forged-transmits";
inline constexpr char kAllowPromiscuousDescription[] =
    "Allow ports on the virtual switch to enter promiscuous mode.";
inline constexpr char kAllowMacChangeDescription[] =
    "Allow ports on the virtual switch to change their MAC address.";
inline constexpr char kAllowForgedTransmitsDescription[] =
    "Allow ports on the virtual switch to send packets with forged source information.";

// Fields of the rendered policies.
inline constexpr char kLoadBalancingField[] = "Load Balancing";
inline constexpr char kFailureDetectionField[] = "Network Failure Detection";
inline constexpr char kNotifySwitchesField[] = "Notify Switches";
inline constexpr char kFailbackField[] = "Failback";
inline constexpr char kActiveAdaptersField[] = "Active Adapters";
inline constexpr char kStandbyAdaptersField[] = "Standby Adapters";
inline constexpr char kUnusedAdaptersField[] = "Unused Adapters";
inline constexpr char kEnabledField[] = "Enabled";
inline constexpr char kAverageBandwidthField[] = "Average Bandwidth";
inline constexpr char kPeakBandwidthField[] = "Peak Bandwidth";
inline constexpr char kBurstSizeField[] = "Burst Size";
inline constexpr char kAllowPromiscuousField[] = "Allow Promiscuous";
inline constexpr char kAllowMacAddressChangeField[] = "Allow MAC Address Change";
inline constexpr char kAllowForgedTransmitsField[] = "Allow Forged Transmits";

inline constexpr Declare::Field kFailoverFields[] = {
    {kLoadBalancingField, Declare::FieldType::String, 1},
    {kFailureDetectionField, Declare::FieldType::String, 2},
    {kNotifySwitchesField, Declare::FieldType::Bool, 3},
    {kFailbackField, Declare::FieldType::Bool, 4},
    {kActiveAdaptersField, Declare::FieldType::StringList, 5},
    {kStandbyAdaptersField, Declare::FieldType::StringList, 6},
    {kUnusedAdaptersField, Declare::FieldType::StringList, 7},
};
inline constexpr Declare::Field kShapingFields[] = {
    {kEnabledField, Declare::FieldType::Bool, 1},
    {kAverageBandwidthField, Declare::FieldType::Int, 2},
    {kPeakBandwidthField, Declare::FieldType::Int, 3},
    {kBurstSizeField, Declare::FieldType::Int, 4},
};
inline constexpr Declare::Field kSecurityFields[] = {
    {kAllowPromiscuousField, Declare::FieldType::Bool, 1},
    {kAllowMacAddressChangeField, Declare::FieldType::Bool, 2},
    {kAllowForgedTransmitsField, Declare::FieldType::Bool, 3},
};

// A column that tells whether the port group sets a field itself: the bit of the field in its
// own policy's presence mask.
struct OverrideColumn {
    const char* field;
    std::uint32_t bit;
};

// A policy's fields followed by a Bool field per override column, shown after them.
template <std::size_t PolicyCount, std::size_t OverrideCount>
constexpr std::array<Declare::Field, PolicyCount + OverrideCount> WithOverrideFields(
    const Declare::Field (&policyFields)[PolicyCount],
    const OverrideColumn (&overrides)[OverrideCount]) {
    std::array<Declare::Field, PolicyCount + OverrideCount> fields{};
    for (std::size_t i = 0; i < PolicyCount; ++i) {
        fields[i] = policyFields[i];
    }
    for (std::size_t i = 0; i < OverrideCount; ++i) {
        fields[PolicyCount + i] = {overrides[i].field, Declare::FieldType::Bool,
                                   static_cast<int>(PolicyCount + i + 1)};
    }
    return fields;
}

// Adds the parameters of a table to a spec, after those it has.
void AddParameters(const std::shared_ptr<InputSpec>& spec,
                   std::span<const Declare::Parameter> parameters);
void AddFailoverParameters(const std::shared_ptr<InputSpec>& spec);
void AddShapingParameters(const std::shared_ptr<InputSpec>& spec);
void AddSecurityParameters(const std::shared_ptr<InputSpec>& spec);

// The pieces between commas, unchanged; an empty last piece gives no entry.
std::vector<std::string> SplitUplinks(const std::string& uplinks);

// Apply the parameters given to `policy`. Failures are added to `output`, and then `policy` may
// hold part of the change: the caller must not write it back.
// `effectivePolicy` gives the present uplink order where only one of the lists is given;
// `connectedUplinks` are the uplinks of the switch concerned.
void SetFailoverPolicy(const std::shared_ptr<Input>& input, const std::shared_ptr<Output>& output,
                       HostCtl::Network::NicTeamingPolicy& policy,
                       const HostCtl::Network::NicTeamingPolicy& effectivePolicy,
                       const std::vector<std::string>& connectedUplinks);
void SetShapingPolicy(const std::shared_ptr<Input>& input, const std::shared_ptr<Output>& output,
                      HostCtl::Network::ShapingPolicy& policy, bool requireAll);
void SetSecurityPolicy(const std::shared_ptr<Input>& input, const std::shared_ptr<Output>& output,
                       HostCtl::Network::PortSecurityPolicy& policy);

// Fill the policy fields of a result struct from an effective policy.
void RenderFailoverPolicy(MetaStruct& row, const HostCtl::Network::NicTeamingPolicy& policy,
                          const std::vector<std::string>& connectedUplinks);
void RenderShapingPolicy(MetaStruct& row, const HostCtl::Network::ShapingPolicy& policy);
void RenderSecurityPolicy(MetaStruct& row, const HostCtl::Network::PortSecurityPolicy& policy);
// Each override column from the own policy's presence mask.
void RenderOverrides(MetaStruct& row, std::span<const OverrideColumn> columns,
                     std::uint32_t setFields);

}  // namespace ZanvexCli::NetworkNamespace
