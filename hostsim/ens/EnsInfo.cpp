// Host operations of ENS contexts. The host answers a refusal with false: a duplicate or
// unknown context, a count over the maximum, an unknown switch, a NUMA node out of range.
#include "hostctl/HostCtlException.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/ens/EnsStore.h"
#include "kelmctl/NetworkInfoImpl.h"

namespace KelmCtl::Network {

using HostSim::PassOperation;
using HostSim::Store;

namespace {

std::string IdText(std::uint64_t id) {
    return std::to_string(id);
}

HostSim::Ens::Lcore RequireLcore(std::uint64_t id) {
    auto lcore = HostSim::Ens::LoadLcore(Store(), id);
    if (!lcore) {
        throw HostCtl::Lib::HostCtlException("There is no ENS context " + IdText(id));
    }
    return *lcore;
}

}  // namespace

std::uint32_t NetworkInfoImpl::GetEnsMaxLcores() {
    PassOperation("NetworkInfo::GetEnsMaxLcores");
    return HostSim::Ens::LoadSettings(Store()).maxLcores;
}

bool NetworkInfoImpl::SetEnsMaxLcores(std::uint32_t count) {
    PassOperation("NetworkInfo::SetEnsMaxLcores");
    HostSim::Database& database = Store();
    HostSim::WriteTransaction transaction(database);
    if (count > HostSim::Ens::kMaximumLcores || count < HostSim::Ens::LoadLcores(database).size()) {
        return false;
    }
    database.Query("UPDATE ens SET max_lcores = ?1")
        .Bind(1, static_cast<std::int64_t>(count))
        .Run();
    transaction.Commit();
    return true;
}

std::vector<std::uint64_t> NetworkInfoImpl::GetEnsLcores() {
    PassOperation("NetworkInfo::GetEnsLcores");
    std::vector<std::uint64_t> ids;
    for (const HostSim::Ens::Lcore& lcore : HostSim::Ens::LoadLcores(Store())) {
        ids.push_back(lcore.id);
    }
    return ids;
}

bool NetworkInfoImpl::CreateEnsLcore(std::uint64_t id) {
    PassOperation("NetworkInfo::CreateEnsLcore", IdText(id));
    HostSim::Database& database = Store();
    HostSim::WriteTransaction transaction(database);
    if (id > HostSim::Ens::kMaximumLcoreId || HostSim::Ens::LoadLcore(database, id) ||
        HostSim::Ens::LoadLcores(database).size() >=
            HostSim::Ens::LoadSettings(database).maxLcores) {
        return false;
    }
    HostSim::Ens::Lcore lcore;
    lcore.id = id;
    HostSim::Ens::InsertLcore(database, lcore);
    transaction.Commit();
    return true;
}

// A context that serves a switch is taken off it first.
bool NetworkInfoImpl::DestroyEnsLcore(std::uint64_t id) {
    PassOperation("NetworkInfo::DestroyEnsLcore", IdText(id));
    HostSim::Database& database = Store();
    HostSim::WriteTransaction transaction(database);
    auto lcore = HostSim::Ens::LoadLcore(database, id);
    if (!lcore || lcore->switchName != HostSim::Ens::kNoSwitch) {
        return false;
    }
    database.Query("DELETE FROM ens_lcore WHERE id = ?1")
        .Bind(1, static_cast<std::int64_t>(id))
        .Run();
    transaction.Commit();
    return true;
}

std::string NetworkInfoImpl::GetEnsLcoreSwitch(std::uint64_t id) {
    PassOperation("NetworkInfo::GetEnsLcoreSwitch", IdText(id));
    return RequireLcore(id).switchName;
}

std::int32_t NetworkInfoImpl::GetEnsLcoreAffinity(std::uint64_t id) {
    PassOperation("NetworkInfo::GetEnsLcoreAffinity", IdText(id));
    return RequireLcore(id).affinity;
}

bool NetworkInfoImpl::SetEnsLcoreSwitch(const std::string& switchName, std::uint64_t id) {
    PassOperation("NetworkInfo::SetEnsLcoreSwitch", IdText(id));
    HostSim::Database& database = Store();
    HostSim::WriteTransaction transaction(database);
    if (!HostSim::Ens::LoadLcore(database, id) ||
        (switchName != HostSim::Ens::kNoSwitch && !HostSim::Ens::IsSwitch(database, switchName))) {
        return false;
    }
    database.Query("UPDATE ens_lcore SET switch = ?1 WHERE id = ?2")
        .BindOptional(1, switchName == HostSim::Ens::kNoSwitch ? std::string() : switchName)
        .Bind(2, static_cast<std::int64_t>(id))
        .Run();
    transaction.Commit();
    return true;
}

bool NetworkInfoImpl::SetEnsLcoreAffinity(std::int32_t affinity, std::uint64_t id) {
    PassOperation("NetworkInfo::SetEnsLcoreAffinity", IdText(id));
    HostSim::Database& database = Store();
    HostSim::WriteTransaction transaction(database);
    if (!HostSim::Ens::LoadLcore(database, id) || affinity < -1 ||
        affinity >= HostSim::Ens::LoadSettings(database).numaNodes) {
        return false;
    }
    database.Query("UPDATE ens_lcore SET affinity = ?1 WHERE id = ?2")
        .Bind(1, static_cast<std::int64_t>(affinity))
        .Bind(2, static_cast<std::int64_t>(id))
        .Run();
    transaction.Commit();
    return true;
}

}  // namespace KelmCtl::Network
