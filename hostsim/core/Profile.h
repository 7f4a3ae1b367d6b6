// Profiles: the whole host as one JSON document, one section per subject. A profile replaces
// the host's state; the host as it stands exports to the same form.
#pragma once

#include <string>
#include <string_view>

#include "hostsim/core/Json.h"
#include "hostsim/core/Subject.h"

namespace HostSim {

// The largest profile taken, in bytes: a million hosts entries fit, with room to spare.
inline constexpr std::size_t kMaximumProfileBytes = std::size_t{256} << 20;
// How deep the values of a profile may nest: the deepest field of any section is at 7 (the
// partner of a NIC that runs LACP on a LAG of a distributed switch), so no profile that is
// deeper can be one the host takes.
inline constexpr int kMaximumProfileDepth = 16;

// Parses the JSON text of a profile from `source` ("The profile host.json"). Throws
// HostCtlException for text that is no JSON, and for text nesting deeper than
// kMaximumProfileDepth, which a first pass over the bytes finds before anything is built.
Json ParseProfile(std::string_view text, const std::string& source);

// Reads and parses the profile in the file `path`; a folder, a file over kMaximumProfileBytes
// and one that can't be read are refused with HostCtlException naming it.
Json ReadProfileFile(const std::string& path);

// The built-in profiles, "default" and "empty".
Json BuiltinProfile(const std::string& name);

// Empties every subject's tables and fills them from `profile` multiplied by `copies`, inside
// the caller's write transaction. Every text of the profile must be one the host stores
// (Names.h), and no value may nest deeper than kMaximumProfileDepth. `origin` is the built-in
// profile's name, or empty for a profile of the user's, which is then kept so that ResetHost can
// make it again.
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
