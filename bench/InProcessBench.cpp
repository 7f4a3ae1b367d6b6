// In-process figures: registration of the whole tree, and the list commands of every family on
// hosts grown to a real host's sizes, through the same parse, check and execute path as autocli.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <list>
#include <stdexcept>

#include "frame/Registration.h"
#include "hostsim/core/Json.h"
#include "hostsim/core/Profile.h"
#include "hostsim/core/Store.h"
#include "hostsim/values/LocalMac.h"
#include "support/CommandTest.h"

namespace {

// Makes every namespace and command below `node`, as a walk of the whole tree does.
std::size_t MakeAll(const std::shared_ptr<CppTools::AutoCli::NamespaceNode>& node) {
    std::size_t nodes = 1;
    for (const auto& child : node->GetNamespaceNodes()) {
        nodes += MakeAll(child);
    }
    return nodes;
}

// What a process pays: the plug-in's entry, then the namespaces along one command's path.
void RegisterTree(benchmark::State& state) {
    for (auto _ : state) {
        std::shared_ptr<CppTools::AutoCli::NamespaceNode> root =
            CppTools::AutoCli::Namespace::New();
        AutoCli_RegisterNamespaces(root);
        std::list<std::string> path{"network", "nic", "list"};
        benchmark::DoNotOptimize(root->ResolveNode(path));
    }
}
BENCHMARK(RegisterTree)->Unit(benchmark::kMicrosecond);

// The whole tree of 91 namespaces and 152 commands, every node made.
void RegisterWholeTree(benchmark::State& state) {
    for (auto _ : state) {
        std::shared_ptr<CppTools::AutoCli::NamespaceNode> root =
            CppTools::AutoCli::Namespace::New();
        AutoCli_RegisterNamespaces(root);
        benchmark::DoNotOptimize(MakeAll(root));
    }
}
BENCHMARK(RegisterWholeTree)->Unit(benchmark::kMicrosecond);

// A state directory made by `hostsim init` with the given scale (0: the default host as it is).
class ScaledHost {
public:
    explicit ScaledHost(long scale) {
        std::vector<std::string> arguments{"init"};
        if (scale > 0) {
            arguments.push_back("--scale=" + std::to_string(scale));
        }
        auto result = Testing::RunHostsim(arguments, directory_.Path());
        if (result.status != 0) {
            throw std::runtime_error("hostsim init failed: " + result.err);
        }
        HostSim::UseStateDirectory(directory_.Path());
    }

private:
    Testing::TemporaryDirectory directory_;
};

// Runs `line` in-process over and over, counting the rows of its list; the complexity's N is
// `size` when given, else the rows.
void MeasureRows(benchmark::State& state, const std::vector<std::string>& line, long size = -1) {
    long rows = 0;
    for (auto _ : state) {
        auto result = Testing::PluginHost().Run(line);
        auto list =
            std::dynamic_pointer_cast<CppTools::MetaObj::MetaList>(result.output->GetRootObject());
        rows = list ? static_cast<long>(list->GetCount()) : -1;
    }
    state.counters["rows"] = static_cast<double>(rows);
    state.SetComplexityN(size >= 0 ? size : rows);
}

// NIC listings on hosts scaled up: 11 NICs a copy, to 1,001 NICs.
void RunListing(benchmark::State& state, const std::vector<std::string>& line) {
    ScaledHost host(state.range(0));
    MeasureRows(state, line);
}

void NicList(benchmark::State& state) {
    RunListing(state, {"network", "nic", "list"});
}
BENCHMARK(NicList)
    ->RangeMultiplier(3)
    ->Range(1, 91)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity(benchmark::oN);

void NicQueueLoadBalancerList(benchmark::State& state) {
    RunListing(state, {"network", "nic", "queue", "loadbalancer", "list"});
}
BENCHMARK(NicQueueLoadBalancerList)
    ->Arg(0)
    ->Arg(10)
    ->Arg(30)
    ->Arg(112)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity();

void NicHwCapSupportedList(benchmark::State& state) {
    RunListing(state, {"network", "nic", "hwCap", "supported", "list"});
}
BENCHMARK(NicHwCapSupportedList)
    ->Arg(0)
    ->Arg(10)
    ->Arg(30)
    ->Arg(112)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity();

// The default host grown by `grow`, which adds rows to its exported profile before it is imported
// back.
class GrownHost {
public:
    explicit GrownHost(const std::function<void(HostSim::Json&)>& grow) : host_(0) {
        HostSim::Json profile = HostSim::ExportHost(HostSim::Store());
        grow(profile);
        HostSim::ImportProfile(profile.dump());
    }

private:
    ScaledHost host_;
};

// The `index`-th address of the benchmarking range 198.18.0.0/15.
std::string LoadAddress(long index) {
    const std::uint32_t address = 0xC6120000u + static_cast<std::uint32_t>(index);
    return std::to_string(address >> 24) + "." + std::to_string((address >> 16) & 0xff) + "." +
           std::to_string((address >> 8) & 0xff) + "." + std::to_string(address & 0xff);
}

// The host's own address of `kind` for the `index`-th added row, numbered above the addresses
// the default host and `ip interface add` give out.
std::string LoadMac(HostSim::MacKind kind, long index) {
    return HostSim::LocalMac(kind, 0x10000u + static_cast<std::uint32_t>(index));
}

// `list` grown to `size` entries with copies of `entry(index)`.
void GrowTo(HostSim::Json& list, long size, const std::function<HostSim::Json(long)>& entry) {
    for (long index = 0; static_cast<long>(list.size()) < size; ++index) {
        list.push_back(entry(index));
    }
}

// Standard port groups: lanswitch0 grown to `size` port groups on the whole host.
void PortGroupList(benchmark::State& state) {
    const long size = state.range(0);
    GrownHost host([size](HostSim::Json& profile) {
        long others = 0;
        for (const auto& vswitch : profile["vswitches"]) {
            others += static_cast<long>(vswitch["portGroups"].size());
        }
        auto& portGroups = profile["vswitches"][0]["portGroups"];
        GrowTo(portGroups, size - others + static_cast<long>(portGroups.size()),
               [](long index) -> HostSim::Json {
                   return {{"name", "VM Network " + std::to_string(index + 2)},
                           {"vlanId", index % 4094 + 1}};
               });
    });
    MeasureRows(state, {"network", "vswitch", "standard", "portgroup", "list"});
}
BENCHMARK(PortGroupList)
    ->RangeMultiplier(4)
    ->Range(16, 4096)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity(benchmark::oN);

// Kelm interfaces: copies of kelm0, each with its own name, MAC address, port, IPv4 address and
// port group on lanswitch0 (a port group has one interface at most).
void InterfaceList(benchmark::State& state) {
    const long size = state.range(0);
    GrownHost host([size](HostSim::Json& profile) {
        HostSim::Json model = profile["kelmnics"][0];
        model["tags"] = HostSim::Json::array();
        model["netDump"]["dumper"] = false;
        model["ipConfig"]["ipv6"]["addresses"] = HostSim::Json::array();
        const long existing = static_cast<long>(profile["kelmnics"].size());
        GrowTo(profile["vswitches"][0]["portGroups"],
               static_cast<long>(profile["vswitches"][0]["portGroups"].size()) + size - existing,
               [](long index) -> HostSim::Json {
                   return {{"name", "Kelm Network " + std::to_string(index)},
                           {"vlanId", index % 4094 + 1}};
               });
        GrowTo(profile["kelmnics"], size, [&model](long index) {
            HostSim::Json nic = model;
            nic["connection"] = {{"portGroup", "Kelm Network " + std::to_string(index)}};
            nic["name"] = "kelm" + std::to_string(100 + index);
            nic["mac"] = LoadMac(HostSim::MacKind::KelmInterface, index);
            nic["portId"] = 0x07000000 + index;
            nic["ipConfig"]["ipv4"]["address"] = LoadAddress(index);
            return nic;
        });
    });
    MeasureRows(state, {"network", "ip", "interface", "list"});
}
BENCHMARK(InterfaceList)
    ->RangeMultiplier(4)
    ->Range(4, 1000)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity(benchmark::oN);

// IP services: `ip route ipv4 list` on a host whose default instance has `size` routes more, host
// routes in the benchmarking range beside the default host's own.
void RouteIpv4List(benchmark::State& state) {
    const long size = state.range(0);
    GrownHost host([size](HostSim::Json& profile) {
        auto& routes = profile["routing"]["netstacks"][0]["routes"];
        GrowTo(routes, size + static_cast<long>(routes.size()), [](long index) -> HostSim::Json {
            return {{"network", LoadAddress(index) + "/32"},
                    {"gateway", "192.0.2.254"},
                    {"interface", "kelm0"},
                    {"source", "MANUAL"}};
        });
    });
    MeasureRows(state, {"network", "ip", "route", "ipv4", "list"});
}
BENCHMARK(RouteIpv4List)
    ->RangeMultiplier(10)
    ->Range(10, 10000)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity(benchmark::oN);

// The neighbour cache of the default instance grown by `size` IPv4 neighbours.
void NeighborList(benchmark::State& state) {
    const long size = state.range(0);
    GrownHost host([size](HostSim::Json& profile) {
        auto& neighbors = profile["routing"]["netstacks"][0]["neighbors"];
        GrowTo(neighbors, size + static_cast<long>(neighbors.size()),
               [](long index) -> HostSim::Json {
                   return {{"address", LoadAddress(index)},
                           {"mac", LoadMac(HostSim::MacKind::Neighbor, index)},
                           {"interface", "kelm0"},
                           {"expiry", 1200 - index % 1200},
                           {"type", "dynamic"}};
               });
    });
    MeasureRows(state, {"network", "ip", "neighbor", "list"});
}
BENCHMARK(NeighborList)
    ->RangeMultiplier(10)
    ->Range(10, 10000)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity(benchmark::oN);

// Allowed addresses: the first ruleset grown to `size` of them. The list has a row per ruleset,
// so the complexity is fitted to the addresses.
void AllowedIpList(benchmark::State& state) {
    const long size = state.range(0);
    GrownHost host([size](HostSim::Json& profile) {
        auto& addresses = profile["firewall"]["rulesets"][0]["allowedIps"];
        GrowTo(addresses, size, [](long index) -> HostSim::Json { return LoadAddress(index); });
    });
    MeasureRows(state, {"network", "firewall", "ruleset", "allowedip", "list"}, size);
}
BENCHMARK(AllowedIpList)
    ->RangeMultiplier(4)
    ->Range(16, 1000)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity(benchmark::oN);

// Ports and VMs: the default host with lanswitch0 grown to 4096 ports, 4082 more of them VM ports
// on "VM Network", four to a world; the commands look up the last world and the last port, so
// each walks every port of every switch.
class PortHost {
public:
    static constexpr long kPorts = 4096;

    PortHost() : host_(0) {
        HostSim::Json profile = HostSim::ExportHost(HostSim::Store());
        profile["vswitches"][0]["ports"] = kPorts;
        auto& ports = profile["ports"]["ports"];
        auto& worlds = profile["ports"]["worlds"];
        const HostSim::Json vmPort = ports[3];
        for (long id = 10000; static_cast<long>(ports.size()) < kPorts; ++id) {
            const long world = 2000000 + id / 4;
            if (id % 4 == 0) {
                worlds.push_back({{"id", world}, {"name", "zvx0:vm-load" + std::to_string(id)}});
            }
            HostSim::Json port = vmPort;
            port["id"] = id;
            port["world"] = world;
            ports.push_back(std::move(port));
            lastPort_ = id;
            lastWorld_ = world;
        }
        HostSim::ImportProfile(profile.dump());
    }

    std::string LastPort() const { return std::to_string(lastPort_); }
    std::string LastWorld() const { return std::to_string(lastWorld_); }

private:
    ScaledHost host_;
    long lastPort_ = 0;
    long lastWorld_ = 0;
};

void VmPortList(benchmark::State& state) {
    PortHost host;
    MeasureRows(state, {"network", "vm", "port", "list", "-w", host.LastWorld()});
}
BENCHMARK(VmPortList)->Unit(benchmark::kMillisecond);

void PortStatsGet(benchmark::State& state) {
    PortHost host;
    MeasureRows(state, {"network", "port", "stats", "get", "-p", host.LastPort()});
}
BENCHMARK(PortStatsGet)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
