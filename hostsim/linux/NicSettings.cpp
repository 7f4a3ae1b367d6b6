// Link and driver settings of the live host's NICs, through ethtool's generic netlink family:
// link modes, auto negotiation, port, wake-on, message level, pause, coalescing, features,
// rings and channels.
#include <linux/ethtool.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstring>
#include <map>
#include <optional>
#include <string_view>

#include "hostctl/HostCtlException.h"
#include "hostsim/linux/Nics.h"

namespace HostSim::Linux {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::PnicCoalesceParams;
using HostCtl::Network::PnicInfo;
using HostCtl::Network::PnicLinkMode;
using HostCtl::Network::PnicNetqueueParams;
using HostCtl::Network::PnicOffloadParams;
using HostCtl::Network::PnicPauseParams;
using HostCtl::Network::PnicRingParams;
using HostCtl::Network::WakeOnMode;

namespace {

using Attributes = std::vector<const nlattr*>;

std::uint8_t U8(const nlattr* attribute) {
    return attribute != nullptr ? mnl_attr_get_u8(attribute) : 0;
}

// An absent attribute is a value the driver doesn't report: zero.
std::uint32_t U32(const nlattr* attribute) {
    return attribute != nullptr ? mnl_attr_get_u32(attribute) : 0;
}

// A byte-wide field of a request; wider values are refused rather than cut.
std::uint8_t Byte(std::uint32_t value, const char* what) {
    if (value > 0xff) {
        throw HostCtlException(std::string(what) + " " + std::to_string(value) +
                               " is out of range (0-255)");
    }
    return static_cast<std::uint8_t>(value);
}

// Asks the kernel for one of the link's settings and hands the reply's attributes to `read`,
// which copies what it needs: the reply's memory is the socket's.
template <class Read>
void Get(Ethtool& ethtool, std::uint8_t command, const std::string& name, unsigned maximum,
         Read read) {
    Message request = ethtool.Request(command, name);
    ethtool.Exchange(request, [&read, maximum](const nlmsghdr& reply) {
        read(Ethtool::Attributes(reply, maximum));
    });
}

// As Get, for a setting the driver may lack: false when it does.
template <class Read>
bool GetIfSupported(Ethtool& ethtool, std::uint8_t command, const std::string& name,
                    unsigned maximum, Read read) {
    try {
        Get(ethtool, command, name, maximum, read);
        return true;
    } catch (const KernelError& error) {
        if (error.Error() == EOPNOTSUPP) {
            return false;
        }
        throw;
    }
}

// A bitset of a reply, in the compact form the requests ask for: the value and, unless the
// bitset is a list, the mask.
struct Bitset {
    unsigned size = 0;
    std::vector<std::uint32_t> value;
    std::vector<std::uint32_t> mask;

    static bool Test(const std::vector<std::uint32_t>& words, unsigned bit) {
        return bit / 32 < words.size() && (words[bit / 32] >> (bit % 32)) & 1u;
    }
    bool Value(unsigned bit) const { return Test(value, bit); }
    bool Mask(unsigned bit) const { return Test(mask, bit); }
};

std::vector<std::uint32_t> Words(const nlattr* attribute) {
    std::vector<std::uint32_t> words;
    if (attribute != nullptr) {
        words.resize(mnl_attr_get_payload_len(attribute) / sizeof(std::uint32_t));
        std::memcpy(words.data(), mnl_attr_get_payload(attribute),
                    words.size() * sizeof(std::uint32_t));
    }
    return words;
}

Bitset ReadBitset(const nlattr* attribute) {
    const Attributes fields = ParseNested(attribute, ETHTOOL_A_BITSET_MAX);
    Bitset bitset;
    bitset.size = U32(fields[ETHTOOL_A_BITSET_SIZE]);
    bitset.value = Words(fields[ETHTOOL_A_BITSET_VALUE]);
    bitset.mask = Words(fields[ETHTOOL_A_BITSET_MASK]);
    return bitset;
}

// A compact bitset of `size` bits for a request: the bits of `mask` take their values from
// `value`, the others stay as they are; without a mask, `value` is the whole new set.
void PutBitset(Message& request, std::uint16_t type, unsigned size,
               const std::vector<std::uint32_t>& value, const std::vector<std::uint32_t>& mask) {
    nlattr* nest = mnl_attr_nest_start(request.Header(), type);
    mnl_attr_put_u32(request.Header(), ETHTOOL_A_BITSET_SIZE, size);
    mnl_attr_put(request.Header(), ETHTOOL_A_BITSET_VALUE, value.size() * sizeof(std::uint32_t),
                 value.data());
    if (mask.empty()) {
        mnl_attr_put(request.Header(), ETHTOOL_A_BITSET_NOMASK, 0, nullptr);
    } else {
        mnl_attr_put(request.Header(), ETHTOOL_A_BITSET_MASK, mask.size() * sizeof(std::uint32_t),
                     mask.data());
    }
    mnl_attr_nest_end(request.Header(), nest);
}

void SetBit(std::vector<std::uint32_t>& words, unsigned bit) {
    words[bit / 32] |= 1u << (bit % 32);
}

// One of the kernel's string sets (feature names, link-mode names), by bit index. The sets are
// the kernel's own, the same for every link and namespace, and are read once per process.
const std::vector<std::string>& StringSet(Ethtool& ethtool, const std::string& name,
                                          std::uint32_t set) {
    static std::map<std::uint32_t, std::vector<std::string>> sets;
    if (const auto found = sets.find(set); found != sets.end()) {
        return found->second;
    }
    Message request = ethtool.Request(ETHTOOL_MSG_STRSET_GET, name);
    nlattr* wanted = mnl_attr_nest_start(request.Header(), ETHTOOL_A_STRSET_STRINGSETS);
    nlattr* one = mnl_attr_nest_start(request.Header(), ETHTOOL_A_STRINGSETS_STRINGSET);
    mnl_attr_put_u32(request.Header(), ETHTOOL_A_STRINGSET_ID, set);
    mnl_attr_nest_end(request.Header(), one);
    mnl_attr_nest_end(request.Header(), wanted);
    std::vector<std::string> strings;
    ethtool.Exchange(request, [&strings, set](const nlmsghdr& reply) {
        const Attributes attributes = Ethtool::Attributes(reply, ETHTOOL_A_STRSET_MAX);
        for (const nlattr* stringSet : NestedList(attributes[ETHTOOL_A_STRSET_STRINGSETS])) {
            const Attributes fields = ParseNested(stringSet, ETHTOOL_A_STRINGSET_MAX);
            if (U32(fields[ETHTOOL_A_STRINGSET_ID]) != set) {
                continue;
            }
            strings.resize(U32(fields[ETHTOOL_A_STRINGSET_COUNT]));
            for (const nlattr* string : NestedList(fields[ETHTOOL_A_STRINGSET_STRINGS])) {
                const Attributes parts = ParseNested(string, ETHTOOL_A_STRING_MAX);
                const std::uint32_t index = U32(parts[ETHTOOL_A_STRING_INDEX]);
                if (index < strings.size() && parts[ETHTOOL_A_STRING_VALUE] != nullptr) {
                    strings[index] = mnl_attr_get_str(parts[ETHTOOL_A_STRING_VALUE]);
                }
            }
        }
    });
    return sets.emplace(set, std::move(strings)).first->second;
}

// --- Link modes -----------------------------------------------------------------------------

// The media of the link-mode words by their index, as the kernel spells them in its link-mode
// names ("25000baseCR/Full": CR, one lane, is BaseCR1). Media the words don't name have none.
constexpr std::pair<std::uint32_t, std::string_view> kMedia[] = {
    {2, "T"},     {3, "X"},    {4, "KX"},   {5, "SX"},   {6, "LX"},   {7, "KR"},    {8, "LR"},
    {9, "SR"},    {10, "ER"},  {13, "LRM"}, {14, "CR"},  {15, "KR2"}, {16, "MLD2"}, {17, "KR4"},
    {18, "KX4"},  {19, "CR4"}, {20, "SR4"}, {21, "LR4"}, {22, "R4"},  {27, "DR4"},  {28, "FR4"},
    {31, "SR16"}, {32, "FR8"}, {33, "LR8"}, {35, "ER4"}, {36, "ER8"}, {37, "CX4"},  {38, "CR2"},
};
// The link-mode word "Unknown", for media the words don't name.
constexpr std::uint32_t kUnknownMedia = 1;
constexpr std::uint32_t kFullDuplex = 1;
constexpr std::uint32_t kHalfDuplex = 2;

// The mode a kernel link-mode name stands for ("1000baseT/Full"); none for the other bits of
// the set (ports, pause, auto negotiation, FEC). A name that lists several media
// ("100000baseLR4_ER4/Full") is shown by its first.
std::optional<PnicLinkMode> ParseLinkMode(std::string_view name) {
    const auto base = name.find("base");
    const auto slash = name.rfind('/');
    if (base == 0 || base == std::string_view::npos || slash == std::string_view::npos ||
        slash < base) {
        return std::nullopt;
    }
    PnicLinkMode mode;
    for (char digit : name.substr(0, base)) {
        if (digit < '0' || digit > '9') {
            return std::nullopt;
        }
        mode.speed = mode.speed * 10 + static_cast<std::uint32_t>(digit - '0');
    }
    const std::string_view duplex = name.substr(slash + 1);
    mode.duplex = duplex == "Full" ? kFullDuplex : duplex == "Half" ? kHalfDuplex : 0;
    std::string_view media = name.substr(base + 4, slash - base - 4);
    media = media.substr(0, media.find('_'));
    mode.media = kUnknownMedia;
    for (const auto& [index, spelling] : kMedia) {
        if (spelling == media) {
            mode.media = index;
        }
    }
    return mode;
}

// Port numbers of the record by the kernel's link-mode bits for ports.
constexpr std::pair<unsigned, std::uint32_t> kPortBits[] = {
    {ETHTOOL_LINK_MODE_TP_BIT, 0},    {ETHTOOL_LINK_MODE_AUI_BIT, 1},
    {ETHTOOL_LINK_MODE_BNC_BIT, 2},   {ETHTOOL_LINK_MODE_MII_BIT, 3},
    {ETHTOOL_LINK_MODE_FIBRE_BIT, 4}, {ETHTOOL_LINK_MODE_Backplane_BIT, 6},
};

// What LINKMODES_GET says: `ours` holds the advertised modes as its value and the supported
// ones as its mask; `peer` what the link partner advertises, empty when it isn't known.
struct LinkModes {
    Bitset ours;
    Bitset peer;
    bool autoNegotiation = false;
    std::uint32_t speed = 0;
    std::uint32_t duplex = 0;
};

std::optional<LinkModes> ReadLinkModes(Ethtool& ethtool, const std::string& name) {
    LinkModes modes;
    const bool supported = GetIfSupported(
        ethtool, ETHTOOL_MSG_LINKMODES_GET, name, ETHTOOL_A_LINKMODES_MAX,
        [&modes](const Attributes& attributes) {
            modes.ours = ReadBitset(attributes[ETHTOOL_A_LINKMODES_OURS]);
            modes.peer = ReadBitset(attributes[ETHTOOL_A_LINKMODES_PEER]);
            modes.autoNegotiation = U8(attributes[ETHTOOL_A_LINKMODES_AUTONEG]) == AUTONEG_ENABLE;
            const std::uint32_t speed = U32(attributes[ETHTOOL_A_LINKMODES_SPEED]);
            modes.speed = speed == static_cast<std::uint32_t>(SPEED_UNKNOWN) ? 0 : speed;
            const std::uint8_t duplex = U8(attributes[ETHTOOL_A_LINKMODES_DUPLEX]);
            modes.duplex = duplex == DUPLEX_FULL   ? kFullDuplex
                           : duplex == DUPLEX_HALF ? kHalfDuplex
                                                   : 0;
        });
    return supported ? std::optional(std::move(modes)) : std::nullopt;
}

// The kernel's link-mode bits of `wanted`, among all the bits that are link modes: the mask
// and value of a change of the advertised modes.
void LinkModeBits(const std::vector<std::string>& names, const std::vector<PnicLinkMode>& wanted,
                  std::vector<std::uint32_t>& value, std::vector<std::uint32_t>& mask) {
    std::vector<bool> found(wanted.size());
    for (unsigned bit = 0; bit < names.size(); ++bit) {
        const auto mode = ParseLinkMode(names[bit]);
        if (!mode) {
            continue;
        }
        SetBit(mask, bit);
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            if (wanted[i].speed == mode->speed && wanted[i].duplex == mode->duplex &&
                wanted[i].media == mode->media) {
                SetBit(value, bit);
                found[i] = true;
            }
        }
    }
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        // A mode of speed 0 stands for auto negotiation, which is no bit of its own.
        if (!found[i] && wanted[i].speed != 0) {
            throw HostCtlException("The kernel has no link mode of " +
                                   std::to_string(wanted[i].speed) + " Mbps, duplex " +
                                   std::to_string(wanted[i].duplex) + " and media " +
                                   std::to_string(wanted[i].media));
        }
    }
}

// Wake-on modes of the record by the kernel's WAKE_* flags; the bitset's bits are the flags'
// positions.
constexpr std::pair<std::uint32_t, WakeOnMode> kWakeOnFlags[] = {
    {WAKE_PHY, HostCtl::Network::WakeOnPhy},
    {WAKE_UCAST, HostCtl::Network::WakeOnUnicast},
    {WAKE_MCAST, HostCtl::Network::WakeOnMulticast},
    {WAKE_BCAST, HostCtl::Network::WakeOnBroadcast},
    {WAKE_ARP, HostCtl::Network::WakeOnArp},
    {WAKE_MAGIC, HostCtl::Network::WakeOnMagic},
    {WAKE_MAGICSECURE, HostCtl::Network::WakeOnMagicSecure},
};

unsigned FlagBit(std::uint32_t flag) {
    return static_cast<unsigned>(std::countr_zero(flag));
}

// How auto negotiation resolved pause for each direction, from what both ends advertise, by
// the rules of IEEE 802.3 annex 28B: 1 on, 2 off, 0 when the partner's word is unknown.
void ResolvePause(const LinkModes& modes, PnicPauseParams& params) {
    if (!modes.autoNegotiation || std::none_of(modes.peer.value.begin(), modes.peer.value.end(),
                                               [](std::uint32_t word) { return word != 0; })) {
        return;
    }
    const bool localPause = modes.ours.Value(ETHTOOL_LINK_MODE_Pause_BIT);
    const bool localAsymmetric = modes.ours.Value(ETHTOOL_LINK_MODE_Asym_Pause_BIT);
    const bool peerPause = modes.peer.Value(ETHTOOL_LINK_MODE_Pause_BIT);
    const bool peerAsymmetric = modes.peer.Value(ETHTOOL_LINK_MODE_Asym_Pause_BIT);
    bool rx = false;
    bool tx = false;
    if (localPause && peerPause) {
        rx = tx = true;
    } else if (localAsymmetric && peerAsymmetric) {
        rx = localPause;
        tx = !localPause && peerPause;
    }
    params.rxResolution = rx ? 1 : 2;
    params.txResolution = tx ? 1 : 2;
}

// --- Driver settings ------------------------------------------------------------------------

// The words of the coalescing record by the kernel's attributes. The record's five driver
// words carry the statistics block interval and the interrupt-context delays.
constexpr std::pair<std::uint16_t, std::uint32_t PnicCoalesceParams::*> kCoalesceWords[] = {
    {ETHTOOL_A_COALESCE_STATS_BLOCK_USECS, &PnicCoalesceParams::reserved0},
    {ETHTOOL_A_COALESCE_RATE_SAMPLE_INTERVAL, &PnicCoalesceParams::sampleIntervalSeconds},
    {ETHTOOL_A_COALESCE_PKT_RATE_LOW, &PnicCoalesceParams::lowPacketRate},
    {ETHTOOL_A_COALESCE_PKT_RATE_HIGH, &PnicCoalesceParams::highPacketRate},
    {ETHTOOL_A_COALESCE_RX_USECS, &PnicCoalesceParams::rxUsecs},
    {ETHTOOL_A_COALESCE_RX_MAX_FRAMES, &PnicCoalesceParams::rxMaxFrames},
    {ETHTOOL_A_COALESCE_RX_USECS_IRQ, &PnicCoalesceParams::reserved1},
    {ETHTOOL_A_COALESCE_RX_MAX_FRAMES_IRQ, &PnicCoalesceParams::reserved2},
    {ETHTOOL_A_COALESCE_TX_USECS, &PnicCoalesceParams::txUsecs},
    {ETHTOOL_A_COALESCE_TX_MAX_FRAMES, &PnicCoalesceParams::txMaxFrames},
    {ETHTOOL_A_COALESCE_TX_USECS_IRQ, &PnicCoalesceParams::reserved3},
    {ETHTOOL_A_COALESCE_TX_MAX_FRAMES_IRQ, &PnicCoalesceParams::reserved4},
    {ETHTOOL_A_COALESCE_RX_USECS_LOW, &PnicCoalesceParams::lowRxUsecs},
    {ETHTOOL_A_COALESCE_RX_MAX_FRAMES_LOW, &PnicCoalesceParams::lowRxMaxFrames},
    {ETHTOOL_A_COALESCE_TX_USECS_LOW, &PnicCoalesceParams::lowTxUsecs},
    {ETHTOOL_A_COALESCE_TX_MAX_FRAMES_LOW, &PnicCoalesceParams::lowTxMaxFrames},
    {ETHTOOL_A_COALESCE_RX_USECS_HIGH, &PnicCoalesceParams::highRxUsecs},
    {ETHTOOL_A_COALESCE_RX_MAX_FRAMES_HIGH, &PnicCoalesceParams::highRxMaxFrames},
    {ETHTOOL_A_COALESCE_TX_USECS_HIGH, &PnicCoalesceParams::highTxUsecs},
    {ETHTOOL_A_COALESCE_TX_MAX_FRAMES_HIGH, &PnicCoalesceParams::highTxMaxFrames},
};
constexpr std::pair<std::uint16_t, std::uint8_t PnicCoalesceParams::*> kCoalesceFlags[] = {
    {ETHTOOL_A_COALESCE_USE_ADAPTIVE_RX, &PnicCoalesceParams::useAdaptiveRx},
    {ETHTOOL_A_COALESCE_USE_ADAPTIVE_TX, &PnicCoalesceParams::useAdaptiveTx},
};

// The offload flags of the record by the kernel's feature names. A flag is on when any of its
// features is; a change asks for all of them, and the kernel changes those the driver lets
// it change.
struct OffloadFeature {
    std::uint8_t maskBit;  // 0 for a flag a change never asks for
    std::uint8_t PnicOffloadParams::*flag;
    std::array<std::string_view, 3> features;
    const char* words;
};
constexpr OffloadFeature kOffloadFeatures[] = {
    {PnicOffloadParams::kRxChecksum,
     &PnicOffloadParams::rxChecksum,
     {"rx-checksum"},
     "RX checksum offload"},
    {PnicOffloadParams::kTxChecksum,
     &PnicOffloadParams::txChecksum,
     {"tx-checksum-ipv4", "tx-checksum-ip-generic", "tx-checksum-ipv6"},
     "TX checksum offload"},
    {PnicOffloadParams::kScatterGather,
     &PnicOffloadParams::scatterGather,
     {"tx-scatter-gather"},
     "scatter-gather"},
    {PnicOffloadParams::kTso,
     &PnicOffloadParams::tso,
     {"tx-tcp-segmentation"},
     "TCP segmentation offload"},
    {0, &PnicOffloadParams::vlanStrip, {"rx-vlan-hw-parse"}, "VLAN tag stripping"},
    {0, &PnicOffloadParams::vlanInsert, {"tx-vlan-hw-insert"}, "VLAN tag insertion"},
};

// The offload flags as the link's active features set them.
void ReadOffload(Ethtool& ethtool, const std::string& name, PnicOffloadParams& params) {
    const std::vector<std::string>& names = StringSet(ethtool, name, ETH_SS_FEATURES);
    Bitset active;
    Get(ethtool, ETHTOOL_MSG_FEATURES_GET, name, ETHTOOL_A_FEATURES_MAX,
        [&active](const Attributes& attributes) {
            active = ReadBitset(attributes[ETHTOOL_A_FEATURES_ACTIVE]);
        });
    for (const OffloadFeature& offload : kOffloadFeatures) {
        bool on = false;
        for (unsigned bit = 0; bit < names.size(); ++bit) {
            on = on ||
                 (active.Value(bit) && std::find(offload.features.begin(), offload.features.end(),
                                                 names[bit]) != offload.features.end());
        }
        params.*offload.flag = on ? 1 : 0;
    }
}

// Ring sizes of the record by the kernel's attributes: the maximum, then the size in use.
struct RingSize {
    std::uint16_t maximum;
    std::uint16_t current;
    std::uint8_t maskBit;
    std::uint32_t PnicRingParams::*size;
};
constexpr RingSize kRingSizes[] = {
    {ETHTOOL_A_RINGS_RX_MAX, ETHTOOL_A_RINGS_RX, PnicRingParams::kRx, &PnicRingParams::rx},
    {ETHTOOL_A_RINGS_RX_MINI_MAX, ETHTOOL_A_RINGS_RX_MINI, PnicRingParams::kRxMini,
     &PnicRingParams::rxMini},
    {ETHTOOL_A_RINGS_RX_JUMBO_MAX, ETHTOOL_A_RINGS_RX_JUMBO, PnicRingParams::kRxJumbo,
     &PnicRingParams::rxJumbo},
    {ETHTOOL_A_RINGS_TX_MAX, ETHTOOL_A_RINGS_TX, PnicRingParams::kTx, &PnicRingParams::tx},
};

struct Channels {
    std::uint32_t rxMaximum = 0;
    std::uint32_t txMaximum = 0;
    std::uint32_t combinedMaximum = 0;
    std::uint32_t rx = 0;
    std::uint32_t tx = 0;
    std::uint32_t combined = 0;
};

Channels ReadChannels(Ethtool& ethtool, const std::string& name) {
    Channels channels;
    Get(ethtool, ETHTOOL_MSG_CHANNELS_GET, name, ETHTOOL_A_CHANNELS_MAX,
        [&channels](const Attributes& attributes) {
            channels.rxMaximum = U32(attributes[ETHTOOL_A_CHANNELS_RX_MAX]);
            channels.txMaximum = U32(attributes[ETHTOOL_A_CHANNELS_TX_MAX]);
            channels.combinedMaximum = U32(attributes[ETHTOOL_A_CHANNELS_COMBINED_MAX]);
            channels.rx = U32(attributes[ETHTOOL_A_CHANNELS_RX_COUNT]);
            channels.tx = U32(attributes[ETHTOOL_A_CHANNELS_TX_COUNT]);
            channels.combined = U32(attributes[ETHTOOL_A_CHANNELS_COMBINED_COUNT]);
        });
    return channels;
}

}  // namespace

void Nics::GetLinkInfo(const std::string& name, PnicInfo& info) {
    Ethtool& ethtool = EthtoolFamily();
    info = {};
    // A driver without link settings leaves port, PHY address and transceiver at zero.
    GetIfSupported(ethtool, ETHTOOL_MSG_LINKINFO_GET, name, ETHTOOL_A_LINKINFO_MAX,
                   [&info](const Attributes& attributes) {
                       info.port = U8(attributes[ETHTOOL_A_LINKINFO_PORT]);
                       info.phyAddress = U8(attributes[ETHTOOL_A_LINKINFO_PHYADDR]);
                       info.transceiver = U8(attributes[ETHTOOL_A_LINKINFO_TRANSCEIVER]);
                   });
    if (const auto modes = ReadLinkModes(ethtool, name)) {
        const std::vector<std::string>& names = StringSet(ethtool, name, ETH_SS_LINK_MODES);
        for (unsigned bit = 0; bit < names.size(); ++bit) {
            const auto mode = ParseLinkMode(names[bit]);
            if (mode && modes->ours.Mask(bit)) {
                info.supportedLinkModes.push_back(*mode);
            }
            if (mode && modes->ours.Value(bit)) {
                info.advertisedLinkModes.push_back(*mode);
            }
        }
        for (const auto& [bit, port] : kPortBits) {
            if (modes->ours.Mask(bit)) {
                info.supportedPorts.push_back(port);
            }
        }
        info.supportsAutoNegotiation = modes->ours.Mask(ETHTOOL_LINK_MODE_Autoneg_BIT);
        info.advertisedAutoNegotiation = modes->ours.Value(ETHTOOL_LINK_MODE_Autoneg_BIT);
        info.autoNegotiation = modes->autoNegotiation ? 1 : 0;
        info.speed = modes->speed;
        info.duplex = modes->duplex;
    }
    GetIfSupported(ethtool, ETHTOOL_MSG_WOL_GET, name, ETHTOOL_A_WOL_MAX,
                   [&info](const Attributes& attributes) {
                       const Bitset modes = ReadBitset(attributes[ETHTOOL_A_WOL_MODES]);
                       for (const auto& [flag, mode] : kWakeOnFlags) {
                           if (modes.Mask(FlagBit(flag))) {
                               info.supportedWakeOn.push_back(mode);
                           }
                           if (modes.Value(FlagBit(flag))) {
                               info.wakeOn.push_back(mode);
                           }
                       }
                   });
    info.supportsWakeOn = info.supportedWakeOn.empty() ? 0 : 1;
    GetIfSupported(ethtool, ETHTOOL_MSG_DEBUG_GET, name, ETHTOOL_A_DEBUG_MAX,
                   [&info](const Attributes& attributes) {
                       const Bitset classes = ReadBitset(attributes[ETHTOOL_A_DEBUG_MSGMASK]);
                       info.supportsMessageLevel = 1;
                       info.messageLevel = classes.value.empty() ? 0 : classes.value.front();
                   });
    // The virtual address has no counterpart on Linux and stays empty.
}

// Every part is checked before the first is sent; the kernel then takes them one by one.
void Nics::SetLinkInfo(const std::string& name, const PnicInfo& change) {
    if (change.transceiverChanged || change.virtualAddressChanged) {
        throw HostCtlException(Live::kNotAvailable);
    }
    Ethtool& ethtool = EthtoolFamily();
    std::vector<Message> requests;
    requests.reserve(4);
    if (change.portChanged || change.phyAddressChanged) {
        Message& request = requests.emplace_back(ethtool.Request(ETHTOOL_MSG_LINKINFO_SET, name));
        if (change.portChanged) {
            mnl_attr_put_u8(request.Header(), ETHTOOL_A_LINKINFO_PORT, Byte(change.port, "Port"));
        }
        if (change.phyAddressChanged) {
            mnl_attr_put_u8(request.Header(), ETHTOOL_A_LINKINFO_PHYADDR,
                            Byte(change.phyAddress, "PHY address"));
        }
    }
    if (change.advertisedLinkModesChanged || change.autoNegotiationChanged) {
        Message& request = requests.emplace_back(ethtool.Request(ETHTOOL_MSG_LINKMODES_SET, name));
        if (change.autoNegotiationChanged) {
            mnl_attr_put_u8(request.Header(), ETHTOOL_A_LINKMODES_AUTONEG,
                            change.autoNegotiation ? AUTONEG_ENABLE : AUTONEG_DISABLE);
        }
        if (change.advertisedLinkModesChanged) {
            const std::vector<std::string>& names = StringSet(ethtool, name, ETH_SS_LINK_MODES);
            std::vector<std::uint32_t> value((names.size() + 31) / 32);
            std::vector<std::uint32_t> mask(value.size());
            LinkModeBits(names, change.advertisedLinkModes, value, mask);
            PutBitset(request, ETHTOOL_A_LINKMODES_OURS, static_cast<unsigned>(names.size()), value,
                      mask);
        }
    }
    if (change.wakeOnChanged) {
        std::vector<std::uint32_t> value(1);
        std::vector<std::uint32_t> mask(1);
        for (const auto& [flag, mode] : kWakeOnFlags) {
            mask.front() |= flag;
            if (std::find(change.wakeOn.begin(), change.wakeOn.end(), mode) !=
                change.wakeOn.end()) {
                value.front() |= flag;
            }
        }
        Message& request = requests.emplace_back(ethtool.Request(ETHTOOL_MSG_WOL_SET, name));
        PutBitset(request, ETHTOOL_A_WOL_MODES, 32, value, mask);
    }
    if (change.messageLevelChanged) {
        Message& request = requests.emplace_back(ethtool.Request(ETHTOOL_MSG_DEBUG_SET, name));
        PutBitset(request, ETHTOOL_A_DEBUG_MSGMASK, 32, {change.messageLevel}, {});
    }
    for (Message& request : requests) {
        ethtool.Exchange(request);
    }
}

void Nics::SetSpeedDuplex(const std::string& name, unsigned speed, int duplex) {
    Message request = EthtoolFamily().Request(ETHTOOL_MSG_LINKMODES_SET, name);
    if (speed == 0 && duplex == 0) {
        mnl_attr_put_u8(request.Header(), ETHTOOL_A_LINKMODES_AUTONEG, AUTONEG_ENABLE);
    } else {
        if (duplex != static_cast<int>(kFullDuplex) && duplex != static_cast<int>(kHalfDuplex)) {
            throw HostCtlException("Duplex " + std::to_string(duplex) +
                                   " is unknown: 1 is full, 2 half");
        }
        mnl_attr_put_u8(request.Header(), ETHTOOL_A_LINKMODES_AUTONEG, AUTONEG_DISABLE);
        mnl_attr_put_u32(request.Header(), ETHTOOL_A_LINKMODES_SPEED, speed);
        mnl_attr_put_u8(request.Header(), ETHTOOL_A_LINKMODES_DUPLEX,
                        duplex == static_cast<int>(kFullDuplex) ? DUPLEX_FULL : DUPLEX_HALF);
    }
    EthtoolFamily().Exchange(request);
}

// A driver without pause parameters reads as not supporting them, as `nic get` shows it.
void Nics::GetPause(const std::string& name, PnicPauseParams& params) {
    Ethtool& ethtool = EthtoolFamily();
    params = {};
    const bool supported =
        GetIfSupported(ethtool, ETHTOOL_MSG_PAUSE_GET, name, ETHTOOL_A_PAUSE_MAX,
                       [&params](const Attributes& attributes) {
                           params.autoNegotiation = U8(attributes[ETHTOOL_A_PAUSE_AUTONEG]) ? 1 : 0;
                           params.rxPause = U8(attributes[ETHTOOL_A_PAUSE_RX]) ? 1 : 0;
                           params.txPause = U8(attributes[ETHTOOL_A_PAUSE_TX]) ? 1 : 0;
                       });
    params.supported = supported ? 1 : 0;
    if (supported && params.autoNegotiation) {
        if (const auto modes = ReadLinkModes(ethtool, name)) {
            ResolvePause(*modes, params);
        }
    }
}

void Nics::SetPause(const std::string& name, const PnicPauseParams& params) {
    Message request = EthtoolFamily().Request(ETHTOOL_MSG_PAUSE_SET, name);
    mnl_attr_put_u8(request.Header(), ETHTOOL_A_PAUSE_AUTONEG, params.autoNegotiation ? 1 : 0);
    mnl_attr_put_u8(request.Header(), ETHTOOL_A_PAUSE_RX, params.rxPause ? 1 : 0);
    mnl_attr_put_u8(request.Header(), ETHTOOL_A_PAUSE_TX, params.txPause ? 1 : 0);
    EthtoolFamily().Exchange(request);
}

// The kernel reports only the values its driver has; the others stay zero.
void Nics::GetCoalesce(const std::string& name, PnicCoalesceParams& params) {
    params = {};
    Get(EthtoolFamily(), ETHTOOL_MSG_COALESCE_GET, name, ETHTOOL_A_COALESCE_MAX,
        [&params](const Attributes& attributes) {
            for (const auto& [attribute, word] : kCoalesceWords) {
                params.*word = U32(attributes[attribute]);
            }
            for (const auto& [attribute, flag] : kCoalesceFlags) {
                params.*flag = U8(attributes[attribute]) ? 1 : 0;
            }
        });
}

// Sends only the values that differ from the driver's: the kernel refuses a value its driver
// doesn't have, even one left as it was read.
void Nics::SetCoalesce(const std::string& name, const PnicCoalesceParams& params) {
    PnicCoalesceParams current;
    GetCoalesce(name, current);
    Message request = EthtoolFamily().Request(ETHTOOL_MSG_COALESCE_SET, name);
    for (const auto& [attribute, word] : kCoalesceWords) {
        if (params.*word != current.*word) {
            mnl_attr_put_u32(request.Header(), attribute, params.*word);
        }
    }
    for (const auto& [attribute, flag] : kCoalesceFlags) {
        if ((params.*flag != 0) != (current.*flag != 0)) {
            mnl_attr_put_u8(request.Header(), attribute, params.*flag ? 1 : 0);
        }
    }
    EthtoolFamily().Exchange(request);
}

// The offload engine's name has no counterpart on Linux and stays empty.
void Nics::GetOffload(const std::string& name, PnicOffloadParams& params) {
    params = {};
    ReadOffload(EthtoolFamily(), name, params);
}

// The kernel quietly keeps a feature its driver can't change, or that needs another one off
// (segmentation without scatter-gather): what it kept against the request is refused.
void Nics::SetOffload(const std::string& name, const PnicOffloadParams& params) {
    Ethtool& ethtool = EthtoolFamily();
    const std::vector<std::string>& names = StringSet(ethtool, name, ETH_SS_FEATURES);
    Message request = ethtool.Request(ETHTOOL_MSG_FEATURES_SET, name);
    nlattr* wanted = mnl_attr_nest_start(request.Header(), ETHTOOL_A_FEATURES_WANTED);
    nlattr* bits = mnl_attr_nest_start(request.Header(), ETHTOOL_A_BITSET_BITS);
    for (const OffloadFeature& offload : kOffloadFeatures) {
        if (!(params.changeMask & offload.maskBit)) {
            continue;
        }
        for (std::string_view feature : offload.features) {
            if (feature.empty() || std::find(names.begin(), names.end(), feature) == names.end()) {
                continue;
            }
            nlattr* bit = mnl_attr_nest_start(request.Header(), ETHTOOL_A_BITSET_BITS_BIT);
            mnl_attr_put_strz(request.Header(), ETHTOOL_A_BITSET_BIT_NAME,
                              std::string(feature).c_str());
            if (params.*offload.flag) {
                mnl_attr_put(request.Header(), ETHTOOL_A_BITSET_BIT_VALUE, 0, nullptr);
            }
            mnl_attr_nest_end(request.Header(), bit);
        }
    }
    mnl_attr_nest_end(request.Header(), bits);
    mnl_attr_nest_end(request.Header(), wanted);
    ethtool.Exchange(request);
    PnicOffloadParams now;
    ReadOffload(ethtool, name, now);
    for (const OffloadFeature& offload : kOffloadFeatures) {
        const bool on = params.*offload.flag != 0;
        if ((params.changeMask & offload.maskBit) && (now.*offload.flag != 0) != on) {
            throw HostCtlException(
                "NIC " + name + " can't turn " + offload.words +
                (on ? " on: the kernel kept it off" : " off: the kernel kept it on"));
        }
    }
}

// A ring the driver doesn't have reads as zero, for its maximum and its size.
void Nics::GetRings(const std::string& name, PnicRingParams& preset, PnicRingParams& current) {
    preset = {};
    current = {};
    Get(EthtoolFamily(), ETHTOOL_MSG_RINGS_GET, name, ETHTOOL_A_RINGS_MAX,
        [&preset, &current](const Attributes& attributes) {
            for (const RingSize& ring : kRingSizes) {
                preset.*ring.size = U32(attributes[ring.maximum]);
                current.*ring.size = U32(attributes[ring.current]);
            }
        });
}

void Nics::SetRings(const std::string& name, const PnicRingParams& params) {
    Message request = EthtoolFamily().Request(ETHTOOL_MSG_RINGS_SET, name);
    for (const RingSize& ring : kRingSizes) {
        if (params.changeMask & ring.maskBit) {
            mnl_attr_put_u32(request.Header(), ring.current, params.*ring.size);
        }
    }
    EthtoolFamily().Exchange(request);
}

// A combined channel serves one queue each way, so each side counts its own channels and the
// combined ones.
void Nics::GetQueues(const std::string& name, PnicNetqueueParams& params) {
    const Channels channels = ReadChannels(EthtoolFamily(), name);
    params = {};
    params.rxQueueCount = channels.rx + channels.combined;
    params.txQueueCount = channels.tx + channels.combined;
}

// A side with channels of its own gets as many as the count leaves beside the combined ones;
// a side that has only combined channels changes the combined count, and with it the other
// side.
void Nics::SetQueues(const std::string& name, const PnicNetqueueParams& params) {
    if (params.settingMask != 0 || params.stateChanged || params.pluginChanged) {
        throw HostCtlException(Live::kNotAvailable);
    }
    const Channels channels = ReadChannels(EthtoolFamily(), name);
    Message request = EthtoolFamily().Request(ETHTOOL_MSG_CHANNELS_SET, name);
    std::optional<std::uint32_t> combined;
    auto putSide = [&](const char* side, std::uint32_t count, std::uint32_t ownMaximum,
                       std::uint16_t attribute) {
        if (ownMaximum == 0 && channels.combinedMaximum > 0) {
            if (combined && *combined != count) {
                throw HostCtlException("NIC " + name +
                                       " has combined channels only: its Tx and Rx netqueue "
                                       "counts can't differ");
            }
            combined = count;
            return;
        }
        if (count < channels.combined) {
            throw HostCtlException(std::string(side) + " netqueue count " + std::to_string(count) +
                                   " of NIC " + name + " is below its " +
                                   std::to_string(channels.combined) + " combined channels");
        }
        mnl_attr_put_u32(request.Header(), attribute, count - channels.combined);
    };
    if (params.txCountChanged) {
        putSide("Tx", params.txQueueCount, channels.txMaximum, ETHTOOL_A_CHANNELS_TX_COUNT);
    }
    if (params.rxCountChanged) {
        putSide("Rx", params.rxQueueCount, channels.rxMaximum, ETHTOOL_A_CHANNELS_RX_COUNT);
    }
    if (combined) {
        mnl_attr_put_u32(request.Header(), ETHTOOL_A_CHANNELS_COMBINED_COUNT, *combined);
    }
    EthtoolFamily().Exchange(request);
}

}  // namespace HostSim::Linux
