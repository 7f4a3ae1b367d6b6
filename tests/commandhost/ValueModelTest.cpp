// libcpptools: result values, Input reads, and the command tree.
#include <limits>
#include <list>

#include "commandhost/HostFixture.h"

namespace CommandHostTesting {
namespace {

using CppTools::AutoCli::Namespace;
using CppTools::AutoCli::NamespaceNode;
using CppTools::CallSpec::ParameterSpec;
namespace CallSpec = CppTools::CallSpec;

std::vector<std::string> FieldNames(const MetaStruct& structure) {
    std::vector<std::string> names;
    for (const auto& field : structure.GetFields()) {
        names.push_back(field.Name());
    }
    return names;
}

TEST(MetaStructTest, KeepsFirstSetOrderAndReplacesInPlace) {
    auto structure = MetaStruct::New("Nic");
    structure->SetField("Name", "hwnic0");
    structure->SetField("Speed", 100L);
    structure->SetField(std::string("Up"), true);
    structure->SetField("Speed", 1000);
    EXPECT_EQ(FieldNames(*structure), (std::vector<std::string>{"Name", "Speed", "Up"}));
    const auto* speed = dynamic_cast<const MetaInt*>(structure->GetField("Speed"));
    ASSERT_TRUE(speed);
    EXPECT_EQ(speed->GetValue(), 1000);
    EXPECT_EQ(structure->GetField("Missing"), nullptr);
}

// A field's value may be held elsewhere too (another struct, the caller): setting the field
// then never changes what the others hold. An empty field set to a value of another kind takes
// that kind.
TEST(MetaStructTest, SettingAFieldLeavesAValueHeldElsewhereAsItWas) {
    auto shared = MetaString::New("hwnic0");
    auto first = MetaStruct::New("Nic");
    auto second = MetaStruct::New("Nic");
    first->SetField("Name", shared);
    second->SetField("Name", shared);
    first->SetField("Name", std::string("hwnic1"));
    EXPECT_EQ(shared->GetValue(), "hwnic0");
    EXPECT_EQ(dynamic_cast<const MetaString&>(*second->GetField("Name")).GetValue(), "hwnic0");
    EXPECT_EQ(dynamic_cast<const MetaString&>(*first->GetField("Name")).GetValue(), "hwnic1");

    auto row = MetaStruct::New("Nic");
    row->SetField("Speed", MetaString::New());
    row->SetField("Speed", 10L);
    ASSERT_EQ(row->GetField("Speed")->GetType(), CppTools::MetaObj::MetaTypeInt);
    row->SetField("Name", MetaString::New());
    EXPECT_FALSE(row->GetField("Name")->HasValue());
    row->SetField("Name", "hwnic2");
    EXPECT_TRUE(row->GetField("Name")->HasValue());
}

TEST(MetaStructTest, StringVectorBecomesAListOfStrings) {
    auto structure = MetaStruct::New(std::string("Policy"));
    structure->SetField("Active", std::vector<std::string>{"hwnic0", "hwnic1"});
    const auto* list = dynamic_cast<const MetaList*>(structure->GetField("Active"));
    ASSERT_TRUE(list);
    EXPECT_EQ(list->GetElementType(), CppTools::MetaObj::MetaTypeString);
    ASSERT_EQ(list->GetCount(), 2u);
    EXPECT_EQ(std::static_pointer_cast<MetaString>(list->GetElements()[1])->GetValue(), "hwnic1");
}

TEST(MetaValueTest, EmptyValuesHaveNoValueAndSetOnesHave) {
    EXPECT_FALSE(MetaString::New()->HasValue());
    EXPECT_FALSE(MetaInt::New()->HasValue());
    EXPECT_FALSE(MetaBool::New()->HasValue());
    EXPECT_TRUE(MetaString::New("")->HasValue());
    EXPECT_TRUE(MetaInt::New(0L)->HasValue());
    EXPECT_TRUE(MetaBool::New(false)->HasValue());
}

TEST(MetaListTest, AddsEveryKindOfElement) {
    auto list = MetaList::New(CppTools::MetaObj::MetaTypeString);
    list->Add("a");
    list->Add(std::string("b"));
    list->Add(MetaString::New("c"));
    list->AddAll({"d", "e"});
    ASSERT_EQ(list->GetCount(), 5u);
    EXPECT_EQ(std::static_pointer_cast<MetaString>(list->GetElements()[4])->GetValue(), "e");
    auto prototype = MetaStruct::New("Row");
    auto rows = MetaList::New(CppTools::MetaObj::MetaTypeStruct, prototype);
    rows->Add(MetaStruct::New("Row"));
    EXPECT_EQ(rows->GetPrototype(), prototype);
    EXPECT_EQ(rows->GetCount(), 1u);
}

std::shared_ptr<Input> MakeInput() {
    auto spec = InputSpec::New();
    spec->AddParameter(ParameterSpec::New("mtu", CallSpec::ParameterTypeInt));
    spec->AddParameter(ParameterSpec::New("up", CallSpec::ParameterTypeBool));
    spec->AddParameter(ParameterSpec::New("name", CallSpec::ParameterTypeString));
    spec->AddParameter(ParameterSpec::New("tag", CallSpec::ParameterTypeStringList));
    spec->AddParameter(ParameterSpec::New("force", CallSpec::ParameterTypeFlag));
    return Input::New(spec);
}

TEST(InputTest, AbsentParametersReadAsZero) {
    auto input = MakeInput();
    EXPECT_EQ(input->GetParameterInt("mtu"), 0);
    EXPECT_FALSE(input->GetParameterBool("up"));
    EXPECT_EQ(input->GetParameter("name"), "");
    EXPECT_FALSE(input->HasParameter("name"));
    EXPECT_FALSE(input->IsFlagSet("force"));
    std::vector<std::string> tags;
    input->GetParameterList("tag", tags);
    EXPECT_TRUE(tags.empty());
}

TEST(InputTest, ValuesKeepTheirTypedText) {
    auto input = MakeInput();
    input->AddValue("mtu", "+09000");
    input->AddValue("up", "YES");
    input->AddValue("tag", "a");
    input->AddValue("tag", "b");
    input->AddValue("force", "");
    EXPECT_EQ(input->GetParameter("mtu"), "+09000");
    EXPECT_EQ(input->GetParameterInt(std::string("mtu")), 9000);
    EXPECT_TRUE(input->GetParameterBool("up"));
    EXPECT_TRUE(input->IsFlagSet("force"));
    std::vector<std::string> tags;
    input->GetParameterList("tag", tags);
    EXPECT_EQ(tags, (std::vector<std::string>{"a", "b"}));
}

TEST(ParseTextTest, IntsAreSigned64BitDecimals) {
    long value = 7;
    EXPECT_TRUE(CallSpec::ParseIntText("-9223372036854775808", value));
    EXPECT_EQ(value, std::numeric_limits<long>::min());
    EXPECT_TRUE(CallSpec::ParseIntText("+12", value));
    EXPECT_EQ(value, 12);
    for (const char* bad :
         {"", "+", "-", "9223372036854775808", "12x", " 1", "0x10", "+-1", "1.0"}) {
        value = 7;
        EXPECT_FALSE(CallSpec::ParseIntText(bad, value)) << bad;
        EXPECT_EQ(value, 7) << bad;
    }
}

TEST(ParseTextTest, BoolsAcceptThreeSpellingsInAnyCase) {
    for (const char* yes : {"true", "TRUE", "Yes", "1"}) {
        bool value = false;
        EXPECT_TRUE(CallSpec::ParseBoolText(yes, value) && value) << yes;
    }
    for (const char* no : {"false", "False", "NO", "0"}) {
        bool value = true;
        EXPECT_TRUE(CallSpec::ParseBoolText(no, value) && !value) << no;
    }
    bool value = false;
    EXPECT_FALSE(CallSpec::ParseBoolText("on", value));
    EXPECT_FALSE(CallSpec::ParseBoolText("", value));
}

TEST(CommandTreeTest, ChildrenKeepRegistrationOrderAndKnowTheirPath) {
    auto root = Namespace::New();
    auto network = Namespace::New();
    auto nic = Namespace::New();
    root->RegisterNamespaceNode(network, "network");
    network->RegisterNamespaceNode(nic, std::string("nic"));
    network->RegisterNamespaceNode(Namespace::New(), "ip");
    network->RegisterNamespaceNode(Namespace::New(), "firewall");
    EXPECT_EQ(network->GetNamespaceNodeNames(),
              (std::vector<std::string>{"nic", "ip", "firewall"}));
    EXPECT_EQ(nic->GetPath(), (std::vector<std::string>{"network", "nic"}));
    EXPECT_EQ(nic->GetPathString('.'), "network.nic");
    EXPECT_EQ(nic->GetName(), "nic");
    EXPECT_EQ(nic->GetParent(), network);
    EXPECT_EQ(nic->GetThis(), nic);
    EXPECT_TRUE(network->HasNamespaceNode("ip"));
    EXPECT_FALSE(network->HasNamespaceNode("vm"));
    EXPECT_EQ(root->GetPathString(' '), "");
    EXPECT_EQ(network->GetNamespaceNodes().size(), 3u);
}

TEST(CommandTreeTest, ResolveNodeFollowsThePathAsFarAsItLeads) {
    auto root = Namespace::New();
    auto network = Namespace::New();
    root->RegisterNamespaceNode(network, "network");
    auto nic = network->SubNamespace("nic");
    EXPECT_EQ(network->SubNamespace("nic"), nic);
    std::list<std::string> path{"network", "nic", "bogus", "more"};
    EXPECT_EQ(root->ResolveNode(path), nic);
    EXPECT_EQ(path, (std::list<std::string>{"bogus", "more"}));
}

TEST(CommandTreeTest, CommandsAreLeavesThatRunTheirLogic) {
    bool ran = false;
    auto command = ScriptedCommand::New("Runs.", {}, ScriptedCommand::Root::Bool,
                                        [&ran](const Input&, Output& output) {
                                            ran = true;
                                            output.SetRootObject(MetaBool::New(true));
                                        });
    EXPECT_EQ(command->GetType(), CppTools::AutoCli::NodeTypeCommand);
    EXPECT_EQ(Namespace::New()->GetType(), CppTools::AutoCli::NodeTypeNamespace);
    EXPECT_EQ(Namespace::New()->GetDispatcher(), nullptr);
    auto output = Output::New();
    command->GetDispatcher()->Execute(Input::New(InputSpec::New()), output);
    EXPECT_TRUE(ran);
    EXPECT_FALSE(output->HasError());
    command->SetDefaultOutputParameter("fields:Nic", "Name");
    command->SetDefaultOutputParameter("wrap-last", "true");
    command->SetDefaultOutputParameter(std::string("fields:Nic"), std::string("Name,MTU"));
    ASSERT_EQ(command->GetDefaultOutputParameters().size(), 2u);
    EXPECT_EQ(command->GetDefaultOutputParameters()[0].second, "Name,MTU");
}

}  // namespace
}  // namespace CommandHostTesting
