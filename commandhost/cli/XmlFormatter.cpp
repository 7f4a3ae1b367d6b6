// The xml formatter: each value an element named by its type, each field a <field name="...">.
// The document is well-formed XML 1.0 whatever a host returned: a byte that is no UTF-8 and a
// character XML 1.0 can't carry (C0 controls other than tab, line feed and carriage return;
// U+FFFE, U+FFFF) become U+FFFD, and carriage returns, which a parser would turn into line
// feeds, are written as references.
#include <array>

#include "commandhost/cli/Formatters.h"
#include "commandhost/cli/Text.h"

namespace CommandHost {

namespace {

constexpr size_t kXmlIndent = 2;

// ASCII that XML text holds as it is; a C0 control other than tab, line feed and carriage
// return it can't carry at all, nor U+FFFE and U+FFFF.
constexpr TextEscaping kXmlEscaping = {
    .plain =
        [] {
            std::array<bool, 256> plain{};
            for (int c = 0x20; c < 0x80; ++c) {
                plain[c] = c != '&' && c != '<' && c != '>' && c != '"';
            }
            return plain;
        }(),
    .escapeAscii =
        [](char c, std::string& out) {
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
                case '\r':
                    out.append("&#13;");
                    break;
                case '\t':
                    out.append("&#9;");
                    break;
                case '\n':
                    out.append("&#10;");
                    break;
                default:
                    AppendUtf8(kReplacementCharacter, out);
            }
        },
    .carries = [](char32_t code) { return code != 0xFFFE && code != 0xFFFF; },
};

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
        AppendEscaped(ScalarText(value), kXmlEscaping, out);
        out.append("</").append(name).append(">\n");
        return;
    }
    if (value->GetType() == CppTools::MetaObj::MetaTypeStruct) {
        const auto& structure = static_cast<const MetaStruct&>(*value);
        out.append(" name=\"");
        AppendEscaped(structure.GetName(), kXmlEscaping, out);
        if (structure.GetFields().empty()) {
            out.append("\"/>\n");
            return;
        }
        out.append("\">\n");
        for (const auto& field : structure.GetFields()) {
            Indent(depth + 1, out);
            out.append("<field name=\"");
            AppendEscaped(field.Name(), kXmlEscaping, out);
            out.append("\">\n");
            AppendValue(field.Value(), depth + 2, out);
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
