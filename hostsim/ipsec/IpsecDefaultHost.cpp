// The IPsec databases of the built-in default host.
#include "hostsim/ipsec/IpsecStore.h"

namespace HostSim::Ipsec {

// Between the management address of kelm0 and a peer on its network: one association made by
// hand, with no time limit, one the kernel negotiated for an hour, and the policy that protects
// the management traffic with the first.
const char* const kDefaultSection = R"json({
  "securityAssociations": [
    {"name": "sa-mgmt0", "source": "2001:db8:0:1::10", "destination": "2001:db8:0:1::31",
     "spi": "0x1000", "state": "mature", "lifetime": 0, "mode": "transport",
     "encryptionAlgorithm": "aes128-cbc", "encryptionKey": "0x6b656c6d2d6d676d742d6b6579303031",
     "integrityAlgorithm": "hmac-sha2-256",
     "integrityKey": "0x6b656c6d2d6d676d742d696e746567726974792d6b65792d30303030303031"},
    {"name": "auto", "source": "2001:db8:0:1::10", "destination": "2001:db8:0:1::42",
     "spi": "0x2f1a", "state": "mature", "lifetime": 3600, "mode": "transport",
     "encryptionAlgorithm": "3des-cbc", "encryptionKey": "0x6175746f2d73612d336465732d6b65792d303031303030",
     "integrityAlgorithm": "hmac-sha1", "integrityKey": "0x6175746f2d73612d686d61632d6b6579"}
  ],
  "securityPolicies": [
    {"name": "sp-mgmt0", "source": "2001:db8:0:1::10/128", "sourcePort": 0,
     "destination": "2001:db8:0:1::31/128", "destinationPort": 443, "protocol": "tcp",
     "direction": "out", "action": "ipsec", "mode": "transport", "saName": "sa-mgmt0"},
    {"name": "sp-drop1", "source": "any", "sourcePort": 0,
     "destination": "2001:db8:0:100::/56", "destinationPort": 0, "protocol": "any",
     "direction": "in", "action": "discard", "mode": "any", "saName": ""}
  ]
})json";

}  // namespace HostSim::Ipsec
