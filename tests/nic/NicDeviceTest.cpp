#include "nic/NicDeviceTest.h"

#include "hostsim/Control.h"

namespace NicDeviceTesting {

using Testing::Rows;

void NicDeviceTest::Change(const Words& words) {
    auto result = Run(words);
    ASSERT_TRUE(result.output) << ::testing::PrintToString(words);
    EXPECT_EQ(result.status, CommandHost::ExitOk) << ::testing::PrintToString(words);
    EXPECT_TRUE(result.output->GetErrorMessages().empty())
        << result.output->GetErrorMessages().front();
    auto root =
        std::dynamic_pointer_cast<CppTools::MetaObj::MetaBool>(result.output->GetRootObject());
    ASSERT_TRUE(root);
    EXPECT_TRUE(root->GetValue());
}

std::vector<std::pair<std::string, std::string>> NicDeviceTest::Column(const Words& words,
                                                                       const std::string& key,
                                                                       const std::string& field) {
    std::vector<std::pair<std::string, std::string>> column;
    for (const auto& row : Rows(RunList(words))) {
        const auto* value = row->GetField(field);
        std::string text;
        if (const auto* string = dynamic_cast<const CppTools::MetaObj::MetaString*>(value)) {
            text = string->GetValue();
        } else if (const auto* number = dynamic_cast<const CppTools::MetaObj::MetaInt*>(value)) {
            text = std::to_string(number->GetValue());
        } else if (const auto* flag = dynamic_cast<const CppTools::MetaObj::MetaBool*>(value)) {
            text = flag->GetValue() ? "true" : "false";
        }
        column.emplace_back(Testing::Str(row, key), text);
    }
    return column;
}

std::string NicDeviceTest::MacOf(const std::string& name) {
    return Testing::Str(Testing::RowWhere(RunList({"nic", "list"}), "Name", name), "MAC Address");
}

HostSim::Json NicDeviceTest::ExportedHost() {
    auto result = Testing::RunHostsim({"export"}, StateDirectory());
    EXPECT_EQ(result.status, 0) << result.err;
    return HostSim::Json::parse(result.out);
}

void NicDeviceTest::ImportHost(const HostSim::Json& profile) {
    HostSim::ImportProfile(profile.dump());
}

void NicDeviceTest::UseDevice(const HostSim::Json& device) {
    HostSim::Json profile = ExportedHost();
    auto& devices = profile["nicDevices"];
    bool replaced = false;
    for (auto& entry : devices) {
        if (entry["nic"] == device["nic"]) {
            entry = device;
            replaced = true;
        }
    }
    if (!replaced) {
        devices.push_back(device);
    }
    ImportHost(profile);
}

}  // namespace NicDeviceTesting
