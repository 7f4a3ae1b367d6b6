#include "hostsim/ens/EnsStore.h"

#include "hostsim/dvs/DvsStore.h"
#include "hostsim/vswitch/VswitchStore.h"

namespace HostSim::Ens {

namespace {

Lcore ReadLcore(const Statement& row) {
    Lcore lcore;
    ReadColumns(row, 0, kLcoreColumns, lcore);
    if (lcore.switchName.empty()) {
        lcore.switchName = kNoSwitch;
    }
    return lcore;
}

std::string SelectLcores(const char* where) {
    return "SELECT " + ColumnNames(kLcoreColumns) + " FROM ens_lcore " + where;
}

}  // namespace

Settings LoadSettings(Database& database) {
    static const std::string sql = "SELECT " + ColumnNames(kSettingsColumns) + " FROM ens";
    auto query = database.Query(sql.c_str());
    Settings settings;
    if (query.Step()) {
        ReadColumns(query, 0, kSettingsColumns, settings);
    }
    return settings;
}

void InsertSettings(Database& database, const Settings& settings) {
    static const std::string sql = InsertStatement("ens", kSettingsColumns);
    auto insert = database.Query(sql.c_str());
    BindColumns(insert, 1, kSettingsColumns, settings);
    insert.Run();
}

std::vector<Lcore> LoadLcores(Database& database) {
    static const std::string sql = SelectLcores("ORDER BY id");
    auto query = database.Query(sql.c_str());
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
    static const std::string sql = SelectLcores("WHERE id = ?1");
    auto query = database.Query(sql.c_str());
    query.Bind(1, static_cast<std::int64_t>(id));
    if (!query.Step()) {
        return std::nullopt;
    }
    return ReadLcore(query);
}

void InsertLcore(Database& database, const Lcore& lcore) {
    static const std::string sql = InsertStatement("ens_lcore", kLcoreColumns);
    Lcore stored = lcore;
    if (stored.switchName == kNoSwitch) {
        stored.switchName.clear();
    }
    auto insert = database.Query(sql.c_str());
    BindColumns(insert, 1, kLcoreColumns, stored);
    insert.Run();
}

bool IsSwitch(Database& database, const std::string& name) {
    return Vswitch::SwitchExists(database, name) || Dvs::SwitchExists(database, name);
}

}  // namespace HostSim::Ens
