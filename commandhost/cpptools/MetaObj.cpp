// Result values: scalars, lists and ordered structs.
#include "cpptools/MetaObj.h"

#include <functional>
#include <mutex>
#include <unordered_set>

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

namespace {

// The names of structs and fields, one copy of each for the process. The set's nodes never
// move, so a pointer to a name stays valid.
const std::string* Intern(std::string_view name) {
    static std::mutex lock;
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const {
            return std::hash<std::string_view>()(text);
        }
    };
    static std::unordered_set<std::string, Hash, std::equal_to<>> names;
    const std::lock_guard<std::mutex> hold(lock);
    auto found = names.find(name);
    if (found == names.end()) {
        found = names.emplace(name).first;
    }
    return &*found;
}

std::shared_ptr<MetaList> StringList(const std::vector<std::string>& values) {
    auto list = MetaList::New(MetaTypeString);
    list->Reserve(values.size());
    for (const std::string& value : values) {
        list->Add(value);
    }
    return list;
}

}  // namespace

const MetaValue* MetaStruct::Field::Value() const {
    switch (value_.index()) {
        case 0:
            return &std::get<0>(value_);
        case 1:
            return &std::get<1>(value_);
        case 2:
            return &std::get<2>(value_);
        default:
            return std::get<3>(value_).get();
    }
}

MetaStruct::MetaStruct(std::string_view name) : MetaValue(true), name_(Intern(name)) {}

std::shared_ptr<MetaStruct> MetaStruct::New(const char* name) {
    return std::make_shared<MetaStruct>(name != nullptr ? name : "");
}
std::shared_ptr<MetaStruct> MetaStruct::New(const std::string& name) {
    return std::make_shared<MetaStruct>(name);
}

// A command sets a row's fields mostly in their order: the search starts after the field found
// last, and wraps around.
MetaStruct::Field* MetaStruct::Find(std::string_view name) {
    const std::size_t count = fields_.size();
    for (std::size_t step = 0, i = nextField_; step < count; ++step, ++i) {
        if (i >= count) {
            i = 0;
        }
        if (*fields_[i].name_ == name) {
            nextField_ = i + 1;
            return &fields_[i];
        }
    }
    return nullptr;
}

const MetaValue* MetaStruct::GetField(std::string_view name) const {
    for (const Field& field : fields_) {
        if (*field.name_ == name) {
            return field.Value();
        }
    }
    return nullptr;
}

template <class... Arguments>
void MetaStruct::Append(std::string_view name, Arguments&&... arguments) {
    if (fields_.empty()) {
        // Room for a typical struct at once, rather than growing it field by field.
        fields_.reserve(8);
    }
    fields_.emplace_back(Intern(name), std::forward<Arguments>(arguments)...);
}

template <class Meta, class Value>
void MetaStruct::Set(std::string_view name, Value&& value) {
    Field* field = Find(name);
    if (field == nullptr) {
        Append(name, std::in_place_type<Meta>, true, std::forward<Value>(value));
    } else if (auto* held = std::get_if<Meta>(&field->value_)) {
        held->value_ = std::forward<Value>(value);
        held->hasValue_ = true;
    } else {
        field->value_.template emplace<Meta>(true, std::forward<Value>(value));
    }
}

void MetaStruct::Share(std::string_view name, std::shared_ptr<MetaValue> value) {
    if (Field* field = Find(name)) {
        field->value_ = std::move(value);
    } else {
        Append(name, std::in_place_type<std::shared_ptr<MetaValue>>, std::move(value));
    }
}

// A scalar given by pointer is copied into the field: scalars cannot be changed, so no one
// can tell the copy from the original.
template <class Meta>
void MetaStruct::Put(std::string_view name, const std::shared_ptr<Meta>& value) {
    if (value == nullptr) {
        Share(name, nullptr);
    } else if (Field* field = Find(name)) {
        field->value_ = *value;
    } else {
        Append(name, std::in_place_type<Meta>, *value);
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
    Set<MetaString>(name, std::string(value != nullptr ? value : ""));
}
void MetaStruct::SetField(const char* name, const std::string& value) {
    Set<MetaString>(name, value);
}
void MetaStruct::SetField(const char* name, std::string&& value) {
    Set<MetaString>(name, std::move(value));
}
void MetaStruct::SetField(const char* name, const std::vector<std::string>& value) {
    Share(name, StringList(value));
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
    Share(name, value);
}
void MetaStruct::SetField(const char* name, const std::shared_ptr<MetaStruct>& value) {
    Share(name, value);
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
    Share(name, value);
}
void MetaStruct::SetField(const std::string& name, const std::shared_ptr<MetaStruct>& value) {
    Share(name, value);
}

}  // namespace CppTools::MetaObj
