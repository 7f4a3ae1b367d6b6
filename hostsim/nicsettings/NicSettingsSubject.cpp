// The NIC settings subject: the nic_settings table, one row per NIC that has settings of its
// own, and the "nicSettings" section of a profile.
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/Subject.h"
#include "hostsim/nic/NicStore.h"
#include "hostsim/nicsettings/NicSettingsStore.h"

namespace HostSim {

namespace {

using HostCtl::Lib::HostCtlException;
using NicSettings::Settings;

constexpr const char* kSchemaSteps[] = {
    "CREATE TABLE nic_settings ("
    " position INTEGER PRIMARY KEY,"
    " name TEXT NOT NULL UNIQUE,"
    " stats TEXT NOT NULL, vlan_stats TEXT, coalesce TEXT,"
    " offload TEXT NOT NULL, software TEXT NOT NULL, rings TEXT NOT NULL)",
};

constexpr const char* kTables[] = {"nic_settings"};

// The copy `copy` of a NIC's settings: the NIC's name and the switch its VLAN counters count
// for are renamed as their subjects rename them.
Settings ScaledSettings(Settings settings, const Scale& scale, unsigned copy) {
    settings.name = scale.Name(settings.name, copy);
    if (settings.vlanStats) {
        settings.vlanStats->switchName = scale.Name(settings.vlanStats->switchName, copy);
    }
    return settings;
}

void ImportSettings(Database& database, const Json& section, const Scale& scale) {
    std::vector<Settings> all;
    for (const auto& entry : section) {
        all.push_back(NicSettings::FromJson(entry));
    }
    std::set<std::string> names;
    for (unsigned copy = 0; copy < scale.Copies(); ++copy) {
        for (const Settings& settings : all) {
            Settings scaled = ScaledSettings(settings, scale, copy);
            if (!Nic::Load(database, scaled.name)) {
                throw HostCtlException("The profile has settings for " + scaled.name +
                                       ", which is no NIC of the host");
            }
            if (!names.insert(scaled.name).second) {
                throw HostCtlException("The profile has more than one set of settings for NIC " +
                                       scaled.name);
            }
            NicSettings::Save(database, scaled);
        }
    }
}

Json ExportSettings(Database& database) {
    return JsonArrayOf(NicSettings::LoadAll(database), NicSettings::ToJson);
}

}  // namespace

extern const Subject nicsettingsSubject;
const Subject nicsettingsSubject = {
    .name = "nicSettings",
    .schemaSteps = kSchemaSteps,
    .tables = kTables,
    .defaultSection = NicSettings::kDefaultSection,
    .importSection = ImportSettings,
    .exportSection = ExportSettings,
};

}  // namespace HostSim
