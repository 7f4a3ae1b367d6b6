// How a command's tables become bytes, and bytes tables again. Every pointer in a table is an
// address the loader must relocate, in every process, page by page; a command class keeps its
// shape packed instead, at compile time, into one array of bytes without pointers, read as it is.
//
// The layout is written once, in the Lay... functions, over an `io` that either packs (a
// ShapeWriter: the table's values into bytes) or unpacks (a ShapeReader: bytes into a table).
// Each text is a byte 0 for none, or 1 and the text with its terminating zero; counts take two
// bytes, numbers eight, kinds and flags one.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

#include "frame/Shape.h"

namespace ZanvexCli::NetworkNamespace::Declare {

// A struct's names, its fields, each with its name, kind and column, and for a struct or a list of
// structs, that struct in turn.
template <class Io, class Struct>
constexpr void LayStruct(Io& io, Struct& structure) {
    io.Text(structure.name);
    io.Text(structure.columnsName);
    io.Sequence(structure.fields, [&io](auto& field) {
        io.Text(field.name);
        io.Number(field.type, 1);
        io.Number(field.column, 1);
        if (field.type == FieldType::Struct || field.type == FieldType::StructList) {
            io.Nested(field.nested, [&io](auto& nested) { LayStruct(io, nested); });
        }
    });
}

// A command's shape up to its struct: the kind of its result, description, default output and
// parameters.
template <class Io, class Command>
constexpr void LayHead(Io& io, Command& shape) {
    io.Number(shape.root, 1);
    io.Text(shape.description);
    io.Text(shape.formatter);
    io.Sequence(shape.outputParameters, [&io](auto& parameter) {
        io.Text(parameter.key);
        io.Text(parameter.value);
    });
    io.Sequence(shape.parameters, [&io](auto& parameter) {
        io.Text(parameter.name);
        io.Text(parameter.shortName);
        io.Number(parameter.type, 1);
        io.Number(parameter.required, 1);
        io.Text(parameter.description);
        io.Number(parameter.range, 1);
        io.Number(parameter.low, 8);
        io.Number(parameter.high, 8);
        io.Sequence(parameter.intChoices, [&io](auto& value) { io.Number(value, 8); });
        io.Sequence(parameter.stringChoices, [&io](auto& choice) {
            io.Text(choice.value);
            io.Text(choice.description);
        });
        io.Text(parameter.regex);
    });
}

// A command's whole shape: its head, then its struct when its result has one.
template <class Io, class Command>
constexpr void LayCommand(Io& io, Command& shape) {
    LayHead(io, shape);
    if (HasStruct(shape.root)) {
        io.Nested(shape.structure, [&io](auto& structure) { LayStruct(io, structure); });
    }
}

// Packs a table's values into `sink`, which counts or stores the bytes.
template <class Sink>
class ShapeWriter {
public:
    constexpr explicit ShapeWriter(Sink& sink) : sink_(sink) {}

    constexpr void Text(const char* text) {
        sink_.Put(text != nullptr);
        for (; text != nullptr && *text != '\0'; ++text) {
            sink_.Put(*text);
        }
        if (text != nullptr) {
            sink_.Put('\0');
        }
    }
    template <class Value>
    constexpr void Number(Value value, int bytes) {
        const auto number = static_cast<unsigned long long>(value);
        for (int i = 0; i < bytes; ++i) {
            sink_.Put(static_cast<char>((number >> (8 * i)) & 0xff));
        }
    }
    template <class Item, class Each>
    constexpr void Sequence(std::span<const Item> items, Each each) {
        Number(items.size(), 2);
        for (const Item& item : items) {
            each(item);
        }
    }
    template <class Each>
    constexpr void Nested(const StructShape* nested, Each each) {
        each(*nested);
    }

private:
    Sink& sink_;
};

// What a ShapeReader unpacks lives here: every span and nested struct of the tables it fills
// points into it.
class ShapeStore {
public:
    template <class Item>
    constexpr std::span<Item> Allocate(std::size_t count) {
        // Item by item: clang can't evaluate the vector's own fill of `count` items at compile
        // time.
        auto& list = ListsOf<Item>().emplace_back();
        list.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            list.emplace_back();
        }
        return list;
    }

private:
    template <class Item>
    constexpr std::vector<std::vector<Item>>& ListsOf() {
        if constexpr (std::is_same_v<Item, OutputParameter>) {
            return outputParameters_;
        } else if constexpr (std::is_same_v<Item, Parameter>) {
            return parameters_;
        } else if constexpr (std::is_same_v<Item, long>) {
            return intChoices_;
        } else if constexpr (std::is_same_v<Item, Choice>) {
            return stringChoices_;
        } else if constexpr (std::is_same_v<Item, Field>) {
            return fields_;
        } else {
            static_assert(std::is_same_v<Item, StructShape>);
            return structs_;
        }
    }

    std::vector<std::vector<OutputParameter>> outputParameters_;
    std::vector<std::vector<Parameter>> parameters_;
    std::vector<std::vector<long>> intChoices_;
    std::vector<std::vector<Choice>> stringChoices_;
    std::vector<std::vector<Field>> fields_;
    std::vector<std::vector<StructShape>> structs_;
};

// Unpacks bytes into tables whose texts point into the bytes and whose lists live in `store`.
class ShapeReader {
public:
    constexpr ShapeReader(const char* bytes, ShapeStore& store) : next_(bytes), store_(store) {}

    constexpr void Text(const char*& text) {
        if (*next_++ == 0) {
            text = nullptr;
            return;
        }
        text = next_;
        next_ += std::string_view(next_).size() + 1;
    }
    template <class Value>
    constexpr void Number(Value& value, int bytes) {
        unsigned long long number = 0;
        for (int i = 0; i < bytes; ++i) {
            number |= static_cast<unsigned long long>(static_cast<unsigned char>(*next_++))
                      << (8 * i);
        }
        value = static_cast<Value>(number);
    }
    template <class Item, class Each>
    constexpr void Sequence(std::span<const Item>& items, Each each) {
        std::size_t count = 0;
        Number(count, 2);
        std::span<Item> stored = store_.Allocate<Item>(count);
        for (Item& item : stored) {
            each(item);
        }
        items = stored;
    }
    template <class Each>
    constexpr void Nested(const StructShape*& nested, Each each) {
        StructShape& stored = store_.Allocate<StructShape>(1).front();
        each(stored);
        nested = &stored;
    }

    constexpr const char* Next() const { return next_; }

private:
    const char* next_;
    ShapeStore& store_;
};

// Whether two tables say the same, text by text; a shape's functions are not packed and not
// compared.
constexpr bool SameText(const char* a, const char* b) {
    return a == nullptr || b == nullptr ? a == b : std::string_view(a) == std::string_view(b);
}

template <class Item, class Same>
constexpr bool SameList(std::span<const Item> a, std::span<const Item> b, Same same) {
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (!same(a[i], b[i])) {
            return false;
        }
    }
    return true;
}

constexpr bool SameStruct(const StructShape& a, const StructShape& b) {
    return SameText(a.name, b.name) && SameText(a.columnsName, b.columnsName) &&
           SameList(a.fields, b.fields, [](const Field& x, const Field& y) {
               return SameText(x.name, y.name) && x.type == y.type && x.column == y.column &&
                      (x.nested == nullptr || y.nested == nullptr
                           ? x.nested == y.nested
                           : SameStruct(*x.nested, *y.nested));
           });
}

constexpr bool SameParameter(const Parameter& a, const Parameter& b) {
    return SameText(a.name, b.name) && SameText(a.shortName, b.shortName) && a.type == b.type &&
           a.required == b.required && SameText(a.description, b.description) &&
           a.range == b.range && a.low == b.low && a.high == b.high &&
           SameList(a.intChoices, b.intChoices, [](long x, long y) { return x == y; }) &&
           SameList(a.stringChoices, b.stringChoices,
                    [](const Choice& x, const Choice& y) {
                        return SameText(x.value, y.value) && SameText(x.description, y.description);
                    }) &&
           SameText(a.regex, b.regex);
}

constexpr bool SameCommand(const CommandShape& a, const CommandShape& b) {
    return a.root == b.root && SameText(a.description, b.description) &&
           SameText(a.formatter, b.formatter) &&
           SameList(a.outputParameters, b.outputParameters,
                    [](const OutputParameter& x, const OutputParameter& y) {
                        return SameText(x.key, y.key) && SameText(x.value, y.value);
                    }) &&
           SameList(a.parameters, b.parameters, SameParameter) &&
           (HasStruct(a.root) ? SameStruct(*a.structure, *b.structure)
                              : a.structure == nullptr && b.structure == nullptr);
}

struct ByteCounter {
    std::size_t size = 0;
    constexpr void Put(char) { ++size; }
};

template <std::size_t kSize>
struct ByteArray {
    char bytes[kSize] = {};
    std::size_t size = 0;
    constexpr void Put(char byte) { bytes[size++] = byte; }
};

// The number of bytes `lay` puts through a writer.
template <class Lay>
constexpr std::size_t CountBytes(Lay lay) {
    ByteCounter counter;
    ShapeWriter writer(counter);
    lay(writer);
    return counter.size;
}

constexpr auto kLayShape = [](auto& io, auto& shape) {
    if constexpr (std::is_same_v<std::remove_cvref_t<decltype(shape)>, CommandShape>) {
        LayCommand(io, shape);
    } else {
        LayStruct(io, shape);
    }
};

template <const auto& kShape>
constexpr std::size_t kPackedSize = CountBytes([](auto& io) { kLayShape(io, kShape); });

template <const auto& kShape>
constexpr ByteArray<kPackedSize<kShape>> kPackedBytes = [] {
    ByteArray<kPackedSize<kShape>> packed;
    ShapeWriter writer(packed);
    kLayShape(writer, kShape);
    return packed;
}();

// A struct packed at compile time, for the results and rows a command builds; null bytes for
// none.
struct PackedStruct {
    const char* bytes = nullptr;
};

// A command's shape as its class keeps it: the packed bytes, where its struct starts in them,
// and the functions of the shape, null for most commands.
struct PackedShape {
    const char* bytes;
    PackedStruct structure;
    AddParameters addParameters;
    Describe describe;
};

template <const CommandShape& kShape>
constexpr PackedShape Pack() {
    const char* bytes = kPackedBytes<kShape>.bytes;
    const std::size_t structOffset = CountBytes([](auto& io) { LayHead(io, kShape); });
    return {bytes,
            {HasStruct(kShape.root) ? bytes + structOffset : nullptr},
            kShape.addParameters,
            kShape.describe};
}

// The packed form of a struct declared `constexpr`, for the rows a command builds.
template <const StructShape& kStruct>
constexpr PackedStruct PackStruct() {
    return {kPackedBytes<kStruct>.bytes};
}

// Whether the columns of `structure`, and of the structs in it, are numbered 1, 2... without a
// gap or a number twice.
constexpr bool ColumnsAreNumbered(const StructShape& structure) {
    int shown = 0;
    int highest = 0;
    for (const Field& field : structure.fields) {
        if (field.column > 0) {
            ++shown;
            highest = field.column > highest ? field.column : highest;
            for (const Field& other : structure.fields) {
                if (&other != &field && other.column == field.column) {
                    return false;
                }
            }
        }
        if (field.nested != nullptr && !ColumnsAreNumbered(*field.nested)) {
            return false;
        }
    }
    return shown == highest;
}

// Whether unpacking the packed form of `kShape` gives `kShape` back, every byte read: checked for
// every command as it is declared.
template <const CommandShape& kShape>
constexpr bool UnpacksToItsTable() {
    ShapeStore store;
    CommandShape unpacked;
    ShapeReader reader(kPackedBytes<kShape>.bytes, store);
    LayCommand(reader, unpacked);
    return SameCommand(unpacked, kShape) &&
           reader.Next() == kPackedBytes<kShape>.bytes + kPackedSize<kShape>;
}

}  // namespace ZanvexCli::NetworkNamespace::Declare
