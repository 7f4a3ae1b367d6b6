#include "commandhost/generate/CommandTree.h"

#include "commandhost/cli/Completion.h"
#include "commandhost/cli/Help.h"

namespace Generate {

namespace CallSpec = CppTools::CallSpec;
using CppTools::AutoCli::CommandSpec;
using CppTools::AutoCli::NamespaceNode;

const std::vector<Choice> kBoolChoices = {{"true", {}}, {"false", {}}};

namespace {

std::vector<Choice> ChoicesOf(const CallSpec::ParameterConstraint& constraint) {
    std::vector<Choice> choices;
    if (constraint.GetType() == CallSpec::ConstraintStringEnum) {
        for (const auto& choice : constraint.GetStringEnum()) {
            choices.push_back({choice.value, choice.description});
        }
    } else if (constraint.GetType() == CallSpec::ConstraintIntEnum) {
        for (long value : constraint.GetIntEnum()) {
            choices.push_back({std::to_string(value), {}});
        }
    }
    return choices;
}

Parameter Describe(const CallSpec::ParameterSpec& spec, const std::string& commandPath) {
    Parameter parameter;
    parameter.name = spec.GetName();
    parameter.shortName = spec.GetShortName();
    parameter.description = CommandHost::ExpandDescription(spec);
    parameter.required = spec.IsRequired();
    parameter.repeatable = spec.GetType() == CallSpec::ParameterTypeStringList;
    switch (spec.GetType()) {
        case CallSpec::ParameterTypeFlag:
            parameter.kind = ValueKind::None;
            return parameter;
        case CallSpec::ParameterTypeBool:
            parameter.valueWord = "bool";
            parameter.kind = ValueKind::Choice;
            parameter.choices = kBoolChoices;
            return parameter;
        case CallSpec::ParameterTypeInt:
            parameter.valueWord = "int";
            break;
        default:
            parameter.valueWord = "string";
    }
    if (spec.GetConstraint()) {
        parameter.choices = ChoicesOf(*spec.GetConstraint());
    }
    if (!parameter.choices.empty()) {
        parameter.kind = ValueKind::Choice;
    } else if (CommandHost::FindObjectSource(commandPath, parameter.name) != nullptr) {
        parameter.kind = ValueKind::Object;
    }
    return parameter;
}

void Walk(NamespaceNode& node, std::vector<Node>& nodes) {
    Node entry;
    entry.path = node.GetPathString(' ');
    entry.name = node.GetName();
    entry.description = node.GetDescription();
    entry.isCommand = node.GetType() == CppTools::AutoCli::NodeTypeCommand;
    const auto children = node.GetNamespaceNodes();
    for (const auto& child : children) {
        entry.children.push_back(child->GetName());
    }
    if (entry.isCommand) {
        auto& command = dynamic_cast<CommandSpec&>(node);
        if (const auto spec = command.GetInputSpec()) {
            for (const auto& parameter : spec->GetParameters()) {
                entry.parameters.push_back(Describe(*parameter, entry.path));
            }
        }
        entry.output = CommandHost::OutputSummary(command);
    }
    nodes.push_back(std::move(entry));
    for (const auto& child : children) {
        Walk(*child, nodes);
    }
}

}  // namespace

std::vector<Node> WalkTree(NamespaceNode& root) {
    std::vector<Node> nodes;
    Walk(root, nodes);
    return nodes;
}

std::string FirstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

}  // namespace Generate
