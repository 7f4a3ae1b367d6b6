#include "firewall/FirewallCommon.h"
#include "frame/Declaration.h"
#include "kelmctl/ModuleImpl.h"
#include "kelmctl/SystemInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

constexpr char kLoaded[] = "Loaded";
constexpr char kEnabled[] = "Enabled";
constexpr char kDefaultAction[] = "DefaultAction";
constexpr char kPass[] = "PASS";
constexpr char kDrop[] = "DROP";
constexpr char kStatusFailed[] = "Unable to get firewall status: ";

constexpr Declare::Field kFirewallFields[] = {
    {kLoaded, Declare::FieldType::Bool},
    {kEnabled, Declare::FieldType::Bool},
    {kDefaultAction, Declare::FieldType::String},
};
constexpr Declare::StructShape kFirewall = {"Firewall", kFirewallFields};

}  // namespace

constexpr Declare::CommandShape kFirewallGetShape = {
    .description = "Get the firewall status.",
    .formatter = "simple",
    .outputParameters = {},
    .parameters = {},
    .root = Declare::Root::Struct,
    .structure = &kFirewall,
};

NETWORK_COMMAND(FirewallGet, kFirewallGetShape) {
    try {
        KelmCtl::System::SystemInfoImpl system;
        KelmCtl::System::ModuleImpl module(Firewall::kFirewallModule);
        const bool loaded = module.IsLoaded();
        // An unloaded firewall passes everything and is not asked.
        bool enabled = false;
        bool pass = true;
        if (loaded) {
            enabled = system.IsFirewallEnabled();
            pass = system.GetFirewallDefaultAction();
        }
        auto firewall = GetOutputStructure();
        firewall->SetField(kLoaded, loaded);
        firewall->SetField(kEnabled, enabled);
        firewall->SetField(kDefaultAction, pass ? kPass : kDrop);
        output->SetRootObject(firewall);
    } catch (const HostCtl::Lib::HostCtlException& error) {
        output->AddErrorMessage(kStatusFailed + std::string(error.what()));
    }
}

}  // namespace ZanvexCli::NetworkNamespace
