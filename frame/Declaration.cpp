#include "frame/Declaration.h"

#include <algorithm>
#include <string>
#include <vector>

namespace ZanvexCli::NetworkNamespace::Declare {

using CppTools::CallSpec::ParameterConstraint;
using CppTools::CallSpec::ParameterSpec;
namespace CallSpec = CppTools::CallSpec;

namespace {

CallSpec::ParameterType ToParameterType(Type type) {
    switch (type) {
        case Type::String:
            return CallSpec::ParameterTypeString;
        case Type::Int:
            return CallSpec::ParameterTypeInt;
        case Type::Bool:
            return CallSpec::ParameterTypeBool;
        case Type::Flag:
            return CallSpec::ParameterTypeFlag;
        case Type::List:
            return CallSpec::ParameterTypeStringList;
    }
    return CallSpec::ParameterTypeString;
}

std::shared_ptr<ParameterConstraint> MakeConstraint(const Parameter& parameter) {
    if (parameter.range) {
        auto constraint = ParameterConstraint::New(CallSpec::ConstraintIntRange);
        constraint->SetIntRange(parameter.low, parameter.high);
        return constraint;
    }
    if (!parameter.intChoices.empty()) {
        auto constraint = ParameterConstraint::New(CallSpec::ConstraintIntEnum);
        for (long value : parameter.intChoices) {
            constraint->AddIntEnum(value);
        }
        return constraint;
    }
    if (!parameter.stringChoices.empty()) {
        auto constraint = ParameterConstraint::New(CallSpec::ConstraintStringEnum);
        for (const Choice& choice : parameter.stringChoices) {
            if (choice.description != nullptr) {
                constraint->AddStringEnum(choice.value, choice.description);
            } else {
                constraint->AddStringEnum(choice.value);
            }
        }
        return constraint;
    }
    if (parameter.regex != nullptr) {
        auto constraint = ParameterConstraint::New(CallSpec::ConstraintStringRegex);
        constraint->SetStringRegex(parameter.regex);
        return constraint;
    }
    return nullptr;
}

void AddParameter(InputSpec& spec, const Parameter& parameter) {
    auto parameterSpec = ParameterSpec::New(parameter.name, ToParameterType(parameter.type));
    if (parameter.shortName != nullptr) {
        parameterSpec->SetShortName(parameter.shortName);
    }
    parameterSpec->SetDescription(parameter.description);
    parameterSpec->SetRequired(parameter.required);
    if (auto constraint = MakeConstraint(parameter)) {
        parameterSpec->SetConstraint(constraint);
    }
    spec.AddParameter(parameterSpec);
}

std::shared_ptr<MetaStruct> BuildStruct(const StructShape& shape) {
    auto structure = MetaStruct::New(shape.name);
    for (const Field& field : shape.fields) {
        switch (field.type) {
            case FieldType::String:
                structure->SetField(field.name, MetaString::New());
                break;
            case FieldType::Int:
                structure->SetField(field.name, MetaInt::New());
                break;
            case FieldType::Bool:
                structure->SetField(field.name, MetaBool::New());
                break;
            case FieldType::StringList:
                structure->SetField(field.name, MetaList::New(CppTools::MetaObj::MetaTypeString));
                break;
            case FieldType::Struct:
                structure->SetField(field.name, BuildStruct(*field.nested));
                break;
            case FieldType::StructList:
                structure->SetField(field.name, MetaList::New(CppTools::MetaObj::MetaTypeStruct,
                                                              BuildStruct(*field.nested)));
                break;
        }
    }
    return structure;
}

// The columns `structure` and the structs in it show by default, as the output parameters
// "fields:<name>" the command host reads, each list in the order of the columns.
void AddColumns(CppTools::AutoCli::CommandSpec& command, const StructShape& structure) {
    std::vector<const Field*> shown;
    for (const Field& field : structure.fields) {
        if (field.column > 0) {
            shown.push_back(&field);
        }
    }
    std::sort(shown.begin(), shown.end(),
              [](const Field* a, const Field* b) { return a->column < b->column; });
    if (!shown.empty()) {
        std::string names;
        for (const Field* field : shown) {
            names += names.empty() ? "" : ",";
            names += field->name;
        }
        const char* name =
            structure.columnsName != nullptr ? structure.columnsName : structure.name;
        command.SetDefaultOutputParameter(std::string("fields:") + name, names);
    }
    for (const Field& field : structure.fields) {
        if (field.nested != nullptr) {
            AddColumns(command, *field.nested);
        }
    }
}

}  // namespace

UnpackedShape Unpack(const PackedShape& shape) {
    UnpackedShape unpacked;
    ShapeReader reader(shape.bytes, unpacked.store);
    LayCommand(reader, unpacked.shape);
    unpacked.shape.addParameters = shape.addParameters;
    unpacked.shape.describe = shape.describe;
    return unpacked;
}

// A struct of scalar fields, the row of most listings, is copied from a prototype made once for
// its shape: a row starts with one allocation for the struct and one for its fields, with no
// re-reading of the shape. A struct holding a struct or a list is built anew, for the command
// fills those in place. Commands run one at a time, as everywhere in the plug-in.
std::shared_ptr<MetaStruct> MakeStruct(PackedStruct shape) {
    static std::vector<std::pair<const char*, std::shared_ptr<const MetaStruct>>> prototypes;
    for (const auto& [bytes, prototype] : prototypes) {
        if (bytes == shape.bytes) {
            return std::make_shared<MetaStruct>(*prototype);
        }
    }
    ShapeStore store;
    StructShape structure{};
    ShapeReader reader(shape.bytes, store);
    LayStruct(reader, structure);
    auto built = BuildStruct(structure);
    const bool scalar =
        std::all_of(structure.fields.begin(), structure.fields.end(), [](const Field& field) {
            return field.type == FieldType::String || field.type == FieldType::Int ||
                   field.type == FieldType::Bool;
        });
    if (!scalar) {
        return built;
    }
    prototypes.emplace_back(shape.bytes, built);
    return std::make_shared<MetaStruct>(*built);
}

std::shared_ptr<InputSpec> MakeInputSpec(std::span<const Parameter> parameters) {
    auto spec = InputSpec::New();
    for (const Parameter& parameter : parameters) {
        AddParameter(*spec, parameter);
    }
    return spec;
}

std::shared_ptr<InputSpec> MakeInputSpec(const PackedShape& shape) {
    const UnpackedShape unpacked = Unpack(shape);
    auto spec = MakeInputSpec(unpacked.shape.parameters);
    if (shape.addParameters != nullptr) {
        shape.addParameters(spec);
    }
    return spec;
}

std::shared_ptr<OutputSpec> MakeOutputSpec(const PackedShape& shape) {
    const UnpackedShape unpacked = Unpack(shape);
    auto spec = OutputSpec::New();
    switch (unpacked.shape.root) {
        case Root::Bool:
            spec->SetRootObject(MetaBool::New());
            break;
        case Root::Int:
            spec->SetRootObject(MetaInt::New());
            break;
        case Root::String:
            spec->SetRootObject(MetaString::New());
            break;
        case Root::Struct:
            spec->SetRootObject(BuildStruct(*unpacked.shape.structure));
            break;
        case Root::List:
            spec->SetRootObject(MetaList::New(CppTools::MetaObj::MetaTypeStruct,
                                              BuildStruct(*unpacked.shape.structure)));
            break;
    }
    return spec;
}

}  // namespace ZanvexCli::NetworkNamespace::Declare

namespace ZanvexCli::NetworkNamespace {

CommandNode::CommandNode(const Declare::PackedShape& shape, CommandBody body)
    : shape_(&shape), body_(body) {
    const Declare::UnpackedShape unpacked = Declare::Unpack(shape);
    if (shape.describe != nullptr) {
        SetDescription(shape.describe());
    } else {
        SetDescription(unpacked.shape.description);
    }
    if (unpacked.shape.formatter != nullptr) {
        SetDefaultOutputFormatter(unpacked.shape.formatter);
    }
    if (unpacked.shape.structure != nullptr) {
        Declare::AddColumns(*this, *unpacked.shape.structure);
    }
    for (const Declare::OutputParameter& parameter : unpacked.shape.outputParameters) {
        SetDefaultOutputParameter(parameter.key, parameter.value);
    }
}

std::shared_ptr<NamespaceNode> CommandNode::GetThis() {
    return Command::GetThis();
}

CppTools::AutoCli::NodeType CommandNode::GetType() const {
    return Command::GetType();
}

std::vector<std::string> CommandNode::GetPath() const {
    return Command::GetPath();
}

std::string CommandNode::GetPathString(char separator) const {
    return Command::GetPathString(separator);
}

bool CommandNode::HasNamespaceNode(const std::string& name) const {
    return Command::HasNamespaceNode(name);
}

std::vector<std::string> CommandNode::GetNamespaceNodeNames() const {
    return Command::GetNamespaceNodeNames();
}

std::vector<std::shared_ptr<NamespaceNode>> CommandNode::GetNamespaceNodes() const {
    return Command::GetNamespaceNodes();
}

std::shared_ptr<NamespaceNode> CommandNode::GetNamespaceNode(const std::string& name) const {
    return Command::GetNamespaceNode(name);
}

void CommandNode::RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, std::string name) {
    Command::RegisterNamespaceNode(std::move(node), std::move(name));
}

void CommandNode::RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, const char* name) {
    Command::RegisterNamespaceNode(std::move(node), name);
}

std::shared_ptr<NamespaceNode> CommandNode::ResolveNode(std::list<std::string>& path) {
    return Command::ResolveNode(path);
}

std::shared_ptr<NamespaceNode> CommandNode::SubNamespace(const std::string& name) {
    return Command::SubNamespace(name);
}

CppTools::AutoCli::Dispatcher* CommandNode::GetDispatcher() {
    return Command::GetDispatcher();
}

void CommandNode::SetParent(std::shared_ptr<NamespaceNode> parent) {
    Command::SetParent(std::move(parent));
}

std::shared_ptr<NamespaceNode> CommandNode::GetParent() const {
    return Command::GetParent();
}

std::shared_ptr<InputSpec> CommandNode::GetInputSpec() {
    return Command::GetInputSpec();
}

std::shared_ptr<OutputSpec> CommandNode::GetOutputSpec() {
    return Command::GetOutputSpec();
}

void CommandNode::Execute(const std::shared_ptr<Input>& input,
                          const std::shared_ptr<Output>& output) {
    Command::Execute(input, output);
}

void CommandNode::ExecuteInternal(const std::shared_ptr<Input>& input,
                                  const std::shared_ptr<Output>& output) {
    body_(input, output);
}

std::shared_ptr<InputSpec> CommandNode::GetInputSpecInternal() {
    return Declare::MakeInputSpec(*shape_);
}

std::shared_ptr<OutputSpec> CommandNode::GetOutputSpecInternal() {
    return Declare::MakeOutputSpec(*shape_);
}

}  // namespace ZanvexCli::NetworkNamespace
