#include "commandhost/cli/CommandLine.h"

#include <optional>

#include "commandhost/cli/Suggestions.h"
#include "commandhost/cli/Text.h"

namespace CommandHost {

using CppTools::CallSpec::Input;
using CppTools::CallSpec::InputSpec;
using CppTools::CallSpec::ParameterSpec;
namespace CallSpec = CppTools::CallSpec;

namespace {

constexpr const char* kBoolForms = "true/false, yes/no or 1/0";

const ParameterSpec* FindByName(const InputSpec& spec, std::string_view name) {
    for (const auto& parameter : spec.GetParameters()) {
        if (parameter->GetName() == name) {
            return parameter.get();
        }
    }
    return nullptr;
}

const ParameterSpec* FindByShortName(const InputSpec& spec, std::string_view shortName) {
    for (const auto& parameter : spec.GetParameters()) {
        if (!parameter->GetShortName().empty() && parameter->GetShortName() == shortName) {
            return parameter.get();
        }
    }
    return nullptr;
}

std::string ParameterList(const InputSpec& spec) {
    std::string text;
    for (const auto& parameter : spec.GetParameters()) {
        if (!text.empty()) {
            text.append(", ");
        }
        text.append(OptionName(*parameter));
        if (!parameter->GetShortName().empty()) {
            text.append(" (-").append(parameter->GetShortName()).append(")");
        }
    }
    return text;
}

// Refuses a word that names no parameter; the message names it without its value.
[[noreturn]] void RefuseUnknown(const InputSpec& spec, std::string_view name, bool isShort,
                                const std::string& command) {
    const std::string given = QuoteValue((isShort ? "-" : "--") + std::string(name));
    if (spec.GetParameters().empty()) {
        throw CommandLineError("'" + command + "' takes no parameters, but was given " + given +
                               ".");
    }
    std::string message = "Unknown parameter " + given + " for '" + command + "'.";
    std::vector<std::string> names;
    for (const auto& parameter : spec.GetParameters()) {
        names.push_back(isShort ? parameter->GetShortName() : parameter->GetName());
    }
    std::string suggestion = isShort ? std::string() : DidYouMean(name, names, "--");
    if (suggestion.empty()) {
        message.append(" Its parameters are: ").append(ParameterList(spec)).append(".");
    } else {
        message.append(suggestion);
    }
    throw CommandLineError(message);
}

const char* ValueForm(CallSpec::ParameterType type) {
    switch (type) {
        case CallSpec::ParameterTypeInt:
            return "a signed 64-bit decimal integer";
        case CallSpec::ParameterTypeBool:
            return kBoolForms;
        default:
            return "a string";
    }
}

// Whether the digits of `text` are a well-formed integer that is merely too large.
bool IsOutOfRangeInteger(std::string_view text) {
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        text.remove_prefix(1);
    }
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

void CheckForm(const ParameterSpec& parameter, const std::string& value) {
    if (parameter.GetType() == CallSpec::ParameterTypeInt) {
        long parsed = 0;
        if (!CallSpec::ParseIntText(value, parsed)) {
            throw CommandLineError("Invalid value " + QuoteValue(value) + " for parameter '" +
                                   OptionName(parameter) + "': " +
                                   (IsOutOfRangeInteger(value)
                                        ? "out of range for a signed 64-bit integer "
                                          "(-9223372036854775808 to 9223372036854775807)."
                                        : "expected a signed 64-bit decimal integer."));
        }
    } else if (parameter.GetType() == CallSpec::ParameterTypeBool) {
        bool parsed = false;
        if (!CallSpec::ParseBoolText(value, parsed)) {
            throw CommandLineError("Invalid value " + QuoteValue(value) + " for parameter '" +
                                   OptionName(parameter) + "': expected " + kBoolForms + ".");
        }
    }
}

}  // namespace

std::string OptionName(const ParameterSpec& parameter) {
    return "--" + parameter.GetName();
}

std::shared_ptr<Input> ParseParameters(const std::shared_ptr<InputSpec>& spec,
                                       std::span<const std::string> words,
                                       const std::string& command) {
    auto input = Input::New(spec);
    for (size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        const bool isLong = word.size() > 2 && word.starts_with("--");
        const bool isShort = !isLong && word.size() > 1 && word[0] == '-' && word[1] != '-';
        if (!isLong && !isShort) {
            throw CommandLineError("Unexpected argument " + QuoteValue(word) + " for '" + command +
                                   "'; parameters are given as --name=value, --name value or "
                                   "-s value.");
        }
        std::string_view body = std::string_view(word).substr(isLong ? 2 : 1);
        std::optional<std::string> value;
        if (auto equals = body.find('='); equals != std::string_view::npos) {
            value.emplace(body.substr(equals + 1));
            body = body.substr(0, equals);
        }
        const ParameterSpec* parameter =
            isLong ? FindByName(*spec, body) : FindByShortName(*spec, body);
        if (parameter == nullptr) {
            RefuseUnknown(*spec, body, isShort, command);
        }
        const std::string option = OptionName(*parameter);
        const bool isFlag = parameter->GetType() == CallSpec::ParameterTypeFlag;
        if (isFlag && value) {
            throw CommandLineError("Parameter '" + option +
                                   "' is a flag and takes no value, but was given " +
                                   QuoteValue(*value) + ".");
        }
        if (!isFlag && !value) {
            // The next word is the value, unless it is plainly another parameter.
            if (i + 1 >= words.size() || words[i + 1].starts_with("--")) {
                throw CommandLineError("Parameter '" + option + "' needs a value (" +
                                       ValueForm(parameter->GetType()) + "), but none was given.");
            }
            value = words[++i];
        }
        if (parameter->GetType() != CallSpec::ParameterTypeStringList &&
            input->HasParameter(parameter->GetName())) {
            throw CommandLineError(
                isFlag ? "Flag '" + option + "' was given more than once."
                       : "Parameter '" + option + "' was given more than once (" +
                             QuoteValue(input->GetParameter(parameter->GetName())) + ", then " +
                             QuoteValue(*value) + "); it takes a single value.");
        }
        CheckForm(*parameter, value.value_or(std::string()));
        input->AddValue(parameter->GetName(), value.value_or(std::string()));
    }
    return input;
}

}  // namespace CommandHost
