// The host's IPsec configuration: its security association and security policy databases, and
// the names of their enumerations.
#pragma once

#include <string>
#include <vector>

#include "hostctl/IpSec.h"

namespace KelmCtl::Network {

class IpSecConfigImpl {
public:
    // Names by index; each table ends with the word of the value a record starts with.
    static const char* const SA_STATE[5];
    static const char* const SA_MODE[3];
    static const char* const SA_ENCPT_ALG[4];
    static const char* const SA_AUTH_ALG[3];
    static const char* const SP_UL_PROTO_TYPE[5];
    static const char* const SP_DIRECTION[3];
    static const char* const SP_ACTION[4];

    IpSecConfigImpl();

    // Command-line words to indices. An empty word gives the value a record starts with; an
    // unknown one throws HostCtlException.
    static int StringToIpSecMode(const std::string& word);
    static int StringToIpSecEncyptAlgo(const std::string& word);
    static int StringToIpSecAuthAlgo(const std::string& word);
    static int StringToIpSecULProtoType(const std::string& word);
    static int StringToIpSecDirection(const std::string& word);
    static int StringToIpSecAction(const std::string& word);

    void AddSADConfig(const HostCtl::Network::IpSecSadParam& association);
    // Removes the association of that name; policies that named it then name "UNKNOWN".
    void RemoveSADConfig(const std::string& name);
    // Removes the automatic association of the record's source, destination and SPI.
    void RemoveAutoSADConfig(const HostCtl::Network::IpSecSadParam& association);
    void FlushSADConfig();
    void GetSADConfigList(std::vector<HostCtl::Network::IpSecSadParam>& associations);

    void AddSPDConfig(const HostCtl::Network::IpSecSpdParam& policy);
    void RemoveSPDConfig(const std::string& name);
    void FlushSPDConfig();
    void GetSPDConfigList(std::vector<HostCtl::Network::IpSecSpdParam>& policies);
};

}  // namespace KelmCtl::Network
