// Many autocli processes changing the same rulesets at once lose no change and no record.
#include <future>
#include <set>

#include "AuditLog.h"
#include "support/CommandTest.h"

namespace {

using Testing::ProcessResult;
using Testing::RunAutocli;

constexpr int kWorkers = 8;
constexpr int kChangesPerWorker = 6;

std::string Address(int worker, int change) {
    return "203.0.113." + std::to_string(worker * kChangesPerWorker + change);
}

// Runs `commands` one after the other in each of kWorkers threads at once, each command as an
// autocli process; returns the results that failed.
template <class Commands>
std::vector<ProcessResult> RunWorkers(const std::string& state, Commands commands) {
    std::vector<std::future<std::vector<ProcessResult>>> workers;
    for (int worker = 0; worker < kWorkers; ++worker) {
        workers.push_back(std::async(std::launch::async, [&state, &commands, worker] {
            std::vector<ProcessResult> failed;
            for (const auto& arguments : commands(worker)) {
                auto result = RunAutocli(arguments, state);
                if (result.status != 0) {
                    failed.push_back(std::move(result));
                }
            }
            return failed;
        }));
    }
    std::vector<ProcessResult> failed;
    for (auto& worker : workers) {
        for (auto& result : worker.get()) {
            failed.push_back(std::move(result));
        }
    }
    return failed;
}

std::vector<std::string> Ruleset(std::vector<std::string> words) {
    std::vector<std::string> arguments{"network", "firewall", "ruleset"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    return arguments;
}

TEST(FirewallConcurrency, ProcessesAddingAndRemovingAtOnceLoseNothing) {
    Testing::TemporaryDirectory state;
    // Each worker adds its addresses and a client per address.
    auto added = RunWorkers(state.Path(), [](int worker) {
        std::vector<std::vector<std::string>> commands;
        for (int change = 0; change < kChangesPerWorker; ++change) {
            commands.push_back(
                Ruleset({"allowedip", "add", "-r", "snmp", "-i", Address(worker, change)}));
            commands.push_back(Ruleset({"client", "add", "-r", "nfsClient"}));
        }
        return commands;
    });
    for (const auto& result : added) {
        ADD_FAILURE() << "exit " << result.status << ": " << result.err;
    }
    // Then each removes every other address and client of its own.
    auto removed = RunWorkers(state.Path(), [](int worker) {
        std::vector<std::vector<std::string>> commands;
        for (int change = 0; change < kChangesPerWorker; change += 2) {
            commands.push_back(
                Ruleset({"allowedip", "remove", "-r", "snmp", "-i", Address(worker, change)}));
            commands.push_back(Ruleset({"client", "remove", "-r", "nfsClient"}));
        }
        return commands;
    });
    for (const auto& result : removed) {
        ADD_FAILURE() << "exit " << result.status << ": " << result.err;
    }

    auto list = RunAutocli(
        {"--formatter=json", "network", "firewall", "ruleset", "allowedip", "list", "-r", "snmp"},
        state.Path());
    ASSERT_EQ(list.status, 0) << list.err;
    const auto rows = nlohmann::json::parse(list.out);
    ASSERT_EQ(rows.size(), 1u);
    std::set<std::string> expected;
    for (int worker = 0; worker < kWorkers; ++worker) {
        for (int change = 1; change < kChangesPerWorker; change += 2) {
            expected.insert(Address(worker, change));
        }
    }
    const auto shown = rows[0]["Allowed IP Addresses"].get<std::vector<std::string>>();
    EXPECT_EQ(std::set<std::string>(shown.begin(), shown.end()), expected);
    EXPECT_EQ(shown.size(), expected.size());

    auto clients = RunAutocli(
        {"--formatter=json", "network", "firewall", "ruleset", "client", "get", "-r", "nfsClient"},
        state.Path());
    ASSERT_EQ(clients.status, 0) << clients.err;
    EXPECT_EQ(nlohmann::json::parse(clients.out)["Ruleset Client Count"],
              kWorkers * kChangesPerWorker / 2);

    // One whole record per change, each a success on the ruleset changed.
    const auto records = FirewallTesting::AuditRecords(state.Path());
    EXPECT_EQ(records.size(), static_cast<std::size_t>(kWorkers * kChangesPerWorker * 3 / 2));
    for (const auto& record : records) {
        EXPECT_EQ(record, FirewallTesting::Success("network.fw.rule.update", "snmp"));
    }
}

}  // namespace
