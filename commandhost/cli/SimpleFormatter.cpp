// The simple formatter: "Field Name: value" lines, nested values indented further.
#include "commandhost/cli/Formatters.h"

namespace CommandHost {

namespace {

constexpr size_t kIndentStep = 3;

class SimpleWriter {
public:
    SimpleWriter(const FormatContext& context, std::string& out) : context_(context), out_(out) {}

    void Struct(const MetaStruct& structure, size_t depth) {
        std::string header = context_.layout.Header(structure);
        if (!header.empty()) {
            Line(depth, header);
            ++depth;
        }
        for (const auto* field : context_.layout.Fields(structure)) {
            const MetaValue* value = field->Value();
            const std::string& name = field->Name();
            if (IsScalar(value)) {
                Line(depth, name + ": " + FieldText(structure, name, context_.layout));
            } else if (value->GetType() == CppTools::MetaObj::MetaTypeStruct) {
                Line(depth, name + ":");
                Struct(static_cast<const MetaStruct&>(*value), depth + 1);
            } else {
                Line(depth, name + ":");
                List(static_cast<const MetaList&>(*value), depth + 1, true);
            }
        }
    }

    // A nested list of structs becomes a table where the command declares its columns.
    void List(const MetaList& list, size_t depth, bool nested) {
        if (list.GetElementType() != CppTools::MetaObj::MetaTypeStruct) {
            for (const auto& element : list.GetElements()) {
                Line(depth, VisibleScalarText(element.get()));
            }
            return;
        }
        const MetaStruct* shape = ShapeOf(list);
        if (nested && shape != nullptr) {
            auto columns = context_.layout.TableColumns(*shape);
            if (!columns.empty()) {
                RenderStructTable(StructElements(list), columns, context_,
                                  std::string(depth * kIndentStep, ' '), out_);
                return;
            }
        }
        bool first = true;
        for (const MetaStruct* element : StructElements(list)) {
            if (!first) {
                out_.push_back('\n');
            }
            Struct(*element, depth);
            first = false;
        }
    }

private:
    void Line(size_t depth, std::string_view text) {
        size_t start = out_.size();
        out_.append(depth * kIndentStep, ' ').append(text);
        while (out_.size() > start && out_.back() == ' ') {
            out_.pop_back();
        }
        out_.push_back('\n');
    }

    const FormatContext& context_;
    std::string& out_;
};

}  // namespace

void FormatSimple(const MetaValue& root, const FormatContext& context, std::string& out) {
    SimpleWriter writer(context, out);
    if (root.GetType() == CppTools::MetaObj::MetaTypeStruct) {
        writer.Struct(static_cast<const MetaStruct&>(root), 0);
    } else if (root.GetType() == CppTools::MetaObj::MetaTypeList) {
        writer.List(static_cast<const MetaList&>(root), 0, false);
    }
}

}  // namespace CommandHost
