// The process's one connection to the host's state database.
#pragma once

#include <string>

#include "hostsim/core/Database.h"

namespace HostSim {

// The database of the state directory in force, opened on first use (and again when the state
// directory changes, or in a child process after fork). A directory without a database gets
// the built-in default host; an older database is migrated forward. Throws HostCtlException
// when the database can't be used, and then leaves the file as it found it.
Database& Store();

// The database file of a state directory.
std::string DatabasePath(const std::string& directory);

}  // namespace HostSim
