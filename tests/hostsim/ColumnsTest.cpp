// A column table's walkers: the profile's form of a record in both directions (defaults, nested
// objects, text left out, words, JSON text), and the store's (lists, binds, reads, NULL).
#include <stdexcept>

#include "HostSimTest.h"
#include "hostsim/core/Columns.h"

namespace HostSimTesting {
namespace {

using HostSim::Column;
using HostSim::ColumnDocument;
using HostSim::ColumnWords;
using HostSim::Json;

struct Sample {
    std::string name;
    std::string address;
    std::string vendor;
    std::string note;
    bool up = false;
    std::uint32_t mtu = 0;
    std::int32_t side = 0;
    std::string detail;
};

const ColumnWords kSideWords = {
    [](std::int64_t side) { return Json(side == 0 ? "left" : "right"); },
    [](const Json& word) -> std::int64_t {
        const auto text = word.get<std::string>();
        if (text != "left" && text != "right") {
            throw std::invalid_argument("no side " + text);
        }
        return text == "right" ? 1 : 0;
    },
};

const ColumnDocument kDetailDocument = {
    [](const std::string& text) { return Json::parse(text); },
    [](const Json* value) { return value != nullptr ? value->dump() : std::string("{}"); },
};

const Column<Sample> kColumns[] = {
    {.sql = "name", .member = &Sample::name, .json = "name", .required = true},
    {.sql = "address",
     .member = &Sample::address,
     .json = "address",
     .in = "pci",
     .required = true,
     .nullWhenEmpty = true,
     .omitWhenEmpty = true},
    {.sql = "vendor", .member = &Sample::vendor, .json = "vendor", .in = "pci", .required = true},
    {.sql = "note",
     .member = &Sample::note,
     .json = "note",
     .nullWhenEmpty = true,
     .omitWhenEmpty = true},
    {.sql = "up", .member = &Sample::up, .json = "up", .fallback = true},
    {.sql = "mtu", .member = &Sample::mtu, .json = "mtu", .fallback = 1500},
    {.sql = "side", .member = &Sample::side, .json = "side", .words = &kSideWords},
    {.sql = "detail", .member = &Sample::detail, .json = "detail", .document = &kDetailDocument},
};

Json RoundTrip(const Json& profile) {
    Sample sample;
    HostSim::ColumnsFromJson(kColumns, profile, sample);
    Json exported = Json::object();
    HostSim::ColumnsToJson(kColumns, sample, exported);
    return exported;
}

TEST(Columns, AProfilesObjectComesBackNormalisedInTheTablesOrder) {
    struct Case {
        const char* name;
        const char* profile;
        const char* exported;
    };
    const Case cases[] = {
        {"defaults", R"({"name": "hwnic0"})",
         R"({"name":"hwnic0","up":true,"mtu":1500,"side":"left","detail":{}})"},
        {"nested object with empty text",
         R"({"mtu": 9000, "pci": {"vendor": "", "address": "0000:02:00.0"}, "name": "hwnic1"})",
         R"({"name":"hwnic1","pci":{"address":"0000:02:00.0","vendor":""},"up":true,"mtu":9000,)"
         R"("side":"left","detail":{}})"},
        {"text left out when empty", R"({"name": "hwnic2", "note": "", "up": false})",
         R"({"name":"hwnic2","up":false,"mtu":1500,"side":"left","detail":{}})"},
        {"words and JSON text",
         R"({"name": "hwnic3", "note": "spare", "side": "right", "detail": {"b": [1, 2]}})",
         R"({"name":"hwnic3","note":"spare","up":true,"mtu":1500,"side":"right",)"
         R"("detail":{"b":[1,2]}})"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        const Json exported = RoundTrip(Json::parse(test.profile));
        EXPECT_EQ(exported.dump(), test.exported);
        EXPECT_EQ(RoundTrip(exported), exported);
    }
}

TEST(Columns, WhatAProfileCantGiveIsRefusedNamingIt) {
    struct Case {
        const char* profile;
        const char* words;
    };
    const Case cases[] = {
        {R"({"mtu": 1500})", "'name' not found"},
        {R"({"name": "hwnic0", "pci": {"address": "0000:02:00.0"}})", "'vendor' not found"},
        {R"({"name": "hwnic0", "mtu": -1})", "-1 is not a whole number from 0 to 4294967295"},
        {R"({"name": "hwnic0", "mtu": 1500.5})", "is not a whole number"},
        {R"({"name": "hwnic0", "up": "yes"})", "type must be boolean"},
        {R"({"name": "hwnic0", "side": "up"})", "no side up"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.profile);
        Sample sample;
        try {
            HostSim::ColumnsFromJson(kColumns, Json::parse(test.profile), sample);
            ADD_FAILURE() << "taken";
        } catch (const std::exception& error) {
            EXPECT_THAT(error.what(), ::testing::HasSubstr(test.words));
        }
    }
}

TEST(Columns, TheStoreGetsEveryColumnInTheTablesOrderAndEmptyTextAsNull) {
    EXPECT_EQ(HostSim::ColumnNames(kColumns), "name, address, vendor, note, up, mtu, side, detail");
    EXPECT_EQ(HostSim::ColumnNames(kColumns, "s."),
              "s.name, s.address, s.vendor, s.note, s.up, s.mtu, s.side, s.detail");
    EXPECT_EQ(HostSim::ColumnParameters(2, 3), "?2, ?3, ?4");
    EXPECT_EQ(HostSim::ColumnAssignments(std::span(kColumns).first(2), 3),
              "name = ?3, address = ?4");

    Testing::TemporaryDirectory directory;
    HostSim::Database database(directory.Path() + "/columns.db");
    database.Execute(
        "CREATE TABLE sample (position INTEGER PRIMARY KEY, name TEXT, address TEXT,"
        " vendor TEXT, note TEXT, up INTEGER, mtu INTEGER, side INTEGER, detail TEXT)");
    const std::string insert = "INSERT INTO sample (position, " + HostSim::ColumnNames(kColumns) +
                               ") VALUES (?1, " +
                               HostSim::ColumnParameters(2, std::size(kColumns)) + ")";
    const Sample samples[] = {
        {"hwnic0", "", "", "", true, 1500, 0, "{}"},
        {"hwnic1", "0000:02:00.0", "8086", "spare", false, 4294967295u, 1, R"({"a":1})"},
    };
    std::int64_t position = 0;
    for (const Sample& sample : samples) {
        auto statement = database.Query(insert.c_str());
        statement.Bind(1, position++);
        HostSim::BindColumns(statement, 2, kColumns, sample);
        statement.Run();
    }
    const std::string select = "SELECT position, " + HostSim::ColumnNames(kColumns) +
                               ", address IS NULL, note IS NULL FROM sample ORDER BY position";
    auto row = database.Query(select.c_str());
    const int nulls = 1 + static_cast<int>(std::size(kColumns));
    std::size_t read = 0;
    while (row.Step()) {
        const Sample& expected = samples[read++];
        SCOPED_TRACE(expected.name);
        Sample sample;
        HostSim::ReadColumns(row, 1, kColumns, sample);
        Json stored = Json::object();
        Json wanted = Json::object();
        HostSim::ColumnsToJson(kColumns, sample, stored);
        HostSim::ColumnsToJson(kColumns, expected, wanted);
        EXPECT_EQ(stored, wanted);
        EXPECT_EQ(sample.mtu, expected.mtu);
        EXPECT_EQ(row.Bool(nulls), expected.address.empty());
        EXPECT_EQ(row.Bool(nulls + 1), expected.note.empty());
    }
    EXPECT_EQ(read, std::size(samples));
}

}  // namespace
}  // namespace HostSimTesting
