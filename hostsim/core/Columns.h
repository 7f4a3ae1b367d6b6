// A stored record's columns, said once: a constexpr table of rows (SQL column, record member,
// member of the profile's object, default) from which a store makes its column lists, reads a
// row, binds a record, and both JSON directions of its profile section.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"

namespace HostSim {

// How a number the host stores is written in a profile, when it is a word there ("inbound" for
// 0): both directions, the reading one refusing a word it does not know in the subject's words.
struct ColumnWords {
    Json (*toJson)(std::int64_t value);
    std::int64_t (*fromJson)(const Json& value);
};

// A member of an enumeration type, which a member pointer of the table can't name: reached
// through two functions that EnumMember<&Record::member> makes.
template <typename Record>
struct EnumAccess {
    std::int64_t (*get)(const Record& record);
    void (*set)(Record& record, std::int64_t value);
};

template <auto member>
struct EnumMemberOf;
template <typename Record, typename Enum, Enum Record::*member>
struct EnumMemberOf<member> {
    static constexpr EnumAccess<Record> kAccess = {
        [](const Record& record) { return static_cast<std::int64_t>(record.*member); },
        [](Record& record, std::int64_t value) { record.*member = static_cast<Enum>(value); },
    };
};
template <auto member>
inline constexpr auto EnumMember = EnumMemberOf<member>::kAccess;

template <typename Record>
using ColumnMember = std::variant<bool Record::*, std::int32_t Record::*, std::uint32_t Record::*,
                                  std::int64_t Record::*, std::uint64_t Record::*,
                                  std::string Record::*, EnumAccess<Record>>;

template <typename Record>
struct Column {
    // Its column in the table.
    const char* sql;
    ColumnMember<Record> member;
    // Its member in the profile's object; null for a column that is not there as it is stored.
    const char* json = nullptr;
    // A profile must give it; otherwise a member left out takes `fallback`, or text
    // `fallbackText`.
    bool required = false;
    std::int64_t fallback = 0;
    const char* fallbackText = "";
    // Empty text is stored as NULL.
    bool nullWhenEmpty = false;
    // A number the profile gives as a word.
    const ColumnWords* words = nullptr;
};

// A table of columns, as the functions below take it: a record's own table converts to it, and
// the record passed along says which.
template <typename Record>
using Columns = std::type_identity_t<std::span<const Column<Record>>>;

// "a, b, c": the columns' names, for a SELECT or an INSERT.
template <typename Table>
std::string ColumnNames(const Table& columns) {
    std::string names;
    for (const auto& column : columns) {
        names.append(names.empty() ? "" : ", ").append(column.sql);
    }
    return names;
}

// "?2, ?3, ?4": one parameter per column, counted from `first`.
std::string ColumnParameters(int first, std::size_t count);

// "a = ?2, b = ?3": an UPDATE's assignments, the parameters counted from `first`.
template <typename Table>
std::string ColumnAssignments(const Table& columns, int first) {
    std::string assignments;
    for (const auto& column : columns) {
        assignments.append(assignments.empty() ? "" : ", ")
            .append(column.sql)
            .append(" = ?")
            .append(std::to_string(first++));
    }
    return assignments;
}

namespace ColumnDetail {

template <typename Record, typename Member>
constexpr bool kIsText = std::is_same_v<Member, std::string Record::*>;

// A number or flag of the record, as the store keeps it.
template <typename Record, typename Member>
std::int64_t Number(const Record& record, Member member) {
    if constexpr (std::is_same_v<Member, EnumAccess<Record>>) {
        return member.get(record);
    } else {
        return static_cast<std::int64_t>(record.*member);
    }
}

template <typename Record, typename Member>
void SetNumber(Record& record, Member member, std::int64_t value) {
    if constexpr (std::is_same_v<Member, EnumAccess<Record>>) {
        member.set(record, value);
    } else {
        using Value = std::remove_reference_t<decltype(record.*member)>;
        record.*member = static_cast<Value>(value);
    }
}

// A number or flag read from a profile: within the range of the member's type.
template <typename Record, typename Member>
void SetNumber(Record& record, Member member, const Json& value) {
    if constexpr (std::is_same_v<Member, EnumAccess<Record>>) {
        member.set(record, value.get<std::int64_t>());
    } else {
        using Value = std::remove_reference_t<decltype(record.*member)>;
        record.*member = value.get<Value>();
    }
}

}  // namespace ColumnDetail

// Fills `record` from the row's columns, the first of them at `first`.
template <typename Record>
void ReadColumns(const Statement& row, int first, Columns<Record> columns, Record& record) {
    for (const auto& column : columns) {
        std::visit(
            [&](auto member) {
                if constexpr (ColumnDetail::kIsText<Record, decltype(member)>) {
                    record.*member = row.Text(first);
                } else {
                    ColumnDetail::SetNumber(record, member, row.Int(first));
                }
            },
            column.member);
        ++first;
    }
}

// Binds the record's columns to the parameters from `first` on.
template <typename Record>
void BindColumns(Statement& statement, int first, Columns<Record> columns, const Record& record) {
    for (const auto& column : columns) {
        std::visit(
            [&](auto member) {
                if constexpr (ColumnDetail::kIsText<Record, decltype(member)>) {
                    if (column.nullWhenEmpty) {
                        statement.BindOptional(first, record.*member);
                    } else {
                        statement.Bind(first, record.*member);
                    }
                } else {
                    statement.Bind(first, ColumnDetail::Number(record, member));
                }
            },
            column.member);
        ++first;
    }
}

// Adds the record's columns that a profile holds to `object`, in the table's order.
template <typename Record>
void ColumnsToJson(Columns<Record> columns, const Record& record, Json& object) {
    for (const auto& column : columns) {
        if (column.json == nullptr) {
            continue;
        }
        std::visit(
            [&](auto member) {
                if constexpr (ColumnDetail::kIsText<Record, decltype(member)>) {
                    object[column.json] = record.*member;
                } else if constexpr (std::is_same_v<decltype(member), EnumAccess<Record>>) {
                    const std::int64_t value = member.get(record);
                    object[column.json] =
                        column.words != nullptr ? column.words->toJson(value) : Json(value);
                } else if (column.words != nullptr) {
                    object[column.json] =
                        column.words->toJson(ColumnDetail::Number(record, member));
                } else {
                    object[column.json] = record.*member;
                }
            },
            column.member);
    }
}

// Fills the record's columns that a profile holds from `object`, read in place so that an error
// names its place; a required member that is missing is the JSON library's error.
template <typename Record>
void ColumnsFromJson(Columns<Record> columns, const Json& object, Record& record) {
    for (const auto& column : columns) {
        if (column.json == nullptr) {
            continue;
        }
        const auto found = object.find(column.json);
        const Json* value = found != object.end() ? &*found : nullptr;
        if (value == nullptr && column.required) {
            value = &object.at(column.json);
        }
        std::visit(
            [&](auto member) {
                if constexpr (ColumnDetail::kIsText<Record, decltype(member)>) {
                    record.*member =
                        value != nullptr ? value->template get<std::string>() : column.fallbackText;
                } else if (value == nullptr) {
                    ColumnDetail::SetNumber(record, member, column.fallback);
                } else if (column.words != nullptr) {
                    ColumnDetail::SetNumber(record, member, column.words->fromJson(*value));
                } else {
                    ColumnDetail::SetNumber(record, member, *value);
                }
            },
            column.member);
    }
}

}  // namespace HostSim
