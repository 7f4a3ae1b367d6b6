// A command host with a small tree of test commands, and running autocli's Main on it.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "commandhost/cli/CommandHost.h"
#include "frame/Declaration.h"

namespace CommandHostTesting {

namespace Declare = ZanvexCli::NetworkNamespace::Declare;
using CppTools::AutoCli::Command;
using CppTools::CallSpec::Input;
using CppTools::CallSpec::InputSpec;
using CppTools::CallSpec::Output;
using CppTools::CallSpec::OutputSpec;
using CppTools::MetaObj::MetaBool;
using CppTools::MetaObj::MetaInt;
using CppTools::MetaObj::MetaList;
using CppTools::MetaObj::MetaString;
using CppTools::MetaObj::MetaStruct;
using CppTools::MetaObj::MetaValue;

// A command whose parameters, result shape and behaviour the test gives. It keeps the Input of
// its last run.
class ScriptedCommand : public Command {
  public:
    using Behaviour = std::function<void(const Input&, Output&)>;
    // The root its output spec declares.
    enum class Root { Bool, String, NicList };

    static std::shared_ptr<ScriptedCommand> New(const char* description,
                                                std::span<const Declare::Parameter> parameters,
                                                Root root, Behaviour behaviour);

    ScriptedCommand(std::span<const Declare::Parameter> parameters, Root root, Behaviour behaviour)
        : parameters_(parameters), root_(root), behaviour_(std::move(behaviour)) {}

    const std::shared_ptr<Input>& LastInput() const { return lastInput_; }
    int Runs() const { return runs_; }

  protected:
    std::shared_ptr<InputSpec> GetInputSpecInternal() override;
    std::shared_ptr<OutputSpec> GetOutputSpecInternal() override;
    void ExecuteInternal(const std::shared_ptr<Input>& input,
                         const std::shared_ptr<Output>& output) override;

  private:
    std::span<const Declare::Parameter> parameters_;
    Root root_;
    Behaviour behaviour_;
    std::shared_ptr<Input> lastInput_;
    int runs_ = 0;
};

// The tree:
//   demo                "Demonstration commands for the host's tests."
//   demo nic            "Commands on demonstration NICs."
//   demo nic set        every kind of parameter and constraint; root true
//   demo nic list       root set by the test (`result`), default formatter "table"
//   demo nic get        root set by the test, default formatter "simple"
//   demo echo           one optional string parameter `text`; root: that text
class HostTest : public ::testing::Test {
  protected:
    HostTest();

    // Runs autocli's Main with `arguments`, keeping what it printed in out_ and err_.
    int Main(const std::vector<std::string>& arguments);

    CommandHost::CommandHost host_;
    std::shared_ptr<ScriptedCommand> set_;
    std::shared_ptr<ScriptedCommand> list_;
    std::shared_ptr<ScriptedCommand> get_;
    std::shared_ptr<ScriptedCommand> echo_;
    // What `demo nic list` and `demo nic get` leave: root and error messages.
    std::shared_ptr<MetaValue> result_;
    std::vector<std::string> errors_;
    std::string out_;
    std::string err_;
};

// Two "Nic" rows with a nested list, a nested struct and an empty (never set) field.
std::shared_ptr<MetaList> SampleNics();
std::shared_ptr<MetaStruct> SampleNic(const char* name, long speed, bool up,
                                      std::vector<std::string> addresses);

}  // namespace CommandHostTesting
