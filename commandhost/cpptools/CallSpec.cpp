// Parameter and result specs, and the Input and Output of one run.
#include "cpptools/CallSpec.h"

#include <charconv>

namespace CppTools::CallSpec {

namespace {

const std::string kEmpty;

bool EqualsIgnoringCase(std::string_view text, std::string_view lowerWord) {
    if (text.size() != lowerWord.size()) {
        return false;
    }
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
        if (c != lowerWord[i]) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool ParseIntText(std::string_view text, long& value) {
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-') {
            return false;
        }
    }
    if (text.empty()) {
        return false;
    }
    long parsed = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed, 10);
    if (error != std::errc() || end != text.data() + text.size()) {
        return false;
    }
    value = parsed;
    return true;
}

bool ParseBoolText(std::string_view text, bool& value) {
    for (std::string_view word : {"true", "yes", "1"}) {
        if (EqualsIgnoringCase(text, word)) {
            value = true;
            return true;
        }
    }
    for (std::string_view word : {"false", "no", "0"}) {
        if (EqualsIgnoringCase(text, word)) {
            value = false;
            return true;
        }
    }
    return false;
}

std::shared_ptr<ParameterConstraint> ParameterConstraint::New(ParameterConstraintType type) {
    return std::make_shared<ParameterConstraint>(type);
}

void ParameterConstraint::SetIntRange(long low, long high) {
    low_ = low;
    high_ = high;
}

void ParameterConstraint::AddIntEnum(long value) {
    intEnum_.push_back(value);
}

void ParameterConstraint::AddStringEnum(const char* value) {
    stringEnum_.push_back({value, std::string()});
}

void ParameterConstraint::AddStringEnum(const char* value, const char* description) {
    stringEnum_.push_back({value, description != nullptr ? description : ""});
}

void ParameterConstraint::AddStringEnum(std::string value, std::string description) {
    stringEnum_.push_back({std::move(value), std::move(description)});
}

void ParameterConstraint::SetStringRegex(const std::string& pattern) {
    regex_ = pattern;
}

std::shared_ptr<ParameterSpec> ParameterSpec::New(const char* name, ParameterType type) {
    return std::make_shared<ParameterSpec>(name, type);
}

std::shared_ptr<ParameterSpec> ParameterSpec::New(const std::string& name, ParameterType type) {
    return std::make_shared<ParameterSpec>(name, type);
}

void ParameterSpec::SetShortName(const char* shortName) {
    shortName_ = shortName != nullptr ? shortName : "";
}
void ParameterSpec::SetDescription(const char* description) {
    description_ = description != nullptr ? description : "";
}
void ParameterSpec::SetDescription(std::string description) {
    description_ = std::move(description);
}
void ParameterSpec::SetRequired(bool required) {
    required_ = required;
}
void ParameterSpec::SetConstraint(const std::shared_ptr<ParameterConstraint>& constraint) {
    constraint_ = constraint;
}

std::shared_ptr<InputSpec> InputSpec::New() {
    return std::make_shared<InputSpec>();
}

void InputSpec::AddParameter(const std::shared_ptr<ParameterSpec>& parameter) {
    parameters_.push_back(parameter);
}

std::shared_ptr<OutputSpec> OutputSpec::New() {
    return std::make_shared<OutputSpec>();
}

void OutputSpec::SetRootObject(const std::shared_ptr<MetaObj::MetaBool>& root) {
    root_ = root;
}
void OutputSpec::SetRootObject(const std::shared_ptr<MetaObj::MetaInt>& root) {
    root_ = root;
}
void OutputSpec::SetRootObject(const std::shared_ptr<MetaObj::MetaString>& root) {
    root_ = root;
}
void OutputSpec::SetRootObject(const std::shared_ptr<MetaObj::MetaList>& root) {
    root_ = root;
}
void OutputSpec::SetRootObject(const std::shared_ptr<MetaObj::MetaStruct>& root) {
    root_ = root;
}

std::shared_ptr<Input> Input::New(std::shared_ptr<InputSpec> spec) {
    return std::make_shared<Input>(std::move(spec));
}

const std::vector<std::string>* Input::Find(std::string_view name) const {
    auto found = values_.find(name);
    return found != values_.end() ? &found->second : nullptr;
}

const std::string& Input::GetParameter(const char* name) const {
    const auto* values = Find(name);
    return values != nullptr && !values->empty() ? values->front() : kEmpty;
}

const std::string& Input::GetParameter(const std::string& name) const {
    return GetParameter(name.c_str());
}

long Input::GetParameterInt(const char* name) const {
    long value = 0;
    ParseIntText(GetParameter(name), value);
    return value;
}

long Input::GetParameterInt(const std::string& name) const {
    return GetParameterInt(name.c_str());
}

bool Input::GetParameterBool(const char* name) const {
    bool value = false;
    ParseBoolText(GetParameter(name), value);
    return value;
}

bool Input::GetParameterBool(const std::string& name) const {
    return GetParameterBool(name.c_str());
}

void Input::GetParameterList(const char* name, std::vector<std::string>& out) const {
    if (const auto* values = Find(name)) {
        out.insert(out.end(), values->begin(), values->end());
    }
}

bool Input::HasParameter(const char* name) const {
    return Find(name) != nullptr;
}

bool Input::HasParameter(const std::string& name) const {
    return Find(name) != nullptr;
}

bool Input::IsFlagSet(const char* name) const {
    return Find(name) != nullptr;
}

void Input::AddValue(const std::string& name, std::string value) {
    values_[name].push_back(std::move(value));
}

std::shared_ptr<Output> Output::New() {
    return std::make_shared<Output>();
}

void Output::SetRootObject(const std::shared_ptr<MetaObj::MetaBool>& root) {
    root_ = root;
}
void Output::SetRootObject(const std::shared_ptr<MetaObj::MetaInt>& root) {
    root_ = root;
}
void Output::SetRootObject(const std::shared_ptr<MetaObj::MetaString>& root) {
    root_ = root;
}
void Output::SetRootObject(const std::shared_ptr<MetaObj::MetaList>& root) {
    root_ = root;
}
void Output::SetRootObject(const std::shared_ptr<MetaObj::MetaStruct>& root) {
    root_ = root;
}

void Output::AddErrorMessage(const char* message) {
    errors_.emplace_back(message != nullptr ? message : "");
}
void Output::AddErrorMessage(const std::string& message) {
    errors_.push_back(message);
}
void Output::AddErrorMessage(std::string&& message) {
    errors_.push_back(std::move(message));
}

}  // namespace CppTools::CallSpec
