// Command declarations: the packed shapes of every command of the tree read back as they were
// packed, and a command declared in the one form gives the command host the specs, the default
// columns and the functions of its tables.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "cpptools/AutoCli.h"
#include "frame/Declaration.h"
#include "frame/NamespaceTree.h"
#include "support/CommandTest.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using CppTools::AutoCli::NodeTypeCommand;
using Declare::Field;
using Declare::FieldType;

// A sink that keeps the bytes a writer puts, at run time.
struct StringSink {
    std::string bytes;
    void Put(char byte) { bytes.push_back(byte); }
};

using Testing::RegisteredTree;
using Testing::WalkTree;

std::vector<std::string> FieldNames(const MetaStruct& structure) {
    std::vector<std::string> names;
    for (const auto& field : structure.GetFields()) {
        names.push_back(field.Name());
    }
    return names;
}

// The struct of a command's result, or of each of its elements; null for a scalar result.
const MetaStruct* ResultStruct(const CppTools::MetaObj::MetaValue* root) {
    if (const auto* structure = dynamic_cast<const MetaStruct*>(root)) {
        return structure;
    }
    if (const auto* list = dynamic_cast<const MetaList*>(root)) {
        return list->GetPrototype().get();
    }
    return nullptr;
}

// The names of the fields of `structure` shown by default, in the order of their columns.
std::string ShownColumns(const Declare::StructShape& structure) {
    std::vector<const Field*> shown;
    for (const Field& field : structure.fields) {
        if (field.column > 0) {
            shown.push_back(&field);
        }
    }
    std::sort(shown.begin(), shown.end(),
              [](const Field* a, const Field* b) { return a->column < b->column; });
    std::string names;
    for (const Field* field : shown) {
        names += (names.empty() ? "" : ",") + std::string(field->name);
    }
    return names;
}

// Every command of the tree, once per row of the table that names it.
TEST(Declaration, EveryCommandsPackedShapeReadsBackAsTheCommandHostSeesIt) {
    std::size_t commandRows = 0;
    for (const TreeTableRow& row : TreeTable()) {
        commandRows += row.command ? 1 : 0;
    }
    std::size_t commands = 0;
    WalkTree(RegisteredTree(), [&commands](const std::shared_ptr<NamespaceNode>& node) {
        if (node->GetType() != NodeTypeCommand) {
            return;
        }
        ++commands;
        SCOPED_TRACE(node->GetPathString(' '));
        auto& command = dynamic_cast<CommandNode&>(*node);
        const Declare::UnpackedShape unpacked = Declare::Unpack(command.Shape());
        const Declare::CommandShape& shape = unpacked.shape;

        // Packed again, the table gives the same bytes, and its struct starts where the command
        // reads it.
        StringSink head;
        Declare::ShapeWriter headWriter(head);
        Declare::LayHead(headWriter, shape);
        StringSink whole;
        Declare::ShapeWriter wholeWriter(whole);
        Declare::LayCommand(wholeWriter, shape);
        EXPECT_EQ(std::string(command.Shape().bytes, whole.bytes.size()), whole.bytes);
        EXPECT_EQ(command.Shape().structure.bytes, Declare::HasStruct(shape.root)
                                                       ? command.Shape().bytes + head.bytes.size()
                                                       : nullptr);

        if (shape.describe == nullptr) {
            EXPECT_EQ(command.GetDescription(), shape.description);
        }
        EXPECT_EQ(command.GetDefaultOutputFormatter(),
                  shape.formatter != nullptr ? shape.formatter : "");

        auto parameters = command.GetInputSpec()->GetParameters();
        ASSERT_GE(parameters.size(), shape.parameters.size());
        if (shape.addParameters == nullptr) {
            EXPECT_EQ(parameters.size(), shape.parameters.size());
        }
        for (std::size_t i = 0; i < shape.parameters.size(); ++i) {
            const Declare::Parameter& declared = shape.parameters[i];
            EXPECT_EQ(parameters[i]->GetName(), declared.name);
            EXPECT_EQ(parameters[i]->GetShortName(),
                      declared.shortName != nullptr ? declared.shortName : "");
            EXPECT_EQ(parameters[i]->IsRequired(), declared.required);
            EXPECT_EQ(parameters[i]->GetDescription(), declared.description);
        }

        const auto root = command.GetOutputSpec()->GetRootObject();
        const auto* result = ResultStruct(root.get());
        ASSERT_EQ(result != nullptr, Declare::HasStruct(shape.root));
        if (result == nullptr) {
            return;
        }
        std::vector<std::string> declaredNames;
        for (const Field& field : shape.structure->fields) {
            declaredNames.push_back(field.name);
        }
        EXPECT_EQ(FieldNames(*result), declaredNames);
        const std::string columns = ShownColumns(*shape.structure);
        const char* name = shape.structure->columnsName != nullptr ? shape.structure->columnsName
                                                                   : shape.structure->name;
        const auto& outputParameters = command.GetDefaultOutputParameters();
        const bool listed =
            std::any_of(outputParameters.begin(), outputParameters.end(), [&](const auto& entry) {
                return entry.first == std::string("fields:") + name && entry.second == columns;
            });
        EXPECT_EQ(listed, !columns.empty());
    });
    EXPECT_EQ(commands, commandRows);
}

// A command declared here, in the one form, with one of each kind of row.
constexpr long kSpeeds[] = {10, -100, 1000};
constexpr Declare::Choice kModes[] = {{"auto", "Chosen by the link"}, {"fixed"}};
constexpr Declare::Parameter kParameters[] = {
    {.name = "name",
     .shortName = "n",
     .type = Declare::Type::String,
     .required = true,
     .description = "Which one",
     .regex = "^[a-z]+[0-9]$"},
    {.name = "weight",
     .shortName = nullptr,
     .type = Declare::Type::Int,
     .required = false,
     .description = "How heavy",
     .range = true,
     .low = -5,
     .high = 5},
    {.name = "speed",
     .shortName = "s",
     .type = Declare::Type::Int,
     .required = false,
     .description = "How fast",
     .intChoices = kSpeeds},
    {.name = "mode",
     .shortName = "m",
     .type = Declare::Type::String,
     .required = false,
     .description = "Which way",
     .stringChoices = kModes},
};
constexpr Field kPortFields[] = {
    {"Port", FieldType::Int, 2},
    {"Hidden", FieldType::Bool},
    {"Label", FieldType::String, 1},
};
constexpr Declare::StructShape kPort = {"SamplePort", kPortFields, "SamplePorts"};
constexpr Field kSampleFields[] = {
    {"Name", FieldType::String, 1},
    {"Ports", FieldType::StructList, 0, &kPort},
    {"Tags", FieldType::StringList},
    {"Main Port", FieldType::Struct, 2, &kPort},
};
constexpr Declare::StructShape kSample = {"Sample", kSampleFields};
constexpr Declare::OutputParameter kOutputParameters[] = {{"header:Sample", "%Name%"}};

void AddLateParameter(const std::shared_ptr<InputSpec>& spec) {
    spec->AddParameter(
        CppTools::CallSpec::ParameterSpec::New("late", CppTools::CallSpec::ParameterTypeBool));
}

std::string DescribeSample() {
    return "Described when made";
}

}  // namespace

constexpr Declare::CommandShape kSampleListShape = {
    .description = "Lists samples",
    .formatter = "table",
    .outputParameters = kOutputParameters,
    .parameters = kParameters,
    .root = Declare::Root::List,
    .structure = &kSample,
};

NETWORK_COMMAND(SampleList, kSampleListShape) {
    auto row = GetOutputStructure();
    row->SetField("Name", input->GetParameter("name"));
    auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
    list->Add(row);
    output->SetRootObject(list);
}

constexpr Declare::CommandShape kSampleSetShape = {
    .description = "Sets a sample",
    .parameters = kParameters,
    .addParameters = AddLateParameter,
    .describe = DescribeSample,
};

NETWORK_COMMAND(SampleSet, kSampleSetShape) {
    output->SetRootObject(MetaBool::New(true));
}

namespace {

std::shared_ptr<CommandNode> Make(std::shared_ptr<NamespaceNode> (*make)()) {
    return std::dynamic_pointer_cast<CommandNode>(make());
}

TEST(Declaration, ParametersKeepTheirKindsAndConstraints) {
    auto parameters = Make(MakeCommandNode<SampleList>)->GetInputSpec()->GetParameters();
    ASSERT_EQ(parameters.size(), std::size(kParameters));
    using CppTools::CallSpec::ParameterConstraint;
    auto constraintOf = [&parameters](std::size_t i) -> const ParameterConstraint& {
        return *parameters.at(i)->GetConstraint();
    };
    EXPECT_EQ(constraintOf(0).GetType(), CppTools::CallSpec::ConstraintStringRegex);
    EXPECT_EQ(constraintOf(0).GetStringRegex(), kParameters[0].regex);
    EXPECT_EQ(constraintOf(1).GetType(), CppTools::CallSpec::ConstraintIntRange);
    EXPECT_EQ(constraintOf(1).GetLow(), kParameters[1].low);
    EXPECT_EQ(constraintOf(1).GetHigh(), kParameters[1].high);
    EXPECT_EQ(parameters[1]->GetShortName(), "");
    EXPECT_EQ(constraintOf(2).GetIntEnum(),
              std::vector<long>(std::begin(kSpeeds), std::end(kSpeeds)));
    const auto& modes = constraintOf(3).GetStringEnum();
    ASSERT_EQ(modes.size(), std::size(kModes));
    for (std::size_t i = 0; i < modes.size(); ++i) {
        EXPECT_EQ(modes[i].value, kModes[i].value);
        EXPECT_EQ(modes[i].description,
                  kModes[i].description != nullptr ? kModes[i].description : "");
    }
    const CppTools::CallSpec::ParameterType kinds[] = {
        CppTools::CallSpec::ParameterTypeString, CppTools::CallSpec::ParameterTypeInt,
        CppTools::CallSpec::ParameterTypeInt, CppTools::CallSpec::ParameterTypeString};
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        EXPECT_EQ(parameters[i]->GetType(), kinds[i]) << parameters[i]->GetName();
        EXPECT_EQ(parameters[i]->IsRequired(), kParameters[i].required);
    }
}

TEST(Declaration, DefaultColumnsFollowTheColumnNumbersOfEveryStruct) {
    auto command = Make(MakeCommandNode<SampleList>);
    EXPECT_EQ(command->GetDescription(), kSampleListShape.description);
    EXPECT_EQ(command->GetDefaultOutputFormatter(), kSampleListShape.formatter);
    // The columns come first, the result's struct before those in it, then the table's own.
    const std::vector<CppTools::AutoCli::CommandSpec::OutputParameter> expected = {
        {"fields:Sample", "Name,Main Port"},
        {"fields:SamplePorts", "Label,Port"},
        {kOutputParameters[0].key, kOutputParameters[0].value},
    };
    EXPECT_EQ(command->GetDefaultOutputParameters(), expected);
}

TEST(Declaration, ResultStructsNestAsDeclared) {
    const auto root = Make(MakeCommandNode<SampleList>)->GetOutputSpec()->GetRootObject();
    const auto* result = ResultStruct(root.get());
    ASSERT_TRUE(result);
    EXPECT_EQ(result->GetName(), kSample.name);
    ASSERT_EQ(result->GetFields().size(), std::size(kSampleFields));
    for (std::size_t i = 0; i < std::size(kSampleFields); ++i) {
        SCOPED_TRACE(kSampleFields[i].name);
        const bool nested = kSampleFields[i].nested != nullptr;
        const auto* structure = ResultStruct(result->GetFields()[i].Value());
        ASSERT_EQ(structure != nullptr, nested);
        if (nested) {
            EXPECT_EQ(structure->GetName(), kPort.name);
            EXPECT_EQ(FieldNames(*structure),
                      (std::vector<std::string>{"Port", "Hidden", "Label"}));
        }
    }
}

TEST(Declaration, FunctionsOfTheShapeDescribeAndAddParameters) {
    auto command = Make(MakeCommandNode<SampleSet>);
    EXPECT_EQ(command->GetDescription(), DescribeSample());
    EXPECT_TRUE(command->GetDefaultOutputParameters().empty());
    auto parameters = command->GetInputSpec()->GetParameters();
    ASSERT_EQ(parameters.size(), std::size(kParameters) + 1);
    EXPECT_EQ(parameters.back()->GetName(), "late");
    EXPECT_EQ(parameters.front()->GetName(), kParameters[0].name);
}

TEST(Declaration, ColumnsMustBeNumberedWithoutGapOrRepeat) {
    static constexpr Field kGap[] = {{"A", FieldType::Int, 1}, {"B", FieldType::Int, 3}};
    static constexpr Field kTwice[] = {{"A", FieldType::Int, 1}, {"B", FieldType::Int, 1}};
    static constexpr Field kNone[] = {{"A", FieldType::Int}};
    static constexpr Declare::StructShape kGapInside = {"Inner", kGap};
    static constexpr Field kNestedGap[] = {{"A", FieldType::Struct, 1, &kGapInside}};
    struct Case {
        Declare::StructShape structure;
        bool numbered;
    };
    const Case cases[] = {
        {{"Gap", kGap}, false},  {{"Twice", kTwice}, false},
        {{"None", kNone}, true}, {{"NestedGap", kNestedGap}, false},
        {kSample, true},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Declare::ColumnsAreNumbered(c.structure), c.numbered) << c.structure.name;
    }
}

}  // namespace
}  // namespace ZanvexCli::NetworkNamespace
