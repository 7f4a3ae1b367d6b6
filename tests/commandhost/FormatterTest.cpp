// Each formatter's exact output on small results, and the output parameters a command declares.
#include "commandhost/HostFixture.h"

namespace CommandHostTesting {
namespace {

class FormatterTest : public HostTest {
protected:
    // Prints `root` as `demo nic list` with the formatter named ("" for the default).
    std::string Print(std::shared_ptr<MetaValue> root, const std::string& formatter = "") {
        result_ = std::move(root);
        std::vector<std::string> arguments;
        if (!formatter.empty()) {
            arguments.push_back("--formatter=" + formatter);
        }
        arguments.insert(arguments.end(), {"demo", "nic", "list"});
        EXPECT_EQ(Main(arguments), CommandHost::ExitOk) << err_;
        EXPECT_EQ(err_, "");
        return out_;
    }
};

std::shared_ptr<MetaStruct> Switch() {
    auto port = [](long id, const char* client) {
        auto row = MetaStruct::New("Port");
        row->SetField("Port ID", id);
        row->SetField("Client", client);
        return row;
    };
    auto ports = MetaList::New(CppTools::MetaObj::MetaTypeStruct, port(0, ""));
    ports->Add(port(16, "vm-web"));
    ports->Add(port(17, "kelm0"));
    auto root = MetaStruct::New("Switch");
    root->SetField("Name", "lanswitch0");
    root->SetField("Ports", ports);
    return root;
}

TEST_F(FormatterTest, TableShowsTheDeclaredFieldsWithUnits) {
    list_->SetDefaultOutputParameter("fields:Nic", "Name,Speed,Link Up,Addresses,Comment");
    list_->SetDefaultOutputParameter("units:Nic.Speed", "Mbps");
    EXPECT_EQ(Print(SampleNics()),
              "Name    Speed       Link Up  Addresses               Comment\n"
              "------  ----------  -------  ----------------------  -------\n"
              "hwnic0  10000 Mbps  true     192.0.2.10, 192.0.2.11\n"
              "hwnic1  1000 Mbps   false\n");
}

TEST_F(FormatterTest, TableWithoutFieldsShowsEveryFieldAndNestedStructsInline) {
    auto nics = MetaList::New(CppTools::MetaObj::MetaTypeStruct, SampleNic("p", 0, false, {}));
    nics->Add(SampleNic("hwnic0", 25000, true, {}));
    EXPECT_EQ(Print(nics, "table"),
              "Name    Speed  Link Up  Addresses  Detail                            Comment\n"
              "------  -----  -------  ---------  --------------------------------  -------\n"
              "hwnic0  25000  true                Vendor: Zanvex, Model: ZX-hwnic0\n");
}

TEST_F(FormatterTest, TableOfAnEmptyListShowsItsColumns) {
    list_->SetDefaultOutputParameter("fields:Nic", "Name,Speed,Unknown Field");
    auto empty = MetaList::New(CppTools::MetaObj::MetaTypeStruct, SampleNic("p", 0, false, {}));
    EXPECT_EQ(Print(empty), "Name  Speed\n----  -----\n");
}

TEST_F(FormatterTest, WrapLastFitsTheLastColumnToTheWidth) {
    list_->SetDefaultOutputParameter("fields:Nic", "Name,Comment");
    list_->SetDefaultOutputParameter("wrap-last", "true");
    auto nics = SampleNics();
    auto first = std::static_pointer_cast<MetaStruct>(nics->GetElements()[0]);
    first->SetField("Comment", "Uplink of the management network, teamed with hwnic1");
    host_.SetTerminalWidth(40);
    EXPECT_EQ(Print(nics),
              "Name    Comment\n"
              "------  ---------------------------\n"
              "hwnic0  Uplink of the management\n"
              "        network, teamed with hwnic1\n"
              "hwnic1\n");
}

TEST_F(FormatterTest, SimpleShowsHeadersNestedValuesAndUnits) {
    get_->SetDefaultOutputParameter("header:Nic", "NIC %Name% at %Speed% Mbps, 100% %Bogus%");
    get_->SetDefaultOutputParameter("fields:Nic", "Name,Addresses,Detail,Speed");
    get_->SetDefaultOutputParameter("fields:Detail", "Model");
    get_->SetDefaultOutputParameter("units:Nic.Speed", "Mbps");
    result_ = SampleNics();
    ASSERT_EQ(Main({"demo", "nic", "get"}), CommandHost::ExitOk);
    EXPECT_EQ(out_,
              "NIC hwnic0 at 10000 Mbps, 100% %Bogus%\n"
              "   Name: hwnic0\n"
              "   Addresses:\n"
              "      192.0.2.10\n"
              "      192.0.2.11\n"
              "   Detail:\n"
              "      Model: ZX-hwnic0\n"
              "   Speed: 10000 Mbps\n"
              "\n"
              "NIC hwnic1 at 1000 Mbps, 100% %Bogus%\n"
              "   Name: hwnic1\n"
              "   Addresses:\n"
              "   Detail:\n"
              "      Model: ZX-hwnic1\n"
              "   Speed: 1000 Mbps\n");
}

TEST_F(FormatterTest, SimpleShowsNestedListsOfStructsAsTablesWhereColumnsAreDeclared) {
    get_->SetDefaultOutputParameter("header:Switch", "<NONE>");
    get_->SetDefaultOutputParameter("table-columns:Port", "Client,Port ID");
    result_ = Switch();
    ASSERT_EQ(Main({"demo", "nic", "get"}), CommandHost::ExitOk);
    EXPECT_EQ(out_,
              "Name: lanswitch0\n"
              "Ports:\n"
              "   Client  Port ID\n"
              "   ------  -------\n"
              "   vm-web  16\n"
              "   kelm0   17\n");
}

TEST_F(FormatterTest, SimpleTableColumnsForAnyStructFallBackToAllFields) {
    get_->SetDefaultOutputParameter("table-columns", "Name,Uplinks");
    result_ = Switch();
    ASSERT_EQ(Main({"demo", "nic", "get"}), CommandHost::ExitOk);
    EXPECT_EQ(out_,
              "Name: lanswitch0\n"
              "Ports:\n"
              "   Port ID  Client\n"
              "   -------  ------\n"
              "   16       vm-web\n"
              "   17       kelm0\n");
}

TEST_F(FormatterTest, SimpleWithoutTableColumnsIndentsEachStruct) {
    result_ = Switch();
    ASSERT_EQ(Main({"demo", "nic", "get"}), CommandHost::ExitOk);
    EXPECT_EQ(out_,
              "Name: lanswitch0\n"
              "Ports:\n"
              "   Port ID: 16\n"
              "   Client: vm-web\n"
              "\n"
              "   Port ID: 17\n"
              "   Client: kelm0\n");
}

TEST_F(FormatterTest, StructsInTableCellsFollowTheirDeclaredColumns) {
    get_->SetDefaultOutputParameter("table-columns:NicStatus", "Nic,Local Information");
    get_->SetDefaultOutputParameter("table-columns:LocalInfo", "Flags,Port State");
    auto local = MetaStruct::New("LocalInfo");
    local->SetField("Port State", "Bundled");
    local->SetField("Flags", "SA");
    auto status = MetaStruct::New("NicStatus");
    status->SetField("Nic", "hwnic0");
    status->SetField("Local Information", local);
    auto statuses = MetaList::New(CppTools::MetaObj::MetaTypeStruct, status);
    statuses->Add(status);
    auto lag = MetaStruct::New("LAG");
    lag->SetField("LAG ID", 1L);
    lag->SetField("Nic List", statuses);
    result_ = lag;
    ASSERT_EQ(Main({"demo", "nic", "get"}), CommandHost::ExitOk);
    EXPECT_EQ(out_,
              "LAG ID: 1\n"
              "Nic List:\n"
              "   Nic     Local Information\n"
              "   ------  ------------------------------\n"
              "   hwnic0  Flags: SA, Port State: Bundled\n");
}

TEST_F(FormatterTest, JsonKeepsDeclaredOrderAndPrintsEmptyValuesAsZero) {
    auto nic = SampleNic("hwnic0", 10, true, {"192.0.2.1"});
    auto empty = MetaList::New(CppTools::MetaObj::MetaTypeStruct, SampleNic("p", 0, false, {}));
    empty->Add(nic);
    empty->Add(std::static_pointer_cast<MetaStruct>(
        std::static_pointer_cast<MetaList>(
            ScriptedCommand::New("", {}, ScriptedCommand::Root::NicList, {})
                ->GetOutputSpec()
                ->GetRootObject())
            ->GetPrototype()));
    nic->SetField("Comment", "say \"hi\"\\\n\t\x01");
    EXPECT_EQ(Print(empty, "json"),
              "[\n"
              "  {\n"
              "    \"Name\": \"hwnic0\",\n"
              "    \"Speed\": 10,\n"
              "    \"Link Up\": true,\n"
              "    \"Addresses\": [\n"
              "      \"192.0.2.1\"\n"
              "    ],\n"
              "    \"Detail\": {\n"
              "      \"Vendor\": \"Zanvex\",\n"
              "      \"Model\": \"ZX-hwnic0\"\n"
              "    },\n"
              "    \"Comment\": \"say \\\"hi\\\"\\\\\\n\\t\\u0001\"\n"
              "  },\n"
              "  {\n"
              "    \"Name\": \"\",\n"
              "    \"Speed\": 0,\n"
              "    \"Link Up\": false,\n"
              "    \"Addresses\": [],\n"
              "    \"Detail\": {\n"
              "      \"Vendor\": \"\",\n"
              "      \"Model\": \"\"\n"
              "    },\n"
              "    \"Comment\": \"\"\n"
              "  }\n"
              "]\n");
}

TEST_F(FormatterTest, XmlNamesEachValueByItsType) {
    auto nic = MetaStruct::New("Nic");
    nic->SetField("Name", "a<b & \"c\"");
    nic->SetField("MTU", 9000L);
    nic->SetField("Tags", std::vector<std::string>{});
    nic->SetField("Up", false);
    EXPECT_EQ(Print(nic, "xml"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<output>\n"
              "  <struct name=\"Nic\">\n"
              "    <field name=\"Name\">\n"
              "      <string>a&lt;b &amp; &quot;c&quot;</string>\n"
              "    </field>\n"
              "    <field name=\"MTU\">\n"
              "      <int>9000</int>\n"
              "    </field>\n"
              "    <field name=\"Tags\">\n"
              "      <list/>\n"
              "    </field>\n"
              "    <field name=\"Up\">\n"
              "      <bool>false</bool>\n"
              "    </field>\n"
              "  </struct>\n"
              "</output>\n");
}

TEST_F(FormatterTest, CsvFlattensNestedStructsAndQuotesAsRfc4180) {
    auto nics = SampleNics();
    std::static_pointer_cast<MetaStruct>(nics->GetElements()[1])
        ->SetField("Comment", "spare, \"cold\"\nstandby");
    EXPECT_EQ(Print(nics, "csv"),
              "Name,Speed,Link Up,Addresses,Detail.Vendor,Detail.Model,Comment\n"
              "hwnic0,10000,true,192.0.2.10;192.0.2.11,Zanvex,ZX-hwnic0,\n"
              "hwnic1,1000,false,,Zanvex,ZX-hwnic1,\"spare, \"\"cold\"\"\nstandby\"\n");
}

TEST_F(FormatterTest, KeyValueGivesOneLinePerValue) {
    auto nics = SampleNics();
    std::static_pointer_cast<MetaStruct>(nics->GetElements()[1])->SetField("Comment", "a\\b\nc");
    EXPECT_EQ(Print(nics, "keyvalue"),
              "Nic[0].Name=hwnic0\n"
              "Nic[0].Speed=10000\n"
              "Nic[0].Link Up=true\n"
              "Nic[0].Addresses[0]=192.0.2.10\n"
              "Nic[0].Addresses[1]=192.0.2.11\n"
              "Nic[0].Detail.Vendor=Zanvex\n"
              "Nic[0].Detail.Model=ZX-hwnic0\n"
              "Nic[0].Comment=\n"
              "Nic[1].Name=hwnic1\n"
              "Nic[1].Speed=1000\n"
              "Nic[1].Link Up=false\n"
              "Nic[1].Detail.Vendor=Zanvex\n"
              "Nic[1].Detail.Model=ZX-hwnic1\n"
              "Nic[1].Comment=a\\\\b\\nc\n");
}

TEST_F(FormatterTest, ScalarRoots) {
    EXPECT_EQ(Print(MetaInt::New(42L)), "42\n");
    EXPECT_EQ(Print(MetaString::New("kelm0"), "simple"), "kelm0\n");
    EXPECT_EQ(Print(MetaBool::New(true)), "");
    EXPECT_EQ(Print(MetaBool::New(true), "simple"), "");
    EXPECT_EQ(Print(MetaBool::New(true), "json"), "true\n");
    EXPECT_EQ(Print(MetaString::New("a,b"), "csv"), "\"a,b\"\n");
    EXPECT_EQ(Print(MetaInt::New(), "json"), "0\n");
    EXPECT_EQ(Print(MetaInt::New(7L), "keyvalue"), "int=7\n");
    EXPECT_EQ(Print(MetaBool::New(true), "xml"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<output>\n  <bool>true</bool>\n"
              "</output>\n");
}

TEST_F(FormatterTest, ListsOfStrings) {
    auto names = MetaList::New(CppTools::MetaObj::MetaTypeString);
    names->AddAll({"hwnic0", "hwnic1"});
    EXPECT_EQ(Print(names), "hwnic0\nhwnic1\n");
    EXPECT_EQ(Print(names, "json"), "[\n  \"hwnic0\",\n  \"hwnic1\"\n]\n");
    EXPECT_EQ(Print(names, "keyvalue"), "string[0]=hwnic0\nstring[1]=hwnic1\n");
    EXPECT_EQ(Print(names, "csv"), "hwnic0\nhwnic1\n");
}

TEST_F(FormatterTest, CommandWithoutDefaultPrintsItsScalarPlainly) {
    ASSERT_EQ(Main({"demo", "echo", "--text", "hello there"}), CommandHost::ExitOk);
    EXPECT_EQ(out_, "hello there\n");
    ASSERT_EQ(Main({"demo", "nic", "set", "-n", "hwnic0"}), CommandHost::ExitOk);
    EXPECT_EQ(out_, "");
}

}  // namespace
}  // namespace CommandHostTesting
