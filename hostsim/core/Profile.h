// Profiles: the whole host as one JSON document, one section per subject. A profile replaces
// the host's state; the host as it stands exports to the same form.
#pragma once

#include <string>

#include "hostsim/core/Json.h"
#include "hostsim/core/Subject.h"

namespace HostSim {

// The built-in profiles, "default" and "empty".
Json BuiltinProfile(const std::string& name);

// Empties every subject's tables and fills them from `profile` multiplied by `copies`, inside
// the caller's write transaction. `origin` is the built-in profile's name, or empty for a
// profile of the user's, which is then kept so that ResetHost can make it again.
void FillHost(Database& database, const Json& profile, unsigned copies, const std::string& origin);

// FillHost in a transaction of its own: the host changes whole or not at all.
void ReplaceHost(Database& database, const Json& profile, unsigned copies,
                 const std::string& origin);

// Makes the host again from the profile and scale it was last made from.
void ResetHost(Database& database);

Json ExportHost(Database& database);

// Fills a subject that a newer build added to a host made from the built-in default
// profile with its default data, at the host's scale; where the host can't take that data, the
// subject stays empty.
void FillNewSubject(Database& database, const Subject& subject);

}  // namespace HostSim
