// The table formatter, and the table layout that the simple formatter shares.
#include <algorithm>

#include "commandhost/cli/Formatters.h"
#include "commandhost/cli/Text.h"

namespace CommandHost {

namespace {

constexpr std::string_view kColumnGap = "  ";
// A last column narrower than this is not wrapped; the table grows wider instead.
constexpr size_t kNarrowestWrappedColumn = 20;

void Pad(std::string& out, size_t count) {
    out.append(count, ' ');
}

void TrimTrailingBlanks(std::string& out, size_t lineStart) {
    while (out.size() > lineStart && out.back() == ' ') {
        out.pop_back();
    }
}

void RenderTable(const std::vector<std::string>& headings,
                 const std::vector<std::vector<std::string>>& rows, bool wrapLast, size_t width,
                 std::string_view indent, std::string& out) {
    const size_t count = headings.size();
    if (count == 0) {
        return;
    }
    std::vector<size_t> widths(count);
    for (size_t column = 0; column < count; ++column) {
        widths[column] = DisplayWidth(headings[column]);
        for (const auto& row : rows) {
            widths[column] = std::max(widths[column], DisplayWidth(row[column]));
        }
    }
    size_t lastStart = DisplayWidth(indent);
    for (size_t column = 0; column + 1 < count; ++column) {
        lastStart += widths[column] + kColumnGap.size();
    }
    size_t& lastWidth = widths[count - 1];
    size_t room = 0;  // the width the last column wraps at; 0: no wrapping
    if (wrapLast && width > lastStart) {
        room = std::max(
            {width - lastStart, kNarrowestWrappedColumn, DisplayWidth(headings[count - 1])});
        if (lastWidth > room) {
            // The column is as wide as its widest line once wrapped.
            lastWidth = DisplayWidth(headings[count - 1]);
            for (const auto& row : rows) {
                for (const std::string& piece : WrapText(row[count - 1], room)) {
                    lastWidth = std::max(lastWidth, DisplayWidth(piece));
                }
            }
        }
    }
    auto line = [&](const std::vector<std::string>& cells) {
        size_t lineStart = out.size();
        out.append(indent);
        for (size_t column = 0; column + 1 < count; ++column) {
            out.append(cells[column]);
            Pad(out, widths[column] - DisplayWidth(cells[column]));
            out.append(kColumnGap);
        }
        const std::string& last = cells[count - 1];
        if (room > 0 && DisplayWidth(last) > room) {
            bool first = true;
            for (const std::string& piece : WrapText(last, room)) {
                if (!first) {
                    out.push_back('\n');
                    lineStart = out.size();
                    Pad(out, lastStart);
                }
                out.append(piece);
                first = false;
            }
        } else {
            out.append(last);
        }
        TrimTrailingBlanks(out, lineStart);
        out.push_back('\n');
    };
    line(headings);
    std::vector<std::string> dashes;
    dashes.reserve(count);
    for (size_t column = 0; column < count; ++column) {
        dashes.emplace_back(widths[column], '-');
    }
    line(dashes);
    for (const auto& row : rows) {
        line(row);
    }
}

}  // namespace

void RenderStructTable(const std::vector<const MetaStruct*>& structures,
                       const std::vector<const MetaStruct::Field*>& columns,
                       const FormatContext& context, std::string_view indent, std::string& out) {
    std::vector<std::string> headings;
    headings.reserve(columns.size());
    for (const auto* column : columns) {
        headings.push_back(column->Name());
    }
    std::vector<std::vector<std::string>> rows;
    rows.reserve(structures.size());
    for (const MetaStruct* structure : structures) {
        auto& row = rows.emplace_back();
        row.reserve(headings.size());
        for (const std::string& heading : headings) {
            row.push_back(FieldText(*structure, heading, context.layout));
        }
    }
    RenderTable(headings, rows, context.layout.WrapLast(), context.width, indent, out);
}

void FormatTable(const MetaValue& root, const FormatContext& context, std::string& out) {
    std::vector<const MetaStruct*> structures;
    const MetaStruct* shape = nullptr;
    if (root.GetType() == CppTools::MetaObj::MetaTypeStruct) {
        shape = static_cast<const MetaStruct*>(&root);
        structures.push_back(shape);
    } else if (root.GetType() == CppTools::MetaObj::MetaTypeList) {
        const auto& list = static_cast<const MetaList&>(root);
        if (list.GetElementType() != CppTools::MetaObj::MetaTypeStruct) {
            for (const auto& element : list.GetElements()) {
                out.append(VisibleScalarText(element.get())).push_back('\n');
            }
            return;
        }
        shape = ShapeOf(list);
        structures = StructElements(list);
    }
    if (shape == nullptr) {
        return;
    }
    RenderStructTable(structures, context.layout.Fields(*shape), context, {}, out);
}

}  // namespace CommandHost
