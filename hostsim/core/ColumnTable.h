// A stored record's columns, said once: a constexpr table of rows (SQL column, record member,
// member of the profile's object, default) from which a store makes its column lists, reads a
// row, binds a record, and both JSON directions of its profile section (hostsim/core/Columns.h).
// A table needs no more than this header, so a record's header can hold its table and still
// be light for the code that only uses the record.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <type_traits>
#include <variant>

#include "hostsim/core/JsonFwd.h"

namespace HostSim {

// How a number the host stores is written in a profile, when it is a word there ("inbound" for
// 0): both directions, the reading one refusing a word it does not know in the subject's words.
struct ColumnWords {
    Json (*toJson)(std::int64_t value);
    std::int64_t (*fromJson)(const Json& value);
};

// How text the host stores as JSON (nested detail parsed only when asked for) is written in a
// profile: as the JSON it holds, and read back normalised; `value` is null when the profile
// leaves the member out.
struct ColumnDocument {
    Json (*toJson)(const std::string& text);
    std::string (*fromJson)(const Json* value);
};

// A field that is not one member of a plain type (an enumeration, flags packed into one number,
// a list kept as text), reached through two functions.
template <typename Record>
struct NumberAccess {
    std::int64_t (*get)(const Record& record);
    void (*set)(Record& record, std::int64_t value);
};
template <typename Record>
struct TextAccess {
    std::string (*get)(const Record& record);
    void (*set)(Record& record, const std::string& value);
};

// The access to a member of another number type (an enumeration, a 16-bit number):
// NumberMember<&Record::member>.
template <auto member>
struct NumberMemberOf;
template <typename Record, typename Number, Number Record::*member>
struct NumberMemberOf<member> {
    static constexpr NumberAccess<Record> kAccess = {
        [](const Record& record) { return static_cast<std::int64_t>(record.*member); },
        [](Record& record, std::int64_t value) { record.*member = static_cast<Number>(value); },
    };
};
template <auto member>
inline constexpr auto NumberMember = NumberMemberOf<member>::kAccess;

template <typename Record>
using ColumnMember = std::variant<bool Record::*, std::int32_t Record::*, std::uint32_t Record::*,
                                  std::int64_t Record::*, std::uint64_t Record::*,
                                  std::string Record::*, NumberAccess<Record>, TextAccess<Record>>;

template <typename Record>
struct Column {
    // Its column in the table.
    const char* sql;
    ColumnMember<Record> member;
    // Its member in the profile's object; null for a column that is not there as it is stored.
    const char* json = nullptr;
    // The member of the profile's object that holds it, when it is in a nested object there.
    // The nested object is written when its first column is, and when a profile leaves it
    // out, each of its columns takes its fallback.
    const char* in = nullptr;
    // A profile must give it; otherwise a member left out takes `fallback`, or text
    // `fallbackText`.
    bool required = false;
    std::int64_t fallback = 0;
    const char* fallbackText = "";
    // Empty text is stored as NULL.
    bool nullWhenEmpty = false;
    // Empty text is left out of a profile.
    bool omitWhenEmpty = false;
    // A number the profile gives as a word.
    const ColumnWords* words = nullptr;
    // Text that holds JSON, which the profile holds as it is.
    const ColumnDocument* document = nullptr;
};

// A table of columns, as the functions below take it: a record's own table converts to it, and
// the record passed along says which.
template <typename Record>
using Columns = std::type_identity_t<std::span<const Column<Record>>>;

}  // namespace HostSim
