#include "frame/Declaration.h"

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

}  // namespace

std::shared_ptr<MetaStruct> MakeStruct(const StructShape& shape) {
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
                structure->SetField(field.name, MakeStruct(*field.nested));
                break;
        }
    }
    return structure;
}

std::shared_ptr<InputSpec> MakeInputSpec(std::span<const Parameter> parameters) {
    auto spec = InputSpec::New();
    for (const Parameter& parameter : parameters) {
        auto parameterSpec = ParameterSpec::New(parameter.name, ToParameterType(parameter.type));
        if (parameter.shortName != nullptr) {
            parameterSpec->SetShortName(parameter.shortName);
        }
        parameterSpec->SetDescription(parameter.description);
        parameterSpec->SetRequired(parameter.required);
        if (auto constraint = MakeConstraint(parameter)) {
            parameterSpec->SetConstraint(constraint);
        }
        spec->AddParameter(parameterSpec);
    }
    return spec;
}

std::shared_ptr<OutputSpec> MakeOutputSpec(const CommandShape& shape) {
    auto spec = OutputSpec::New();
    switch (shape.root) {
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
            spec->SetRootObject(MakeStruct(*shape.structure));
            break;
        case Root::List:
            spec->SetRootObject(
                MetaList::New(CppTools::MetaObj::MetaTypeStruct, MakeStruct(*shape.structure)));
            break;
    }
    return spec;
}

void ApplyShape(CppTools::AutoCli::CommandSpec& command, const CommandShape& shape) {
    command.SetDescription(shape.description);
    if (shape.formatter != nullptr) {
        command.SetDefaultOutputFormatter(shape.formatter);
    }
    for (const OutputParameter& parameter : shape.outputParameters) {
        command.SetDefaultOutputParameter(parameter.key, parameter.value);
    }
}

}  // namespace ZanvexCli::NetworkNamespace::Declare
