#include "frame/Declaration.h"

#include <cstring>

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

// Reads a packed shape in the order PackShape wrote it.
class ShapeReader {
public:
    explicit ShapeReader(const char* bytes) : next_(bytes) {}

    const char* Text() {
        if (*next_++ == 0) {
            return nullptr;
        }
        const char* text = next_;
        next_ += std::strlen(text) + 1;
        return text;
    }
    unsigned long long Number(int bytes) {
        unsigned long long value = 0;
        for (int i = 0; i < bytes; ++i) {
            value |= static_cast<unsigned long long>(static_cast<unsigned char>(*next_++))
                     << (8 * i);
        }
        return value;
    }
    std::size_t Count() { return static_cast<std::size_t>(Number(2)); }
    long Long() { return static_cast<long>(Number(8)); }
    char Byte() { return *next_++; }

private:
    const char* next_;
};

// Reads the head of a packed shape, up to its parameters: the kind of root, then the description
// and the default output, which `command` takes when one is given.
void ReadHead(ShapeReader& reader, CppTools::AutoCli::CommandSpec* command) {
    reader.Byte();
    const char* description = reader.Text();
    const char* formatter = reader.Text();
    if (command != nullptr) {
        command->SetDescription(description);
        if (formatter != nullptr) {
            command->SetDefaultOutputFormatter(formatter);
        }
    }
    for (std::size_t i = reader.Count(); i > 0; --i) {
        const char* key = reader.Text();
        const char* value = reader.Text();
        if (command != nullptr) {
            command->SetDefaultOutputParameter(key, value);
        }
    }
}

// Reads a struct in the order PackStructShape wrote it.
std::shared_ptr<MetaStruct> ReadStruct(ShapeReader& reader) {
    auto structure = MetaStruct::New(reader.Text());
    for (std::size_t i = reader.Count(); i > 0; --i) {
        const char* name = reader.Text();
        switch (static_cast<FieldType>(reader.Byte())) {
            case FieldType::String:
                structure->SetField(name, MetaString::New());
                break;
            case FieldType::Int:
                structure->SetField(name, MetaInt::New());
                break;
            case FieldType::Bool:
                structure->SetField(name, MetaBool::New());
                break;
            case FieldType::StringList:
                structure->SetField(name, MetaList::New(CppTools::MetaObj::MetaTypeString));
                break;
            case FieldType::Struct:
                structure->SetField(name, ReadStruct(reader));
                break;
            case FieldType::StructList:
                structure->SetField(
                    name, MetaList::New(CppTools::MetaObj::MetaTypeStruct, ReadStruct(reader)));
                break;
        }
    }
    return structure;
}

}  // namespace

std::shared_ptr<MetaStruct> MakeStruct(PackedStruct shape) {
    ShapeReader reader(shape.bytes);
    return ReadStruct(reader);
}

std::shared_ptr<InputSpec> MakeInputSpec(std::span<const Parameter> parameters) {
    auto spec = InputSpec::New();
    for (const Parameter& parameter : parameters) {
        AddParameter(*spec, parameter);
    }
    return spec;
}

std::shared_ptr<InputSpec> MakeInputSpec(const PackedShape& shape) {
    ShapeReader reader(shape.bytes);
    ReadHead(reader, nullptr);
    auto spec = InputSpec::New();
    std::vector<long> intChoices;
    std::vector<Choice> stringChoices;
    for (std::size_t i = reader.Count(); i > 0; --i) {
        Parameter parameter{};
        parameter.name = reader.Text();
        parameter.shortName = reader.Text();
        parameter.type = static_cast<Type>(reader.Byte());
        parameter.required = reader.Byte() != 0;
        parameter.description = reader.Text();
        parameter.range = reader.Byte() != 0;
        parameter.low = reader.Long();
        parameter.high = reader.Long();
        intChoices.resize(reader.Count());
        for (long& value : intChoices) {
            value = reader.Long();
        }
        stringChoices.resize(reader.Count());
        for (Choice& choice : stringChoices) {
            choice.value = reader.Text();
            choice.description = reader.Text();
        }
        parameter.regex = reader.Text();
        parameter.intChoices = intChoices;
        parameter.stringChoices = stringChoices;
        AddParameter(*spec, parameter);
    }
    return spec;
}

std::shared_ptr<OutputSpec> MakeOutputSpec(const PackedShape& shape) {
    auto spec = OutputSpec::New();
    switch (static_cast<Root>(ShapeReader(shape.bytes).Byte())) {
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
            spec->SetRootObject(MakeStruct(shape.structure));
            break;
        case Root::List:
            spec->SetRootObject(
                MetaList::New(CppTools::MetaObj::MetaTypeStruct, MakeStruct(shape.structure)));
            break;
    }
    return spec;
}

}  // namespace ZanvexCli::NetworkNamespace::Declare

namespace ZanvexCli::NetworkNamespace {

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

void CommandNode::TakeShape(const Declare::PackedShape& shape) {
    shape_ = &shape;
    Declare::ShapeReader reader(shape.bytes);
    Declare::ReadHead(reader, this);
}

std::shared_ptr<InputSpec> CommandNode::GetInputSpecInternal() {
    return Declare::MakeInputSpec(*shape_);
}

std::shared_ptr<OutputSpec> CommandNode::GetOutputSpecInternal() {
    return Declare::MakeOutputSpec(*shape_);
}

}  // namespace ZanvexCli::NetworkNamespace
