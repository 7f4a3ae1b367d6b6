// The completion entry: the names of the host's objects that a parameter may name, from the list
// command that shows them, run in-process on the host chosen for the process.
#include "commandhost/cli/Completion.h"

#include <algorithm>
#include <iterator>

#include "commandhost/cli/CommandHost.h"
#include "commandhost/cli/CommandLine.h"
#include "commandhost/cli/Text.h"

namespace CommandHost {

using CppTools::MetaObj::MetaList;
using CppTools::MetaObj::MetaString;
using CppTools::MetaObj::MetaStruct;
using CppTools::MetaObj::MetaValue;

namespace {

constexpr std::string_view kNicList = "network nic list";
constexpr std::string_view kStandardSwitchList = "network vswitch standard list";
constexpr std::string_view kDistributedSwitchList = "network vswitch dvs zanvex list";

constexpr ObjectSource kObjectSources[] = {
    {"nic-name", kNicList, "Name", {}},
    {"hwnic", kNicList, "Name", {}},
    {"uplink-name", kNicList, "Name", {}},
    {"vswitch-name", kStandardSwitchList, "Name", "network vswitch standard add"},
    {"dvs", kDistributedSwitchList, "Name", {}},
    {"dvs-name", kDistributedSwitchList, "Name", {}},
    {"ods", kDistributedSwitchList, "Name", {}},
    {"ods-name", kDistributedSwitchList, "Name", {}},
    {"portgroup-name", "network vswitch standard portgroup list", "Name",
     "network vswitch standard portgroup add"},
    {"interface-name", "network ip interface list", "Name", "network ip interface add"},
    {"netstack", "network ip netstack list", "Key", "network ip netstack add"},
    {"ruleset-id", "network firewall ruleset list", "Name", {}},
};

std::vector<std::string> SplitWords(std::string_view text) {
    std::vector<std::string> words;
    while (!text.empty()) {
        const size_t end = text.find(' ');
        words.emplace_back(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return words;
}

// The text of a row's name: a string element, or the named field of a struct.
const std::string* NameOf(const MetaValue& row, std::string_view field) {
    const MetaValue* value = &row;
    if (row.GetType() == CppTools::MetaObj::MetaTypeStruct) {
        value = static_cast<const MetaStruct&>(row).GetField(field);
    }
    if (value == nullptr || value->GetType() != CppTools::MetaObj::MetaTypeString) {
        return nullptr;
    }
    return &static_cast<const MetaString&>(*value).GetValue();
}

}  // namespace

std::span<const ObjectSource> ObjectSources() {
    return kObjectSources;
}

const ObjectSource* FindObjectSource(std::string_view path, std::string_view parameter) {
    const auto* source = std::find_if(
        std::begin(kObjectSources), std::end(kObjectSources),
        [parameter](const ObjectSource& entry) { return entry.parameter == parameter; });
    if (source == std::end(kObjectSources) || source->creator == path) {
        return nullptr;
    }
    return source;
}

int CommandHost::Complete(std::span<const std::string> words, OutputChannel& out,
                          OutputChannel& err) {
    if (words.empty()) {
        err.Write("autocli " + std::string(kCompleteWord) +
                  ": give the command's path and the parameter to complete.\n");
        return ExitRefused;
    }
    const std::string& option = words.back();
    std::shared_ptr<CppTools::AutoCli::CommandSpec> command;
    try {
        Resolution resolution = Resolve({words.begin(), words.end() - 1});
        if (resolution.next + 1 == words.size() &&
            resolution.node->GetType() == CppTools::AutoCli::NodeTypeCommand) {
            command = std::dynamic_pointer_cast<CppTools::AutoCli::CommandSpec>(resolution.node);
        }
    } catch (const CommandLineError& e) {
        err.Write(std::string(e.what()) + "\n");
        return ExitRefused;
    }
    if (!command) {
        err.Write("autocli " + std::string(kCompleteWord) + ": " + QuoteValue(option) +
                  " does not follow the path of a command.\n");
        return ExitRefused;
    }
    const auto spec = command->GetInputSpec();
    const auto parameters = spec
                                ? spec->GetParameters()
                                : std::vector<std::shared_ptr<CppTools::CallSpec::ParameterSpec>>();
    const auto parameter = std::find_if(parameters.begin(), parameters.end(), [&](const auto& p) {
        return option == OptionName(*p) ||
               (!p->GetShortName().empty() && option == "-" + p->GetShortName());
    });
    const ObjectSource* source =
        parameter == parameters.end()
            ? nullptr
            : FindObjectSource(command->GetPathString(' '), (*parameter)->GetName());
    if (source == nullptr) {
        return ExitOk;
    }

    const RunResult result = Run(SplitWords(source->listCommand));
    std::string messages;
    for (const std::string& message : result.hostMessages) {
        messages.append(message).push_back('\n');
    }
    if (result.output) {
        for (const std::string& message : result.output->GetErrorMessages()) {
            messages.append(message).push_back('\n');
        }
    }
    std::string names;
    const auto& root = result.output ? result.output->GetRootObject() : nullptr;
    if (result.status == ExitOk && root && root->GetType() == CppTools::MetaObj::MetaTypeList) {
        for (const auto& row : static_cast<const MetaList&>(*root).GetElements()) {
            // A name that would break the one-name-a-line answer is left out.
            const std::string* name = row ? NameOf(*row, source->nameField) : nullptr;
            if (name != nullptr && !name->empty() && name->find('\n') == std::string::npos) {
                names.append(*name).push_back('\n');
            }
        }
    }
    if (!messages.empty()) {
        err.Write(messages);
    }
    if (!names.empty() && !out.Write(names).empty()) {
        return ExitOutputFailed;
    }
    return result.status;
}

}  // namespace CommandHost
