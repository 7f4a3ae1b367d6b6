// `network ip ipsec sa add|remove|list`: security associations, made by hand and known by name,
// or made by the kernel, named "auto" and known by source, destination and SPI.
#include <cinttypes>

#include "frame/Declaration.h"
#include "frame/SharedConstants.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/Misc.h"
#include "ip/IpsecLifetime.h"
#include "kelmctl/IpSecConfigImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using HostCtl::Network::IpSecSadParam;
using HostCtl::Network::Ipv6Address;
using KelmCtl::Network::IpSecConfigImpl;

constexpr char kNameParameter[] = "sa-name";
constexpr char kSourceParameter[] = "sa-source";
constexpr char kDestinationParameter[] = "sa-destination";
constexpr char kModeParameter[] = "sa-mode";
constexpr char kSpiParameter[] = "sa-spi";
constexpr char kEncryptionParameter[] = "encryption-algorithm";
constexpr char kEncryptionKeyParameter[] = "encryption-key";
constexpr char kIntegrityParameter[] = "integrity-algorithm";
constexpr char kIntegrityKeyParameter[] = "integrity-key";
constexpr char kRemoveAllParameter[] = "remove-all";

constexpr char kAutoName[] = "auto";
constexpr char kNullAlgorithm[] = "null";
constexpr char kBadSpi[] = "Check the input value for '--sa-spi'. Should be hex integer. Got ";
constexpr char kMissingKey[] = "Missing encryption key";
constexpr char kWhichRemoval[] =
    "Can not figure out which operation you want to perform.\n"
    "Remove a unique SA: Only specify the '--sa-name' option to remove a normal SA.\n"
    "Remove an auto SA: Set the '--sa-name' to 'auto'. You should also specify '--sa-source', "
    "'--sa-destination' and '--sa-spi' and omit '--remove-all' when removing an auto SA.\n"
    "Remove all SAs: You should only set the flag '--remove-all' to remove all SAs.";

constexpr char kName[] = "Name";
constexpr char kSourceAddress[] = "Source Address";
constexpr char kDestinationAddress[] = "Destination Address";
constexpr char kState[] = "State";
constexpr char kSpi[] = "SPI";
constexpr char kMode[] = "Mode";
constexpr char kEncryptionAlgorithm[] = "Encryption Algorithm";
constexpr char kIntegrityAlgorithm[] = "Integrity Algorithm";
constexpr char kLifetime[] = "Lifetime";

constexpr Declare::Choice kModes[] = {{"transport"}, {"tunnel"}};
constexpr Declare::Choice kEncryptionAlgorithms[] = {{"null"}, {"3des-cbc"}, {"aes128-cbc"}};
constexpr Declare::Choice kIntegrityAlgorithms[] = {{"hmac-sha1"}, {"hmac-sha2-256"}};

constexpr Declare::Parameter kAddParameters[] = {
    {kNameParameter, "n", Declare::Type::String, true,
     "Name for the Security Association to be added."},
    {kSourceParameter, "s", Declare::Type::String, true,
     "Ipv6 address of Security Association source. Can be specified a correct IPv6 address."},
    {kDestinationParameter, "d", Declare::Type::String, true,
     "Ipv6 address of Security Association destination. Can be specified a correct IPv6 "
     "address."},
    {kModeParameter,
     "m",
     Declare::Type::String,
     false,
     "Security Association mode. Should be one in set %ENUM%.",
     false,
     0,
     0,
     {},
     kModes},
    {kSpiParameter, "p", Declare::Type::String, true,
     "SPI value for the Security Association(hex)."},
    {kEncryptionParameter,
     "e",
     Declare::Type::String,
     true,
     "Encryption algorithm for the Security Association. Should be one in set %ENUM%.",
     false,
     0,
     0,
     {},
     kEncryptionAlgorithms},
    {kEncryptionKeyParameter, "k", Declare::Type::String, false,
     "Encryption key(ASCII or hex). Length of hex key is dependent upon algorithm used. "
     "Required when a encryption algorithm has been specified."},
    {kIntegrityParameter,
     "i",
     Declare::Type::String,
     true,
     "Integrity algorithm for the Security Association. Should be one in set %ENUM%.",
     false,
     0,
     0,
     {},
     kIntegrityAlgorithms},
    {kIntegrityKeyParameter, "K", Declare::Type::String, true,
     "Integrity key(ASCII or hex). Length of hex key is dependent upon algorithm used."},
};

constexpr Declare::Parameter kRemoveParameters[] = {
    {kNameParameter, "n", Declare::Type::String, false,
     "Name for the Security Association to be removed. Specify 'auto' to remove an auto SA."},
    {kRemoveAllParameter, "a", Declare::Type::Flag, false,
     "Set to remove all Security Associations."},
    {kSourceParameter, "s", Declare::Type::String, false,
     "Ipv6 address of Security Association source. This option needs to be specified when "
     "removing an auto SA."},
    {kDestinationParameter, "d", Declare::Type::String, false,
     "Ipv6 address of Security Association destination. This option needs to be specified when "
     "removing an auto SA."},
    {kSpiParameter, "p", Declare::Type::String, false,
     "SPI value for the Security Association (hex). This option needs to be specified when "
     "removing an auto SA"},
};

constexpr Field kFields[] = {
    {kName, FieldType::String, 1},
    {kSourceAddress, FieldType::String, 2},
    {kDestinationAddress, FieldType::String, 3},
    {kState, FieldType::String, 4},
    {kSpi, FieldType::String, 5},
    {kMode, FieldType::String, 6},
    {kEncryptionAlgorithm, FieldType::String, 7},
    {kIntegrityAlgorithm, FieldType::String, 8},
    {kLifetime, FieldType::String, 9},
};
constexpr Declare::StructShape kAssociation = {"SecurityAssociation", kFields};

IpSecSadParam NewAssociation() {
    IpSecSadParam association;
    association.source = Ipv6Address(kUnspecifiedIpv6Address);
    association.destination = Ipv6Address(kUnspecifiedIpv6Address);
    return association;
}

// The address the user typed, which the record keeps in its normal form.
Ipv6Address ReadAddress(const Input& input, const char* parameter) {
    return Ipv6Address(input.GetParameter(parameter));
}

}  // namespace

std::string ConvertToHrsMinsAndSecs(std::uint64_t seconds) {
    if (seconds == 0) {
        return "infinite";
    }
    const std::uint64_t parts[] = {seconds / 3600, seconds / 60 % 60, seconds % 60};
    constexpr const char* kUnits[] = {"h ", "m ", "s "};
    std::string text;
    for (std::size_t part = 0; part < std::size(parts); ++part) {
        if (parts[part] != 0) {
            text += std::to_string(parts[part]) + kUnits[part];
        }
    }
    return text;
}

constexpr Declare::CommandShape kIpIpsecSAAddShape = {
    .description = "Add a Security Association.",
    .parameters = kAddParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kIpIpsecSARemoveShape = {
    .description = "Operation to remove Security Association(s)",
    .parameters = kRemoveParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kIpIpsecSAListShape = {
    .description = "List configured Security Associations",
    .formatter = "table",
    .root = Declare::Root::List,
    .structure = &kAssociation,
};

NETWORK_COMMAND(IpIpsecSAAdd, kIpIpsecSAAddShape) {
    try {
        IpSecConfigImpl config;
        IpSecSadParam association = NewAssociation();
        association.name = input->GetParameter(kNameParameter);
        association.source = ReadAddress(*input, kSourceParameter);
        association.destination = ReadAddress(*input, kDestinationParameter);
        const std::string& spiText = input->GetParameter(kSpiParameter);
        try {
            std::size_t consumed = 0;
            const unsigned long spi = std::stoul(spiText, &consumed, 16);
            if (consumed != spiText.size()) {
                output->AddErrorMessage(kBadSpi + spiText);
                return;
            }
            association.spi = static_cast<std::uint32_t>(spi);
        } catch (const std::exception&) {
            output->AddErrorMessage(kBadSpi + spiText);
            return;
        }
        association.mode = IpSecConfigImpl::StringToIpSecMode(input->GetParameter(kModeParameter));
        const std::string& encryption = input->GetParameter(kEncryptionParameter);
        association.encryptionAlgorithm = IpSecConfigImpl::StringToIpSecEncyptAlgo(encryption);
        association.integrityAlgorithm =
            IpSecConfigImpl::StringToIpSecAuthAlgo(input->GetParameter(kIntegrityParameter));
        association.integrityKey = input->GetParameter(kIntegrityKeyParameter);
        if (input->HasParameter(kEncryptionKeyParameter)) {
            association.encryptionKey = input->GetParameter(kEncryptionKeyParameter);
        } else if (encryption != kNullAlgorithm) {
            output->AddErrorMessage(kMissingKey);
            return;
        }
        config.AddSADConfig(association);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(IpIpsecSARemove, kIpIpsecSARemoveShape) {
    try {
        IpSecConfigImpl config;
        const bool named = input->HasParameter(kNameParameter);
        const bool all = input->IsFlagSet(kRemoveAllParameter);
        const bool source = input->HasParameter(kSourceParameter);
        const bool destination = input->HasParameter(kDestinationParameter);
        const bool spi = input->HasParameter(kSpiParameter);
        const bool automatic = named && input->GetParameter(kNameParameter) == kAutoName;
        if (named && !automatic && !all && !source && !destination && !spi) {
            config.RemoveSADConfig(input->GetParameter(kNameParameter));
        } else if (automatic && source && destination && spi && !all) {
            IpSecSadParam association = NewAssociation();
            association.name = kAutoName;
            association.source = ReadAddress(*input, kSourceParameter);
            association.destination = ReadAddress(*input, kDestinationParameter);
            try {
                association.spi = static_cast<std::uint32_t>(
                    std::stoul(input->GetParameter(kSpiParameter), nullptr, 16));
            } catch (const std::exception&) {
                association.spi = 0;
            }
            config.RemoveAutoSADConfig(association);
        } else if (all && !named && !source && !destination && !spi) {
            config.FlushSADConfig();
        } else {
            output->AddErrorMessage(kWhichRemoval);
            return;
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(IpIpsecSAList, kIpIpsecSAListShape) {
    try {
        IpSecConfigImpl config;
        std::vector<IpSecSadParam> associations;
        config.GetSADConfigList(associations);
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        for (const auto& association : associations) {
            auto row = GetOutputStructure();
            row->SetField(kName, association.name);
            row->SetField(kSourceAddress, association.source.GetStringAddress());
            row->SetField(kDestinationAddress, association.destination.GetStringAddress());
            row->SetField(kState, IpSecConfigImpl::SA_STATE[association.state]);
            row->SetField(kSpi, HostCtl::Misc::StrPrintf("0x%" PRIx32, association.spi));
            row->SetField(kMode, IpSecConfigImpl::SA_MODE[association.mode]);
            row->SetField(kEncryptionAlgorithm,
                          IpSecConfigImpl::SA_ENCPT_ALG[association.encryptionAlgorithm]);
            row->SetField(kIntegrityAlgorithm,
                          IpSecConfigImpl::SA_AUTH_ALG[association.integrityAlgorithm]);
            row->SetField(kLifetime, ConvertToHrsMinsAndSecs(association.lifetime));
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
