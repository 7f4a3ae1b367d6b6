// `network nic hwCap supported list` and `nic hwCap activated list`: the hardware capabilities
// of each NIC, by name.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"
#include "kelmctl/PnicImpl.h"
#include "nic/NicQueueCommon.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;

constexpr char kSupportedField[] = "Device Hardware Cap Supported";
constexpr char kActivatedField[] = "Device Hardware Cap Activated";

constexpr Field kSupportedFields[] = {
    {kNicField, FieldType::String, 1},
    {kSupportedField, FieldType::String, 2},
};
constexpr Field kActivatedFields[] = {
    {kNicField, FieldType::String, 1},
    {kActivatedField, FieldType::String, 2},
};
constexpr Declare::StructShape kSupportedStruct = {"Settings", kSupportedFields};
constexpr Declare::StructShape kActivatedStruct = {"Settings", kActivatedFields};
constexpr Declare::Parameter kParameters[] = {
    {kHwnicParameter, "n", Declare::Type::List, false,
     "Limit the output to only the physical NICS with the specified names."},
};

constexpr char kNotAvailable[] = "N/A";
constexpr char kNameSeparator[] = "   ";
constexpr char kCantFind[] = "Can't find PNIC with name ";
constexpr unsigned kShownBits = 31;

// Capability names of bits 0 to 30 of the chosen mask, each followed by three blanks; "N/A"
// when the NIC can't report.
std::string CapabilityText(const HostCtl::Network::Pnic& pnic, bool activated) {
    try {
        HostCtl::Network::PnicHwCapabilities capabilities;
        pnic.GetHwCapabilities(capabilities);
        const std::uint64_t mask =
            activated ? capabilities.activatedMask : capabilities.supportedMask;
        std::string text;
        text.reserve(100);
        for (unsigned bit = 0; bit < kShownBits; ++bit) {
            if (mask & (std::uint64_t{1} << bit)) {
                text += KelmCtl::Network::PnicImpl::GetHwCapName(static_cast<unsigned char>(bit));
                text += kNameSeparator;
            }
        }
        return text;
    } catch (const HostCtl::Lib::HostCtlException&) {
        return kNotAvailable;
    }
}

void ListCapabilities(const Input& input, Output& output, bool activated,
                      std::shared_ptr<MetaStruct> (*makeRow)()) {
    auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
    auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, makeRow());
    std::vector<std::unique_ptr<HostCtl::Network::Pnic>> pnics;
    if (input.HasParameter(kHwnicParameter)) {
        std::vector<std::string> names;
        input.GetParameterList(kHwnicParameter, names);
        pnics.reserve(names.size());
        for (const std::string& name : names) {
            auto pnic = networkInfo->GetPnicByName(name, false);
            if (!pnic) {
                output.AddErrorMessage(kCantFind + name);
                return;
            }
            pnics.push_back(std::move(pnic));
        }
    } else {
        pnics = networkInfo->GetPnics(HostCtl::Network::PnicGetAll);
    }
    list->Reserve(pnics.size());
    const char* field = activated ? kActivatedField : kSupportedField;
    for (const auto& pnic : pnics) {
        if (!pnic) {
            continue;
        }
        auto row = makeRow();
        row->SetField(kNicField, pnic->GetName());
        row->SetField(field, CapabilityText(*pnic, activated));
        list->Add(row);
    }
    output.SetRootObject(list);
}

}  // namespace

constexpr Declare::CommandShape kNicHwCapSupportedListShape = {
    .description = "List supported hardware capabilities of physical NICs.",
    .formatter = "table",
    .parameters = kParameters,
    .root = Declare::Root::List,
    .structure = &kSupportedStruct,
};

constexpr Declare::CommandShape kNicHwCapActivatedListShape = {
    .description = "List activated hardware capabilities of physical NICs.",
    .formatter = "table",
    .parameters = kParameters,
    .root = Declare::Root::List,
    .structure = &kActivatedStruct,
};

NETWORK_COMMAND(NicHwCapSupportedList, kNicHwCapSupportedListShape) {
    try {
        ListCapabilities(*input, *output, false, &GetOutputStructure);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicHwCapActivatedList, kNicHwCapActivatedListShape) {
    try {
        ListCapabilities(*input, *output, true, &GetOutputStructure);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
