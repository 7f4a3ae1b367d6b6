// Reading the audit log of a state directory, for checks on the records commands leave.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "support/CommandTest.h"

namespace FirewallTesting {

using Items = std::vector<std::pair<std::string, std::string>>;

// A record without its user and time.
struct Record {
    std::string event;
    std::string object;
    bool outcome = false;
    Items items;
    bool operator==(const Record&) const = default;
};

inline void PrintTo(const Record& record, std::ostream* out) {
    *out << "{" << record.event << ", " << record.object << ", "
         << (record.outcome ? "true" : "false") << ", [";
    for (const auto& [key, value] : record.items) {
        *out << " " << key << "=" << value;
    }
    *out << " ]}";
}

// Every record of <stateDirectory>/audit.log as written, in file order; a line that is not JSON
// fails the test.
inline std::vector<nlohmann::ordered_json> AuditLines(const std::string& stateDirectory) {
    std::vector<nlohmann::ordered_json> lines;
    std::ifstream log(stateDirectory + "/audit.log");
    std::string line;
    while (std::getline(log, line)) {
        auto record = nlohmann::ordered_json::parse(line, nullptr, false);
        EXPECT_FALSE(record.is_discarded()) << "not a JSON record: " << line;
        lines.push_back(std::move(record));
    }
    return lines;
}

inline std::vector<Record> AuditRecords(const std::string& stateDirectory) {
    std::vector<Record> records;
    for (const auto& line : AuditLines(stateDirectory)) {
        if (line.is_discarded()) {
            continue;
        }
        Record record{line.at("event"), line.at("object"), line.at("outcome"), {}};
        for (const auto& item : line.at("items")) {
            record.items.emplace_back(item.at("key"), item.at("value"));
        }
        records.push_back(std::move(record));
    }
    return records;
}

// A command test that reads the records its commands leave.
class AuditedCommandTest : public Testing::CommandTest {
protected:
    std::vector<Record> Records() { return AuditRecords(StateDirectory()); }
};

inline Record Success(std::string event, std::string object) {
    return {std::move(event), std::move(object), true, {}};
}

inline Record Failure(std::string event, std::string object, std::string reason) {
    return {std::move(event), std::move(object), false, {{"reason", std::move(reason)}}};
}

}  // namespace FirewallTesting
