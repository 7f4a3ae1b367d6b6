// The xml formatter: each value an element named by its type, each field a <field name="...">.
#include "commandhost/cli/Formatters.h"

namespace CommandHost {

namespace {

constexpr size_t kXmlIndent = 2;

void AppendEscaped(std::string_view text, std::string& out) {
    for (char c : text) {
        switch (c) {
            case '&':
                out.append("&amp;");
                break;
            case '<':
                out.append("&lt;");
                break;
            case '>':
                out.append("&gt;");
                break;
            case '"':
                out.append("&quot;");
                break;
            default:
                out.push_back(c);
        }
    }
}

const char* ElementName(const MetaValue* value) {
    switch (value->GetType()) {
        case CppTools::MetaObj::MetaTypeBool:
            return "bool";
        case CppTools::MetaObj::MetaTypeInt:
            return "int";
        case CppTools::MetaObj::MetaTypeString:
            return "string";
        case CppTools::MetaObj::MetaTypeStruct:
            return "struct";
        case CppTools::MetaObj::MetaTypeList:
            return "list";
    }
    return "value";
}

void Indent(size_t depth, std::string& out) {
    out.append(depth * kXmlIndent, ' ');
}

void AppendValue(const MetaValue* value, size_t depth, std::string& out) {
    Indent(depth, out);
    if (value == nullptr) {
        out.append("<null/>\n");
        return;
    }
    const char* name = ElementName(value);
    out.append("<").append(name);
    if (IsScalar(value)) {
        out.append(">");
        AppendEscaped(ScalarText(value), out);
        out.append("</").append(name).append(">\n");
        return;
    }
    if (value->GetType() == CppTools::MetaObj::MetaTypeStruct) {
        const auto& structure = static_cast<const MetaStruct&>(*value);
        out.append(" name=\"");
        AppendEscaped(structure.GetName(), out);
        if (structure.GetFields().empty()) {
            out.append("\"/>\n");
            return;
        }
        out.append("\">\n");
        for (const auto& field : structure.GetFields()) {
            Indent(depth + 1, out);
            out.append("<field name=\"");
            AppendEscaped(field.first, out);
            out.append("\">\n");
            AppendValue(field.second.get(), depth + 2, out);
            Indent(depth + 1, out);
            out.append("</field>\n");
        }
    } else {
        const auto& elements = static_cast<const MetaList&>(*value).GetElements();
        if (elements.empty()) {
            out.append("/>\n");
            return;
        }
        out.append(">\n");
        for (const auto& element : elements) {
            AppendValue(element.get(), depth + 1, out);
        }
    }
    Indent(depth, out);
    out.append("</").append(name).append(">\n");
}

}  // namespace

void FormatXml(const MetaValue& root, const FormatContext&, std::string& out) {
    out.append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<output>\n");
    AppendValue(&root, 1, out);
    out.append("</output>\n");
}

}  // namespace CommandHost
