// The formatters by name, the choice among them, and what they share.
#include "commandhost/cli/Formatters.h"

#include <charconv>

#include "commandhost/cli/Text.h"

namespace CommandHost {

using CppTools::MetaObj::MetaBool;
using CppTools::MetaObj::MetaInt;
using CppTools::MetaObj::MetaString;
using CppTools::MetaObj::MetaType;
namespace MetaObj = CppTools::MetaObj;

namespace {

constexpr Formatter kFormatters[] = {
    {"table", FormatTable, "A table with a header row and a row per struct."},
    {"simple", FormatSimple, "Indented \"Field Name: value\" lines."},
    {"json", FormatJson, "JSON, for scripts."},
    {"xml", FormatXml, "XML, for scripts."},
    {"csv", FormatCsv, "Comma-separated values with a header row, for scripts."},
    {"keyvalue", FormatKeyValue, "A \"Struct.Field=value\" line per value, for scripts."},
};

// A scalar on a line of its own.
void FormatPlain(const MetaValue& root, std::string& out) {
    out.append(VisibleScalarText(&root)).push_back('\n');
}

}  // namespace

std::span<const Formatter> AllFormatters() {
    return kFormatters;
}

const Formatter* FindFormatter(std::string_view name) {
    for (const Formatter& formatter : kFormatters) {
        if (formatter.name == name) {
            return &formatter;
        }
    }
    return nullptr;
}

std::vector<std::string> FormatterNames() {
    std::vector<std::string> names;
    for (const Formatter& formatter : kFormatters) {
        names.emplace_back(formatter.name);
    }
    return names;
}

std::string FormatResult(std::string_view formatter, const MetaValue& root,
                         const FormatContext& context) {
    std::string out;
    const Formatter* chosen = FindFormatter(formatter);
    const bool forPeople =
        chosen == nullptr || chosen->format == FormatTable || chosen->format == FormatSimple;
    if (forPeople && IsScalar(&root)) {
        // Success needs no words: a true Bool root prints nothing.
        if (!(root.GetType() == MetaObj::MetaTypeBool &&
              static_cast<const MetaBool&>(root).GetValue())) {
            FormatPlain(root, out);
        }
        return out;
    }
    (chosen != nullptr ? chosen->format : FormatSimple)(root, context, out);
    return out;
}

bool IsScalar(const MetaValue* value) {
    return value == nullptr || value->GetType() == MetaObj::MetaTypeBool ||
           value->GetType() == MetaObj::MetaTypeInt || value->GetType() == MetaObj::MetaTypeString;
}

std::string ScalarText(const MetaValue* value) {
    if (value == nullptr) {
        return {};
    }
    switch (value->GetType()) {
        case MetaObj::MetaTypeBool:
            return static_cast<const MetaBool*>(value)->GetValue() ? "true" : "false";
        case MetaObj::MetaTypeInt: {
            char buffer[24];
            auto end = std::to_chars(buffer, buffer + sizeof buffer,
                                     static_cast<const MetaInt*>(value)->GetValue())
                           .ptr;
            return std::string(buffer, end);
        }
        case MetaObj::MetaTypeString:
            return static_cast<const MetaString*>(value)->GetValue();
        default:
            return {};
    }
}

std::string VisibleScalarText(const MetaValue* value) {
    return VisibleText(ScalarText(value));
}

std::vector<const MetaStruct*> StructElements(const MetaList& list) {
    std::vector<const MetaStruct*> elements;
    elements.reserve(list.GetElements().size());
    for (const auto& element : list.GetElements()) {
        if (element && element->GetType() == MetaObj::MetaTypeStruct) {
            elements.push_back(static_cast<const MetaStruct*>(element.get()));
        }
    }
    return elements;
}

const MetaStruct* ShapeOf(const MetaList& list) {
    if (list.GetPrototype()) {
        return list.GetPrototype().get();
    }
    for (const auto& element : list.GetElements()) {
        if (element && element->GetType() == MetaObj::MetaTypeStruct) {
            return static_cast<const MetaStruct*>(element.get());
        }
    }
    return nullptr;
}

std::string InlineText(const MetaValue* value, const OutputLayout& layout) {
    if (IsScalar(value)) {
        return VisibleScalarText(value);
    }
    std::string text;
    if (value->GetType() == MetaObj::MetaTypeStruct) {
        const auto& structure = static_cast<const MetaStruct&>(*value);
        // Inside a table cell, the columns declared for the struct give the order.
        auto fields = layout.TableColumns(structure);
        if (fields.empty()) {
            fields = layout.Fields(structure);
        }
        for (const auto* field : fields) {
            if (!text.empty()) {
                text.append(", ");
            }
            text.append(field->Name())
                .append(": ")
                .append(FieldText(structure, field->Name(), layout));
        }
        return text;
    }
    const auto& list = static_cast<const MetaList&>(*value);
    const bool ofStructs = list.GetElementType() == MetaObj::MetaTypeStruct;
    for (const auto& element : list.GetElements()) {
        if (!text.empty()) {
            text.append(", ");
        }
        if (ofStructs) {
            text.append("{").append(InlineText(element.get(), layout)).append("}");
        } else {
            text.append(InlineText(element.get(), layout));
        }
    }
    return text;
}

std::string FieldText(const MetaStruct& structure, const std::string& name,
                      const OutputLayout& layout) {
    std::string text = InlineText(structure.GetField(name), layout);
    std::string_view unit = layout.Unit(structure, name);
    if (!unit.empty()) {
        text.append(" ").append(unit);
    }
    return text;
}

}  // namespace CommandHost
