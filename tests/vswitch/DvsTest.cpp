#include "DvsTest.h"

#include "hostsim/Control.h"
#include "hostsim/core/Profile.h"
#include "hostsim/core/Store.h"

namespace DvsTesting {

using CppTools::MetaObj::MetaBool;
using CppTools::MetaObj::MetaInt;
using CppTools::MetaObj::MetaList;
using CppTools::MetaObj::MetaString;

HostSim::Json DvsTest::Host() {
    return HostSim::ExportHost(HostSim::Store());
}

void DvsTest::Load(const HostSim::Json& profile) {
    HostSim::ImportProfile(profile.dump());
}

HostSim::Json& DvsTest::DistSwitch(HostSim::Json& profile) {
    for (auto& dvSwitch : profile["dvswitches"]) {
        if (dvSwitch["name"] == "distswitch0") {
            return dvSwitch;
        }
    }
    throw std::runtime_error("the profile has no distswitch0");
}

HostSim::Json& DvsTest::LagNic(HostSim::Json& profile, std::size_t index) {
    return DistSwitch(profile)["lags"][0]["running"]["nics"][index];
}

void DvsTest::DropPortsOf(HostSim::Json& profile, const std::string& switchName) {
    auto& ports = profile["ports"]["ports"];
    HostSim::Json kept = HostSim::Json::array();
    for (auto& port : ports) {
        if (port["switch"] != switchName) {
            kept.push_back(port);
        }
    }
    ports = kept;
    HostSim::Json interfaces = HostSim::Json::array();
    for (auto& interface : profile["kelmnics"]) {
        if (interface["connection"].value("dvs", "") != switchName) {
            interfaces.push_back(interface);
        }
    }
    profile["kelmnics"] = interfaces;
    for (auto& lcore : profile["ens"]["lcores"]) {
        if (lcore["switch"] == switchName) {
            lcore["switch"] = "null";
        }
    }
}

bool DvsTest::RunBool(const Words& words) {
    auto result = Run(words);
    if (!result.output) {
        ADD_FAILURE() << "not run: " << ::testing::PrintToString(result.hostMessages);
        return false;
    }
    EXPECT_EQ(result.output->GetErrorMessages(), Words{}) << ::testing::PrintToString(words);
    auto root = std::dynamic_pointer_cast<MetaBool>(result.output->GetRootObject());
    EXPECT_TRUE(root) << ::testing::PrintToString(words);
    return root && root->GetValue();
}

long DvsTest::RunInt(const Words& words) {
    auto root = std::dynamic_pointer_cast<MetaInt>(RunOk(words));
    EXPECT_TRUE(root) << ::testing::PrintToString(words);
    return root ? root->GetValue() : 0;
}

std::string DvsTest::RunString(const Words& words) {
    auto root = std::dynamic_pointer_cast<MetaString>(RunOk(words));
    EXPECT_TRUE(root) << ::testing::PrintToString(words);
    return root ? root->GetValue() : std::string();
}

std::vector<Row> RowsIn(const Row& row, const std::string& field) {
    auto list = std::dynamic_pointer_cast<MetaList>(Testing::FieldOf(row, field));
    EXPECT_TRUE(list) << field;
    return list ? Testing::Rows(list) : std::vector<Row>{};
}

}  // namespace DvsTesting
