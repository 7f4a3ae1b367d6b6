// The default output parameters a command declares, as the formatters ask for them.
#include <algorithm>

#include "commandhost/cli/Formatters.h"
#include "cpptools/CallSpec.h"

namespace CommandHost {

namespace {

constexpr std::string_view kFieldsKey = "fields:";
constexpr std::string_view kHeaderKey = "header:";
constexpr std::string_view kTableColumnsKey = "table-columns";
constexpr std::string_view kUnitsKey = "units:";
constexpr std::string_view kWrapLastKey = "wrap-last";
constexpr std::string_view kNoHeader = "<NONE>";

// "a,b, c" -> {"a", "b", "c"}: names joined by commas, blanks around them dropped.
std::vector<std::string> SplitNames(std::string_view text) {
    std::vector<std::string> names;
    while (!text.empty()) {
        size_t comma = text.find(',');
        std::string_view name = text.substr(0, comma);
        size_t first = name.find_first_not_of(' ');
        size_t last = name.find_last_not_of(' ');
        if (first != std::string_view::npos) {
            names.emplace_back(name.substr(first, last - first + 1));
        }
        if (comma == std::string_view::npos) {
            break;
        }
        text.remove_prefix(comma + 1);
    }
    return names;
}

const MetaStruct::Field* FindField(const MetaStruct& structure, std::string_view name) {
    for (const auto& field : structure.GetFields()) {
        if (field.Name() == name) {
            return &field;
        }
    }
    return nullptr;
}

// The named fields that `structure` has, in the order named; all its fields if it has none.
std::vector<const MetaStruct::Field*> Select(const MetaStruct& structure,
                                             const std::vector<std::string>& names) {
    std::vector<const MetaStruct::Field*> selected;
    for (const std::string& name : names) {
        if (const auto* field = FindField(structure, name)) {
            selected.push_back(field);
        }
    }
    if (selected.empty()) {
        for (const auto& field : structure.GetFields()) {
            selected.push_back(&field);
        }
    }
    return selected;
}

template <class Entries>
auto FindByStruct(const Entries& entries, std::string_view structName) {
    return std::find_if(entries.begin(), entries.end(),
                        [structName](const auto& entry) { return entry.first == structName; });
}

}  // namespace

OutputLayout::OutputLayout(const std::vector<std::pair<std::string, std::string>>& parameters) {
    for (const auto& [key, value] : parameters) {
        std::string_view name(key);
        if (name.starts_with(kFieldsKey)) {
            fields_.push_back({std::string(name.substr(kFieldsKey.size())), SplitNames(value)});
        } else if (name.starts_with(kHeaderKey)) {
            headers_.emplace_back(name.substr(kHeaderKey.size()), value);
        } else if (name == kTableColumnsKey) {
            anyTableColumns_ = SplitNames(value);
        } else if (name.starts_with(kTableColumnsKey) && name[kTableColumnsKey.size()] == ':') {
            tableColumns_.push_back(
                {std::string(name.substr(kTableColumnsKey.size() + 1)), SplitNames(value)});
        } else if (name.starts_with(kUnitsKey)) {
            units_.emplace_back(name.substr(kUnitsKey.size()), value);
        } else if (name == kWrapLastKey) {
            CppTools::CallSpec::ParseBoolText(value, wrapLast_);
        }
    }
}

std::vector<const MetaStruct::Field*> OutputLayout::Fields(const MetaStruct& structure) const {
    for (const NamedList& entry : fields_) {
        if (entry.structName == structure.GetName()) {
            return Select(structure, entry.names);
        }
    }
    return Select(structure, {});
}

std::vector<const MetaStruct::Field*> OutputLayout::TableColumns(
    const MetaStruct& structure) const {
    for (const NamedList& entry : tableColumns_) {
        if (entry.structName == structure.GetName()) {
            return Select(structure, entry.names);
        }
    }
    if (!anyTableColumns_.empty()) {
        return Select(structure, anyTableColumns_);
    }
    return {};
}

std::string OutputLayout::Header(const MetaStruct& structure) const {
    auto header = FindByStruct(headers_, structure.GetName());
    if (header == headers_.end() || header->second == kNoHeader) {
        return {};
    }
    std::string_view text = header->second;
    std::string line;
    while (!text.empty()) {
        size_t open = text.find('%');
        size_t close = open == std::string_view::npos ? open : text.find('%', open + 1);
        if (close == std::string_view::npos) {
            line.append(text);
            break;
        }
        line.append(text.substr(0, open));
        std::string_view name = text.substr(open + 1, close - open - 1);
        if (const auto* field = FindField(structure, name)) {
            line.append(InlineText(field->Value(), *this));
            text.remove_prefix(close + 1);
        } else {
            // Not a field: the first '%' is text, and the second may open a name.
            line.append(text.substr(open, close - open));
            text.remove_prefix(close);
        }
    }
    return line;
}

std::string_view OutputLayout::Unit(const MetaStruct& structure, std::string_view field) const {
    for (const auto& [key, unit] : units_) {
        std::string_view name(key);
        if (name.size() == structure.GetName().size() + 1 + field.size() &&
            name.starts_with(structure.GetName()) && name[structure.GetName().size()] == '.' &&
            name.ends_with(field)) {
            return unit;
        }
    }
    return {};
}

}  // namespace CommandHost
