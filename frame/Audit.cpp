#include "frame/Audit.h"

#include "audit/ZanvexAudit.h"

namespace KelmCtl::Util::EmitAudit::Details {

namespace {
constexpr char kIpKey[] = "ip";
constexpr char kOpIdKey[] = "opID";
// Room for the optional client address, operation id and the end item.
constexpr std::size_t kExtraItems = 4;
}  // namespace

void EmitRecord(const std::string& event, const std::string& object, bool success,
                const std::vector<std::string>& keysAndValues) {
    std::vector<ZanvexAuditItem> items;
    items.reserve(keysAndValues.size() + kExtraItems);
    for (std::size_t index = 0; index + 1 < keysAndValues.size(); index += 2) {
        items.push_back({keysAndValues[index].c_str(), keysAndValues[index + 1].c_str()});
    }
    const char* clientAddress = GetAuditIP();
    if (*clientAddress != '\0') {
        items.push_back({kIpKey, clientAddress});
    }
    const char* operationId = GetAuditOpId();
    if (*operationId != '\0') {
        items.push_back({kOpIdKey, operationId});
    }
    items.push_back({nullptr, nullptr});
    ZanvexAudit_LogList(event.c_str(), GetAuditUser(), object.c_str(), success, items.data());
}

}  // namespace KelmCtl::Util::EmitAudit::Details
