// Command declarations as data. A command's description, default output, parameters and result
// shape are static tables in its source file, packed at compile time; the helpers here turn them
// into the specs and structs the command host asks for, so that the help and the checks come from
// one table.
#pragma once

#include <list>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "cpptools/AutoCli.h"
#include "cpptools/CallSpec.h"
#include "cpptools/MetaObj.h"

namespace ZanvexCli::NetworkNamespace {

using CppTools::AutoCli::Command;
using CppTools::AutoCli::NamespaceNode;
using CppTools::CallSpec::Input;
using CppTools::CallSpec::InputSpec;
using CppTools::CallSpec::Output;
using CppTools::CallSpec::OutputSpec;
using CppTools::MetaObj::MetaBool;
using CppTools::MetaObj::MetaInt;
using CppTools::MetaObj::MetaList;
using CppTools::MetaObj::MetaString;
using CppTools::MetaObj::MetaStruct;

namespace Declare {

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

struct Field {
    const char* name;
    FieldType type;
    const StructShape* nested = nullptr;  // for FieldType::Struct and the elements of StructList
};

struct StructShape {
    const char* name;
    std::span<const Field> fields;
};

struct OutputParameter {
    const char* key;
    const char* value;
};

enum class Root { Bool, Int, String, Struct, List };

struct CommandShape {
    const char* description = nullptr;
    const char* formatter = nullptr;  // null: no default formatter
    std::span<const OutputParameter> outputParameters = {};
    std::span<const Parameter> parameters = {};
    Root root = Root::Bool;
    const StructShape* structure = nullptr;  // the struct, or a list's element, for Struct and List
};

// A struct packed at compile time, for the results and rows a command builds; null bytes for
// none.
struct PackedStruct {
    const char* bytes = nullptr;
};

// A command's shape as a command class keeps it: packed at compile time into one array of bytes,
// without pointers, its result's struct at the end. Every pointer in a table is an address the
// loader must relocate, in every process, page by page; the packed bytes are read as they are.
struct PackedShape {
    const char* bytes;
    PackedStruct structure;
};

// The packing: each text is a byte 0 for none, or 1 and the text with its terminating zero;
// counts take two bytes, numbers eight, kinds and flags one. `Sink` counts or stores the bytes.
template <class Sink>
constexpr void PackText(Sink& sink, const char* text) {
    sink.Put(text != nullptr);
    for (; text != nullptr && *text != '\0'; ++text) {
        sink.Put(*text);
    }
    if (text != nullptr) {
        sink.Put('\0');
    }
}

template <class Sink>
constexpr void PackNumber(Sink& sink, unsigned long long value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        sink.Put(static_cast<char>((value >> (8 * i)) & 0xff));
    }
}

template <class Sink>
constexpr void PackShape(Sink& sink, const CommandShape& shape) {
    sink.Put(static_cast<char>(shape.root));
    PackText(sink, shape.description);
    PackText(sink, shape.formatter);
    PackNumber(sink, shape.outputParameters.size(), 2);
    for (const OutputParameter& parameter : shape.outputParameters) {
        PackText(sink, parameter.key);
        PackText(sink, parameter.value);
    }
    PackNumber(sink, shape.parameters.size(), 2);
    for (const Parameter& parameter : shape.parameters) {
        PackText(sink, parameter.name);
        PackText(sink, parameter.shortName);
        sink.Put(static_cast<char>(parameter.type));
        sink.Put(parameter.required);
        PackText(sink, parameter.description);
        sink.Put(parameter.range);
        PackNumber(sink, static_cast<unsigned long long>(parameter.low), 8);
        PackNumber(sink, static_cast<unsigned long long>(parameter.high), 8);
        PackNumber(sink, parameter.intChoices.size(), 2);
        for (long value : parameter.intChoices) {
            PackNumber(sink, static_cast<unsigned long long>(value), 8);
        }
        PackNumber(sink, parameter.stringChoices.size(), 2);
        for (const Choice& choice : parameter.stringChoices) {
            PackText(sink, choice.value);
            PackText(sink, choice.description);
        }
        PackText(sink, parameter.regex);
    }
}

// A struct: its name, the count of its fields, and each field's name and kind, followed, for a
// struct or a list of structs, by that struct packed in turn.
template <class Sink>
constexpr void PackStructShape(Sink& sink, const StructShape& shape) {
    PackText(sink, shape.name);
    PackNumber(sink, shape.fields.size(), 2);
    for (const Field& field : shape.fields) {
        PackText(sink, field.name);
        sink.Put(static_cast<char>(field.type));
        if (field.type == FieldType::Struct || field.type == FieldType::StructList) {
            PackStructShape(sink, *field.nested);
        }
    }
}

// What a packed shape of each kind holds: a command's shape with its struct at the end, or a
// struct alone.
template <class Sink>
constexpr void PackInto(Sink& sink, const CommandShape& shape) {
    PackShape(sink, shape);
    if (shape.structure != nullptr) {
        PackStructShape(sink, *shape.structure);
    }
}

template <class Sink>
constexpr void PackInto(Sink& sink, const StructShape& shape) {
    PackStructShape(sink, shape);
}

struct ByteCounter {
    std::size_t size = 0;
    constexpr void Put(char) { ++size; }
};

template <std::size_t kSize>
struct ByteArray {
    char bytes[kSize] = {};
    std::size_t size = 0;
    constexpr void Put(char byte) { bytes[size++] = byte; }
};

// The number of bytes `pack` puts into its sink.
template <class Pack>
constexpr std::size_t CountBytes(Pack pack) {
    ByteCounter counter;
    pack(counter);
    return counter.size;
}

template <const auto& kShape>
constexpr std::size_t kPackedSize = CountBytes([](auto& sink) { PackInto(sink, kShape); });

template <const auto& kShape>
constexpr ByteArray<kPackedSize<kShape>> kPackedBytes = [] {
    ByteArray<kPackedSize<kShape>> packed;
    PackInto(packed, kShape);
    return packed;
}();

// Where a command's struct starts in its packed shape.
template <const CommandShape& kShape>
constexpr std::size_t kStructOffset = CountBytes([](auto& sink) { PackShape(sink, kShape); });

// The packed form of a shape declared `constexpr`, for a command class's kShape.
template <const CommandShape& kShape>
constexpr PackedShape Pack() {
    const char* bytes = kPackedBytes<kShape>.bytes;
    return {bytes, {kShape.structure != nullptr ? bytes + kStructOffset<kShape> : nullptr}};
}

// The packed form of a struct declared `constexpr`, for the rows a command builds.
template <const StructShape& kStruct>
constexpr PackedStruct PackStruct() {
    return {kPackedBytes<kStruct>.bytes};
}

// Every field present with its empty typed value, nested structs included.
std::shared_ptr<MetaStruct> MakeStruct(PackedStruct shape);
std::shared_ptr<InputSpec> MakeInputSpec(std::span<const Parameter> parameters);
std::shared_ptr<InputSpec> MakeInputSpec(const PackedShape& shape);
std::shared_ptr<OutputSpec> MakeOutputSpec(const PackedShape& shape);

}  // namespace Declare

// The tree and spec operations of a command, each passed on to the command host's own. Every
// command class's table of virtual functions then points into this library instead of into the
// host's, so that loading the plug-in binds a few symbols rather than a few dozen per command.
// It also gives every command its specs from the packed shape its constructor takes.
class CommandNode : public Command {
public:
    std::shared_ptr<NamespaceNode> GetThis() override;
    CppTools::AutoCli::NodeType GetType() const override;
    std::vector<std::string> GetPath() const override;
    std::string GetPathString(char separator) const override;
    bool HasNamespaceNode(const std::string& name) const override;
    std::vector<std::string> GetNamespaceNodeNames() const override;
    std::vector<std::shared_ptr<NamespaceNode>> GetNamespaceNodes() const override;
    std::shared_ptr<NamespaceNode> GetNamespaceNode(const std::string& name) const override;
    void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, std::string name) override;
    void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, const char* name) override;
    std::shared_ptr<NamespaceNode> ResolveNode(std::list<std::string>& path) override;
    std::shared_ptr<NamespaceNode> SubNamespace(const std::string& name) override;
    CppTools::AutoCli::Dispatcher* GetDispatcher() override;
    void SetParent(std::shared_ptr<NamespaceNode> parent) override;
    std::shared_ptr<NamespaceNode> GetParent() const override;
    std::shared_ptr<InputSpec> GetInputSpec() override;
    std::shared_ptr<OutputSpec> GetOutputSpec() override;
    void Execute(const std::shared_ptr<Input>& input,
                 const std::shared_ptr<Output>& output) override;

protected:
    // Sets the description and default output of `shape`, and keeps it for the specs.
    void TakeShape(const Declare::PackedShape& shape);
    std::shared_ptr<InputSpec> GetInputSpecInternal() override;
    std::shared_ptr<OutputSpec> GetOutputSpecInternal() override;

private:
    const Declare::PackedShape* shape_ = nullptr;
};

// A new command of class `Self`, ready for the tree. Every command is owned through CommandNode,
// so that all of them share one kind of reference count block: one per class would be a table
// of virtual functions and a type description more for the loader to relocate in every process.
template <class Self>
std::shared_ptr<Self> MakeCommand() {
    Self* command = new Self;
    CommandNode* node = command;
    std::shared_ptr<Self> owned(std::shared_ptr<CommandNode>(node), command);
    owned->PrimeThis(owned);
    return owned;
}

// The members of every command class: its shape, packed from a `constexpr` CommandShape in its
// source file, New, and the struct of one result (or row). Its constructor calls
// TakeShape(kShape); the class derives from CommandNode itself, not through a template, so that
// no table of virtual functions or type description is made for a class between the two.
#define NETWORK_COMMAND_MEMBERS(ClassName)                    \
    static const Declare::PackedShape kShape;                 \
    static std::shared_ptr<ClassName> New() {                 \
        return MakeCommand<ClassName>();                      \
    }                                                         \
    static std::shared_ptr<MetaStruct> GetOutputStructure() { \
        return Declare::MakeStruct(kShape.structure);         \
    }

// Declares a command class of a subsystem header; its source file defines ExecuteInternal and
// kShape:
//     constexpr Declare::CommandShape kNicListShape = {...};
//     const Declare::PackedShape NicList::kShape = Declare::Pack<kNicListShape>();
// `Command` is a plain base, reached through CommandNode: with it as a virtual base, as the
// command host also allows, each class would bring construction tables for the loader to
// relocate in every process.
#define NETWORK_COMMAND(ClassName)                                            \
    class ClassName final : public CommandNode {                              \
    public:                                                                   \
        NETWORK_COMMAND_MEMBERS(ClassName)                                    \
        ClassName() { TakeShape(kShape); }                                    \
                                                                              \
    protected:                                                                \
        void ExecuteInternal(const std::shared_ptr<Input>& input,             \
                             const std::shared_ptr<Output>& output) override; \
    }

}  // namespace ZanvexCli::NetworkNamespace
