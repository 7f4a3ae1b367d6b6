// The routing tables of the built-in default host: on "defaultTcpipStack" the management
// network of kelm0 with a static route beyond its gateway, the system network of kelm9, and the
// sockets of the host's daemons; on "glidex" the migration network of kelm1, whose gateway is
// learnt by DHCP, and the migration worlds' sockets.
#include "hostsim/routing/RoutingStore.h"

namespace HostSim::Routing {

const char* const kDefaultSection = R"json({
  "netstacks": [
    {
      "netstack": "defaultTcpipStack",
      "ipv4Gateway": "192.0.2.1", "ipv4ConfiguredGateway": "192.0.2.1",
      "ipv4GatewaySource": "MANUAL",
      "ipv6Gateway": "2001:db8:0:1::1", "ipv6ConfiguredGateway": "2001:db8:0:1::1",
      "routes": [
        {"network": "192.0.2.0/24", "gateway": "0.0.0.0", "interface": "kelm0", "source": "MANUAL"},
        {"network": "203.0.113.64/26", "gateway": "192.0.2.254", "interface": "kelm0", "source": "MANUAL"},
        {"network": "2001:db8:0:1::/64", "gateway": "::", "interface": "kelm0", "source": "MANUAL"},
        {"network": "2001:db8:0:100::/56", "gateway": "2001:db8:0:1::fe", "interface": "kelm0", "source": "MANUAL"},
        {"network": "203.0.113.0/28", "gateway": "0.0.0.0", "interface": "kelm9", "source": "MANUAL", "system": true},
        {"network": "2001:db8:0:ff::/64", "gateway": "::", "interface": "kelm9", "source": "MANUAL", "system": true}
      ],
      "neighbors": [
        {"address": "192.0.2.1", "mac": "02:06:00:00:00:01", "interface": "kelm0", "expiry": 1187, "type": "dynamic"},
        {"address": "192.0.2.254", "mac": "02:06:00:00:00:fe", "interface": "kelm0", "expiry": -1, "type": "static"},
        {"address": "192.0.2.31", "mac": "02:06:00:00:00:1f", "interface": "kelm0", "expiry": 642, "type": "dynamic"},
        {"address": "2001:db8:0:1::1", "mac": "02:06:00:00:00:01", "interface": "kelm0", "expiry": 26, "type": "router", "state": "reachable"},
        {"address": "2001:db8:0:1::31", "mac": "02:06:00:00:00:1f", "interface": "kelm0", "expiry": 0, "type": "dynamic", "state": "stale"},
        {"address": "203.0.113.2", "mac": "02:06:00:00:09:02", "interface": "kelm9", "expiry": 1090, "type": "dynamic", "system": true}
      ],
      "connections": [
        {"protocol": "tcp", "recvQueue": 0, "sendQueue": 0, "localAddress": "0.0.0.0", "localPort": 443,
         "foreignAddress": "0.0.0.0", "foreignPort": 0, "state": "LISTEN", "worldId": 2099310,
         "worldName": "kelm-mgmtd", "ccAlgorithm": "newreno"},
        {"protocol": "tcp", "recvQueue": 0, "sendQueue": 0, "localAddress": "192.0.2.10", "localPort": 443,
         "foreignAddress": "192.0.2.31", "foreignPort": 51764, "state": "ESTABLISHED", "worldId": 2099310,
         "worldName": "kelm-mgmtd", "ccAlgorithm": "newreno"},
        {"protocol": "tcp", "recvQueue": 0, "sendQueue": 517, "localAddress": "192.0.2.10", "localPort": 902,
         "foreignAddress": "192.0.2.31", "foreignPort": 51766, "state": "CLOSE_WAIT", "worldId": 2099402,
         "worldName": "tarnd", "ccAlgorithm": "newreno"},
        {"protocol": "tcp", "recvQueue": 0, "sendQueue": 0, "localAddress": "::", "localPort": 22,
         "foreignAddress": "::", "foreignPort": 0, "state": "LISTEN", "worldId": 2099120,
         "worldName": "kelm-shelld", "ccAlgorithm": "cubic"},
        {"protocol": "tcp", "recvQueue": 0, "sendQueue": 0, "localAddress": "2001:db8:0:1::10", "localPort": 22,
         "foreignAddress": "2001:db8:0:1::31", "foreignPort": 60122, "state": "TIME_WAIT", "worldId": 0,
         "worldName": "", "ccAlgorithm": "cubic"},
        {"protocol": "udp", "recvQueue": 0, "sendQueue": 0, "localAddress": "192.0.2.10", "localPort": 123,
         "foreignAddress": "0.0.0.0", "foreignPort": 0, "state": "", "worldId": 2099214,
         "worldName": "kelm-timed", "ccAlgorithm": ""},
        {"protocol": "udp", "recvQueue": 0, "sendQueue": 0, "localAddress": "::", "localPort": 161,
         "foreignAddress": "::", "foreignPort": 0, "state": "", "worldId": 2099262,
         "worldName": "kelm-snmpd", "ccAlgorithm": ""},
        {"protocol": "ip", "recvQueue": 0, "sendQueue": 0, "localAddress": "0.0.0.0", "localPort": 0,
         "foreignAddress": "0.0.0.0", "foreignPort": 0, "state": "", "worldId": 2099180,
         "worldName": "kelm-pingd", "ccAlgorithm": ""}
      ],
      "multicast": [
        {"interface": "kelm0", "group": "224.0.0.1", "linkLayer": "01:00:5e:00:00:01", "refcount": 1},
        {"interface": "kelm0", "group": "ff02::1", "linkLayer": "33:33:00:00:00:01", "refcount": 1},
        {"interface": "kelm0", "group": "ff02::1:ff00:10", "linkLayer": "33:33:ff:00:00:10", "refcount": 2}
      ]
    },
    {
      "netstack": "glidex",
      "ipv4Gateway": "198.51.100.1", "ipv4ConfiguredGateway": "0.0.0.0",
      "ipv4GatewaySource": "DHCP",
      "ipv6Gateway": "::", "ipv6ConfiguredGateway": "::",
      "routes": [
        {"network": "198.51.100.0/24", "gateway": "0.0.0.0", "interface": "kelm1", "source": "DHCP"},
        {"network": "203.0.113.128/25", "gateway": "198.51.100.254", "interface": "kelm1", "source": "MANUAL"},
        {"network": "2001:db8:0:2::/64", "gateway": "::", "interface": "kelm1", "source": "MANUAL"},
        {"network": "2001:db8:0:200::/56", "gateway": "2001:db8:0:2::fe", "interface": "kelm1", "source": "MANUAL"}
      ],
      "neighbors": [
        {"address": "198.51.100.1", "mac": "02:06:00:00:01:01", "interface": "kelm1", "expiry": 903, "type": "dynamic"},
        {"address": "198.51.100.42", "mac": "02:06:00:00:01:2a", "interface": "kelm1", "expiry": 1140, "type": "dynamic"},
        {"address": "2001:db8:0:2::fe", "mac": "02:06:00:00:01:fe", "interface": "kelm1", "expiry": 12, "type": "router", "state": "delay"}
      ],
      "connections": [
        {"protocol": "tcp", "recvQueue": 0, "sendQueue": 0, "localAddress": "0.0.0.0", "localPort": 8000,
         "foreignAddress": "0.0.0.0", "foreignPort": 0, "state": "LISTEN", "worldId": 2100514,
         "worldName": "glidex-listener", "ccAlgorithm": "newreno"},
        {"protocol": "tcp", "recvQueue": 0, "sendQueue": 131072, "localAddress": "198.51.100.20", "localPort": 8000,
         "foreignAddress": "198.51.100.42", "foreignPort": 41832, "state": "ESTABLISHED", "worldId": 2100530,
         "worldName": "glidex-worker", "ccAlgorithm": "newreno"},
        {"protocol": "tcp", "recvQueue": 0, "sendQueue": 0, "localAddress": "2001:db8:0:2::20", "localPort": 8000,
         "foreignAddress": "2001:db8:0:2::42", "foreignPort": 41840, "state": "SYN_SENT", "worldId": 2100530,
         "worldName": "glidex-worker", "ccAlgorithm": "newreno"},
        {"protocol": "udp", "recvQueue": 0, "sendQueue": 0, "localAddress": "198.51.100.20", "localPort": 68,
         "foreignAddress": "0.0.0.0", "foreignPort": 0, "state": "", "worldId": 2100498,
         "worldName": "glidex-dhclient", "ccAlgorithm": ""}
      ],
      "multicast": [
        {"interface": "kelm1", "group": "224.0.0.1", "linkLayer": "01:00:5e:00:00:01", "refcount": 1},
        {"interface": "kelm1", "group": "ff02::1", "linkLayer": "33:33:00:00:00:01", "refcount": 1}
      ]
    }
  ]
})json";

}  // namespace HostSim::Routing
