// Reading a command's parameters from the words of a command line, and checking them against
// what the command declares.
#pragma once

#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "cpptools/CallSpec.h"

namespace CommandHost {

// The host refuses the command line; the message is one line for the user.
class CommandLineError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The declared parameter as the user writes it: "--nic-name".
std::string OptionName(const CppTools::CallSpec::ParameterSpec& parameter);

// Parses `words` ("--name=value", "--name value", "-s value", "--flag") against `spec`. Values
// are kept as typed; ints and bools are checked for their form, and only lists may repeat.
// `command` names the command in messages. Throws CommandLineError.
std::shared_ptr<CppTools::CallSpec::Input> ParseParameters(
    const std::shared_ptr<CppTools::CallSpec::InputSpec>& spec, std::span<const std::string> words,
    const std::string& command);

// What a constraint allows, for messages and help: "full, half", "1-4094" or "10, 100, 1000";
// for a regular expression, the pattern.
std::string AllowedValues(const CppTools::CallSpec::ParameterConstraint& constraint);

// Checks required parameters and each value against its parameter's constraint. Throws
// CommandLineError for the first parameter that fails, in declaration order.
void CheckConstraints(const CppTools::CallSpec::Input& input, const std::string& command);

}  // namespace CommandHost
