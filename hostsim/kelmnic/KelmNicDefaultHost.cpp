// The Kelm interfaces of the built-in default host. kelm0 is the management interface on
// "Management Network" with a static address and the net dumper, kelm1 carries migration
// traffic on "Migration Network" of storageswitch1 in "glidex" with no gateway of its own,
// kelm2 takes its address by DHCP on DVPort 8 of distswitch0, and kelm9 is the host's system
// interface. Their IPv6 addresses show every type and status.
#include "hostsim/kelmnic/KelmNicStore.h"

namespace HostSim::Ip {

const char* const kDefaultKelmNics = R"json([
  {"name": "kelm0", "netstack": "defaultTcpipStack", "mac": "02:04:00:00:00:00", "mtu": 1500,
   "tsoMss": 65535, "rxQueues": 1, "enabled": true, "portId": 33554436,
   "connection": {"portGroup": "Management Network"},
   "tags": ["Management"],
   "netDump": {"dumper": true, "ipv6ReadyPrimary": true, "ipv6ReadySecondary": false},
   "ipConfig": {
     "ipv4": {"address": "192.0.2.10", "netmask": "255.255.255.0",
              "broadcast": "192.0.2.255", "gateway": "192.0.2.1"},
     "ipv6": {"enabled": true, "dhcp": false, "routerAdvertised": true, "dhcpDns": false,
              "gateway": "::",
              "addresses": [
                {"address": "fe80::4:ff:fe00:0/64", "type": "autoconf", "status": "preferred"},
                {"address": "2001:db8:0:1::10/64", "type": "static", "status": "preferred"},
                {"address": "2001:db8:0:1:4:ff:fe00:0/64", "type": "autoconf",
                 "status": "deprecated"}]}}},
  {"name": "kelm1", "netstack": "glidex", "mac": "02:04:00:00:00:01", "mtu": 9000,
   "tsoMss": 65535, "rxQueues": 4, "enabled": true, "portId": 50331652,
   "connection": {"portGroup": "Migration Network"},
   "tags": ["Glidex"],
   "ipConfig": {
     "ipv4": {"address": "198.51.100.20", "netmask": "255.255.255.0",
              "broadcast": "198.51.100.255", "gateway": "0.0.0.0"},
     "ipv6": {"enabled": true, "dhcp": true, "routerAdvertised": false, "dhcpDns": false,
              "gateway": "2001:db8:0:2::fe",
              "addresses": [
                {"address": "fe80::4:ff:fe00:1/64", "type": "autoconf", "status": "preferred"},
                {"address": "2001:db8:0:2::20/64", "type": "dhcp", "status": "tentative"},
                {"address": "2001:db8:0:2::21/64", "type": "static", "status": "duplicated"}]}},
   "configuredIpConfig": {
     "ipv4": {"address": "198.51.100.20", "netmask": "255.255.255.0",
              "broadcast": "198.51.100.255", "gateway": "0.0.0.0"},
     "ipv6": {"enabled": true, "dhcp": true, "routerAdvertised": false, "dhcpDns": true,
              "gateway": "2001:db8:0:2::fe",
              "addresses": [
                {"address": "2001:db8:0:2::21/64", "type": "static", "status": "preferred"}]}}},
  {"name": "kelm2", "netstack": "defaultTcpipStack", "mac": "02:04:00:00:00:02", "mtu": 9000,
   "tsoMss": 65535, "rxQueues": 2, "enabled": true, "portId": 83886084,
   "connection": {"dvs": "distswitch0", "dvPort": "8", "connectionId": 1718601042},
   "tags": ["StoragePool"],
   "ipConfig": {
     "ipv4": {"address": "192.0.2.112", "netmask": "255.255.255.0",
              "broadcast": "192.0.2.255", "gateway": "192.0.2.1", "dhcp": true, "dhcpDns": false},
     "ipv6": {"enabled": true, "dhcp": false, "routerAdvertised": true, "dhcpDns": false,
              "addresses": [
                {"address": "fe80::4:ff:fe00:2/64", "type": "autoconf", "status": "preferred"}]}},
   "configuredIpConfig": {
     "ipv4": {"dhcp": true, "dhcpDns": false},
     "ipv6": {"enabled": true, "dhcp": false, "routerAdvertised": true, "dhcpDns": false}}},
  {"name": "kelm9", "netstack": "defaultTcpipStack", "system": true, "mac": "02:04:00:00:00:09",
   "mtu": 1500, "tsoMss": 65535, "rxQueues": 1, "enabled": true, "portId": 67108868,
   "connection": {"portGroup": "Kelm System Network"},
   "tags": [],
   "ipConfig": {
     "ipv4": {"address": "203.0.113.9", "netmask": "255.255.255.240",
              "broadcast": "203.0.113.15", "gateway": "0.0.0.0"},
     "ipv6": {"enabled": true,
              "addresses": [
                {"address": "2001:db8:0:ff::9/64", "type": "static", "status": "preferred"}]}}}
])json";

}  // namespace HostSim::Ip
