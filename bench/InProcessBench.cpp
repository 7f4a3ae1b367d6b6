// In-process figures: registration of the whole tree, and `nic list` on the default host and on
// hosts scaled up, through the same parse, check and execute path as autocli.
#include <benchmark/benchmark.h>

#include <fstream>
#include <list>
#include <stdexcept>

#include "frame/Registration.h"
#include "hostsim/core/Json.h"
#include "hostsim/core/Profile.h"
#include "hostsim/core/Store.h"
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

void NicList(benchmark::State& state) {
    ScaledHost host(state.range(0));
    const std::vector<std::string> line{"network", "nic", "list"};
    long rows = 0;
    for (auto _ : state) {
        auto result = Testing::PluginHost().Run(line);
        auto list =
            std::dynamic_pointer_cast<CppTools::MetaObj::MetaList>(result.output->GetRootObject());
        rows = list ? static_cast<long>(list->GetCount()) : -1;
    }
    state.counters["nics"] = static_cast<double>(rows);
    state.SetComplexityN(rows);
}
BENCHMARK(NicList)->Arg(0)->Arg(10)->Arg(30)->Arg(112)->Unit(benchmark::kMicrosecond)->Complexity();

// Runs `line` in-process over and over, counting the rows of its list.
void MeasureRows(benchmark::State& state, const std::vector<std::string>& line) {
    long rows = 0;
    for (auto _ : state) {
        auto result = Testing::PluginHost().Run(line);
        auto list =
            std::dynamic_pointer_cast<CppTools::MetaObj::MetaList>(result.output->GetRootObject());
        rows = list ? static_cast<long>(list->GetCount()) : -1;
    }
    state.counters["rows"] = static_cast<double>(rows);
    state.SetComplexityN(rows);
}

// NIC device listings: one row per NIC, read with the NICs' device features in one query.
void RunListing(benchmark::State& state, const std::vector<std::string>& line) {
    ScaledHost host(state.range(0));
    MeasureRows(state, line);
}

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

// IP services: `ip route ipv4 list` on a host whose default instance has `routes` routes, host
// routes in the benchmarking range 198.18.0.0/15 beside the default host's own.
class RoutedHost {
public:
    explicit RoutedHost(long routes) {
        Testing::RunHostsim({"init"}, directory_.Path());
        const auto exported = Testing::RunHostsim({"export"}, directory_.Path());
        auto profile = HostSim::Json::parse(exported.out);
        auto& table = profile["routing"]["netstacks"][0]["routes"];
        for (long route = 0; route < routes; ++route) {
            const std::uint32_t address = 0xC6120000u + static_cast<std::uint32_t>(route);
            table.push_back({{"network", std::to_string(address >> 24) + "." +
                                             std::to_string((address >> 16) & 0xff) + "." +
                                             std::to_string((address >> 8) & 0xff) + "." +
                                             std::to_string(address & 0xff) + "/32"},
                             {"gateway", "192.0.2.254"},
                             {"interface", "kelm0"},
                             {"source", "MANUAL"}});
        }
        const std::string file = directory_.Path() + "/routed.json";
        std::ofstream(file) << profile.dump();
        if (Testing::RunHostsim({"import", file}, directory_.Path()).status != 0) {
            throw std::runtime_error("hostsim import failed");
        }
        HostSim::UseStateDirectory(directory_.Path());
    }

private:
    Testing::TemporaryDirectory directory_;
};

void RouteIpv4List(benchmark::State& state) {
    RoutedHost host(state.range(0));
    MeasureRows(state, {"network", "ip", "route", "ipv4", "list"});
}
BENCHMARK(RouteIpv4List)
    ->Arg(0)
    ->Arg(1000)
    ->Arg(3000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

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
