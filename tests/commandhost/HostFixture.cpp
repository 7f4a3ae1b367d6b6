#include "commandhost/HostFixture.h"

#include <string_view>

namespace CommandHostTesting {

namespace {

using CppTools::AutoCli::Namespace;
using Declare::Choice;
using Declare::Type;

constexpr long kSpeeds[] = {10, 100, 1000};
constexpr Choice kDuplexes[] = {{"full"}, {"half"}};
constexpr Choice kPolicies[] = {{"explicit", "Always use the first active uplink."},
                                {"iphash", "Choose an uplink by a hash of the addresses."}};

constexpr Declare::Parameter kSetParameters[] = {
    {"nic-name", "n", Type::String, true, "The NIC to change."},
    {.name = "count",
     .shortName = "c",
     .type = Type::Int,
     .required = false,
     .description = "How many, %ENUM%.",
     .range = true,
     .low = 1,
     .high = 10},
    {.name = "speed",
     .shortName = "s",
     .type = Type::Int,
     .required = false,
     .description = "Speed in Mbps. Acceptable values are: %ENUM%",
     .intChoices = kSpeeds},
    {.name = "duplex",
     .shortName = "d",
     .type = Type::String,
     .required = false,
     .description = "The duplex: %ENUM%",
     .stringChoices = kDuplexes},
    {.name = "policy",
     .shortName = "p",
     .type = Type::String,
     .required = false,
     .description = "The teaming policy: %FULLENUM%",
     .stringChoices = kPolicies},
    {.name = "interface-name",
     .shortName = "i",
     .type = Type::String,
     .required = false,
     .description = "An interface, kelmX.",
     .regex = "kelm([0-9]|[1-9][0-9])"},
    {"enabled", "e", Type::Bool, false, "Whether the NIC is enabled."},
    {"force", "f", Type::Flag, false, "Skip the checks."},
    {"tag", "t", Type::List, false, "A tag; repeat for more."},
    {"offset", nullptr, Type::Int, false, "An offset."},
};

constexpr Declare::Parameter kEchoParameters[] = {
    {"text", "x", Type::String, false, "The text to give back."},
};

constexpr Declare::Field kDetailFields[] = {
    {"Vendor", Declare::FieldType::String},
    {"Model", Declare::FieldType::String},
};
constexpr Declare::StructShape kDetailShape = {"Detail", kDetailFields};
constexpr Declare::Field kNicFields[] = {
    {"Name", Declare::FieldType::String},
    {"Speed", Declare::FieldType::Int},
    {"Link Up", Declare::FieldType::Bool},
    {"Addresses", Declare::FieldType::StringList},
    {"Detail", Declare::FieldType::Struct, 0, &kDetailShape},
    {"Comment", Declare::FieldType::String},
};
constexpr Declare::StructShape kNicShape = {"Nic", kNicFields};

}  // namespace

std::shared_ptr<ScriptedCommand> ScriptedCommand::New(
    const char* description, std::span<const Declare::Parameter> parameters, Root root,
    Behaviour behaviour) {
    auto command = std::make_shared<ScriptedCommand>(parameters, root, std::move(behaviour));
    command->PrimeThis(command);
    command->SetDescription(description);
    return command;
}

std::shared_ptr<InputSpec> ScriptedCommand::GetInputSpecInternal() {
    return Declare::MakeInputSpec(parameters_);
}

std::shared_ptr<OutputSpec> ScriptedCommand::GetOutputSpecInternal() {
    auto spec = OutputSpec::New();
    switch (root_) {
        case Root::Bool:
            spec->SetRootObject(MetaBool::New());
            break;
        case Root::String:
            spec->SetRootObject(MetaString::New());
            break;
        case Root::NicList:
            spec->SetRootObject(
                MetaList::New(CppTools::MetaObj::MetaTypeStruct,
                              Declare::MakeStruct(Declare::PackStruct<kNicShape>())));
            break;
    }
    return spec;
}

void ScriptedCommand::ExecuteInternal(const std::shared_ptr<Input>& input,
                                      const std::shared_ptr<Output>& output) {
    lastInput_ = input;
    ++runs_;
    behaviour_(*input, *output);
}

std::shared_ptr<MetaStruct> SampleNic(const char* name, long speed, bool up,
                                      std::vector<std::string> addresses) {
    auto nic = Declare::MakeStruct(Declare::PackStruct<kNicShape>());
    nic->SetField("Name", name);
    nic->SetField("Speed", speed);
    nic->SetField("Link Up", up);
    nic->SetField("Addresses", addresses);
    auto detail = Declare::MakeStruct(Declare::PackStruct<kDetailShape>());
    detail->SetField("Vendor", "Zanvex");
    detail->SetField("Model", std::string("ZX-") + name);
    nic->SetField("Detail", detail);
    return nic;
}

std::shared_ptr<MetaList> SampleNics() {
    auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct,
                              Declare::MakeStruct(Declare::PackStruct<kNicShape>()));
    list->Add(SampleNic("hwnic0", 10000, true, {"192.0.2.10", "192.0.2.11"}));
    list->Add(SampleNic("hwnic1", 1000, false, {}));
    return list;
}

HostTest::HostTest() {
    auto leave = [this](const Input&, Output& output) {
        for (const std::string& message : errors_) {
            output.AddErrorMessage(message);
        }
        if (!result_) {
            return;
        }
        switch (result_->GetType()) {
            case CppTools::MetaObj::MetaTypeBool:
                output.SetRootObject(std::static_pointer_cast<MetaBool>(result_));
                break;
            case CppTools::MetaObj::MetaTypeInt:
                output.SetRootObject(std::static_pointer_cast<MetaInt>(result_));
                break;
            case CppTools::MetaObj::MetaTypeString:
                output.SetRootObject(std::static_pointer_cast<MetaString>(result_));
                break;
            case CppTools::MetaObj::MetaTypeStruct:
                output.SetRootObject(std::static_pointer_cast<MetaStruct>(result_));
                break;
            case CppTools::MetaObj::MetaTypeList:
                output.SetRootObject(std::static_pointer_cast<MetaList>(result_));
                break;
        }
    };
    set_ = ScriptedCommand::New(
        "Change a demonstration NIC.", kSetParameters, ScriptedCommand::Root::Bool,
        [](const Input&, Output& output) { output.SetRootObject(MetaBool::New(true)); });
    list_ = ScriptedCommand::New("List the demonstration NICs.", {}, ScriptedCommand::Root::NicList,
                                 leave);
    list_->SetDefaultOutputFormatter("table");
    get_ = ScriptedCommand::New("Show one demonstration NIC.", {}, ScriptedCommand::Root::NicList,
                                leave);
    get_->SetDefaultOutputFormatter("simple");
    echo_ =
        ScriptedCommand::New("Give back the text.", kEchoParameters, ScriptedCommand::Root::String,
                             [](const Input& input, Output& output) {
                                 output.SetRootObject(MetaString::New(input.GetParameter("text")));
                             });

    auto demo = Namespace::New();
    demo->SetDescription("Demonstration commands for the host's tests.");
    auto nic = Namespace::New();
    nic->SetDescription("Commands on demonstration NICs.");
    nic->RegisterNamespaceNode(set_, "set");
    nic->RegisterNamespaceNode(list_, "list");
    nic->RegisterNamespaceNode(get_, "get");
    demo->RegisterNamespaceNode(nic, "nic");
    demo->RegisterNamespaceNode(echo_, "echo");
    host_.GetRoot()->RegisterNamespaceNode(demo, "demo");
}

int HostTest::Main(const std::vector<std::string>& arguments) {
    struct StringChannel : CommandHost::OutputChannel {
        explicit StringChannel(std::string& text) : text(text) { text.clear(); }
        std::string Write(std::string_view written) override {
            text.append(written);
            return {};
        }
        std::string& text;
    };
    StringChannel out(out_);
    StringChannel err(err_);
    return host_.Main(arguments, out, err);
}

}  // namespace CommandHostTesting
