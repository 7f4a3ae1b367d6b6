// The worlds and ports of the built-in default host. vm-web01 has a port on "VM Network" of
// lanswitch0, with four filters, and one on DVPort 4 of distswitch0; vm-db01 has two ports on
// "VM Network" and one on DVPort 6; vm-web02 one on DVPort 5 whose counters passed 2^32;
// vm-backup01 one on "Backup Network" of storageswitch1; vm-idle01 has none. Each uplink has
// its port (type 4), and kelm0 its port on "Management Network".
#include "hostsim/ports/PortsStore.h"

namespace HostSim::Ports {

const char* const kDefaultSection = R"json({
  "worlds": [
    {"id": 1049601, "name": "zvx0:vm-web01"},
    {"id": 1049602, "name": "zvx0:vm-web02"},
    {"id": 1049603, "name": "zvx0:vm-db01"},
    {"id": 1049604, "name": "zvx0:vm-backup01"},
    {"id": 1049605, "name": "zvx0:vm-idle01"}
  ],
  "ports": [
    {"id": 1001, "switch": "lanswitch0", "type": 4, "world": 0, "portgroup": "", "dvport": "", "macs": ["02:01:00:00:00:00"], "ip": "0.0.0.0", "teamUplink": "hwnic0",
     "stats": {"packets": {"txPackets": 90211544, "txMulticast": 120433, "txBroadcast": 8812, "rxPackets": 88710233, "rxMulticast": 230112, "rxBroadcast": 40211, "txDropped": 0, "rxDropped": 18},
               "bytes": {"packetsSent": 90211544, "bytesSent": 61234567890, "packetsReceived": 88710233, "bytesReceived": 58211022113}},
     "filters": []},
    {"id": 1002, "switch": "lanswitch0", "type": 4, "world": 0, "portgroup": "", "dvport": "", "macs": ["02:01:00:00:00:01"], "ip": "0.0.0.0", "teamUplink": "hwnic1",
     "stats": {"packets": {"txPackets": 1204, "txMulticast": 12, "txBroadcast": 3, "rxPackets": 8811, "rxMulticast": 140, "rxBroadcast": 62, "txDropped": 0, "rxDropped": 0},
               "bytes": {"packetsSent": 1204, "bytesSent": 201233, "packetsReceived": 8811, "bytesReceived": 1288110}},
     "filters": []},
    {"id": 1003, "switch": "lanswitch0", "type": 2, "world": 0, "portgroup": "Management Network", "dvport": "", "macs": ["02:04:00:00:00:00"], "ip": "192.0.2.10", "teamUplink": "hwnic0",
     "stats": {"packets": {"txPackets": 2211873, "txMulticast": 1102, "txBroadcast": 88, "rxPackets": 2519004, "rxMulticast": 20331, "rxBroadcast": 4410, "txDropped": 0, "rxDropped": 2},
               "bytes": {"packetsSent": 2211873, "bytesSent": 512336721, "packetsReceived": 2519004, "bytesReceived": 1877201934}},
     "filters": []},
    {"id": 1010, "switch": "lanswitch0", "type": 1, "world": 1049601, "portgroup": "VM Network", "dvport": "", "macs": ["02:05:00:00:10:01"], "ip": "192.0.2.41", "teamUplink": "hwnic0",
     "stats": {"packets": {"txPackets": 4410275, "txMulticast": 3021, "txBroadcast": 112, "rxPackets": 5822114, "rxMulticast": 41022, "rxBroadcast": 9120, "txDropped": 294, "rxDropped": 207},
               "bytes": {"packetsSent": 4410275, "bytesSent": 3711456123, "packetsReceived": 5822114, "bytesReceived": 5120993881}},
     "filters": [
       {"name": "zxfw-guard", "orderKey": "0100", "active": true, "transmit": false, "packetsIn": 5822114, "packetsOut": 5821907, "packetsDropped": 207, "detail": {"packetsFiltered": 207, "packetsFaulted": 0, "packetsQueued": 12, "packetsInjected": 3, "packetErrors": 0}},
       {"name": "zxmon-tap", "orderKey": "0200", "active": true, "transmit": true, "packetsIn": 4410275, "packetsOut": 4410275, "packetsDropped": 0},
       {"name": "zxrate-limit", "orderKey": "0300", "active": true, "transmit": true, "packetsIn": 4410275, "packetsOut": 4409981, "packetsDropped": 294, "detail": {"packetsFiltered": 0, "packetsFaulted": 1, "packetsQueued": 5120, "packetsInjected": 0, "packetErrors": 1}},
       {"name": "zxinspect", "orderKey": "0050", "active": false, "transmit": false, "packetsIn": 0, "packetsOut": 0, "packetsDropped": 0}
     ]},
    {"id": 1011, "switch": "lanswitch0", "type": 1, "world": 1049603, "portgroup": "VM Network", "dvport": "", "macs": ["02:05:00:00:10:03"], "ip": "192.0.2.43", "teamUplink": "hwnic1",
     "stats": {"packets": {"txPackets": 120551, "txMulticast": 88, "txBroadcast": 10, "rxPackets": 99812, "rxMulticast": 701, "rxBroadcast": 55, "txDropped": 0, "rxDropped": 0},
               "bytes": {"packetsSent": 120551, "bytesSent": 90123455, "packetsReceived": 99812, "bytesReceived": 77812330}},
     "filters": []},
    {"id": 1012, "switch": "lanswitch0", "type": 1, "world": 1049603, "portgroup": "VM Network", "dvport": "", "macs": ["02:05:00:00:10:04"], "ip": "192.0.2.44", "teamUplink": "hwnic0",
     "stats": {"packets": {"txPackets": 0, "txMulticast": 0, "txBroadcast": 0, "rxPackets": 311, "rxMulticast": 300, "rxBroadcast": 11, "txDropped": 0, "rxDropped": 0},
               "bytes": {"packetsSent": 0, "bytesSent": 0, "packetsReceived": 311, "bytesReceived": 19904}},
     "filters": []},
    {"id": 2001, "switch": "storageswitch1", "type": 4, "world": 0, "portgroup": "", "dvport": "", "macs": ["02:01:00:00:00:02"], "ip": "0.0.0.0", "teamUplink": "hwnic2",
     "stats": {"packets": {"txPackets": 188203311, "txMulticast": 1022, "txBroadcast": 91, "rxPackets": 201455870, "rxMulticast": 3391, "rxBroadcast": 880, "txDropped": 0, "rxDropped": 4},
               "bytes": {"packetsSent": 188203311, "bytesSent": 701223100881, "packetsReceived": 201455870, "bytesReceived": 811002334512}},
     "filters": []},
    {"id": 2002, "switch": "storageswitch1", "type": 4, "world": 0, "portgroup": "", "dvport": "", "macs": ["02:01:00:00:00:03"], "ip": "0.0.0.0", "teamUplink": "hwnic3",
     "stats": {"packets": {"txPackets": 220, "txMulticast": 2, "txBroadcast": 1, "rxPackets": 4411, "rxMulticast": 87, "rxBroadcast": 20, "txDropped": 0, "rxDropped": 0},
               "bytes": {"packetsSent": 220, "bytesSent": 30211, "packetsReceived": 4411, "bytesReceived": 401220}},
     "filters": []},
    {"id": 2010, "switch": "storageswitch1", "type": 1, "world": 1049604, "portgroup": "Backup Network", "dvport": "", "macs": ["02:05:00:00:20:01"], "ip": "198.51.100.25", "teamUplink": "hwnic2",
     "stats": {"packets": {"txPackets": 98110233, "txMulticast": 55, "txBroadcast": 6, "rxPackets": 60221908, "rxMulticast": 81, "rxBroadcast": 7, "txDropped": 12, "rxDropped": 0},
               "bytes": {"packetsSent": 98110233, "bytesSent": 140771220331, "packetsReceived": 60221908, "bytesReceived": 4022113005}},
     "filters": []},
    {"id": 3001, "switch": "distswitch0", "type": 4, "world": 0, "portgroup": "", "dvport": "", "macs": ["02:01:00:00:00:09"], "ip": "0.0.0.0", "teamUplink": "hwnic9",
     "stats": {"packets": {"txPackets": 331200877, "txMulticast": 77120, "txBroadcast": 2210, "rxPackets": 350122981, "rxMulticast": 88123, "rxBroadcast": 6603, "txDropped": 0, "rxDropped": 9},
               "bytes": {"packetsSent": 331200877, "bytesSent": 411200877330, "packetsReceived": 350122981, "bytesReceived": 522110093387}},
     "filters": [
       {"name": "zxmon-tap", "orderKey": "0200", "active": true, "transmit": true, "packetsIn": 331200877, "packetsOut": 331200877, "packetsDropped": 0}
     ]},
    {"id": 3002, "switch": "distswitch0", "type": 4, "world": 0, "portgroup": "", "dvport": "", "macs": ["02:01:00:00:00:0a"], "ip": "0.0.0.0", "teamUplink": "hwnic10",
     "stats": {"packets": {"txPackets": 320877101, "txMulticast": 76002, "txBroadcast": 2198, "rxPackets": 341022390, "rxMulticast": 87012, "rxBroadcast": 6590, "txDropped": 0, "rxDropped": 3},
               "bytes": {"packetsSent": 320877101, "bytesSent": 398220190443, "packetsReceived": 341022390, "bytesReceived": 500112231098}},
     "filters": []},
    {"id": 3010, "switch": "distswitch0", "type": 1, "world": 1049601, "portgroup": "", "dvport": "4", "macs": ["02:05:00:00:30:01"], "ip": "203.0.113.41", "teamUplink": "hwnic9",
     "stats": {"packets": {"txPackets": 8812330, "txMulticast": 4402, "txBroadcast": 301, "rxPackets": 9022118, "rxMulticast": 5120, "rxBroadcast": 410, "txDropped": 0, "rxDropped": 0},
               "bytes": {"packetsSent": 8812330, "bytesSent": 7011223009, "packetsReceived": 9022118, "bytesReceived": 9120331870}},
     "filters": [
       {"name": "zxfw-guard", "orderKey": "0100", "active": true, "transmit": false, "packetsIn": 9022118, "packetsOut": 9021990, "packetsDropped": 128}
     ]},
    {"id": 3011, "switch": "distswitch0", "type": 1, "world": 1049602, "portgroup": "", "dvport": "5", "macs": ["02:05:00:00:30:02"], "ip": "203.0.113.42", "teamUplink": "hwnic10",
     "stats": {"packets": {"txPackets": 6120448931, "txMulticast": 10223, "txBroadcast": 872, "rxPackets": 5988120443, "rxMulticast": 11201, "rxBroadcast": 903, "txDropped": 17, "rxDropped": 5},
               "bytes": {"packetsSent": 6120448931, "bytesSent": 8811223340912, "packetsReceived": 5988120443, "bytesReceived": 8120443871220}},
     "filters": []},
    {"id": 3012, "switch": "distswitch0", "type": 1, "world": 1049603, "portgroup": "", "dvport": "6", "macs": ["02:05:00:00:30:03"], "ip": "203.0.113.43", "teamUplink": "hwnic9",
     "stats": {"packets": {"txPackets": 401223, "txMulticast": 210, "txBroadcast": 18, "rxPackets": 388120, "rxMulticast": 199, "rxBroadcast": 22, "txDropped": 0, "rxDropped": 0},
               "bytes": {"packetsSent": 401223, "bytesSent": 301223887, "packetsReceived": 388120, "bytesReceived": 288110442}},
     "filters": []}
  ]
})json";

}  // namespace HostSim::Ports
