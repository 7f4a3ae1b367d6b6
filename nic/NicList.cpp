// `network nic list`: the inventory of physical NICs.
#include <cstring>

#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"
#include "hostctl/SmartNic.h"
#include "nic/NicCommon.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;

constexpr char kName[] = "Name";
constexpr char kPciDevice[] = "PCI Device";
constexpr char kDriver[] = "Driver";
constexpr char kLink[] = "Link";
constexpr char kAdminStatus[] = "Admin Status";
constexpr char kLinkStatus[] = "Link Status";
constexpr char kSpeed[] = "Speed";
constexpr char kDuplex[] = "Duplex";
constexpr char kMacAddress[] = "MAC Address";
constexpr char kMtu[] = "MTU";
constexpr char kDescription[] = "Description";
constexpr char kDpuId[] = "DPU Id";

constexpr Field kNicFields[] = {
    {kName, FieldType::String, 1},         {kPciDevice, FieldType::String, 2},
    {kDriver, FieldType::String, 3},       {kLink, FieldType::String},
    {kAdminStatus, FieldType::String, 4},  {kLinkStatus, FieldType::String, 5},
    {kSpeed, FieldType::Int, 6},           {kDuplex, FieldType::String, 7},
    {kMacAddress, FieldType::String, 8},   {kMtu, FieldType::Int, 9},
    {kDescription, FieldType::String, 10}, {kDpuId, FieldType::String},
};
constexpr Declare::StructShape kNic = {"Nic", kNicFields};

constexpr char kUp[] = "Up";
constexpr char kDown[] = "Down";
constexpr char kPseudo[] = "Pseudo";
constexpr char kUnknown[] = "Unknown";
constexpr char kDescriptorSeparator[] = ":";
constexpr char kListError[] = "Unable to list NICs.  Error was ";

const char* UpDown(bool up) {
    return up ? kUp : kDown;
}

struct VendorAndDevice {
    std::string vendor = kUnknown;
    std::string device = kUnknown;
};

// Vendor and device of a pseudo NIC, from its descriptor "Kind:Vendor:Device". A descriptor
// of a known kind that lacks a field keeps "Unknown" for what is missing; one whose reading
// fails, or of no known kind, gives "Unknown" for both.
VendorAndDevice ReadDescriptor(const HostCtl::Network::Pnic& pnic) {
    static constexpr const char* kKinds[] = {"USB-NIC", "ACPI-NIC", "PhyDev"};
    VendorAndDevice result;
    try {
        const std::string descriptor = pnic.GetDeviceDescriptor();
        char copy[128];
        std::strncpy(copy, descriptor.c_str(), sizeof(copy) - 1);
        copy[sizeof(copy) - 1] = '\0';
        char* position = nullptr;
        if (descriptor.empty() || strtok_r(copy, kDescriptorSeparator, &position) == nullptr) {
            return result;
        }
        bool known = false;
        for (const char* kind : kKinds) {
            const std::size_t length = std::strlen(kind);
            if (descriptor.size() >= length && descriptor.compare(0, length, kind) == 0) {
                known = true;
                break;
            }
        }
        if (!known) {
            return result;
        }
        if (const char* vendor = strtok_r(nullptr, kDescriptorSeparator, &position)) {
            result.vendor = vendor;
            if (const char* device = strtok_r(nullptr, kDescriptorSeparator, &position)) {
                result.device = device;
            }
        }
    } catch (const HostCtl::Lib::HostCtlException&) {
        return VendorAndDevice{};
    }
    return result;
}

}  // namespace

constexpr Declare::CommandShape kNicListShape = {
    .description =
        "This command will list the Physical NICs currently installed and loaded on "
        "the system.",
    .formatter = "table",
    .root = Declare::Root::List,
    .structure = &kNic,
};

NETWORK_COMMAND(NicList, kNicListShape) {
    auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
    try {
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        auto pnics = networkInfo->GetPnics(HostCtl::Network::PnicGetAll);
        for (const auto& pnic : pnics) {
            if (!pnic) {
                continue;
            }
            auto row = GetOutputStructure();
            const std::string name = pnic->GetName();
            row->SetField(kName, name);
            std::string pciText;
            VendorAndDevice hardware;
            if (auto pciDevice = pnic->GetPciDevice()) {
                pciText = pciDevice->GetAddress();
                hardware.vendor = pciDevice->GetVendorName();
                hardware.device = pciDevice->GetDeviceName();
            } else {
                pciText = kPseudo;
                hardware = ReadDescriptor(*pnic);
            }
            row->SetField(kPciDevice, std::move(pciText));
            row->SetField(kDriver, pnic->GetDriverName());
            row->SetField(kLink, UpDown(pnic->IsLinkUp()));
            row->SetField(kAdminStatus, UpDown(pnic->GetAdminStatus()));
            row->SetField(kLinkStatus, UpDown(pnic->GetLinkStatus()));
            row->SetField(kSpeed, static_cast<long>(pnic->GetSpeed()));
            row->SetField(kDuplex, DuplexWord(pnic->GetDuplex()));
            row->SetField(kMacAddress, pnic->GetMacAddress().GetStringAddress());
            row->SetField(kMtu, static_cast<long>(pnic->GetMtu()));
            row->SetField(kDescription, hardware.vendor + " " + hardware.device);
            row->SetField(kDpuId, BackingDpuId(name));
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(kListError + std::string(e.what()));
    }
}

}  // namespace ZanvexCli::NetworkNamespace
