// The command tree: namespaces are inner nodes, commands are leaves.
#pragma once

#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cpptools/CallSpec.h"

namespace CppTools::AutoCli {

enum NodeType {
    NodeTypeNamespace = 0,
    NodeTypeCommand = 1,
};

class Dispatcher;

class NamespaceNode {
public:
    virtual ~NamespaceNode();

    virtual std::shared_ptr<NamespaceNode> GetThis();
    virtual NodeType GetType() const;
    // Names from the root's child down to this node.
    virtual std::vector<std::string> GetPath() const;
    virtual std::string GetPathString(char separator) const;
    virtual bool HasNamespaceNode(const std::string& name) const;
    virtual std::vector<std::string> GetNamespaceNodeNames() const;
    virtual std::vector<std::shared_ptr<NamespaceNode>> GetNamespaceNodes() const;
    virtual std::shared_ptr<NamespaceNode> GetNamespaceNode(const std::string& name) const;
    virtual void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, std::string name);
    virtual void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, const char* name);
    // Walks the names from the front of `path` as far as they lead, removing each name it
    // follows; returns the last node reached.
    virtual std::shared_ptr<NamespaceNode> ResolveNode(std::list<std::string>& path);
    virtual std::shared_ptr<NamespaceNode> SubNamespace(const std::string& name);
    virtual Dispatcher* GetDispatcher();
    virtual void SetParent(std::shared_ptr<NamespaceNode> parent);
    virtual std::shared_ptr<NamespaceNode> GetParent() const;

    void SetDescription(const char* description);
    void SetDescription(std::string description);
    const std::string& GetDescription() const { return description_; }
    // The name under which the parent registered this node; empty for a root.
    const std::string& GetName() const { return name_; }

    // Primes the weak self-reference from the owner's shared pointer, if it is not set yet.
    void PrimeThis(const std::shared_ptr<NamespaceNode>& self);

protected:
    NamespaceNode() = default;

private:
    std::weak_ptr<NamespaceNode> this_;
    std::weak_ptr<NamespaceNode> parent_;
    std::string name_;
    std::string description_;
    std::vector<std::shared_ptr<NamespaceNode>> children_;  // each known by its own name_
};

class Namespace : public NamespaceNode {
public:
    static std::shared_ptr<Namespace> New();
};

class CommandSpec : public NamespaceNode {
public:
    using OutputParameter = std::pair<std::string, std::string>;

    NodeType GetType() const override;
    virtual std::shared_ptr<CallSpec::InputSpec> GetInputSpec();
    virtual std::shared_ptr<CallSpec::OutputSpec> GetOutputSpec();

    void SetDefaultOutputFormatter(const char* formatter);
    // A later value for a key already set replaces it in place.
    void SetDefaultOutputParameter(const char* key, const char* value);
    void SetDefaultOutputParameter(const std::string& key, const std::string& value);
    const std::string& GetDefaultOutputFormatter() const { return formatter_; }
    const std::vector<OutputParameter>& GetDefaultOutputParameters() const {
        return outputParameters_;
    }

protected:
    virtual std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() = 0;
    virtual std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() = 0;

private:
    std::string formatter_;
    std::vector<OutputParameter> outputParameters_;
};

class Dispatcher {
public:
    virtual ~Dispatcher();
    virtual void Execute(const std::shared_ptr<CallSpec::Input>& input,
                         const std::shared_ptr<CallSpec::Output>& output) = 0;
};

class Command : public CommandSpec, public Dispatcher {
public:
    Dispatcher* GetDispatcher() override;
    void Execute(const std::shared_ptr<CallSpec::Input>& input,
                 const std::shared_ptr<CallSpec::Output>& output) override;

protected:
    virtual void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                                 const std::shared_ptr<CallSpec::Output>& output) = 0;
};

}  // namespace CppTools::AutoCli
