// Result values: scalars, lists and ordered structs.
#include "cpptools/MetaObj.h"

#include <algorithm>

namespace CppTools::MetaObj {

MetaValue::~MetaValue() = default;

std::shared_ptr<MetaBool> MetaBool::New() {
    return std::make_shared<MetaBool>(false, false);
}
std::shared_ptr<MetaBool> MetaBool::New(bool value) {
    return std::make_shared<MetaBool>(true, value);
}

std::shared_ptr<MetaInt> MetaInt::New() {
    return std::make_shared<MetaInt>(false, 0L);
}
std::shared_ptr<MetaInt> MetaInt::New(long value) {
    return std::make_shared<MetaInt>(true, value);
}

std::shared_ptr<MetaString> MetaString::New() {
    return std::make_shared<MetaString>(false, std::string());
}
std::shared_ptr<MetaString> MetaString::New(const char* value) {
    return std::make_shared<MetaString>(true, std::string(value != nullptr ? value : ""));
}
std::shared_ptr<MetaString> MetaString::New(const std::string& value) {
    return std::make_shared<MetaString>(true, value);
}
std::shared_ptr<MetaString> MetaString::New(std::string&& value) {
    return std::make_shared<MetaString>(true, std::move(value));
}

std::shared_ptr<MetaList> MetaList::New(MetaType elementType) {
    return std::make_shared<MetaList>(elementType, nullptr);
}
std::shared_ptr<MetaList> MetaList::New(MetaType elementType,
                                        const std::shared_ptr<MetaStruct>& prototype) {
    return std::make_shared<MetaList>(elementType, prototype);
}
std::shared_ptr<MetaList> MetaList::New(MetaType elementType,
                                        std::shared_ptr<MetaStruct>&& prototype) {
    return std::make_shared<MetaList>(elementType, std::move(prototype));
}

void MetaList::Add(const char* value) {
    elements_.push_back(MetaString::New(value));
}
void MetaList::Add(const std::string& value) {
    elements_.push_back(MetaString::New(value));
}
void MetaList::Add(std::string&& value) {
    elements_.push_back(MetaString::New(std::move(value)));
}
void MetaList::Add(const std::shared_ptr<MetaString>& value) {
    elements_.push_back(value);
}
void MetaList::Add(const std::shared_ptr<MetaStruct>& value) {
    elements_.push_back(value);
}

void MetaList::AddAll(std::vector<std::string>&& values) {
    elements_.reserve(elements_.size() + values.size());
    for (std::string& value : values) {
        elements_.push_back(MetaString::New(std::move(value)));
    }
    values.clear();
}

std::shared_ptr<MetaStruct> MetaStruct::New(const char* name) {
    return std::make_shared<MetaStruct>(std::string(name != nullptr ? name : ""));
}
std::shared_ptr<MetaStruct> MetaStruct::New(const std::string& name) {
    return std::make_shared<MetaStruct>(name);
}

namespace {

std::shared_ptr<MetaList> StringList(const std::vector<std::string>& values) {
    auto list = MetaList::New(MetaTypeString);
    list->Reserve(values.size());
    for (const std::string& value : values) {
        list->Add(value);
    }
    return list;
}

}  // namespace

MetaStruct::Field* MetaStruct::Find(std::string_view name) {
    for (Field& field : fields_) {
        if (field.first == name) {
            return &field;
        }
    }
    return nullptr;
}

void MetaStruct::Put(std::string_view name, std::shared_ptr<MetaValue> value) {
    if (Field* field = Find(name)) {
        field->second = std::move(value);
    } else {
        Append(name, std::move(value));
    }
}

void MetaStruct::Append(std::string_view name, std::shared_ptr<MetaValue> value) {
    if (fields_.empty()) {
        // Room for a typical struct at once, rather than growing it field by field.
        fields_.reserve(8);
    }
    fields_.emplace_back(std::string(name), std::move(value));
}

std::shared_ptr<MetaValue> MetaStruct::GetField(const std::string& name) const {
    for (const Field& field : fields_) {
        if (field.first == name) {
            return field.second;
        }
    }
    return nullptr;
}

// A struct made from its shape holds every field with an empty value, which the command then
// sets: in place, that is no allocation and no free for each field of every row.
namespace {

template <class Meta>
constexpr MetaType kKindOf = MetaTypeString;
template <>
constexpr MetaType kKindOf<MetaBool> = MetaTypeBool;
template <>
constexpr MetaType kKindOf<MetaInt> = MetaTypeInt;

}  // namespace

template <class Meta, class Value>
void MetaStruct::Set(std::string_view name, Value&& value) {
    Field* field = Find(name);
    if (field != nullptr && field->second != nullptr && field->second->GetType() == kKindOf<Meta> &&
        field->second.use_count() == 1) {
        auto& held = static_cast<Meta&>(*field->second);
        held.value_ = std::forward<Value>(value);
        held.hasValue_ = true;
        return;
    }
    auto made = Meta::New(std::forward<Value>(value));
    if (field != nullptr) {
        field->second = std::move(made);
    } else {
        Append(name, std::move(made));
    }
}

void MetaStruct::SetField(const char* name, bool value) {
    Set<MetaBool>(name, value);
}
void MetaStruct::SetField(const char* name, int value) {
    SetField(name, static_cast<long>(value));
}
void MetaStruct::SetField(const char* name, long value) {
    Set<MetaInt>(name, value);
}
void MetaStruct::SetField(const char* name, const char* value) {
    SetField(name, std::string(value != nullptr ? value : ""));
}
void MetaStruct::SetField(const char* name, const std::string& value) {
    Set<MetaString>(name, value);
}
void MetaStruct::SetField(const char* name, std::string&& value) {
    Set<MetaString>(name, std::move(value));
}
void MetaStruct::SetField(const char* name, const std::vector<std::string>& value) {
    Put(name, StringList(value));
}
void MetaStruct::SetField(const char* name, const std::shared_ptr<MetaBool>& value) {
    Put(name, value);
}
void MetaStruct::SetField(const char* name, const std::shared_ptr<MetaInt>& value) {
    Put(name, value);
}
void MetaStruct::SetField(const char* name, const std::shared_ptr<MetaString>& value) {
    Put(name, value);
}
void MetaStruct::SetField(const char* name, const std::shared_ptr<MetaList>& value) {
    Put(name, value);
}
void MetaStruct::SetField(const char* name, const std::shared_ptr<MetaStruct>& value) {
    Put(name, value);
}

void MetaStruct::SetField(const std::string& name, bool value) {
    SetField(name.c_str(), value);
}
void MetaStruct::SetField(const std::string& name, int value) {
    SetField(name.c_str(), value);
}
void MetaStruct::SetField(const std::string& name, long value) {
    SetField(name.c_str(), value);
}
void MetaStruct::SetField(const std::string& name, const char* value) {
    SetField(name.c_str(), value);
}
void MetaStruct::SetField(const std::string& name, const std::string& value) {
    SetField(name.c_str(), value);
}
void MetaStruct::SetField(const std::string& name, std::string&& value) {
    SetField(name.c_str(), std::move(value));
}
void MetaStruct::SetField(const std::string& name, const std::vector<std::string>& value) {
    SetField(name.c_str(), value);
}
void MetaStruct::SetField(const std::string& name, const std::shared_ptr<MetaBool>& value) {
    Put(name, value);
}
void MetaStruct::SetField(const std::string& name, const std::shared_ptr<MetaInt>& value) {
    Put(name, value);
}
void MetaStruct::SetField(const std::string& name, const std::shared_ptr<MetaString>& value) {
    Put(name, value);
}
void MetaStruct::SetField(const std::string& name, const std::shared_ptr<MetaList>& value) {
    Put(name, value);
}
void MetaStruct::SetField(const std::string& name, const std::shared_ptr<MetaStruct>& value) {
    Put(name, value);
}

}  // namespace CppTools::MetaObj
