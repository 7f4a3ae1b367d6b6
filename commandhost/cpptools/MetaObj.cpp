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

void MetaStruct::Put(std::string_view name, std::shared_ptr<MetaValue> value) {
    auto field = std::find_if(fields_.begin(), fields_.end(),
                              [name](const Field& existing) { return existing.first == name; });
    if (field != fields_.end()) {
        field->second = std::move(value);
    } else {
        if (fields_.empty()) {
            // Room for a typical struct at once, rather than growing it field by field.
            fields_.reserve(8);
        }
        fields_.emplace_back(std::string(name), std::move(value));
    }
}

std::shared_ptr<MetaValue> MetaStruct::GetField(const std::string& name) const {
    for (const Field& field : fields_) {
        if (field.first == name) {
            return field.second;
        }
    }
    return nullptr;
}

void MetaStruct::SetField(const char* name, bool value) {
    Put(name, MetaBool::New(value));
}
void MetaStruct::SetField(const char* name, int value) {
    Put(name, MetaInt::New(value));
}
void MetaStruct::SetField(const char* name, long value) {
    Put(name, MetaInt::New(value));
}
void MetaStruct::SetField(const char* name, const char* value) {
    Put(name, MetaString::New(value));
}
void MetaStruct::SetField(const char* name, const std::string& value) {
    Put(name, MetaString::New(value));
}
void MetaStruct::SetField(const char* name, std::string&& value) {
    Put(name, MetaString::New(std::move(value)));
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
