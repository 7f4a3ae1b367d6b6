// Turning a command's result into text: the layout a command declares, and the formatters.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cpptools/MetaObj.h"

namespace CommandHost {

using CppTools::MetaObj::MetaList;
using CppTools::MetaObj::MetaStruct;
using CppTools::MetaObj::MetaValue;

// The default output parameters of a command, read once: which fields of a struct to show and
// in what order, the header ahead of a struct, the columns of nested tables, units, and whether
// the last column of a table wraps.
class OutputLayout {
public:
    OutputLayout() = default;
    explicit OutputLayout(const std::vector<std::pair<std::string, std::string>>& parameters);

    // The fields of `structure` to show: those that "fields:<name>" lists and the struct has, in
    // the listed order; all fields when nothing is declared or nothing listed is there.
    std::vector<const MetaStruct::Field*> Fields(const MetaStruct& structure) const;
    // The columns of a nested table of `structure`, from "table-columns:<name>" or
    // "table-columns"; empty when neither is declared.
    std::vector<const MetaStruct::Field*> TableColumns(const MetaStruct& structure) const;
    // The line ahead of `structure` with each %Field Name% replaced by the field's value; empty
    // when no header is declared or it is "<NONE>".
    std::string Header(const MetaStruct& structure) const;
    // The unit of a field, "" when none is declared.
    std::string_view Unit(const MetaStruct& structure, std::string_view field) const;
    bool WrapLast() const { return wrapLast_; }

private:
    struct NamedList {
        std::string structName;
        std::vector<std::string> names;
    };

    std::vector<NamedList> fields_;
    std::vector<NamedList> tableColumns_;
    std::vector<std::string> anyTableColumns_;
    std::vector<std::pair<std::string, std::string>> headers_;
    std::vector<std::pair<std::string, std::string>> units_;  // "Struct.Field" -> unit
    bool wrapLast_ = false;
};

// Takes the text made so far and empties it: a long result is written as it is made, so the
// process need not hold the whole text.
using Spill = std::function<void(std::string& text)>;

struct FormatContext {
    const OutputLayout& layout;
    size_t width;                  // of the terminal, for wrapping
    const Spill* spill = nullptr;  // null: the whole text stays in `out`
};

using FormatFunction = void (*)(const MetaValue& root, const FormatContext& context,
                                std::string& out);

struct Formatter {
    std::string_view name;
    FormatFunction format;
    std::string_view description;
};

std::span<const Formatter> AllFormatters();
const Formatter* FindFormatter(std::string_view name);
std::vector<std::string> FormatterNames();

// The result as text, by the formatter named; an empty name prints a scalar plainly and
// anything else as "simple". table and simple print a scalar plainly too, and nothing for a
// Bool root of true.
std::string FormatResult(std::string_view formatter, const MetaValue& root,
                         const FormatContext& context);

// Shared by the formatters.
bool IsScalar(const MetaValue* value);
// A scalar's text; an empty value gives its type's zero ("", 0, false).
std::string ScalarText(const MetaValue* value);
// A scalar's text as the formatters for people show it: with its control characters and
// whatever else a terminal must not be sent written visibly (VisibleText).
std::string VisibleScalarText(const MetaValue* value);
// The elements of a list of structs; other elements are skipped.
std::vector<const MetaStruct*> StructElements(const MetaList& list);
// The struct that gives a list's shape: its prototype, else its first element; null if none.
const MetaStruct* ShapeOf(const MetaList& list);

// A table of `structures` with the given columns: a header row, dashes under it, columns
// padded to the widest cell and two blanks apart; with "wrap-last", the last column wraps to
// fit the width. Each line starts with `indent`.
void RenderStructTable(const std::vector<const MetaStruct*>& structures,
                       const std::vector<const MetaStruct::Field*>& columns,
                       const FormatContext& context, std::string_view indent, std::string& out);
// The text of the field `name` of `structure` with its unit, as one line; "" when it has no
// such field.
std::string FieldText(const MetaStruct& structure, const std::string& name,
                      const OutputLayout& layout);
// The text of a value in a table cell or on one line: scalars as VisibleScalarText, a list of
// strings joined by ", ", a struct as "Field: value" pairs, a list of structs as such structs in
// braces.
std::string InlineText(const MetaValue* value, const OutputLayout& layout);

// `value` as JSON: pretty with `indent` blanks a level, or on one line when `indent` is 0.
void AppendJson(const MetaValue* value, size_t indent, std::string& out);

void FormatTable(const MetaValue& root, const FormatContext& context, std::string& out);
void FormatSimple(const MetaValue& root, const FormatContext& context, std::string& out);
void FormatJson(const MetaValue& root, const FormatContext& context, std::string& out);
void FormatXml(const MetaValue& root, const FormatContext& context, std::string& out);
void FormatCsv(const MetaValue& root, const FormatContext& context, std::string& out);
void FormatKeyValue(const MetaValue& root, const FormatContext& context, std::string& out);

}  // namespace CommandHost
