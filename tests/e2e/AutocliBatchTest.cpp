// autocli --batch on the simulated host: many changes in one process, from a file or a pipe.
#include <nlohmann/json.hpp>

#include <fstream>

#include "support/CommandTest.h"

namespace {

using ::testing::HasSubstr;
using Testing::RunAutocli;

class AutocliBatch : public ::testing::Test {
protected:
    std::string AdminStatus(const std::string& nic) {
        auto result = RunAutocli({"--formatter=json", "network", "nic", "list"}, state_.Path());
        EXPECT_EQ(result.status, 0) << result.err;
        for (const auto& row : nlohmann::json::parse(result.out)) {
            if (row["Name"] == nic) {
                return row["Admin Status"];
            }
        }
        return "";
    }

    Testing::TemporaryDirectory state_;
};

TEST_F(AutocliBatch, AFileOfChangesAndReadsRunsInOneProcess) {
    const std::string batch = state_.Path() + "/changes";
    std::ofstream(batch) << "# take two NICs down, then show one\n"
                            "network nic down -n hwnic1\n"
                            "network nic down --nic-name 'hwnic2'\n"
                            "\n"
                            "network nic list --formatter=csv\n";
    auto result = RunAutocli({"--batch", batch}, state_.Path());
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(result.out, HasSubstr("hwnic1,0000:02:00.1,tarn1g,Down"));
    EXPECT_EQ(AdminStatus("hwnic2"), "Down");
}

TEST_F(AutocliBatch, StandardInputStopsAtTheFirstFailureWithItsStatus) {
    const std::string pipeline =
        "printf 'network nic down -n hwnic1\\nnetwork nic down -n "
        "hwnic77\\nnetwork nic down -n hwnic2\\n' | " AUTOCLI_BINARY " --batch -";
    auto result = Testing::RunProgram("/bin/sh", {"-c", pipeline}, state_.Path());
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "There is no pnic with name hwnic77\n"
              "autocli: line 2 of the batch failed (exit status 1); the lines after it were not "
              "run.\n");
    EXPECT_EQ(AdminStatus("hwnic1"), "Down");
    EXPECT_EQ(AdminStatus("hwnic2"), "Up");
}

}  // namespace
