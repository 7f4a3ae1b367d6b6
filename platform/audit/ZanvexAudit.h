// The platform's audit log: records of security-relevant changes, and where their user, client
// address and operation id come from.
#pragma once

extern "C" {

// One key and value of a record. An array of items ends with an item whose key and value are
// both null.
struct ZanvexAuditItem {
    const char* key;
    const char* value;
};

// Writes one record. Returns 0 when it was written, -1 when it could not be.
int ZanvexAudit_LogList(const char* event, const char* user, const char* object, bool success,
                        const ZanvexAuditItem* items);
}

namespace KelmCtl::Util::EmitAudit::Details {

// The acting user.
const char* GetAuditUser();
// The client's address; empty when none is known. Never null.
const char* GetAuditIP();
// The operation id of the request; empty when none is known. Never null.
const char* GetAuditOpId();

}  // namespace KelmCtl::Util::EmitAudit::Details
