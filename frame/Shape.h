// What a command declares about itself, as constant tables in its source file: its description,
// default output, parameters and the shape of its result. frame/ShapePacking.h packs them at
// compile time; the command host sees them as specs.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <string>

#include "cpptools/CallSpec.h"

namespace ZanvexCli::NetworkNamespace::Declare {

enum class Type { String, Int, Bool, Flag, List };

struct Choice {
    const char* value;
    const char* description = nullptr;  // null: the value has no description
};

// One row of a parameter table. At most one constraint is filled: `range` (with `low` and
// `high`), `intChoices`, `stringChoices` or `regex`.
struct Parameter {
    const char* name;
    const char* shortName;  // null: no short name
    Type type;
    bool required;
    const char* description;
    bool range = false;
    long low = 0;
    long high = 0;
    std::span<const long> intChoices = {};
    std::span<const Choice> stringChoices = {};
    const char* regex = nullptr;
};

enum class FieldType { String, Int, Bool, StringList, Struct, StructList };

struct StructShape;

// A field of a result's struct. `column` is its place among the columns shown by default, from
// 1; 0 leaves it out of them. The command host gets those columns as the output parameter
// "fields:" and the struct's name.
struct Field {
    const char* name;
    FieldType type;
    int column = 0;
    const StructShape* nested = nullptr;  // for FieldType::Struct and the elements of StructList
};

struct StructShape {
    const char* name;
    std::span<const Field> fields;
    const char* columnsName = nullptr;  // the name its columns go under, when not its own
};

// The fields `leading`, then one of `type` for each row of `rows`, named `name(row)` and shown in
// the rows' order after the leading fields' columns: a struct with a column per row of a table.
template <std::size_t kLeading, class Row, std::size_t kRows, class Name>
constexpr std::array<Field, kLeading + kRows> FieldsWithRows(const Field (&leading)[kLeading],
                                                             const Row (&rows)[kRows],
                                                             FieldType type, Name name) {
    std::array<Field, kLeading + kRows> fields{};
    int column = 0;
    for (std::size_t i = 0; i < kLeading; ++i) {
        fields[i] = leading[i];
        column = std::max(column, leading[i].column);
    }
    for (std::size_t i = 0; i < kRows; ++i) {
        fields[kLeading + i] = {name(rows[i]), type, ++column};
    }
    return fields;
}

// The parameters `leading`, then `parameter(row)` for each row of `rows`.
template <std::size_t kLeading, class Row, std::size_t kRows, class MakeParameter>
constexpr std::array<Parameter, kLeading + kRows> ParametersWithRows(
    const Parameter (&leading)[kLeading], const Row (&rows)[kRows], MakeParameter parameter) {
    std::array<Parameter, kLeading + kRows> parameters{};
    for (std::size_t i = 0; i < kLeading; ++i) {
        parameters[i] = leading[i];
    }
    for (std::size_t i = 0; i < kRows; ++i) {
        parameters[kLeading + i] = parameter(rows[i]);
    }
    return parameters;
}

struct OutputParameter {
    const char* key;
    const char* value;
};

enum class Root { Bool, Int, String, Struct, List };

// Whether a result of kind `root` carries a struct: its own, or that of each element.
constexpr bool HasStruct(Root root) {
    return root == Root::Struct || root == Root::List;
}

// Appends the parameters a command can only know when it runs, after those of its table.
using AddParameters = void (*)(const std::shared_ptr<CppTools::CallSpec::InputSpec>& spec);
// The whole description of a command that depends on the host, replacing the table's.
using Describe = std::string (*)();

struct CommandShape {
    const char* description = nullptr;
    const char* formatter = nullptr;  // null: no default formatter
    std::span<const OutputParameter> outputParameters = {};
    std::span<const Parameter> parameters = {};
    Root root = Root::Bool;
    const StructShape* structure = nullptr;  // the struct, or a list's element, for Struct and List
    AddParameters addParameters = nullptr;
    Describe describe = nullptr;
};

}  // namespace ZanvexCli::NetworkNamespace::Declare
