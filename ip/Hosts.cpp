// `network ip hosts list|add|remove`: the user's entries of the hosts file.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "kelmctl/HostsFile.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;

constexpr char kIpParameter[] = "ip";
constexpr char kHostNameParameter[] = "hostname";
constexpr char kAliasParameter[] = "alias";
constexpr char kCommentParameter[] = "comment";
constexpr char kIpDescription[] = "The IP address (v4 or v6) of the host.";
constexpr char kHostNameDescription[] = "The name of the host.";
constexpr char kAddFailed[] = "Error adding etc host item:";
constexpr char kRemoveFailed[] = "Error removing etc host item:";

constexpr char kIpAddress[] = "IP address";
constexpr char kHostName[] = "HostName";
constexpr char kAliases[] = "Aliases";
constexpr char kComment[] = "Comment";

constexpr Declare::Parameter kAddParameters[] = {
    {kIpParameter, "I", Declare::Type::String, true, kIpDescription},
    {kHostNameParameter, "H", Declare::Type::String, true, kHostNameDescription},
    {kAliasParameter, "A", Declare::Type::List, false, "The list of aliases of the host."},
    {kCommentParameter, "C", Declare::Type::String, false, "Comment line of this item"},
};

constexpr Declare::Parameter kRemoveParameters[] = {
    {kIpParameter, "I", Declare::Type::String, true, kIpDescription},
    {kHostNameParameter, "H", Declare::Type::String, true, kHostNameDescription},
};

constexpr Field kFields[] = {
    {kIpAddress, FieldType::String, 1},
    {kHostName, FieldType::String, 2},
    {kAliases, FieldType::StringList, 3},
    {kComment, FieldType::String, 4},
};
constexpr Declare::StructShape kHostEntry = {"IpHostList", kFields};

}  // namespace

constexpr Declare::CommandShape kIpHostsListShape = {
    .description = "List the user specified associations of IP addresses with host names.",
    .formatter = "simple",
    .root = Declare::Root::List,
    .structure = &kHostEntry,
};

constexpr Declare::CommandShape kIpHostsAddShape = {
    .description = "Add association of IP addresses with host names.",
    .parameters = kAddParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kIpHostsRemoveShape = {
    .description = "Remove association of IP addresses with host names.",
    .parameters = kRemoveParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(IpHostsList, kIpHostsListShape) {
    try {
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        KelmCtl::Network::HostsFile hostsFile;
        const auto entries = hostsFile.GetEntriesFromConfig();
        list->Reserve(entries.size());
        for (const auto& entry : entries) {
            auto row = GetOutputStructure();
            row->SetField(kIpAddress, entry.GetIpAddress());
            row->SetField(kHostName, entry.GetHostName());
            auto aliases = MetaList::New(CppTools::MetaObj::MetaTypeString);
            aliases->AddAll(std::vector<std::string>(entry.GetAliases()));
            row->SetField(kAliases, aliases);
            row->SetField(kComment, entry.GetComment());
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(IpHostsAdd, kIpHostsAddShape) {
    try {
        const std::string& ip = input->GetParameter(kIpParameter);
        const std::string& hostName = input->GetParameter(kHostNameParameter);
        std::vector<std::string> aliases;
        input->GetParameterList(kAliasParameter, aliases);
        const std::string& comment = input->GetParameter(kCommentParameter);
        KelmCtl::Network::HostsFile hostsFile;
        hostsFile.AddEntryFromUser(ip, hostName, aliases, comment);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(kAddFailed + std::string(e.what()));
    }
}

NETWORK_COMMAND(IpHostsRemove, kIpHostsRemoveShape) {
    try {
        const std::string& ip = input->GetParameter(kIpParameter);
        const std::string& hostName = input->GetParameter(kHostNameParameter);
        KelmCtl::Network::HostsFile hostsFile;
        hostsFile.RemoveEntryFromUser(ip, hostName);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(kRemoveFailed + std::string(e.what()));
    }
}

}  // namespace ZanvexCli::NetworkNamespace
