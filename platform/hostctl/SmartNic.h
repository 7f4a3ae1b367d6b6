// DPUs that back physical NICs.
#pragma once

#include <memory>
#include <string>

namespace HostCtl::SmartNic {

class SmartNic {
public:
    virtual ~SmartNic() = default;
    virtual const std::string& GetId() const = 0;
};

class SmartNicInfo {
public:
    // Null when the NIC is not backed by a DPU.
    static std::unique_ptr<SmartNic> GetSmartNicByPnic(const std::string& pnicName);
};

}  // namespace HostCtl::SmartNic
