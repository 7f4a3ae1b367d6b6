// The tool's entries of /etc/hosts. They stand in a block of their own, between two marker
// lines that the tool writes and recognises:
//     # BEGIN entries of autocli network ip hosts
//     192.0.2.10	build1 build1.example.org	# the build server
//     # END entries of autocli network ip hosts
// Every line outside the block is the system's or the administrator's, and is never changed;
// inside it, lines that are no entry (blank lines, comments) are kept too. The block is added
// at the end of the file with the first entry, and goes when nothing is left in it. A begin
// line without its end line holds the block to the end of the file.
#include <algorithm>

#include "hostsim/linux/Files.h"
#include "hostsim/linux/NameService.h"

namespace HostSim::Linux {

namespace {

using HostSim::NameService::HostsRecord;

constexpr char kHostsFile[] = "/etc/hosts";
constexpr mode_t kFileMode = 0644;
constexpr char kBegin[] = "# BEGIN entries of autocli network ip hosts";
constexpr char kEnd[] = "# END entries of autocli network ip hosts";

// The block's place: the begin line and the end line (the number of lines when it has none);
// both are the number of lines when there is no block.
struct Block {
    std::size_t begin;
    std::size_t end;
    bool found() const { return begin != end; }
};

Block FindBlock(const TextLines& text) {
    const auto& lines = text.lines;
    const auto begin = std::find(lines.begin(), lines.end(), kBegin);
    const auto end = begin == lines.end() ? lines.end() : std::find(begin + 1, lines.end(), kEnd);
    return {static_cast<std::size_t>(begin - lines.begin()),
            static_cast<std::size_t>(end - lines.begin())};
}

// An entry line: the address, the host name, the aliases, and a comment behind "#".
std::optional<HostsRecord> ParseEntry(const std::string& line) {
    HostsRecord record;
    std::vector<std::string> words;
    std::size_t start = 0;
    for (;;) {
        start = line.find_first_not_of(" \t", start);
        if (start == std::string::npos) {
            break;
        }
        if (line[start] == '#') {
            const std::size_t text = line.compare(start, 2, "# ") == 0 ? start + 2 : start + 1;
            record.comment = line.substr(text);
            break;
        }
        const std::size_t end = line.find_first_of(" \t", start);
        words.push_back(line.substr(start, end - start));
        start = end;
    }
    if (words.size() < 2) {
        return std::nullopt;
    }
    record.address = NormalAddress(words[0]);
    record.hostName = words[1];
    record.aliases.assign(words.begin() + 2, words.end());
    return record;
}

std::string FormatEntry(const HostsRecord& record) {
    std::string line = record.address + "\t" + record.hostName;
    for (const std::string& alias : record.aliases) {
        line += " " + alias;
    }
    if (!record.comment.empty()) {
        line += "\t# " + record.comment;
    }
    return line;
}

std::vector<HostsRecord> Entries(const TextLines& text, const Block& block) {
    std::vector<HostsRecord> entries;
    for (std::size_t i = block.begin + 1; i < block.end; ++i) {
        if (auto entry = ParseEntry(text.lines[i])) {
            entries.push_back(std::move(*entry));
        }
    }
    return entries;
}

TextLines ReadHostsLines() {
    return SplitLines(ReadTextFile(kHostsFile).value_or(""));
}

// The file with the block holding `wanted`: an entry line stays while its entry does, and new
// entries close the block.
TextLines Rewrite(const TextLines& text, const Block& block, std::vector<HostsRecord> wanted) {
    TextLines result;
    result.finalNewline = text.finalNewline;
    const auto& lines = text.lines;
    result.lines.assign(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(block.begin));
    std::vector<std::string> inside;
    for (std::size_t i = block.begin + 1; i < block.end && i < lines.size(); ++i) {
        const auto entry = ParseEntry(lines[i]);
        if (!entry) {
            inside.push_back(lines[i]);
            continue;
        }
        const auto kept = std::find(wanted.begin(), wanted.end(), *entry);
        if (kept != wanted.end()) {
            inside.push_back(lines[i]);
            wanted.erase(kept);
        }
    }
    for (const HostsRecord& record : wanted) {
        inside.push_back(FormatEntry(record));
    }
    if (!inside.empty()) {
        result.lines.push_back(kBegin);
        result.lines.insert(result.lines.end(), inside.begin(), inside.end());
        result.lines.push_back(kEnd);
    }
    if (block.end < lines.size()) {
        result.lines.insert(result.lines.end(),
                            lines.begin() + static_cast<std::ptrdiff_t>(block.end) + 1,
                            lines.end());
    } else {
        // The block ends the file.
        result.finalNewline = true;
    }
    return result;
}

}  // namespace

std::vector<HostsRecord> NameService::ReadHosts() {
    const TextLines text = ReadHostsLines();
    return Entries(text, FindBlock(text));
}

void NameService::EditHosts(const std::function<void(std::vector<HostsRecord>&)>& change) {
    const TextLines text = ReadHostsLines();
    const Block block = FindBlock(text);
    const std::vector<HostsRecord> current = Entries(text, block);
    std::vector<HostsRecord> wanted = current;
    change(wanted);
    if (wanted == current) {
        return;
    }
    ReplaceTextFile(kHostsFile, JoinLines(Rewrite(text, block, std::move(wanted))), kFileMode);
}

}  // namespace HostSim::Linux
