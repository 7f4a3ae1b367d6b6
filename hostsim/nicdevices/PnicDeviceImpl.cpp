// The device features of a physical NIC: netqueues, hardware capabilities, diagnostics and
// uplink attachment.
#include <algorithm>
#include <fstream>
#include <iterator>

#include "hostctl/HostCtlException.h"
#include "hostctl/Misc.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/linux/LiveHost.h"
#include "hostsim/nic/NicStore.h"
#include "hostsim/nicdevices/NicDevicesStore.h"
#include "kelmctl/PnicImpl.h"

namespace KelmCtl::Network {

using HostCtl::Lib::HostCtlException;
using HostCtl::Misc::StrPrintf;
using HostSim::Json;
using HostSim::PassOperation;
using HostSim::NicDevices::Device;

namespace {

std::shared_ptr<const Device> DeviceOf(const std::string& nic) {
    return HostSim::NicDevices::Lookup(nic);
}

// The NIC's row for a change, read inside the caller's write transaction; a NIC without one
// starts from no features at all.
Device DeviceForChange(const std::string& nic) {
    auto device = HostSim::NicDevices::Load(HostSim::Store(), nic);
    if (!device) {
        if (!HostSim::NicDevices::NicExists(HostSim::Store(), nic)) {
            throw HostCtlException("There is no NIC named " + nic + " on this host");
        }
        Device fresh;
        fresh.nic = nic;
        return fresh;
    }
    return std::move(*device);
}

std::string NoNetqueue(const std::string& nic) {
    return "NIC " + nic + " has no netqueue support";
}

std::string NoDiagnostics(const std::string& nic, const char* what) {
    return "NIC " + nic + " does not support " + what;
}

std::vector<unsigned char> EepromBytes(const Json& diagnostics) {
    const std::string hex = diagnostics.at("eeprom").get<std::string>();
    std::vector<unsigned char> bytes;
    bytes.reserve(hex.size() / 2);
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes.push_back(static_cast<unsigned char>(std::stoul(hex.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

std::string EepromHex(const std::vector<unsigned char>& bytes) {
    std::string hex;
    hex.reserve(bytes.size() * 2);
    for (unsigned char byte : bytes) {
        hex += StrPrintf("%02x", byte);
    }
    return hex;
}

// A change of the EEPROM: the NIC's diagnostics, checked against the magic, in the caller's
// write transaction.
Json EepromForChange(const Device& device, std::uint32_t magic) {
    Json diagnostics =
        device.diagnostics.empty() ? Json::object() : Json::parse(device.diagnostics);
    if (diagnostics.value("eeprom", "").empty()) {
        throw HostCtlException(NoDiagnostics(device.nic, "EEPROM access"));
    }
    const std::uint32_t expected = diagnostics.at("eepromMagic").get<std::uint32_t>();
    if (magic != expected) {
        throw HostCtlException(
            StrPrintf("Wrong EEPROM magic 0x%x for NIC %s", magic, device.nic.c_str()));
    }
    return diagnostics;
}

void SaveEeprom(Device& device, Json& diagnostics, const std::vector<unsigned char>& bytes) {
    diagnostics["eeprom"] = EepromHex(bytes);
    device.diagnostics = diagnostics.dump();
    HostSim::NicDevices::Save(HostSim::Store(), device);
}

// Capability names by bit; bits without a capability of their own are reserved.
constexpr const char* kHwCapNames[] = {
    "VLAN Tx Insertion",
    "VLAN Rx Stripping",
    "IPv4 Checksum Offload",
    "IPv6 Checksum Offload",
    "TCP Segmentation Offload",
    "TSO over IPv6",
    "Large Receive Offload",
    "Receive Side Scaling",
    "Scatter-Gather",
    "Geneve Offload",
    "VXLAN Offload",
    "Encapsulated TSO",
    "Encapsulated Checksum",
    "High DMA",
    "SR-IOV",
    "Netqueue",
    "DCB",
    "Wake on LAN",
    "Precision Time Stamps",
    "Rx Checksum Offload",
    "Tx Checksum Offload",
    "Jumbo Frames",
    "Generic Offload",
    "Flow Director",
    "Queue Pairs",
    "Rx Dynamic Queues",
    "Latency Queues",
    "Geneve OAM",
    "LRO with RSS",
    "Link Failover",
    "Hardware Timestamps",
    "Reserved Bit 31",
};
constexpr const char kReservedCapability[] = "Reserved";

// The image in `file` for an EEPROM of `capacity` bytes: 1 to `capacity` bytes.
std::vector<unsigned char> ReadEepromImage(const std::string& file, std::size_t capacity,
                                           const std::string& nic) {
    std::ifstream stream(file, std::ios::binary);
    // One byte more than the EEPROM holds tells an image that is too large, and an endless
    // file (a device) is never read to its end.
    std::vector<unsigned char> image(capacity + 1);
    if (stream) {
        stream.read(reinterpret_cast<char*>(image.data()),
                    static_cast<std::streamsize>(image.size()));
    }
    image.resize(stream ? image.size() : static_cast<std::size_t>(stream.gcount()));
    if (!stream && !stream.eof()) {
        throw HostCtlException("Unable to read EEPROM image file " + file);
    }
    if (image.empty() || image.size() > capacity) {
        throw HostCtlException(
            StrPrintf("EEPROM image file %s holds %s bytes; NIC %s takes 1 to %zu", file.c_str(),
                      image.empty() ? "no" : "too many", nic.c_str(), capacity));
    }
    return image;
}

}  // namespace

void PnicImpl::GetNetqueueParams(HostCtl::Network::PnicNetqueueParams& params) const {
    PassOperation("Pnic::GetNetqueueParams", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().GetQueues(record_->name, params);
        return;
    }
    auto device = DeviceOf(record_->name);
    if (!device || !device->netqueue) {
        throw HostCtlException(NoNetqueue(record_->name));
    }
    params = {};
    params.txQueueCount = device->txQueues;
    params.rxQueueCount = device->rxQueues;
    params.balancerEnabled = device->balancerEnabled ? 1 : 0;
    for (unsigned bit = 0; bit < HostCtl::Network::kNetqueueFeatureCount; ++bit) {
        params.allowed[bit] = (device->allowed >> bit) & 1u;
        params.supported[bit] = (device->supported >> bit) & 1u;
    }
    for (unsigned bit = 0; bit < HostCtl::Network::kNetqueueFilterClassCount; ++bit) {
        params.filterClasses[bit] = (device->filterClasses >> bit) & 1u;
    }
    for (auto& plugin : HostSim::NicDevices::PluginsFromText(device->plugins)) {
        HostCtl::Network::PnicNetqueuePluginInfo info{
            std::move(plugin.module), std::move(plugin.plugin), std::move(plugin.description)};
        if (plugin.active) {
            params.activePlugins.push_back(info);
        }
        params.plugins.push_back(std::move(info));
    }
}

// Applies what the markers select, all or nothing: counts within 1 to the NIC's maxima, a
// feature allowed only where it is supported, a plug-in the NIC has.
void PnicImpl::SetNetqueueParams(const HostCtl::Network::PnicNetqueueParams& params) {
    PassOperation("Pnic::SetNetqueueParams", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().SetQueues(record_->name, params);
        return;
    }
    const std::string& nic = record_->name;
    HostSim::WriteTransaction transaction(HostSim::Store());
    Device device = DeviceForChange(nic);
    if (!device.netqueue) {
        throw HostCtlException(NoNetqueue(nic));
    }
    auto checkCount = [&nic](const char* side, std::uint32_t count, std::uint32_t maximum) {
        if (count < 1 || count > maximum) {
            throw HostCtlException(
                StrPrintf("%s netqueue count %d is out of range (1-%u) for NIC %s", side,
                          static_cast<int>(count), maximum, nic.c_str()));
        }
    };
    if (params.txCountChanged) {
        checkCount("Tx", params.txQueueCount, device.maxTxQueues);
        device.txQueues = params.txQueueCount;
    }
    if (params.rxCountChanged) {
        checkCount("Rx", params.rxQueueCount, device.maxRxQueues);
        device.rxQueues = params.rxQueueCount;
    }
    for (unsigned bit = 0; bit < HostCtl::Network::kNetqueueFeatureCount; ++bit) {
        const std::uint32_t flag = 1u << bit;
        if (!(params.settingMask & flag)) {
            continue;
        }
        if (params.allowed[bit] && !(device.supported & flag) &&
            !(HostSim::NicDevices::kFeaturesWithoutSupport & flag)) {
            throw HostCtlException("NIC " + nic + " doesn't support the netqueue feature " +
                                   HostSim::NicDevices::kFeatureNames[bit]);
        }
        device.allowed = params.allowed[bit] ? device.allowed | flag : device.allowed & ~flag;
    }
    if (params.stateChanged) {
        device.balancerEnabled = params.balancerEnabled != 0;
    }
    if (params.pluginChanged) {
        if (params.activePlugins.size() != 1) {
            throw HostCtlException("Name one netqueue balancer plug-in to change on NIC " + nic);
        }
        const auto& wanted = params.activePlugins.front();
        auto plugins = HostSim::NicDevices::PluginsFromText(device.plugins);
        bool found = false;
        for (auto& plugin : plugins) {
            if (plugin.module == wanted.moduleName && plugin.plugin == wanted.pluginName) {
                plugin.active = params.pluginEnabled != 0;
                found = true;
            }
        }
        if (!found) {
            throw HostCtlException("NIC " + nic + " has no netqueue balancer plug-in " +
                                   wanted.pluginName + " of module " + wanted.moduleName);
        }
        device.plugins = HostSim::NicDevices::PluginsToText(plugins);
    }
    HostSim::NicDevices::Save(HostSim::Store(), device);
    transaction.Commit();
}

void PnicImpl::GetHwCapabilities(HostCtl::Network::PnicHwCapabilities& capabilities) const {
    PassOperation("Pnic::GetHwCapabilities", record_->name);
    auto device = DeviceOf(record_->name);
    if (!device || !device->hwCapabilities) {
        throw HostCtlException("NIC " + record_->name + " does not report hardware capabilities");
    }
    capabilities.supportedMask = device->hwSupported;
    capabilities.activatedMask = device->hwActivated;
}

const char* PnicImpl::GetHwCapName(unsigned char bit) {
    return bit < std::size(kHwCapNames) ? kHwCapNames[bit] : kReservedCapability;
}

void PnicImpl::DumpRegisters(std::vector<std::uint32_t>& registers) const {
    PassOperation("Pnic::DumpRegisters", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().DumpRegisters(record_->name, registers);
        return;
    }
    auto device = DeviceOf(record_->name);
    if (!device || device->diagnostics.empty()) {
        throw HostCtlException(NoDiagnostics(record_->name, "register dumps"));
    }
    const Json diagnostics = Json::parse(device->diagnostics);
    const Json& words = diagnostics.at("registers");
    if (words.empty()) {
        throw HostCtlException(NoDiagnostics(record_->name, "register dumps"));
    }
    registers = words.get<std::vector<std::uint32_t>>();
}

void PnicImpl::GetEeprom(std::vector<unsigned char>& data, std::uint32_t length,
                         std::uint32_t offset) const {
    PassOperation("Pnic::GetEeprom", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().GetEeprom(record_->name, data, length, offset);
        return;
    }
    auto device = DeviceOf(record_->name);
    if (!device || device->diagnostics.empty()) {
        throw HostCtlException(NoDiagnostics(record_->name, "EEPROM access"));
    }
    const std::vector<unsigned char> bytes = EepromBytes(Json::parse(device->diagnostics));
    if (bytes.empty()) {
        throw HostCtlException(NoDiagnostics(record_->name, "EEPROM access"));
    }
    if (offset >= bytes.size()) {
        throw HostCtlException(
            StrPrintf("Offset 0x%x is past the end of the EEPROM of NIC %s (%zu bytes)", offset,
                      record_->name.c_str(), bytes.size()));
    }
    const std::size_t end = length == 0
                                ? bytes.size()
                                : std::min<std::size_t>(bytes.size(), std::size_t{offset} + length);
    data.assign(bytes.begin() + offset, bytes.begin() + static_cast<std::ptrdiff_t>(end));
}

void PnicImpl::SetEeprom(std::uint32_t magic, std::uint32_t offset, std::uint32_t value) {
    PassOperation("Pnic::SetEeprom", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        std::vector<unsigned char> bytes(4);
        for (unsigned i = 0; i < bytes.size(); ++i) {
            bytes[i] = static_cast<unsigned char>(value >> (8 * i));
        }
        live->Nics().SetEeprom(record_->name, magic, offset, bytes);
        return;
    }
    HostSim::WriteTransaction transaction(HostSim::Store());
    Device device = DeviceForChange(record_->name);
    Json diagnostics = EepromForChange(device, magic);
    std::vector<unsigned char> bytes = EepromBytes(diagnostics);
    if (std::size_t{offset} + 4 > bytes.size()) {
        throw HostCtlException(
            StrPrintf("Offset 0x%x is past the end of the EEPROM of NIC %s (%zu bytes)", offset,
                      record_->name.c_str(), bytes.size()));
    }
    for (unsigned i = 0; i < 4; ++i) {
        bytes[offset + i] = static_cast<unsigned char>(value >> (8 * i));
    }
    SaveEeprom(device, diagnostics, bytes);
    transaction.Commit();
}

void PnicImpl::SetEepromFromFile(std::uint32_t magic, const std::string& file) {
    PassOperation("Pnic::SetEepromFromFile", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        std::vector<unsigned char> eeprom;
        live->Nics().GetEeprom(record_->name, eeprom, 0, 0);
        live->Nics().SetEeprom(record_->name, magic, 0,
                               ReadEepromImage(file, eeprom.size(), record_->name));
        return;
    }
    HostSim::WriteTransaction transaction(HostSim::Store());
    Device device = DeviceForChange(record_->name);
    Json diagnostics = EepromForChange(device, magic);
    std::vector<unsigned char> bytes = EepromBytes(diagnostics);
    const std::vector<unsigned char> image = ReadEepromImage(file, bytes.size(), record_->name);
    std::copy(image.begin(), image.end(), bytes.begin());
    SaveEeprom(device, diagnostics, bytes);
    transaction.Commit();
}

// Negotiation needs auto-negotiation on and the NIC up.
void PnicImpl::RestartNegotiation() {
    PassOperation("Pnic::RestartNegotiation", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().RestartNegotiation(record_->name);
        return;
    }
    auto record = HostSim::Nic::Load(HostSim::Store(), record_->name);
    if (!record) {
        throw HostCtlException("There is no NIC named " + record_->name + " on this host");
    }
    if (!HostSim::Nic::LinkInfoFromJson(Json::parse(record->linkInfo)).autoNegotiation) {
        throw HostCtlException("Auto-negotiation is off on NIC " + record_->name);
    }
    if (!record->adminUp) {
        throw HostCtlException("NIC " + record_->name + " is down; bring it up to negotiate");
    }
}

void PnicImpl::RunSelfTest(HostCtl::Network::PnicSelfTestResult& result, bool online) {
    PassOperation("Pnic::RunSelfTest", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().RunSelfTest(record_->name, result, online);
        return;
    }
    auto device = DeviceOf(record_->name);
    if (!device || device->diagnostics.empty()) {
        throw HostCtlException(NoDiagnostics(record_->name, "self tests"));
    }
    const Json diagnostics = Json::parse(device->diagnostics);
    const Json& selfTest = diagnostics.at("selfTest");
    result.failed = selfTest["failed"].get<bool>() && !online ? 1 : 0;
    result.info = selfTest[online ? "online" : "offline"].get<std::vector<std::string>>();
}

// A branch is a NIC of the host other than the trunk, hangs on one trunk only and is no trunk
// itself; a trunk is no branch; a VLAN ID is used once per trunk.
void PnicImpl::AddAttachment(const std::string& branch, std::uint16_t vlanId) {
    PassOperation("Pnic::AddAttachment", record_->name);
    const std::string& trunk = record_->name;
    if (vlanId < 1 || vlanId > 4094) {
        throw HostCtlException(StrPrintf("VLAN ID %u is out of range (1-4094)", vlanId));
    }
    HostSim::WriteTransaction transaction(HostSim::Store());
    Device device = DeviceForChange(trunk);
    if (branch == trunk) {
        throw HostCtlException("NIC " + trunk + " can't be a branch of itself");
    }
    if (!HostSim::NicDevices::NicExists(HostSim::Store(), branch)) {
        throw HostCtlException("There is no NIC named " + branch + " on this host");
    }
    for (const Device& other : HostSim::NicDevices::LoadAll(HostSim::Store())) {
        for (const auto& attachment : Json::parse(other.attachments)) {
            const std::string attached = attachment["branch"].get<std::string>();
            if (attached == branch) {
                throw HostCtlException("NIC " + branch + " is already a branch of trunk " +
                                       other.nic);
            }
            if (attached == trunk) {
                throw HostCtlException("NIC " + trunk + " is a branch of trunk " + other.nic +
                                       " and can't be a trunk");
            }
        }
        if (other.nic == branch && other.attachments != "[]") {
            throw HostCtlException("NIC " + branch + " is a trunk and can't be a branch");
        }
    }
    Json attachments = Json::parse(device.attachments);
    for (const auto& attachment : attachments) {
        if (attachment["vlanId"].get<unsigned>() == vlanId) {
            throw HostCtlException(
                StrPrintf("VLAN ID %u is already used by branch %s on trunk %s", vlanId,
                          attachment["branch"].get<std::string>().c_str(), trunk.c_str()));
        }
    }
    attachments.push_back({{"branch", branch}, {"vlanId", vlanId}});
    device.attachments = attachments.dump();
    HostSim::NicDevices::Save(HostSim::Store(), device);
    transaction.Commit();
}

void PnicImpl::RemoveAttachment(const std::string& branch) {
    PassOperation("Pnic::RemoveAttachment", record_->name);
    HostSim::WriteTransaction transaction(HostSim::Store());
    Device device = DeviceForChange(record_->name);
    Json attachments = Json::parse(device.attachments);
    const auto before = attachments.size();
    attachments.erase(std::remove_if(attachments.begin(), attachments.end(),
                                     [&branch](const Json& attachment) {
                                         return attachment["branch"] == branch;
                                     }),
                      attachments.end());
    if (attachments.size() == before) {
        throw HostCtlException("NIC " + branch + " is not attached to trunk " + record_->name);
    }
    device.attachments = attachments.dump();
    HostSim::NicDevices::Save(HostSim::Store(), device);
    transaction.Commit();
}

std::vector<HostCtl::Network::PnicAttachment> PnicImpl::GetAttachments() const {
    PassOperation("Pnic::GetAttachments", record_->name);
    std::vector<HostCtl::Network::PnicAttachment> result;
    auto device = DeviceOf(record_->name);
    if (!device || device->attachments == "[]") {
        return result;
    }
    for (const auto& attachment : Json::parse(device->attachments)) {
        result.push_back(
            {attachment["branch"].get<std::string>(), attachment["vlanId"].get<std::uint16_t>()});
    }
    return result;
}

}  // namespace KelmCtl::Network
