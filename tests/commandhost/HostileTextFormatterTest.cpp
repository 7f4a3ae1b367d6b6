// Every formatter stays well-formed whatever bytes a host returns: each output is read back by a
// standard parser of its format (the JSON library, expat for XML, an RFC 4180 reader for CSV,
// the C library's own idea of a terminal's columns for table and simple) on hostile strings.
#include <expat.h>

#include <clocale>
#include <cwchar>
#include <nlohmann/json.hpp>

#include "commandhost/HostFixture.h"

namespace CommandHostTesting {
namespace {

using CppTools::MetaObj::MetaTypeString;
using CppTools::MetaObj::MetaTypeStruct;

constexpr const char* kReplacement = "\xEF\xBF\xBD";

struct HostileText {
    const char* label;
    std::string text;
    std::string json;     // as a JSON reader reads it back
    std::string xml;      // as an XML reader reads it back
    std::string visible;  // a piece that table and simple show
};

const std::vector<HostileText> kHostileTexts{
    {"plain", "hwnic0", "hwnic0", "hwnic0", "hwnic0"},
    {"terminal escape", "esc \x1b[31mred\x1b[0m", "esc \x1b[31mred\x1b[0m",
     std::string("esc ") + kReplacement + "[31mred" + kReplacement + "[0m", "esc \\e[31mred\\e[0m"},
    {"forged row", "line\nfake  row\r\n", "line\nfake  row\r\n", "line\nfake  row\r\n",
     "line\\nfake  row\\r\\n"},
    {"tab", "a\tb", "a\tb", "a\tb", "a\\tb"},
    {"other C0", std::string("bell\x07nul\0end", 12), std::string("bell\x07nul\0end", 12),
     std::string("bell") + kReplacement + "nul" + kReplacement + "end", "bell\\x07nul\\x00end"},
    {"DEL", "del\x7f", "del\x7f", "del\x7f", "del\\x7f"},
    {"C1 control",
     "csi\xc2\x9b"
     "31m",
     "csi\xc2\x9b"
     "31m",
     "csi\xc2\x9b"
     "31m",
     "csi\\u009b31m"},
    {"bidirectional override", "abc\xe2\x80\xaexyz", "abc\xe2\x80\xaexyz", "abc\xe2\x80\xaexyz",
     "abc\\u202exyz"},
    {"invalid UTF-8", "bad\xff\xfe|\xc3(|\xed\xa0\x80|\xf4\x90\x80\x80",
     std::string("bad") + kReplacement + kReplacement + "|" + kReplacement + "(|" + kReplacement +
         kReplacement + kReplacement + "|" + kReplacement + kReplacement + kReplacement +
         kReplacement,
     std::string("bad") + kReplacement + kReplacement + "|" + kReplacement + "(|" + kReplacement +
         kReplacement + kReplacement + "|" + kReplacement + kReplacement + kReplacement +
         kReplacement,
     "bad\\xff\\xfe|\\xc3(|\\xed\\xa0\\x80|\\xf4\\x90\\x80\\x80"},
    {"wide and combining", "\xe6\xbc\xa2\xe5\xad\x97 e\xcc\x81",
     "\xe6\xbc\xa2\xe5\xad\x97 e\xcc\x81", "\xe6\xbc\xa2\xe5\xad\x97 e\xcc\x81",
     "\xe6\xbc\xa2\xe5\xad\x97 e\xcc\x81"},
    {"markup", "<a href=\"x\">&amp;</a> ]]>", "<a href=\"x\">&amp;</a> ]]>",
     "<a href=\"x\">&amp;</a> ]]>", "<a href=\"x\">&amp;</a> ]]>"},
    {"noncharacters", "\xef\xbf\xbe\xef\xbf\xbf", "\xef\xbf\xbe\xef\xbf\xbf",
     std::string(kReplacement) + kReplacement, "\\ufffe\\uffff"},
    {"list punctuation", "Lab;Fake Group\\x", "Lab;Fake Group\\x", "Lab;Fake Group\\x",
     "Lab;Fake Group\\x"},
};

// A "Nic" row per hostile text: its name, a list of it and a neighbour, and a column after them
// whose start shows whether the columns before it line up.
std::shared_ptr<MetaList> HostileRows() {
    auto row = [](const std::string& text) {
        auto nic = MetaStruct::New("Nic");
        nic->SetField("Name", text);
        auto addresses = MetaList::New(MetaTypeString);
        addresses->Add(MetaString::New(text));
        addresses->Add(MetaString::New("x;y"));
        nic->SetField("Addresses", addresses);
        nic->SetField("End", "<");
        return nic;
    };
    auto rows = MetaList::New(MetaTypeStruct, row(""));
    for (const HostileText& hostile : kHostileTexts) {
        rows->Add(row(hostile.text));
    }
    return rows;
}

class HostileTextFormatterTest : public HostTest {
protected:
    std::string Print(const std::string& formatter) {
        result_ = HostileRows();
        EXPECT_EQ(Main({"--formatter=" + formatter, "demo", "nic", "list"}), CommandHost::ExitOk)
            << err_;
        return out_;
    }
};

TEST_F(HostileTextFormatterTest, JsonIsValidAndKeepsEveryValidText) {
    const auto document = nlohmann::json::parse(Print("json"));
    ASSERT_EQ(document.size(), kHostileTexts.size());
    for (size_t i = 0; i < kHostileTexts.size(); ++i) {
        SCOPED_TRACE(kHostileTexts[i].label);
        EXPECT_EQ(document[i]["Name"], kHostileTexts[i].json);
        EXPECT_EQ(document[i]["Addresses"], nlohmann::json::array({kHostileTexts[i].json, "x;y"}));
    }
}

// The text of each <string> element, in document order, as expat reads it.
std::vector<std::string> XmlStrings(const std::string& document) {
    struct Reader {
        std::vector<std::string> strings;
        bool inString = false;
    } reader;
    XML_Parser parser = XML_ParserCreate("UTF-8");
    XML_SetUserData(parser, &reader);
    XML_SetElementHandler(
        parser,
        [](void* data, const XML_Char* name, const XML_Char**) {
            auto* self = static_cast<Reader*>(data);
            if ((self->inString = std::string(name) == "string")) {
                self->strings.emplace_back();
            }
        },
        [](void* data, const XML_Char*) { static_cast<Reader*>(data)->inString = false; });
    XML_SetCharacterDataHandler(parser, [](void* data, const XML_Char* text, int length) {
        auto* self = static_cast<Reader*>(data);
        if (self->inString) {
            self->strings.back().append(text, static_cast<size_t>(length));
        }
    });
    const bool wellFormed =
        XML_Parse(parser, document.data(), static_cast<int>(document.size()), 1) == XML_STATUS_OK;
    EXPECT_TRUE(wellFormed) << XML_ErrorString(XML_GetErrorCode(parser)) << " at line "
                            << XML_GetCurrentLineNumber(parser);
    XML_ParserFree(parser);
    return reader.strings;
}

TEST_F(HostileTextFormatterTest, XmlIsWellFormedAndReplacesWhatXmlCantCarry) {
    const auto strings = XmlStrings(Print("xml"));
    ASSERT_EQ(strings.size(), 4 * kHostileTexts.size());
    for (size_t i = 0; i < kHostileTexts.size(); ++i) {
        SCOPED_TRACE(kHostileTexts[i].label);
        EXPECT_EQ(strings[4 * i], kHostileTexts[i].xml);
        EXPECT_EQ(strings[4 * i + 1], kHostileTexts[i].xml);
    }
}

// RFC 4180: fields separated by commas, records by line feeds, a quoted field may hold both and
// doubles its quotes.
std::vector<std::vector<std::string>> CsvRecords(const std::string& document) {
    std::vector<std::vector<std::string>> records(1, std::vector<std::string>(1));
    bool quoted = false;
    for (size_t i = 0; i < document.size(); ++i) {
        const char c = document[i];
        std::string& field = records.back().back();
        if (quoted && c == '"' && i + 1 < document.size() && document[i + 1] == '"') {
            field.push_back('"');
            ++i;
        } else if (c == '"' && (quoted || field.empty())) {
            quoted = !quoted;
        } else if (!quoted && c == ',') {
            records.back().emplace_back();
        } else if (!quoted && c == '\n') {
            records.emplace_back(1);
        } else {
            field.push_back(c);
        }
    }
    EXPECT_FALSE(quoted);
    EXPECT_EQ(records.back(), std::vector<std::string>(1));
    records.pop_back();
    return records;
}

// The elements of a list cell: ';' separates them, '\' keeps the character after it.
std::vector<std::string> ListElements(const std::string& cell) {
    std::vector<std::string> elements(1);
    for (size_t i = 0; i < cell.size(); ++i) {
        if (cell[i] == '\\' && i + 1 < cell.size()) {
            elements.back().push_back(cell[++i]);
        } else if (cell[i] == ';') {
            elements.emplace_back();
        } else {
            elements.back().push_back(cell[i]);
        }
    }
    return elements;
}

TEST_F(HostileTextFormatterTest, CsvReadsBackEveryCellAndEveryListElement) {
    const auto records = CsvRecords(Print("csv"));
    ASSERT_EQ(records.size(), kHostileTexts.size() + 1);
    EXPECT_EQ(records[0], (std::vector<std::string>{"Name", "Addresses", "End"}));
    for (size_t i = 0; i < kHostileTexts.size(); ++i) {
        SCOPED_TRACE(kHostileTexts[i].label);
        const auto& record = records[i + 1];
        ASSERT_EQ(record.size(), 3u);
        EXPECT_EQ(record[0], kHostileTexts[i].text);
        EXPECT_EQ(ListElements(record[1]),
                  (std::vector<std::string>{kHostileTexts[i].text, "x;y"}));
        EXPECT_EQ(record[2], "<");
    }
}

// The columns `line` takes on a terminal, as the C library counts them; fails the test for
// bytes that are no UTF-8 and for characters a terminal would act on (wcwidth -1).
size_t TerminalColumns(const std::string& line) {
    std::mbstate_t state{};
    size_t columns = 0;
    for (size_t at = 0; at < line.size();) {
        wchar_t character = 0;
        const size_t length = std::mbrtowc(&character, line.data() + at, line.size() - at, &state);
        if (length == static_cast<size_t>(-1) || length == static_cast<size_t>(-2) || length == 0) {
            ADD_FAILURE() << "not UTF-8 at byte " << at << " of: " << line;
            return 0;
        }
        const int width = wcwidth(character);
        EXPECT_GE(width, 0) << "character U+" << std::hex << static_cast<unsigned>(character)
                            << " would reach the terminal in: " << line;
        columns += static_cast<size_t>(std::max(width, 0));
        at += length;
    }
    return columns;
}

class TerminalFormatterTest : public HostileTextFormatterTest {
protected:
    void SetUp() override { ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr); }
    void TearDown() override { std::setlocale(LC_CTYPE, "C"); }

    std::vector<std::string> Lines(const std::string& text) {
        std::vector<std::string> lines;
        for (size_t start = 0; start < text.size();) {
            const size_t end = text.find('\n', start);
            lines.push_back(text.substr(start, end - start));
            start = end + 1;
        }
        return lines;
    }
};

TEST_F(TerminalFormatterTest, TableShowsControlsVisiblyAndAlignsByDisplayWidth) {
    const auto lines = Lines(Print("table"));
    ASSERT_EQ(lines.size(), kHostileTexts.size() + 2);
    // Every row's last column starts where its heading does: the cells before it were padded by
    // the columns they take, wide and combining characters included.
    const size_t endColumn = TerminalColumns(lines[0].substr(0, lines[0].rfind("End")));
    for (size_t i = 0; i < kHostileTexts.size(); ++i) {
        SCOPED_TRACE(kHostileTexts[i].label);
        const std::string& line = lines[i + 2];
        ASSERT_TRUE(line.ends_with("<")) << line;
        EXPECT_EQ(TerminalColumns(line.substr(0, line.size() - 1)), endColumn) << line;
        EXPECT_NE(line.find(kHostileTexts[i].visible), std::string::npos) << line;
    }
}

TEST_F(TerminalFormatterTest, SimpleShowsControlsVisiblyOneValueALine) {
    const auto lines = Lines(Print("simple"));
    size_t names = 0;
    for (const std::string& line : lines) {
        TerminalColumns(line);
        if (line.starts_with("Name: ")) {
            ASSERT_LT(names, kHostileTexts.size());
            EXPECT_NE(line.find(kHostileTexts[names].visible), std::string::npos) << line;
            ++names;
        }
    }
    EXPECT_EQ(names, kHostileTexts.size());
}

}  // namespace
}  // namespace CommandHostTesting
