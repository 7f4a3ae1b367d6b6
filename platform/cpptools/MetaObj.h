// Result values of a command: a tree of typed values held by shared pointers.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace CppTools::MetaObj {

enum MetaType {
    MetaTypeBool = 0,
    MetaTypeInt = 1,
    MetaTypeString = 2,
    MetaTypeStruct = 3,
    MetaTypeList = 4,
};

class MetaStruct;

// Base of every result value. A value made by New() without an argument is empty: it stands
// for its type in a spec, and formatters print it as the type's zero.
class MetaValue {
public:
    virtual ~MetaValue();
    virtual MetaType GetType() const = 0;
    bool HasValue() const { return hasValue_; }

protected:
    explicit MetaValue(bool hasValue) : hasValue_(hasValue) {}
    bool hasValue_;
};

class MetaBool final : public MetaValue {
    friend class MetaStruct;

public:
    static std::shared_ptr<MetaBool> New();
    static std::shared_ptr<MetaBool> New(bool value);
    MetaType GetType() const override { return MetaTypeBool; }
    bool GetValue() const { return value_; }

    explicit MetaBool(bool hasValue, bool value) : MetaValue(hasValue), value_(value) {}

private:
    bool value_;
};

class MetaInt final : public MetaValue {
    friend class MetaStruct;

public:
    static std::shared_ptr<MetaInt> New();
    static std::shared_ptr<MetaInt> New(long value);
    MetaType GetType() const override { return MetaTypeInt; }
    long GetValue() const { return value_; }

    explicit MetaInt(bool hasValue, long value) : MetaValue(hasValue), value_(value) {}

private:
    long value_;
};

class MetaString final : public MetaValue {
    friend class MetaStruct;

public:
    static std::shared_ptr<MetaString> New();
    static std::shared_ptr<MetaString> New(const char* value);
    static std::shared_ptr<MetaString> New(const std::string& value);
    static std::shared_ptr<MetaString> New(std::string&& value);
    MetaType GetType() const override { return MetaTypeString; }
    const std::string& GetValue() const { return value_; }

    explicit MetaString(bool hasValue, std::string value)
        : MetaValue(hasValue), value_(std::move(value)) {}

private:
    std::string value_;
};

// A list of strings (element type MetaTypeString) or of structs (MetaTypeStruct, with a
// prototype that gives the shape of every element).
class MetaList final : public MetaValue {
public:
    static std::shared_ptr<MetaList> New(MetaType elementType);
    static std::shared_ptr<MetaList> New(MetaType elementType,
                                         const std::shared_ptr<MetaStruct>& prototype);
    static std::shared_ptr<MetaList> New(MetaType elementType,
                                         std::shared_ptr<MetaStruct>&& prototype);
    MetaType GetType() const override { return MetaTypeList; }

    void Add(const char* value);
    void Add(const std::string& value);
    void Add(std::string&& value);
    void Add(const std::shared_ptr<MetaString>& value);
    void Add(const std::shared_ptr<MetaStruct>& value);
    void AddAll(std::vector<std::string>&& values);
    unsigned long GetCount() const { return elements_.size(); }
    void Reserve(unsigned long count) { elements_.reserve(count); }

    MetaType GetElementType() const { return elementType_; }
    const std::shared_ptr<MetaStruct>& GetPrototype() const { return prototype_; }
    const std::vector<std::shared_ptr<MetaValue>>& GetElements() const { return elements_; }

    MetaList(MetaType elementType, std::shared_ptr<MetaStruct> prototype)
        : MetaValue(false), elementType_(elementType), prototype_(std::move(prototype)) {}

private:
    MetaType elementType_;
    std::shared_ptr<MetaStruct> prototype_;
    std::vector<std::shared_ptr<MetaValue>> elements_;
};

// A named record whose fields keep the order in which they were first set. A field holds a
// scalar in place (a row of a long listing is then two allocations, not one for each field);
// a list, a struct, or an empty shared pointer given by the command is held shared.
class MetaStruct final : public MetaValue {
public:
    class Field {
    public:
        // `name` is an interned name; the value is made in place from `arguments`.
        template <class Held, class... Arguments>
        Field(const std::string* name, std::in_place_type_t<Held> kind, Arguments&&... arguments)
            : name_(name), value_(kind, std::forward<Arguments>(arguments)...) {}

        const std::string& Name() const { return *name_; }
        // The field's value; null only where a command set an empty pointer.
        const MetaValue* Value() const;

    private:
        friend class MetaStruct;

        // Names are interned for the process: rows of one shape share them.
        const std::string* name_;
        std::variant<MetaBool, MetaInt, MetaString, std::shared_ptr<MetaValue>> value_;
    };

    static std::shared_ptr<MetaStruct> New(const char* name);
    static std::shared_ptr<MetaStruct> New(const std::string& name);
    MetaType GetType() const override { return MetaTypeStruct; }

    void SetField(const char* name, bool value);
    void SetField(const char* name, int value);
    void SetField(const char* name, long value);
    void SetField(const char* name, const char* value);
    void SetField(const char* name, const std::string& value);
    void SetField(const char* name, std::string&& value);
    void SetField(const char* name, const std::vector<std::string>& value);
    void SetField(const char* name, const std::shared_ptr<MetaBool>& value);
    void SetField(const char* name, const std::shared_ptr<MetaInt>& value);
    void SetField(const char* name, const std::shared_ptr<MetaString>& value);
    void SetField(const char* name, const std::shared_ptr<MetaList>& value);
    void SetField(const char* name, const std::shared_ptr<MetaStruct>& value);
    void SetField(const std::string& name, bool value);
    void SetField(const std::string& name, int value);
    void SetField(const std::string& name, long value);
    void SetField(const std::string& name, const char* value);
    void SetField(const std::string& name, const std::string& value);
    void SetField(const std::string& name, std::string&& value);
    void SetField(const std::string& name, const std::vector<std::string>& value);
    void SetField(const std::string& name, const std::shared_ptr<MetaBool>& value);
    void SetField(const std::string& name, const std::shared_ptr<MetaInt>& value);
    void SetField(const std::string& name, const std::shared_ptr<MetaString>& value);
    void SetField(const std::string& name, const std::shared_ptr<MetaList>& value);
    void SetField(const std::string& name, const std::shared_ptr<MetaStruct>& value);

    const std::string& GetName() const { return *name_; }
    const std::vector<Field>& GetFields() const { return fields_; }
    // The field's value, or null when the struct has no such field.
    const MetaValue* GetField(std::string_view name) const;

    explicit MetaStruct(std::string_view name);

private:
    Field* Find(std::string_view name);
    template <class... Arguments>
    void Append(std::string_view name, Arguments&&... arguments);
    // Sets a field to a scalar of kind `Meta`, in place.
    template <class Meta, class Value>
    void Set(std::string_view name, Value&& value);
    void Share(std::string_view name, std::shared_ptr<MetaValue> value);
    template <class Meta>
    void Put(std::string_view name, const std::shared_ptr<Meta>& value);

    const std::string* name_;
    std::vector<Field> fields_;
    std::size_t nextField_ = 0;  // where the next search for a field starts
};

}  // namespace CppTools::MetaObj
