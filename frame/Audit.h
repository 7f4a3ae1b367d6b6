// Audit records of security-relevant changes: one record per change, handed to the platform's
// audit log with the acting user, the client address and the operation id where known.
#pragma once

#include <string>
#include <vector>

namespace KelmCtl::Util::EmitAudit::Details {

// Writes one record whose items are `keysAndValues` (key, value, key, value...), then "ip" and
// "opID" where the platform knows them. A record that cannot be written is dropped silently.
void EmitRecord(const std::string& event, const std::string& object, bool success,
                const std::vector<std::string>& keysAndValues);

// A record with the given key and value pairs: no pairs for a success, ("reason", text) for a
// failure.
template <class... KeysAndValues>
void AuditImpl(const std::string& event, const std::string& object, bool success,
               const KeysAndValues&... keysAndValues) {
    static_assert(sizeof...(KeysAndValues) % 2 == 0, "keys and values come in pairs");
    EmitRecord(event, object, success, {std::string(keysAndValues)...});
}

}  // namespace KelmCtl::Util::EmitAudit::Details
