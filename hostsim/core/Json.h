// JSON as the host's profiles use it: objects keep their members in the order written, and a
// number read into an integer must be one: a whole number (no fraction, no exponent) within the
// integer's range. What would be cut or wrapped on the way (1500.7, -1 for an unsigned field,
// 2^32 + 1500 for a 32-bit one) is a type error naming its place, as a wrong type is.
#pragma once

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <type_traits>
#include <utility>

#include "hostsim/core/JsonFwd.h"

namespace HostSim {

template <typename ValueType, typename>
struct ExactNumberSerializer : nlohmann::adl_serializer<ValueType> {
    using nlohmann::adl_serializer<ValueType>::from_json;

    template <typename BasicJsonType, typename TargetType = ValueType>
    static auto from_json(BasicJsonType&& json, TargetType& value)
        -> decltype(::nlohmann::from_json(std::forward<BasicJsonType>(json), value), void()) {
        if constexpr (std::is_integral_v<TargetType> && !std::is_same_v<TargetType, bool>) {
            CheckWholeNumber<TargetType>(json);
        }
        ::nlohmann::from_json(std::forward<BasicJsonType>(json), value);
    }

private:
    template <typename Integer, typename BasicJsonType>
    static void CheckWholeNumber(const BasicJsonType& json) {
        using Limits = std::numeric_limits<Integer>;
        bool fits = true;
        if (json.is_number_float()) {
            fits = false;
        } else if (const auto* whole = json.template get_ptr<const std::int64_t*>()) {
            if constexpr (Limits::is_signed) {
                fits = *whole >= static_cast<std::int64_t>(Limits::min()) &&
                       *whole <= static_cast<std::int64_t>(Limits::max());
            } else {
                fits = *whole >= 0 && static_cast<std::uint64_t>(*whole) <=
                                          static_cast<std::uint64_t>(Limits::max());
            }
        } else if (const auto* count = json.template get_ptr<const std::uint64_t*>()) {
            fits = *count <= static_cast<std::uint64_t>(Limits::max());
        }
        if (!fits) {
            throw nlohmann::detail::type_error::create(
                302,
                json.dump() + " is not a whole number from " + std::to_string(Limits::min()) +
                    " to " + std::to_string(Limits::max()),
                &json);
        }
    }
};

// A profile section of records: each record's object, in order.
template <typename Records, typename ToJson>
Json JsonArrayOf(const Records& records, ToJson toJson) {
    Json section = Json::array();
    for (const auto& record : records) {
        section.push_back(toJson(record));
    }
    return section;
}

}  // namespace HostSim
