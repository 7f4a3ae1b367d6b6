// The ENS subject: the ens table (one row: the maximum of contexts and the host's NUMA nodes)
// and the ens_lcore table, and the "ens" section of a profile.
#include <algorithm>
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/JsonMember.h"
#include "hostsim/core/Subject.h"
#include "hostsim/ens/EnsStore.h"

namespace HostSim {

namespace {

using HostCtl::Lib::HostCtlException;

constexpr const char* kSchemaSteps[] = {
    "CREATE TABLE ens (max_lcores INTEGER NOT NULL, numa_nodes INTEGER NOT NULL);"
    "CREATE TABLE ens_lcore ("
    " position INTEGER PRIMARY KEY,"
    " id INTEGER NOT NULL UNIQUE, switch TEXT, affinity INTEGER NOT NULL);",
};

constexpr const char* kTables[] = {"ens_lcore", "ens"};

void ImportEns(Database& database, const Json& section, const Scale& scale) {
    Ens::Settings settings;
    const std::uint64_t maxLcores = section.value("maxLcores", 0u);
    ColumnsFromJson(Ens::kSettingsColumns, section, settings);
    if (settings.numaNodes < 1 || settings.numaNodes > 64) {
        throw HostCtlException("The host's NUMA nodes " + std::to_string(settings.numaNodes) +
                               " are out of range (1-64)");
    }
    std::vector<Ens::Lcore> lcores;
    std::uint64_t stride = 1;
    for (const Json& json : ArrayMember(section, "lcores")) {
        Ens::Lcore lcore;
        ColumnsFromJson(Ens::kLcoreColumns, json, lcore);
        if (lcore.affinity < -1 || lcore.affinity >= settings.numaNodes) {
            throw HostCtlException("ENS context " + std::to_string(lcore.id) + " has affinity " +
                                   std::to_string(lcore.affinity) + ", but the host has " +
                                   std::to_string(settings.numaNodes) + " NUMA nodes");
        }
        stride = std::max(stride, lcore.id + 1);
        lcores.push_back(std::move(lcore));
    }
    if (maxLcores > Ens::kMaximumLcores) {
        throw HostCtlException("The host allows at most " + std::to_string(Ens::kMaximumLcores) +
                               " ENS contexts, not " + std::to_string(maxLcores));
    }
    if (lcores.size() > maxLcores) {
        throw HostCtlException("The profile has more ENS contexts than its maximum of " +
                               std::to_string(maxLcores));
    }
    // Every copy brings its maximum and its contexts until the host's own limits are reached:
    // the maximum stops at the most the host allows, and copies whose contexts would pass it or
    // the highest context id get none.
    settings.maxLcores = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(maxLcores * scale.Copies(), Ens::kMaximumLcores));
    Ens::InsertSettings(database, settings);
    std::set<std::uint64_t> ids;
    for (unsigned copy = 0; copy < scale.Copies(); ++copy) {
        const std::uint64_t highest = copy * stride + stride - 1;
        if (copy > 0 &&
            (ids.size() + lcores.size() > settings.maxLcores || highest > Ens::kMaximumLcoreId)) {
            break;
        }
        for (Ens::Lcore lcore : lcores) {
            lcore.id += copy * stride;
            if (lcore.id > Ens::kMaximumLcoreId || !ids.insert(lcore.id).second) {
                throw HostCtlException("ENS context id " + std::to_string(lcore.id) +
                                       " is repeated or out of range (0-" +
                                       std::to_string(Ens::kMaximumLcoreId) + ")");
            }
            if (lcore.switchName != Ens::kNoSwitch) {
                lcore.switchName = scale.Name(lcore.switchName, copy);
                if (!Ens::IsSwitch(database, lcore.switchName)) {
                    throw HostCtlException("ENS context " + std::to_string(lcore.id) + " serves " +
                                           lcore.switchName + ", which is no switch of this host");
                }
            }
            Ens::InsertLcore(database, lcore);
        }
    }
}

Json ExportEns(Database& database) {
    const Ens::Settings settings = Ens::LoadSettings(database);
    Json section = {{"maxLcores", settings.maxLcores}};
    ColumnsToJson(Ens::kSettingsColumns, settings, section);
    Json& lcores = section["lcores"] = Json::array();
    for (const Ens::Lcore& lcore : Ens::LoadLcores(database)) {
        ColumnsToJson(Ens::kLcoreColumns, lcore, lcores.emplace_back(Json::object()));
    }
    return section;
}

}  // namespace

extern const Subject ensSubject;
const Subject ensSubject = {
    .name = "ens",
    .schemaSteps = kSchemaSteps,
    .tables = kTables,
    .defaultSection = Ens::kDefaultSection,
    .importSection = ImportEns,
    .exportSection = ExportEns,
};

}  // namespace HostSim
