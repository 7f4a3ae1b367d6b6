// Host operations of a NIC's settings: link fields, speed and duplex, pause (kept with the NIC's
// own row, which `nic list` and `nic get` read), and counters, coalescing, offload, software
// simulation and rings (kept in nic_settings).
#include <algorithm>

#include "hostctl/HostCtlException.h"
#include "hostctl/MacAddress.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/linux/LiveHost.h"
#include "hostsim/nic/NicStore.h"
#include "hostsim/nicsettings/NicSettingsStore.h"
#include "kelmctl/PnicImpl.h"

namespace KelmCtl::Network {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::PnicCoalesceParams;
using HostCtl::Network::PnicInfo;
using HostCtl::Network::PnicOffloadParams;
using HostCtl::Network::PnicPauseParams;
using HostCtl::Network::PnicRingParams;
using HostCtl::Network::PnicSoftwareSimulation;
using HostCtl::Network::PnicStats;
using HostCtl::Network::WakeOnMode;
using HostSim::PassOperation;
using HostSim::NicSettings::Settings;

namespace {

constexpr std::uint32_t kMaximumPhyAddress = 31;
constexpr const char* kPortWords[] = {"tp", "aui", "bnc", "mii", "fibre", "da", "backplane"};
constexpr const char* kWakeOnWords[] = {
    "PHY activity",
    "unicast messages",
    "multicast messages",
    "broadcast messages",
    "ARP",
    "MagicPacket",
    "MagicPacket with a SecureOn password",
};
constexpr const char* kOffloadWords[] = {"RX checksum offload", "TX checksum offload",
                                         "scatter-gather", "TCP segmentation offload"};
constexpr const char* kRingWords[] = {"RX", "RX mini", "RX jumbo", "TX"};

template <std::size_t N>
std::string Word(const char* const (&words)[N], std::uint32_t index) {
    return index < N ? words[index] : std::to_string(index);
}

// The NIC's row, read inside the caller's write transaction.
PnicImpl::Record RequireNic(HostSim::Database& database, const std::string& name) {
    auto record = HostSim::Nic::Load(database, name);
    if (!record) {
        throw HostCtlException("There is no NIC named " + name + " on this host");
    }
    return std::move(*record);
}

void ApplyLinkFields(const std::string& name, const PnicInfo& change, PnicInfo& info) {
    if (change.portChanged) {
        if (std::find(info.supportedPorts.begin(), info.supportedPorts.end(), change.port) ==
            info.supportedPorts.end()) {
            throw HostCtlException("NIC " + name + " has no " + Word(kPortWords, change.port) +
                                   " port");
        }
        info.port = change.port;
    }
    if (change.phyAddressChanged) {
        if (change.phyAddress > kMaximumPhyAddress) {
            throw HostCtlException("PHY address " + std::to_string(change.phyAddress) +
                                   " is out of range (0-31)");
        }
        info.phyAddress = change.phyAddress;
    }
    if (change.virtualAddressChanged) {
        if (!change.virtualAddress.empty() &&
            !HostCtl::Network::MacAddress::IsValid(change.virtualAddress)) {
            throw HostCtlException("Virtual address \"" + change.virtualAddress +
                                   "\" is not a MAC address");
        }
        info.virtualAddress = change.virtualAddress;
    }
    if (change.transceiverChanged) {
        if (change.transceiver > 1) {
            throw HostCtlException("Transceiver type " + std::to_string(change.transceiver) +
                                   " is unknown: 0 is internal, 1 external");
        }
        info.transceiver = change.transceiver;
    }
    if (change.wakeOnChanged) {
        if (!info.supportsWakeOn) {
            throw HostCtlException("NIC " + name + " does not support Wake-on-LAN");
        }
        std::vector<WakeOnMode> modes;
        for (WakeOnMode mode : change.wakeOn) {
            if (std::find(info.supportedWakeOn.begin(), info.supportedWakeOn.end(), mode) ==
                info.supportedWakeOn.end()) {
                throw HostCtlException("NIC " + name + " can't wake on " +
                                       Word(kWakeOnWords, mode));
            }
            if (std::find(modes.begin(), modes.end(), mode) == modes.end()) {
                modes.push_back(mode);
            }
        }
        info.wakeOn = std::move(modes);
    }
    if (change.messageLevelChanged) {
        if (!info.supportsMessageLevel) {
            throw HostCtlException("The driver of NIC " + name + " has no message level");
        }
        info.messageLevel = change.messageLevel;
    }
}

// The fastest mode the NIC supports, full duplex before half: what auto negotiation reaches.
HostCtl::Network::PnicLinkMode BestLinkMode(const PnicInfo& info) {
    HostCtl::Network::PnicLinkMode best;
    for (const auto& mode : info.supportedLinkModes) {
        if (mode.speed > best.speed || (mode.speed == best.speed && mode.duplex == 1)) {
            best = mode;
        }
    }
    return best;
}

std::string NoCoalescing(const PnicImpl::Record& record) {
    return "The driver " + record.driver + " of NIC " + record.name +
           " does not support interrupt coalescing";
}

// Reads the NIC's settings, lets `change` edit them and writes them back, in one transaction.
template <class Change>
void ChangeSettings(const std::string& name, Change change) {
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    const auto record = RequireNic(database, name);
    Settings settings = HostSim::NicSettings::Load(database, name);
    change(record, settings);
    HostSim::NicSettings::Save(database, settings);
    transaction.Commit();
}

void ApplyOffload(const std::string& name, const PnicOffloadParams& change, Settings& settings) {
    PnicOffloadParams& offload = settings.offload;
    for (std::size_t i = 0; i < HostSim::NicSettings::kOffloadFlagCount; ++i) {
        const unsigned bit = 1u << i;
        if (!(change.changeMask & bit)) {
            continue;
        }
        const bool changed = HostSim::NicSettings::OffloadFlag(change, i) != 0;
        if (changed && !(settings.offloadCapabilities & bit)) {
            throw HostCtlException("NIC " + name + " can't do " + kOffloadWords[i] +
                                   " in hardware");
        }
        HostSim::NicSettings::OffloadFlag(offload, i) = changed ? 1 : 0;
    }
    // Segmentation needs TX checksums and scatter-gather: asked for without them it is
    // refused, and it goes off with them otherwise.
    if (offload.tso && !(offload.txChecksum && offload.scatterGather)) {
        if ((change.changeMask & PnicOffloadParams::kTso) && change.tso) {
            throw HostCtlException("TCP segmentation offload on NIC " + name +
                                   " needs TX checksum offload and scatter-gather on");
        }
        offload.tso = 0;
    }
}

void ApplyRings(const std::string& name, const PnicRingParams& change, Settings& settings) {
    for (std::size_t i = 0; i < HostSim::NicSettings::kRingSizeCount; ++i) {
        if (!(change.changeMask & (1u << i))) {
            continue;
        }
        const std::uint32_t size = HostSim::NicSettings::RingSize(change, i);
        const std::uint32_t maximum = HostSim::NicSettings::RingSize(settings.ringMaximum, i);
        if (maximum == 0 && size > 0) {
            throw HostCtlException("NIC " + name + " has no " + kRingWords[i] + " ring");
        }
        if (size > maximum) {
            throw HostCtlException(std::string(kRingWords[i]) + " ring size " +
                                   std::to_string(size) + " of NIC " + name +
                                   " is over its maximum " + std::to_string(maximum));
        }
        const bool required = i == 0 || i == 3;
        if (size == 0 && required) {
            throw HostCtlException(std::string(kRingWords[i]) + " ring of NIC " + name +
                                   " needs at least one entry");
        }
        HostSim::NicSettings::RingSize(settings.ringCurrent, i) = size;
    }
}

}  // namespace

void PnicImpl::SetPnicInfo(const PnicInfo& change) {
    PassOperation("Pnic::SetPnicInfo", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().SetLinkInfo(record_->name, change);
        return;
    }
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    auto record = RequireNic(database, record_->name);
    PnicInfo info = HostSim::Nic::LinkInfoFromJson(HostSim::Json::parse(record.linkInfo));
    ApplyLinkFields(record.name, change, info);
    record.linkInfo = HostSim::Nic::LinkInfoToJson(info).dump();
    HostSim::Nic::UpdateLinkSettings(database, record);
    transaction.Commit();
    *record_ = std::move(record);
}

void PnicImpl::SetSpeedDuplex(unsigned speed, int duplex) {
    PassOperation("Pnic::SetSpeedDuplex", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().SetSpeedDuplex(record_->name, speed, duplex);
        return;
    }
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    auto record = RequireNic(database, record_->name);
    PnicInfo info = HostSim::Nic::LinkInfoFromJson(HostSim::Json::parse(record.linkInfo));
    if (speed == 0 && duplex == 0) {
        if (!info.supportsAutoNegotiation) {
            throw HostCtlException("NIC " + record.name + " does not support auto negotiation");
        }
        const auto best = BestLinkMode(info);
        record.speed = best.speed;
        record.duplex = best.duplex;
        info.autoNegotiation = 1;
    } else {
        if (duplex != 1 && duplex != 2) {
            throw HostCtlException("Duplex " + std::to_string(duplex) +
                                   " is unknown: 1 is full, 2 half");
        }
        const auto supported = std::find_if(
            info.supportedLinkModes.begin(), info.supportedLinkModes.end(), [&](const auto& mode) {
                return mode.speed == speed && mode.duplex == static_cast<std::uint32_t>(duplex);
            });
        if (supported == info.supportedLinkModes.end()) {
            throw HostCtlException("NIC " + record.name + " does not support " +
                                   std::to_string(speed) + " Mbps " +
                                   (duplex == 1 ? "full" : "half") + " duplex");
        }
        record.speed = speed;
        record.duplex = static_cast<std::uint32_t>(duplex);
        info.autoNegotiation = 0;
    }
    record.linkInfo = HostSim::Nic::LinkInfoToJson(info).dump();
    HostSim::Nic::UpdateLinkSettings(database, record);
    transaction.Commit();
    *record_ = std::move(record);
}

// The host keeps whether pause is supported and what negotiation resolved: with auto
// negotiation on, the link partner is taken to agree to what is asked.
void PnicImpl::SetPauseParams(const PnicPauseParams& params) {
    PassOperation("Pnic::SetPauseParams", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().SetPause(record_->name, params);
        return;
    }
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    auto record = RequireNic(database, record_->name);
    PnicPauseParams pause = HostSim::Nic::PauseFromJson(HostSim::Json::parse(record.pause));
    if (!pause.supported) {
        throw HostCtlException("NIC " + record.name + " does not support pause frames");
    }
    const PnicInfo info = HostSim::Nic::LinkInfoFromJson(HostSim::Json::parse(record.linkInfo));
    if (params.autoNegotiation && !info.supportsAutoNegotiation) {
        throw HostCtlException("NIC " + record.name +
                               " can't negotiate pause frames: it has no auto negotiation");
    }
    pause.autoNegotiation = params.autoNegotiation ? 1 : 0;
    pause.rxPause = params.rxPause ? 1 : 0;
    pause.txPause = params.txPause ? 1 : 0;
    pause.rxResolution = pause.autoNegotiation ? (pause.rxPause ? 1 : 2) : 0;
    pause.txResolution = pause.autoNegotiation ? (pause.txPause ? 1 : 2) : 0;
    record.pause = HostSim::Nic::PauseToJson(pause).dump();
    HostSim::Nic::UpdateLinkSettings(database, record);
    transaction.Commit();
    *record_ = std::move(record);
}

void PnicImpl::GetPnicStats(PnicStats& stats) const {
    PassOperation("PnicImpl::GetPnicStats", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().GetStats(record_->name, stats);
        return;
    }
    stats = HostSim::NicSettings::Load(HostSim::Store(), record_->name).stats;
}

void PnicImpl::GetCoalesceParams(PnicCoalesceParams& params) const {
    PassOperation("Pnic::GetCoalesceParams", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().GetCoalesce(record_->name, params);
        return;
    }
    const auto settings = HostSim::NicSettings::Load(HostSim::Store(), record_->name);
    if (!settings.coalesce) {
        throw HostCtlException(NoCoalescing(*record_));
    }
    params = *settings.coalesce;
}

void PnicImpl::SetCoalesceParams(const PnicCoalesceParams& params) {
    PassOperation("Pnic::SetCoalesceParams", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().SetCoalesce(record_->name, params);
        return;
    }
    ChangeSettings(record_->name, [&params](const Record& record, Settings& settings) {
        if (!settings.coalesce) {
            throw HostCtlException(NoCoalescing(record));
        }
        settings.coalesce = params;
    });
}

void PnicImpl::GetOffloadParams(PnicOffloadParams& params) const {
    PassOperation("Pnic::GetOffloadParams", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().GetOffload(record_->name, params);
        return;
    }
    params = HostSim::NicSettings::Load(HostSim::Store(), record_->name).offload;
}

void PnicImpl::SetOffloadParams(const PnicOffloadParams& params) {
    PassOperation("Pnic::SetOffloadParams", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().SetOffload(record_->name, params);
        return;
    }
    ChangeSettings(record_->name, [&params](const Record& record, Settings& settings) {
        ApplyOffload(record.name, params, settings);
    });
}

void PnicImpl::GetSoftwareSimulation(PnicSoftwareSimulation& settings) const {
    PassOperation("Pnic::GetSoftwareSimulation", record_->name);
    settings = HostSim::NicSettings::Load(HostSim::Store(), record_->name).software;
}

void PnicImpl::SetSoftwareSimulation(const PnicSoftwareSimulation& change) {
    PassOperation("Pnic::SetSoftwareSimulation", record_->name);
    ChangeSettings(record_->name, [&change](const Record&, Settings& settings) {
        for (std::size_t i = 0; i < HostSim::NicSettings::kSoftwareFlagCount; ++i) {
            if (change.settingMask & (1u << i)) {
                HostSim::NicSettings::SoftwareFlag(settings.software, i) =
                    HostSim::NicSettings::SoftwareFlag(change, i) ? 1 : 0;
            }
        }
    });
}

void PnicImpl::GetRingParams(PnicRingParams& preset, PnicRingParams& current) const {
    PassOperation("Pnic::GetRingParams", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().GetRings(record_->name, preset, current);
        return;
    }
    const auto settings = HostSim::NicSettings::Load(HostSim::Store(), record_->name);
    preset = settings.ringMaximum;
    current = settings.ringCurrent;
}

void PnicImpl::SetRingParams(const PnicRingParams& params) {
    PassOperation("Pnic::SetRingParams", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().SetRings(record_->name, params);
        return;
    }
    ChangeSettings(record_->name, [&params](const Record& record, Settings& settings) {
        ApplyRings(record.name, params, settings);
    });
}

}  // namespace KelmCtl::Network
