// The csv formatter: a header row of field names and a row per struct, quoted as RFC 4180 asks.
// Nested structs are flattened into "Outer.Inner" columns. A list of strings in a cell is its
// elements joined by ';', with a ';' or '\' inside an element written with a backslash before
// it, so that "Lab;Fake Group" reads back as one element.
#include "commandhost/cli/Formatters.h"

namespace CommandHost {

namespace {

constexpr char kListSeparator = ';';
constexpr char kListEscape = '\\';

struct Column {
    std::vector<std::string> path;  // field names from the row struct down
    std::string heading;
};

void AddColumns(const MetaStruct& shape, std::vector<std::string>& path,
                std::vector<Column>& columns) {
    for (const auto& field : shape.GetFields()) {
        const MetaValue* value = field.Value();
        path.push_back(field.Name());
        if (value && value->GetType() == CppTools::MetaObj::MetaTypeStruct) {
            AddColumns(static_cast<const MetaStruct&>(*value), path, columns);
        } else {
            std::string heading;
            for (const std::string& part : path) {
                heading.append(heading.empty() ? "" : ".").append(part);
            }
            columns.push_back({path, std::move(heading)});
        }
        path.pop_back();
    }
}

std::string CellText(const MetaValue* value) {
    if (IsScalar(value)) {
        return ScalarText(value);
    }
    std::string text;
    const auto& list = static_cast<const MetaList&>(*value);
    if (list.GetElementType() == CppTools::MetaObj::MetaTypeString) {
        for (const auto& element : list.GetElements()) {
            if (&element != &list.GetElements().front()) {
                text.push_back(kListSeparator);
            }
            for (char c : ScalarText(element.get())) {
                if (c == kListSeparator || c == kListEscape) {
                    text.push_back(kListEscape);
                }
                text.push_back(c);
            }
        }
    } else {
        AppendJson(value, 0, text);
    }
    return text;
}

void AppendCell(std::string_view text, std::string& out) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
        out.append(text);
        return;
    }
    out.push_back('"');
    for (char c : text) {
        if (c == '"') {
            out.push_back('"');
        }
        out.push_back(c);
    }
    out.push_back('"');
}

const MetaValue* Lookup(const MetaStruct& row, const std::vector<std::string>& path) {
    const MetaStruct* structure = &row;
    const MetaValue* value = nullptr;
    for (const std::string& name : path) {
        if (structure == nullptr) {
            return nullptr;
        }
        value = structure->GetField(name);
        structure = value && value->GetType() == CppTools::MetaObj::MetaTypeStruct
                        ? static_cast<const MetaStruct*>(value)
                        : nullptr;
    }
    return value;
}

}  // namespace

void FormatCsv(const MetaValue& root, const FormatContext&, std::string& out) {
    std::vector<const MetaStruct*> rows;
    const MetaStruct* shape = nullptr;
    if (root.GetType() == CppTools::MetaObj::MetaTypeStruct) {
        shape = static_cast<const MetaStruct*>(&root);
        rows.push_back(shape);
    } else if (root.GetType() == CppTools::MetaObj::MetaTypeList) {
        const auto& list = static_cast<const MetaList&>(root);
        if (list.GetElementType() != CppTools::MetaObj::MetaTypeStruct) {
            for (const auto& element : list.GetElements()) {
                AppendCell(ScalarText(element.get()), out);
                out.push_back('\n');
            }
            return;
        }
        shape = ShapeOf(list);
        rows = StructElements(list);
    } else {
        AppendCell(ScalarText(&root), out);
        out.push_back('\n');
        return;
    }
    if (shape == nullptr) {
        return;
    }
    std::vector<Column> columns;
    std::vector<std::string> path;
    AddColumns(*shape, path, columns);
    auto line = [&](auto cellOf) {
        for (size_t i = 0; i < columns.size(); ++i) {
            if (i > 0) {
                out.push_back(',');
            }
            AppendCell(cellOf(columns[i]), out);
        }
        out.push_back('\n');
    };
    line([](const Column& column) { return column.heading; });
    for (const MetaStruct* row : rows) {
        line([row](const Column& column) { return CellText(Lookup(*row, column.path)); });
    }
}

}  // namespace CommandHost
