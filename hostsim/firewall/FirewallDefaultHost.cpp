// The firewall of the default host.
#include "hostsim/firewall/FirewallStore.h"

namespace HostSim::Firewall {

// Rulesets of every direction and protocol, source and destination ports and ranges, fixed
// settings, clients, and allowed lists of each kind of address.
const char kDefaultSection[] = R"({
  "modules": [{"name": "ostrelfw", "options": "", "persistent": true, "users": 1}],
  "enabled": true,
  "defaultAction": "DROP",
  "rulesets": [
    {"id": "sshServer", "enabled": true, "allowedAll": false,
     "rules": [{"label": "ssh", "direction": "inbound", "protocol": "tcp", "port": "dst",
                "begin": 22, "end": 22}],
     "allowedIps": ["198.51.100.7", "192.0.2.0/24", "2001:db8::7", "2001:db8:100::/48"]},
    {"id": "sshClient", "enabled": false, "allowedAll": true,
     "rules": [{"label": "ssh", "direction": "outbound", "protocol": "tcp", "port": "dst",
                "begin": 22, "end": 22}]},
    {"id": "dhcp", "enabled": true, "allowedAll": true, "enabledFixed": true,
     "allowedIpFixed": true,
     "rules": [{"label": "offer", "direction": "inbound", "protocol": "udp", "port": "src",
                "begin": 67, "end": 67},
               {"label": "request", "direction": "outbound", "protocol": "udp", "port": "dst",
                "begin": 67, "end": 67}]},
    {"id": "dns", "enabled": true, "allowedAll": false, "allowedIpFixed": true,
     "rules": [{"label": "query", "direction": "outbound", "protocol": "udp", "port": "dst",
                "begin": 53, "end": 53},
               {"label": "queryTcp", "direction": "outbound", "protocol": "tcp", "port": "dst",
                "begin": 53, "end": 53}],
     "allowedIps": ["198.51.100.53", "2001:db8::53"]},
    {"id": "ntpClient", "enabled": false, "allowedAll": true,
     "rules": [{"label": "ntp", "direction": "outbound", "protocol": "udp", "port": "dst",
                "begin": 123, "end": 123}]},
    {"id": "zanvexAgent", "enabled": true, "allowedAll": false, "enabledFixed": true,
     "clients": 1,
     "rules": [{"label": "agent", "direction": "inbound", "protocol": "tcp", "port": "dst",
                "begin": 902, "end": 902},
               {"label": "heartbeat", "direction": "outbound", "protocol": "udp",
                "port": "dst", "begin": 902, "end": 902}],
     "allowedIps": ["203.0.113.10", "203.0.113.11"]},
    {"id": "webAccess", "enabled": true, "allowedAll": true,
     "rules": [{"label": "http", "direction": "inbound", "protocol": "tcp", "port": "dst",
                "begin": 80, "end": 80},
               {"label": "https", "direction": "inbound", "protocol": "tcp", "port": "dst",
                "begin": 443, "end": 443}]},
    {"id": "kelmMigrate", "enabled": true, "allowedAll": true, "clients": 1,
     "rules": [{"label": "migrateIn", "direction": "inbound", "protocol": "tcp", "port": "dst",
                "begin": 8000, "end": 8100},
               {"label": "migrateOut", "direction": "outbound", "protocol": "tcp",
                "port": "dst", "begin": 8000, "end": 8100}]},
    {"id": "nfsClient", "enabled": false, "allowedAll": true,
     "rules": [{"label": "nfs", "direction": "outbound", "protocol": "tcp", "port": "dst",
                "begin": 0, "end": 65535}]},
    {"id": "snmp", "enabled": false, "allowedAll": false,
     "rules": [{"label": "agent", "direction": "inbound", "protocol": "udp", "port": "dst",
                "begin": 161, "end": 161}]},
    {"id": "syslog", "enabled": true, "allowedAll": true, "clients": 2,
     "rules": [{"label": "udp", "direction": "outbound", "protocol": "udp", "port": "dst",
                "begin": 514, "end": 514},
               {"label": "tls", "direction": "outbound", "protocol": "tcp", "port": "dst",
                "begin": 1514, "end": 1515}]},
    {"id": "userRules", "enabled": false, "allowedAll": true}
  ]
})";

}  // namespace HostSim::Firewall
