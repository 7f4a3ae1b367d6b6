// The NICs of the built-in default host: six on PCI (copper and fibre, 1, 10 and 25 Gb/s, one
// administratively down, one without a cable, one backed by a DPU), one pseudo NIC of each
// descriptor kind, and two more 25 Gb/s PCI NICs, hwnic9 and hwnic10, the uplinks of the
// distributed switch.
#include "hostsim/nic/NicStore.h"

namespace HostSim::Nic {

const char* const kDefaultSection = R"json([
  {
    "name": "hwnic0",
    "pci": {"address": "0000:02:00.0", "vendor": "Tarn Semiconductor",
            "device": "T350 Gigabit Ethernet Controller"},
    "driver": "tarn1g", "adminUp": true, "cableConnected": true,
    "speed": 1000, "duplex": 1, "mac": "02:01:00:00:00:00", "mtu": 1500,
    "linkInfo": {
      "supportedPorts": [0],
      "supportedLinkModes": [{"speed": 10, "duplex": 2, "media": 2}, {"speed": 10, "duplex": 1, "media": 2},
                             {"speed": 100, "duplex": 2, "media": 2}, {"speed": 100, "duplex": 1, "media": 2},
                             {"speed": 1000, "duplex": 1, "media": 2}],
      "supportsAutoNegotiation": true,
      "advertisedLinkModes": [{"speed": 0, "duplex": 0, "media": 0}, {"speed": 100, "duplex": 1, "media": 2},
                              {"speed": 1000, "duplex": 1, "media": 2}],
      "advertisedAutoNegotiation": true, "port": 0, "phyAddress": 1, "transceiver": 0,
      "autoNegotiation": true, "supportsWakeOn": true, "supportedWakeOn": [0, 1, 2, 3, 5],
      "wakeOn": [5], "supportsMessageLevel": true, "messageLevel": 7, "virtualAddress": ""
    },
    "pause": {"supported": true, "autoNegotiation": true, "rxPause": true, "txPause": true,
              "rxResolution": 1, "txResolution": 1},
    "driverInfo": {"version": "3.4.12.0", "firmwareVersion": "1.63, 0x80000d2a",
                   "busInfo": "0000:02:00.0"}
  },
  {
    "name": "hwnic1",
    "pci": {"address": "0000:02:00.1", "vendor": "Tarn Semiconductor",
            "device": "T350 Gigabit Ethernet Controller"},
    "driver": "tarn1g", "adminUp": true, "cableConnected": true,
    "speed": 1000, "duplex": 1, "mac": "02:01:00:00:00:01", "mtu": 1500,
    "linkInfo": {
      "supportedPorts": [0],
      "supportedLinkModes": [{"speed": 100, "duplex": 1, "media": 2}, {"speed": 1000, "duplex": 1, "media": 2}],
      "supportsAutoNegotiation": true,
      "advertisedLinkModes": [{"speed": 100, "duplex": 1, "media": 2}, {"speed": 1000, "duplex": 1, "media": 2}],
      "advertisedAutoNegotiation": true, "port": 0, "phyAddress": 2, "transceiver": 0,
      "autoNegotiation": true, "supportsWakeOn": true, "supportedWakeOn": [0, 5, 6],
      "wakeOn": [], "supportsMessageLevel": true, "messageLevel": 3, "virtualAddress": ""
    },
    "pause": {"supported": true, "autoNegotiation": true, "rxPause": true, "txPause": false,
              "rxResolution": 1, "txResolution": 2},
    "driverInfo": {"version": "3.4.12.0", "firmwareVersion": "1.63, 0x80000d2a",
                   "busInfo": "0000:02:00.1"}
  },
  {
    "name": "hwnic2",
    "pci": {"address": "0000:3b:00.0", "vendor": "Tarn Semiconductor",
            "device": "T7120 10-Gigabit SFP+ Network Controller"},
    "driver": "tarn10g", "adminUp": true, "cableConnected": true,
    "speed": 10000, "duplex": 1, "mac": "02:01:00:00:00:02", "mtu": 9000,
    "linkInfo": {
      "supportedPorts": [4, 5],
      "supportedLinkModes": [{"speed": 1000, "duplex": 1, "media": 3}, {"speed": 10000, "duplex": 1, "media": 9},
                             {"speed": 10000, "duplex": 1, "media": 11}],
      "supportsAutoNegotiation": false,
      "advertisedLinkModes": [{"speed": 10000, "duplex": 1, "media": 9}],
      "advertisedAutoNegotiation": false, "port": 4, "phyAddress": 0, "transceiver": 1,
      "autoNegotiation": false, "supportsWakeOn": false, "supportedWakeOn": [],
      "wakeOn": [], "supportsMessageLevel": false, "messageLevel": 0, "virtualAddress": ""
    },
    "pause": {"supported": true, "autoNegotiation": false, "rxPause": true, "txPause": true,
              "rxResolution": 0, "txResolution": 0},
    "driverInfo": {"version": "5.1.0.7", "firmwareVersion": "0x800016d4, 1.2445.0",
                   "busInfo": "0000:3b:00.0"}
  },
  {
    "name": "hwnic3",
    "pci": {"address": "0000:3b:00.1", "vendor": "Tarn Semiconductor",
            "device": "T7120 10-Gigabit SFP+ Network Controller"},
    "driver": "tarn10g", "adminUp": false, "cableConnected": true,
    "speed": 10000, "duplex": 1, "mac": "02:01:00:00:00:03", "mtu": 1500,
    "linkInfo": {
      "supportedPorts": [4, 5],
      "supportedLinkModes": [{"speed": 1000, "duplex": 1, "media": 3}, {"speed": 10000, "duplex": 1, "media": 9}],
      "supportsAutoNegotiation": false,
      "advertisedLinkModes": [{"speed": 10000, "duplex": 1, "media": 9}],
      "advertisedAutoNegotiation": false, "port": 5, "phyAddress": 0, "transceiver": 1,
      "autoNegotiation": false, "supportsWakeOn": false, "supportedWakeOn": [],
      "wakeOn": [], "supportsMessageLevel": true, "messageLevel": 0, "virtualAddress": ""
    },
    "pause": {"supported": true, "autoNegotiation": false, "rxPause": false, "txPause": false,
              "rxResolution": 0, "txResolution": 0},
    "driverInfo": {"version": "5.1.0.7", "firmwareVersion": "0x800016d4, 1.2445.0",
                   "busInfo": "0000:3b:00.1"}
  },
  {
    "name": "hwnic4",
    "pci": {"address": "0000:5e:00.0", "vendor": "Zanvex Networks",
            "device": "ZX2520 25GbE SFP28 Dual Port Adapter"},
    "driver": "zxnet", "adminUp": true, "cableConnected": false,
    "speed": 25000, "duplex": 1, "mac": "02:01:00:00:00:04", "mtu": 9000,
    "linkInfo": {
      "supportedPorts": [5, 4, 9],
      "supportedLinkModes": [{"speed": 10000, "duplex": 1, "media": 24}, {"speed": 25000, "duplex": 1, "media": 14},
                             {"speed": 25000, "duplex": 1, "media": 9}],
      "supportsAutoNegotiation": true,
      "advertisedLinkModes": [{"speed": 25000, "duplex": 1, "media": 14}, {"speed": 10000, "duplex": 1, "media": 24}],
      "advertisedAutoNegotiation": true, "port": 9, "phyAddress": 0, "transceiver": 7,
      "autoNegotiation": true, "supportsWakeOn": true, "supportedWakeOn": [7],
      "wakeOn": [8], "supportsMessageLevel": true, "messageLevel": 4099, "virtualAddress": ""
    },
    "pause": {"supported": false, "autoNegotiation": false, "rxPause": false, "txPause": false,
              "rxResolution": 0, "txResolution": 0},
    "driverInfo": {"version": "2.20.1.3", "firmwareVersion": "22.31.1014",
                   "busInfo": "0000:5e:00.0"}
  },
  {
    "name": "hwnic5",
    "pci": {"address": "0000:af:00.0", "vendor": "Zanvex Networks",
            "device": "ZD200 DPU 25GbE Network Function"},
    "driver": "zxdpu", "adminUp": true, "cableConnected": true,
    "speed": 25000, "duplex": 1, "mac": "02:01:00:00:00:05", "mtu": 1500,
    "dpuId": "zxdpu-4a1f-0001",
    "linkInfo": {
      "supportedPorts": [5],
      "supportedLinkModes": [{"speed": 25000, "duplex": 1, "media": 14}],
      "supportsAutoNegotiation": true,
      "advertisedLinkModes": [{"speed": 25000, "duplex": 1, "media": 14}, {"speed": 25000, "duplex": 2, "media": 14}],
      "advertisedAutoNegotiation": true, "port": 5, "phyAddress": 3, "transceiver": 0,
      "autoNegotiation": true, "supportsWakeOn": false, "supportedWakeOn": [],
      "wakeOn": [], "supportsMessageLevel": false, "messageLevel": 0,
      "virtualAddress": "02:03:00:00:00:01"
    },
    "pause": {"supported": true, "autoNegotiation": true, "rxPause": true, "txPause": true,
              "rxResolution": 2, "txResolution": 1},
    "driverInfo": {"version": "1.8.2.0", "firmwareVersion": "ZD200 4.11.0.18",
                   "busInfo": "0000:af:00.0"}
  },
  {
    "name": "hwnic6",
    "descriptor": "USB-NIC:Kelm Devices:KU300 USB 3.0 Gigabit Adapter",
    "driver": "kelmusb", "adminUp": true, "cableConnected": true,
    "speed": 1000, "duplex": 1, "mac": "02:02:00:00:00:06", "mtu": 1500,
    "linkInfo": {
      "supportedPorts": [3],
      "supportedLinkModes": [{"speed": 100, "duplex": 1, "media": 2}, {"speed": 1000, "duplex": 1, "media": 2}],
      "supportsAutoNegotiation": true,
      "advertisedLinkModes": [{"speed": 1000, "duplex": 1, "media": 2}],
      "advertisedAutoNegotiation": true, "port": 3, "phyAddress": 0, "transceiver": 0,
      "autoNegotiation": true, "supportsWakeOn": true, "supportedWakeOn": [0, 1, 2, 3, 4, 5],
      "wakeOn": [0, 4], "supportsMessageLevel": true, "messageLevel": 1, "virtualAddress": ""
    },
    "pause": {"supported": false, "autoNegotiation": false, "rxPause": false, "txPause": false,
              "rxResolution": 0, "txResolution": 0},
    "driverInfo": {"version": "1.2.0", "firmwareVersion": "", "busInfo": "usb-0000:00:14.0-3"}
  },
  {
    "name": "hwnic7",
    "descriptor": "ACPI-NIC:Zanvex Networks:ZA10 Platform Ethernet",
    "driver": "zxacpi", "adminUp": true, "cableConnected": true,
    "speed": 1000, "duplex": 2, "mac": "02:02:00:00:00:07", "mtu": 1500,
    "linkInfo": {
      "supportedPorts": [0, 1, 2],
      "supportedLinkModes": [{"speed": 1000, "duplex": 2, "media": 23}],
      "supportsAutoNegotiation": false,
      "advertisedLinkModes": [{"speed": 1000, "duplex": 2, "media": 23}],
      "advertisedAutoNegotiation": false, "port": 2, "phyAddress": 0, "transceiver": 0,
      "autoNegotiation": false, "supportsWakeOn": false, "supportedWakeOn": [],
      "wakeOn": [], "supportsMessageLevel": false, "messageLevel": 0, "virtualAddress": ""
    },
    "pause": {"supported": false, "autoNegotiation": false, "rxPause": false, "txPause": false,
              "rxResolution": 0, "txResolution": 0},
    "driverInfo": {"version": "0.9.4", "firmwareVersion": "ACPI 6.3", "busInfo": "ACPI0012:00"}
  },
  {
    "name": "hwnic8",
    "descriptor": "PhyDev:Tarn Semiconductor:TP40 Management Port",
    "driver": "tarnphy", "adminUp": true, "cableConnected": true,
    "speed": 10000, "duplex": 1, "mac": "02:02:00:00:00:08", "mtu": 1500,
    "linkInfo": {
      "supportedPorts": [6],
      "supportedLinkModes": [{"speed": 10000, "duplex": 1, "media": 7}],
      "supportsAutoNegotiation": true,
      "advertisedLinkModes": [{"speed": 10000, "duplex": 1, "media": 7}],
      "advertisedAutoNegotiation": true, "port": 6, "phyAddress": 17, "transceiver": 0,
      "autoNegotiation": true, "supportsWakeOn": false, "supportedWakeOn": [],
      "wakeOn": [], "supportsMessageLevel": true, "messageLevel": 65535, "virtualAddress": ""
    },
    "pause": {"supported": true, "autoNegotiation": false, "rxPause": false, "txPause": true,
              "rxResolution": 0, "txResolution": 0},
    "driverInfo": {"version": "2.0.1", "firmwareVersion": "2.0", "busInfo": "phydev-0"}
  },
  {
    "name": "hwnic9",
    "pci": {"address": "0000:d8:00.0", "vendor": "Zanvex Networks",
            "device": "ZX2520 25GbE SFP28 Dual Port Adapter"},
    "driver": "zxnet", "adminUp": true, "cableConnected": true,
    "speed": 25000, "duplex": 1, "mac": "02:01:00:00:00:09", "mtu": 9000,
    "linkInfo": {
      "supportedPorts": [5, 4, 9],
      "supportedLinkModes": [{"speed": 10000, "duplex": 1, "media": 24}, {"speed": 25000, "duplex": 1, "media": 14}],
      "supportsAutoNegotiation": true,
      "advertisedLinkModes": [{"speed": 25000, "duplex": 1, "media": 14}],
      "advertisedAutoNegotiation": true, "port": 9, "phyAddress": 0, "transceiver": 7,
      "autoNegotiation": true, "supportsWakeOn": false, "supportedWakeOn": [],
      "wakeOn": [], "supportsMessageLevel": true, "messageLevel": 4099, "virtualAddress": ""
    },
    "pause": {"supported": true, "autoNegotiation": false, "rxPause": true, "txPause": true,
              "rxResolution": 0, "txResolution": 0},
    "driverInfo": {"version": "2.20.1.3", "firmwareVersion": "22.31.1014",
                   "busInfo": "0000:d8:00.0"}
  },
  {
    "name": "hwnic10",
    "pci": {"address": "0000:d8:00.1", "vendor": "Zanvex Networks",
            "device": "ZX2520 25GbE SFP28 Dual Port Adapter"},
    "driver": "zxnet", "adminUp": true, "cableConnected": true,
    "speed": 25000, "duplex": 1, "mac": "02:01:00:00:00:0a", "mtu": 9000,
    "linkInfo": {
      "supportedPorts": [5, 4, 9],
      "supportedLinkModes": [{"speed": 10000, "duplex": 1, "media": 24}, {"speed": 25000, "duplex": 1, "media": 14}],
      "supportsAutoNegotiation": true,
      "advertisedLinkModes": [{"speed": 25000, "duplex": 1, "media": 14}],
      "advertisedAutoNegotiation": true, "port": 9, "phyAddress": 0, "transceiver": 7,
      "autoNegotiation": true, "supportsWakeOn": false, "supportedWakeOn": [],
      "wakeOn": [], "supportsMessageLevel": true, "messageLevel": 4099, "virtualAddress": ""
    },
    "pause": {"supported": true, "autoNegotiation": false, "rxPause": true, "txPause": true,
              "rxResolution": 0, "txResolution": 0},
    "driverInfo": {"version": "2.20.1.3", "firmwareVersion": "22.31.1014",
                   "busInfo": "0000:d8:00.1"}
  }
])json";

}  // namespace HostSim::Nic
