// The checks a command declares, made before it runs: required parameters, int ranges and
// enumerations, string enumerations and regular expressions over the whole value.
#include <optional>
// GCC 12 reports false "may be used uninitialized" inside <regex> when sanitizers are on.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <regex>
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

#include "commandhost/cli/CommandLine.h"
#include "commandhost/cli/Suggestions.h"
#include "commandhost/cli/Text.h"

namespace CommandHost {

using CppTools::CallSpec::Input;
using CppTools::CallSpec::ParameterConstraint;
using CppTools::CallSpec::ParameterSpec;
namespace CallSpec = CppTools::CallSpec;

namespace {

// `pattern` is the compiled regular expression of a regex constraint.
bool Allows(const ParameterConstraint& constraint, const std::regex* pattern,
            const std::string& value) {
    switch (constraint.GetType()) {
        case CallSpec::ConstraintIntRange: {
            long number = 0;
            CallSpec::ParseIntText(value, number);
            return number >= constraint.GetLow() && number <= constraint.GetHigh();
        }
        case CallSpec::ConstraintIntEnum: {
            long number = 0;
            CallSpec::ParseIntText(value, number);
            for (long allowed : constraint.GetIntEnum()) {
                if (allowed == number) {
                    return true;
                }
            }
            return false;
        }
        case CallSpec::ConstraintStringEnum:
            for (const auto& choice : constraint.GetStringEnum()) {
                if (choice.value == value) {
                    return true;
                }
            }
            return false;
        case CallSpec::ConstraintStringRegex:
            return std::regex_match(value, *pattern);
    }
    return true;
}

std::string Refusal(const ParameterSpec& parameter, const ParameterConstraint& constraint,
                    const std::string& value) {
    std::string message =
        "Invalid value " + QuoteValue(value) + " for parameter '" + OptionName(parameter) + "': ";
    switch (constraint.GetType()) {
        case CallSpec::ConstraintIntRange:
            message.append("allowed range is ").append(AllowedValues(constraint)).append(".");
            break;
        case CallSpec::ConstraintIntEnum:
            message.append("allowed values are ").append(AllowedValues(constraint)).append(".");
            break;
        case CallSpec::ConstraintStringEnum: {
            message.append("allowed values are ").append(AllowedValues(constraint)).append(".");
            std::vector<std::string> values;
            for (const auto& choice : constraint.GetStringEnum()) {
                values.push_back(choice.value);
            }
            message.append(DidYouMean(value, values));
            break;
        }
        case CallSpec::ConstraintStringRegex:
            message.append("it must match the regular expression '")
                .append(constraint.GetStringRegex())
                .append("'.");
            break;
    }
    return message;
}

}  // namespace

std::string AllowedValues(const ParameterConstraint& constraint) {
    std::string text;
    auto separate = [&text] {
        if (!text.empty()) {
            text.append(", ");
        }
    };
    switch (constraint.GetType()) {
        case CallSpec::ConstraintIntRange:
            text = std::to_string(constraint.GetLow()) + "-" + std::to_string(constraint.GetHigh());
            break;
        case CallSpec::ConstraintIntEnum:
            for (long value : constraint.GetIntEnum()) {
                separate();
                text.append(std::to_string(value));
            }
            break;
        case CallSpec::ConstraintStringEnum:
            for (const auto& choice : constraint.GetStringEnum()) {
                separate();
                text.append(choice.value);
            }
            break;
        case CallSpec::ConstraintStringRegex:
            text = constraint.GetStringRegex();
            break;
    }
    return text;
}

void CheckConstraints(const Input& input, const std::string& command) {
    std::vector<std::string> values;
    for (const auto& parameter : input.GetSpec()->GetParameters()) {
        values.clear();
        input.GetParameterList(parameter->GetName().c_str(), values);
        if (values.empty()) {
            if (parameter->IsRequired()) {
                std::string message = "Missing required parameter '" + OptionName(*parameter) + "'";
                if (!parameter->GetShortName().empty()) {
                    message.append(" (-").append(parameter->GetShortName()).append(")");
                }
                throw CommandLineError(message + " for '" + command + "'.");
            }
            continue;
        }
        const auto& constraint = parameter->GetConstraint();
        if (!constraint) {
            continue;
        }
        // Compiled here, so that only a command run with such a value pays for it.
        std::optional<std::regex> pattern;
        if (constraint->GetType() == CallSpec::ConstraintStringRegex) {
            pattern.emplace(constraint->GetStringRegex());
        }
        for (const std::string& value : values) {
            if (!Allows(*constraint, pattern ? &*pattern : nullptr, value)) {
                throw CommandLineError(Refusal(*parameter, *constraint, value));
            }
        }
    }
}

}  // namespace CommandHost
