#include "IpServicesTest.h"

#include "hostsim/core/Profile.h"
#include "hostsim/core/Store.h"

namespace IpServicesTesting {

namespace {

std::string Cell(const std::shared_ptr<CppTools::MetaObj::MetaStruct>& row,
                 const std::string& field) {
    const auto* value = row->GetField(field);
    if (const auto* text = dynamic_cast<const CppTools::MetaObj::MetaString*>(value)) {
        return text->GetValue();
    }
    if (const auto* number = dynamic_cast<const CppTools::MetaObj::MetaInt*>(value)) {
        return std::to_string(number->GetValue());
    }
    ADD_FAILURE() << "no string or int field " << field;
    return {};
}

}  // namespace

std::vector<Words> IpServicesTest::Table(const Words& words, const Words& fields) {
    std::vector<Words> table;
    for (const auto& row : Testing::Rows(RunList(words))) {
        Words cells;
        for (const auto& field : fields) {
            cells.push_back(Cell(row, field));
        }
        table.push_back(cells);
    }
    return table;
}

Words IpServicesTest::Column(const Words& words, const std::string& field) {
    Words column;
    for (const auto& row : Table(words, {field})) {
        column.push_back(row.front());
    }
    return column;
}

void IpServicesTest::Change(const Words& words) {
    EXPECT_EQ(Report(words), (Outcome{{}, true})) << ::testing::PrintToString(words);
}

Outcome IpServicesTest::Report(const Words& words) {
    const auto result = Run(words);
    Outcome outcome;
    outcome.messages = result.hostMessages;
    if (result.output) {
        const auto& messages = result.output->GetErrorMessages();
        outcome.messages.insert(outcome.messages.end(), messages.begin(), messages.end());
        const auto root =
            std::dynamic_pointer_cast<CppTools::MetaObj::MetaBool>(result.output->GetRootObject());
        outcome.trueRoot = root && root->GetValue();
    }
    return outcome;
}

void PrintTo(const Outcome& outcome, std::ostream* out) {
    *out << ::testing::PrintToString(outcome.messages) << (outcome.trueRoot ? " true" : " no root");
}

std::string IpServicesTest::NeighborMac(const std::string& netstack, const std::string& address) {
    const HostSim::Json host = HostSim::ExportHost(HostSim::Store());
    for (const auto& instance : host["routing"]["netstacks"]) {
        if (instance["netstack"] != netstack) {
            continue;
        }
        for (const auto& neighbor : instance["neighbors"]) {
            if (neighbor["address"] == address) {
                return neighbor["mac"].get<std::string>();
            }
        }
    }
    ADD_FAILURE() << "no neighbour " << address << " in " << netstack;
    return {};
}

}  // namespace IpServicesTesting
