// What a store does with a record's column table (hostsim/core/ColumnTable.h): its column lists,
// reading a row, binding a record, and both JSON directions of its profile section.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

#include "hostsim/core/ColumnTable.h"
#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"

namespace HostSim {

// "a, b, c": the columns' names, for a SELECT or an INSERT; "t.a, t.b, t.c" with the prefix "t.".
template <typename Table>
std::string ColumnNames(const Table& columns, const char* prefix = "") {
    std::string names;
    for (const auto& column : columns) {
        names.append(names.empty() ? "" : ", ").append(prefix).append(column.sql);
    }
    return names;
}

// "?2, ?3, ?4": one parameter per column, counted from `first`.
std::string ColumnParameters(int first, std::size_t count);

// "INSERT INTO t (a, b) VALUES (?1, ?2)": a row of every column of the table `table`.
template <typename Table>
std::string InsertStatement(const char* table, const Table& columns) {
    return std::string("INSERT INTO ") + table + " (" + ColumnNames(columns) + ") VALUES (" +
           ColumnParameters(1, std::size(columns)) + ")";
}

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
constexpr bool kIsText =
    std::is_same_v<Member, std::string Record::*> || std::is_same_v<Member, TextAccess<Record>>;

// A text field of the record: a reference to its member, or the text made of its fields.
template <typename Record, typename Member>
decltype(auto) Text(const Record& record, Member member) {
    if constexpr (std::is_same_v<Member, TextAccess<Record>>) {
        return member.get(record);
    } else {
        return (record.*member);
    }
}

template <typename Record, typename Member>
void SetText(Record& record, Member member, std::string value) {
    if constexpr (std::is_same_v<Member, TextAccess<Record>>) {
        member.set(record, value);
    } else {
        record.*member = std::move(value);
    }
}

// A number or flag of the record, as the store keeps it.
template <typename Record, typename Member>
std::int64_t Number(const Record& record, Member member) {
    if constexpr (std::is_same_v<Member, NumberAccess<Record>>) {
        return member.get(record);
    } else {
        return static_cast<std::int64_t>(record.*member);
    }
}

template <typename Record, typename Member>
void SetNumber(Record& record, Member member, std::int64_t value) {
    if constexpr (std::is_same_v<Member, NumberAccess<Record>>) {
        member.set(record, value);
    } else {
        using Value = std::remove_reference_t<decltype(record.*member)>;
        record.*member = static_cast<Value>(value);
    }
}

// A number or flag read from a profile: within the range of the member's type.
template <typename Record, typename Member>
void SetNumber(Record& record, Member member, const Json& value) {
    if constexpr (std::is_same_v<Member, NumberAccess<Record>>) {
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
                    ColumnDetail::SetText(record, member, row.Text(first));
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
                    decltype(auto) text = ColumnDetail::Text(record, member);
                    if (column.nullWhenEmpty) {
                        statement.BindOptional(first, text);
                    } else {
                        statement.Bind(first, text);
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
    const char* leftOut = nullptr;
    for (const auto& column : columns) {
        if (column.json == nullptr || (column.in != nullptr && leftOut != nullptr &&
                                       std::string_view(column.in) == leftOut)) {
            continue;
        }
        Json value;
        std::visit(
            [&](auto member) {
                if constexpr (ColumnDetail::kIsText<Record, decltype(member)>) {
                    decltype(auto) text = ColumnDetail::Text(record, member);
                    if (column.document != nullptr) {
                        value = column.document->toJson(text);
                    } else if (!(text.empty() && column.omitWhenEmpty)) {
                        value = text;
                    }
                } else if (column.words != nullptr) {
                    value = column.words->toJson(ColumnDetail::Number(record, member));
                } else if constexpr (std::is_same_v<decltype(member), NumberAccess<Record>>) {
                    value = member.get(record);
                } else {
                    value = record.*member;
                }
            },
            column.member);
        if (value.is_null()) {
            if (column.in != nullptr && !object.contains(column.in)) {
                leftOut = column.in;
            }
            continue;
        }
        (column.in != nullptr ? object[column.in] : object)[column.json] = std::move(value);
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
        const Json* holder = &object;
        if (column.in != nullptr) {
            const auto nested = object.find(column.in);
            holder = nested != object.end() ? &*nested : nullptr;
        }
        const Json* value = nullptr;
        if (holder != nullptr) {
            const auto found = holder->find(column.json);
            value = found != holder->end() ? &*found
                    : column.required      ? &holder->at(column.json)
                                           : nullptr;
        }
        std::visit(
            [&](auto member) {
                if constexpr (ColumnDetail::kIsText<Record, decltype(member)>) {
                    ColumnDetail::SetText(record, member,
                                          column.document != nullptr
                                              ? column.document->fromJson(value)
                                          : value != nullptr ? value->template get<std::string>()
                                                             : std::string(column.fallbackText));
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
