#include "hostsim/ens/EnsStore.h"

#include "hostsim/dvs/DvsStore.h"
#include "hostsim/vswitch/VswitchStore.h"

namespace HostSim::Ens {

namespace {

Lcore ReadLcore(const Statement& row) {
    Lcore lcore;
    lcore.id = static_cast<std::uint64_t>(row.Int(0));
    lcore.switchName = row.IsNull(1) ? kNoSwitch : row.Text(1);
    lcore.affinity = static_cast<std::int32_t>(row.Int(2));
    return lcore;
}

}  // namespace

Settings LoadSettings(Database& database) {
    auto query = database.Query("SELECT max_lcores, numa_nodes FROM ens");
    Settings settings;
    if (query.Step()) {
        settings.maxLcores = static_cast<std::uint32_t>(query.Int(0));
        settings.numaNodes = static_cast<std::int32_t>(query.Int(1));
    }
    return settings;
}

std::vector<Lcore> LoadLcores(Database& database) {
    auto query = database.Query("SELECT id, switch, affinity FROM ens_lcore ORDER BY id");
    std::vector<Lcore> lcores;
    while (query.Step()) {
        lcores.push_back(ReadLcore(query));
    }
    return lcores;
}

std::optional<Lcore> LoadLcore(Database& database, std::uint64_t id) {
    if (id > kMaximumLcoreId) {
        return std::nullopt;
    }
    auto query = database.Query("SELECT id, switch, affinity FROM ens_lcore WHERE id = ?1");
    query.Bind(1, static_cast<std::int64_t>(id));
    if (!query.Step()) {
        return std::nullopt;
    }
    return ReadLcore(query);
}

void InsertLcore(Database& database, const Lcore& lcore) {
    database.Query("INSERT INTO ens_lcore (id, switch, affinity) VALUES (?1, ?2, ?3)")
        .Bind(1, static_cast<std::int64_t>(lcore.id))
        .BindOptional(2, lcore.switchName == kNoSwitch ? std::string() : lcore.switchName)
        .Bind(3, static_cast<std::int64_t>(lcore.affinity))
        .Run();
}

bool IsSwitch(Database& database, const std::string& name) {
    return Vswitch::SwitchExists(database, name) || Dvs::SwitchExists(database, name);
}

}  // namespace HostSim::Ens
