// What a command declares it takes and gives, and the Input and Output of one run.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cpptools/MetaObj.h"

namespace CppTools::CallSpec {

enum ParameterType {
    ParameterTypeString = 0,
    ParameterTypeInt = 1,
    ParameterTypeBool = 2,
    ParameterTypeFlag = 3,
    ParameterTypeStringList = 4,
};

enum ParameterConstraintType {
    ConstraintIntRange = 1,
    ConstraintIntEnum = 2,
    ConstraintStringEnum = 3,
    ConstraintStringRegex = 4,
};

// The text forms of typed parameter values, shared by the command host's parser and Input: an
// int is a signed 64-bit decimal with an optional sign, a bool is true/false, yes/no or 1/0 in
// any case. Each returns false, leaving `value` alone, when the text is no such value.
bool ParseIntText(std::string_view text, long& value);
bool ParseBoolText(std::string_view text, bool& value);

class ParameterConstraint {
public:
    struct StringChoice {
        std::string value;
        std::string description;
    };

    static std::shared_ptr<ParameterConstraint> New(ParameterConstraintType type);

    void SetIntRange(long low, long high);
    void AddIntEnum(long value);
    void AddStringEnum(const char* value);
    void AddStringEnum(const char* value, const char* description);
    void AddStringEnum(std::string value, std::string description);
    void SetStringRegex(const std::string& pattern);

    ParameterConstraintType GetType() const { return type_; }
    long GetLow() const { return low_; }
    long GetHigh() const { return high_; }
    const std::vector<long>& GetIntEnum() const { return intEnum_; }
    const std::vector<StringChoice>& GetStringEnum() const { return stringEnum_; }
    const std::string& GetStringRegex() const { return regex_; }

    explicit ParameterConstraint(ParameterConstraintType type) : type_(type) {}

private:
    ParameterConstraintType type_;
    long low_ = 0;
    long high_ = 0;
    std::vector<long> intEnum_;
    std::vector<StringChoice> stringEnum_;
    std::string regex_;
};

class ParameterSpec {
public:
    static std::shared_ptr<ParameterSpec> New(const char* name, ParameterType type);
    static std::shared_ptr<ParameterSpec> New(const std::string& name, ParameterType type);

    void SetShortName(const char* shortName);
    void SetDescription(const char* description);
    void SetDescription(std::string description);
    void SetRequired(bool required);
    void SetConstraint(const std::shared_ptr<ParameterConstraint>& constraint);

    const std::string& GetName() const { return name_; }
    const std::string& GetShortName() const { return shortName_; }
    const std::string& GetDescription() const { return description_; }
    ParameterType GetType() const { return type_; }
    bool IsRequired() const { return required_; }
    const std::shared_ptr<ParameterConstraint>& GetConstraint() const { return constraint_; }

    ParameterSpec(std::string name, ParameterType type) : name_(std::move(name)), type_(type) {}

private:
    std::string name_;
    std::string shortName_;
    std::string description_;
    ParameterType type_;
    bool required_ = false;
    std::shared_ptr<ParameterConstraint> constraint_;
};

class InputSpec {
public:
    static std::shared_ptr<InputSpec> New();
    void AddParameter(const std::shared_ptr<ParameterSpec>& parameter);
    const std::vector<std::shared_ptr<ParameterSpec>>& GetParameters() const { return parameters_; }

private:
    std::vector<std::shared_ptr<ParameterSpec>> parameters_;
};

class OutputSpec {
public:
    static std::shared_ptr<OutputSpec> New();
    void SetRootObject(const std::shared_ptr<MetaObj::MetaBool>& root);
    void SetRootObject(const std::shared_ptr<MetaObj::MetaInt>& root);
    void SetRootObject(const std::shared_ptr<MetaObj::MetaString>& root);
    void SetRootObject(const std::shared_ptr<MetaObj::MetaList>& root);
    void SetRootObject(const std::shared_ptr<MetaObj::MetaStruct>& root);
    const std::shared_ptr<MetaObj::MetaValue>& GetRootObject() const { return root_; }

private:
    std::shared_ptr<MetaObj::MetaValue> root_;
};

// The parameters of one run, as the command host parsed and checked them. Values are kept as
// typed text; a list parameter holds one value per occurrence.
class Input {
public:
    static std::shared_ptr<Input> New(std::shared_ptr<InputSpec> spec);

    const std::string& GetParameter(const char* name) const;
    const std::string& GetParameter(const std::string& name) const;
    long GetParameterInt(const char* name) const;
    long GetParameterInt(const std::string& name) const;
    bool GetParameterBool(const char* name) const;
    bool GetParameterBool(const std::string& name) const;
    void GetParameterList(const char* name, std::vector<std::string>& out) const;
    bool HasParameter(const char* name) const;
    bool HasParameter(const std::string& name) const;
    bool IsFlagSet(const char* name) const;

    // Used by the command host while it parses the command line.
    void AddValue(const std::string& name, std::string value);
    const std::shared_ptr<InputSpec>& GetSpec() const { return spec_; }

    explicit Input(std::shared_ptr<InputSpec> spec) : spec_(std::move(spec)) {}

private:
    const std::vector<std::string>* Find(std::string_view name) const;

    std::shared_ptr<InputSpec> spec_;
    std::map<std::string, std::vector<std::string>, std::less<>> values_;
};

// What one run leaves: a root value, error messages, or (for a few commands) both.
class Output {
public:
    static std::shared_ptr<Output> New();

    void SetRootObject(const std::shared_ptr<MetaObj::MetaBool>& root);
    void SetRootObject(const std::shared_ptr<MetaObj::MetaInt>& root);
    void SetRootObject(const std::shared_ptr<MetaObj::MetaString>& root);
    void SetRootObject(const std::shared_ptr<MetaObj::MetaList>& root);
    void SetRootObject(const std::shared_ptr<MetaObj::MetaStruct>& root);
    void AddErrorMessage(const char* message);
    void AddErrorMessage(const std::string& message);
    void AddErrorMessage(std::string&& message);
    bool HasError() const { return !errors_.empty(); }

    const std::shared_ptr<MetaObj::MetaValue>& GetRootObject() const { return root_; }
    const std::vector<std::string>& GetErrorMessages() const { return errors_; }

private:
    std::shared_ptr<MetaObj::MetaValue> root_;
    std::vector<std::string> errors_;
};

}  // namespace CppTools::CallSpec
