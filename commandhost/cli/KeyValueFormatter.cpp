// The keyvalue formatter: one "Key=value" line per scalar, the key a path from the root:
// "Nic[0].Name=hwnic0" for a list of "Nic" structs, "Policy.Active Adapters[1]=hwnic1" inside a
// struct. Backslashes, line feeds and carriage returns in values are escaped.
#include "commandhost/cli/Formatters.h"

namespace CommandHost {

namespace {

void AppendEscaped(std::string_view text, std::string& out) {
    for (char c : text) {
        switch (c) {
            case '\\':
                out.append("\\\\");
                break;
            case '\n':
                out.append("\\n");
                break;
            case '\r':
                out.append("\\r");
                break;
            default:
                out.push_back(c);
        }
    }
}

void AppendIndex(size_t index, std::string& key) {
    key.append("[").append(std::to_string(index)).append("]");
}

void Emit(const MetaValue* value, std::string& key, std::string& out) {
    const size_t keyLength = key.size();
    if (IsScalar(value)) {
        out.append(key).push_back('=');
        AppendEscaped(ScalarText(value), out);
        out.push_back('\n');
    } else if (value->GetType() == CppTools::MetaObj::MetaTypeStruct) {
        for (const auto& field : static_cast<const MetaStruct*>(value)->GetFields()) {
            key.append(".").append(field.Name());
            Emit(field.Value(), key, out);
            key.resize(keyLength);
        }
    } else {
        const auto& elements = static_cast<const MetaList*>(value)->GetElements();
        for (size_t i = 0; i < elements.size(); ++i) {
            AppendIndex(i, key);
            Emit(elements[i].get(), key, out);
            key.resize(keyLength);
        }
    }
}

// The first part of a key: a struct's name, else the type of a scalar.
std::string RootName(const MetaValue& value) {
    switch (value.GetType()) {
        case CppTools::MetaObj::MetaTypeBool:
            return "bool";
        case CppTools::MetaObj::MetaTypeInt:
            return "int";
        case CppTools::MetaObj::MetaTypeStruct:
            return static_cast<const MetaStruct&>(value).GetName();
        default:
            return "string";
    }
}

}  // namespace

void FormatKeyValue(const MetaValue& root, const FormatContext&, std::string& out) {
    if (root.GetType() != CppTools::MetaObj::MetaTypeList) {
        std::string key = RootName(root);
        Emit(&root, key, out);
        return;
    }
    const auto& elements = static_cast<const MetaList&>(root).GetElements();
    for (size_t i = 0; i < elements.size(); ++i) {
        std::string key = elements[i] ? RootName(*elements[i]) : "null";
        AppendIndex(i, key);
        Emit(elements[i].get(), key, out);
    }
}

}  // namespace CommandHost
