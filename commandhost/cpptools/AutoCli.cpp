// The command tree: namespaces and commands, and how a command runs.
#include "cpptools/AutoCli.h"

namespace CppTools::AutoCli {

NamespaceNode::~NamespaceNode() = default;

std::shared_ptr<NamespaceNode> NamespaceNode::GetThis() {
    return this_.lock();
}

void NamespaceNode::PrimeThis(const std::shared_ptr<NamespaceNode>& self) {
    if (this_.expired()) {
        this_ = self;
    }
}

NodeType NamespaceNode::GetType() const {
    return NodeTypeNamespace;
}

std::vector<std::string> NamespaceNode::GetPath() const {
    std::vector<std::string> path;
    if (!name_.empty()) {
        path.push_back(name_);
    }
    for (auto node = GetParent(); node && !node->name_.empty(); node = node->GetParent()) {
        path.push_back(node->name_);
    }
    return {path.rbegin(), path.rend()};
}

std::string NamespaceNode::GetPathString(char separator) const {
    std::string text;
    for (const std::string& name : GetPath()) {
        if (!text.empty()) {
            text.push_back(separator);
        }
        text.append(name);
    }
    return text;
}

bool NamespaceNode::HasNamespaceNode(const std::string& name) const {
    return GetNamespaceNode(name) != nullptr;
}

std::vector<std::string> NamespaceNode::GetNamespaceNodeNames() const {
    std::vector<std::string> names;
    names.reserve(children_.size());
    for (const auto& child : children_) {
        names.push_back(child->name_);
    }
    return names;
}

std::vector<std::shared_ptr<NamespaceNode>> NamespaceNode::GetNamespaceNodes() const {
    return children_;
}

std::shared_ptr<NamespaceNode> NamespaceNode::GetNamespaceNode(const std::string& name) const {
    for (const auto& child : children_) {
        if (child->name_ == name) {
            return child;
        }
    }
    return nullptr;
}

void NamespaceNode::RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, std::string name) {
    node->SetParent(GetThis());
    node->name_ = std::move(name);
    if (children_.empty()) {
        // Room for a typical namespace's children at once.
        children_.reserve(8);
    }
    children_.push_back(std::move(node));
}

void NamespaceNode::RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, const char* name) {
    RegisterNamespaceNode(std::move(node), std::string(name));
}

std::shared_ptr<NamespaceNode> NamespaceNode::ResolveNode(std::list<std::string>& path) {
    std::shared_ptr<NamespaceNode> node = GetThis();
    while (node && !path.empty()) {
        auto child = node->GetNamespaceNode(path.front());
        if (!child) {
            break;
        }
        node = std::move(child);
        path.pop_front();
    }
    return node;
}

std::shared_ptr<NamespaceNode> NamespaceNode::SubNamespace(const std::string& name) {
    if (auto child = GetNamespaceNode(name)) {
        return child;
    }
    auto child = Namespace::New();
    RegisterNamespaceNode(child, name);
    return child;
}

Dispatcher* NamespaceNode::GetDispatcher() {
    return nullptr;
}

void NamespaceNode::SetParent(std::shared_ptr<NamespaceNode> parent) {
    parent_ = parent;
}

std::shared_ptr<NamespaceNode> NamespaceNode::GetParent() const {
    return parent_.lock();
}

void NamespaceNode::SetDescription(const char* description) {
    description_ = description != nullptr ? description : "";
}

void NamespaceNode::SetDescription(std::string description) {
    description_ = std::move(description);
}

std::shared_ptr<Namespace> Namespace::New() {
    auto node = std::make_shared<Namespace>();
    node->PrimeThis(node);
    return node;
}

NodeType CommandSpec::GetType() const {
    return NodeTypeCommand;
}

std::shared_ptr<CallSpec::InputSpec> CommandSpec::GetInputSpec() {
    return GetInputSpecInternal();
}

std::shared_ptr<CallSpec::OutputSpec> CommandSpec::GetOutputSpec() {
    return GetOutputSpecInternal();
}

void CommandSpec::SetDefaultOutputFormatter(const char* formatter) {
    formatter_ = formatter != nullptr ? formatter : "";
}

void CommandSpec::SetDefaultOutputParameter(const char* key, const char* value) {
    for (auto& parameter : outputParameters_) {
        if (parameter.first == key) {
            parameter.second = value;
            return;
        }
    }
    outputParameters_.emplace_back(key, value);
}

void CommandSpec::SetDefaultOutputParameter(const std::string& key, const std::string& value) {
    SetDefaultOutputParameter(key.c_str(), value.c_str());
}

Dispatcher::~Dispatcher() = default;

Dispatcher* Command::GetDispatcher() {
    return this;
}

void Command::Execute(const std::shared_ptr<CallSpec::Input>& input,
                      const std::shared_ptr<CallSpec::Output>& output) {
    ExecuteInternal(input, output);
}

}  // namespace CppTools::AutoCli
