// The one way to declare a command: its tables (frame/Shape.h) and NETWORK_COMMAND, which gives
// the class, its packed shape and its maker for the tree. frame/ADDING_A_COMMAND.md shows it whole.
#pragma once

#include <list>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "cpptools/AutoCli.h"
#include "cpptools/CallSpec.h"
#include "cpptools/MetaObj.h"
#include "frame/Registration.h"
#include "frame/Shape.h"
#include "frame/ShapePacking.h"

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

// A packed shape unpacked at run time, its lists in `store`.
struct UnpackedShape {
    ShapeStore store;
    CommandShape shape;
};
UnpackedShape Unpack(const PackedShape& shape);

// Every field present with its empty typed value, nested structs included.
std::shared_ptr<MetaStruct> MakeStruct(PackedStruct shape);
std::shared_ptr<InputSpec> MakeInputSpec(std::span<const Parameter> parameters);
std::shared_ptr<InputSpec> MakeInputSpec(const PackedShape& shape);
std::shared_ptr<OutputSpec> MakeOutputSpec(const PackedShape& shape);

}  // namespace Declare

// The body of a command: what it does with its input and output.
using CommandBody = void (*)(const std::shared_ptr<Input>& input,
                             const std::shared_ptr<Output>& output);

// Every command of the tree: one class, made with a command's packed shape and body. One class,
// not a class per command, so that the loader relocates one table of virtual functions in every
// process rather than one per command. Each tree and spec operation is passed on to the command
// host's own, so that the table points into this library instead of into the host's, and loading
// the plug-in binds a few symbols rather than a few dozen per command. It gives the command its
// specs from the packed shape.
class CommandNode final : public Command {
public:
    CommandNode(const Declare::PackedShape& shape, CommandBody body);

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

    // The packed shape the command was made with.
    const Declare::PackedShape& Shape() const { return *shape_; }

protected:
    void ExecuteInternal(const std::shared_ptr<Input>& input,
                         const std::shared_ptr<Output>& output) override;
    std::shared_ptr<InputSpec> GetInputSpecInternal() override;
    std::shared_ptr<OutputSpec> GetOutputSpecInternal() override;

private:
    const Declare::PackedShape* shape_;
    CommandBody body_;
};

// A new command of class `Self`, ready for the tree.
template <class Self>
std::shared_ptr<NamespaceNode> MakeCommandNode() {
    std::shared_ptr<CommandNode> node(new CommandNode(Self::kShape, &Self::Execute));
    node->PrimeThis(node);
    return node;
}

// Declares a command in its source file, after its `constexpr Declare::CommandShape` table, and
// opens its body:
//     NETWORK_COMMAND(NicList, kNicListShape) { ...input, output... }
// The class holds the command's packed shape and body; GetOutputStructure gives the struct of one
// result (or row). The build stops when the packed shape does not read back as its table.
#define NETWORK_COMMAND(ClassName, kTable)                                                        \
    struct ClassName {                                                                            \
        static const Declare::PackedShape kShape;                                                 \
        static std::shared_ptr<MetaStruct> GetOutputStructure() {                                 \
            return Declare::MakeStruct(kShape.structure);                                         \
        }                                                                                         \
        static void Execute(const std::shared_ptr<Input>& input,                                  \
                            const std::shared_ptr<Output>& output);                               \
    };                                                                                            \
    static_assert(Declare::UnpacksToItsTable<kTable>());                                          \
    static_assert(kTable.structure == nullptr || Declare::ColumnsAreNumbered(*kTable.structure)); \
    const Declare::PackedShape ClassName::kShape = Declare::Pack<kTable>();                       \
    template std::shared_ptr<NamespaceNode> MakeCommandNode<ClassName>();                         \
    void ClassName::Execute([[maybe_unused]] const std::shared_ptr<Input>& input,                 \
                            [[maybe_unused]] const std::shared_ptr<Output>& output)

}  // namespace ZanvexCli::NetworkNamespace
