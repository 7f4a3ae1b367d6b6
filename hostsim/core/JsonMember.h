// Reading the optional members of a profile's objects in place: a reference into the document,
// not a copy, so that an error about a value read from it names its place in the profile
// ("vswitches[0].portGroups[1].vlanId"), and a large member is not copied.
#pragma once

#include "hostsim/core/Json.h"

namespace HostSim {

// The member `key` of `object`, else an empty array.
inline const Json& ArrayMember(const Json& object, const char* key) {
    static const Json kNone = Json::array();
    const auto found = object.find(key);
    return found != object.end() ? *found : kNone;
}

// The member `key` of `object`, else an empty object.
inline const Json& ObjectMember(const Json& object, const char* key) {
    static const Json kNone = Json::object();
    const auto found = object.find(key);
    return found != object.end() ? *found : kNone;
}

}  // namespace HostSim
