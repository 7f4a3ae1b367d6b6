// The resolver configuration of a netstack, as the C library's resolver reads it: a
// "nameserver ADDRESS" line per server, in the order of use, and the search domains of the
// last "search" or "domain" line. A change rewrites only the lines it has to; comments,
// options and every other line stay where they were.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>

#include "hostsim/linux/Files.h"
#include "hostsim/linux/NameService.h"
#include "hostsim/linux/Netlink.h"
#include "hostsim/linux/Netstack.h"

namespace HostSim::Linux {

namespace {

constexpr char kResolverFile[] = "/etc/resolv.conf";
// The folder whose files `ip netns exec` lays over /etc for a named namespace.
constexpr char kNamespaceEtc[] = "/etc/netns/";
constexpr mode_t kFileMode = 0644;
constexpr mode_t kFolderMode = 0755;

constexpr char kServerKeyword[] = "nameserver";
constexpr char kSearchKeyword[] = "search";
constexpr char kDomainKeyword[] = "domain";

constexpr char kIpv6Switches[] = "/proc/sys/net/ipv6/conf/";

// The words of a line that starts with `keyword` and a blank, up to a comment; none when the
// line is of another kind.
std::optional<std::vector<std::string>> KeywordLine(const std::string& line,
                                                    const std::string& keyword) {
    if (line.compare(0, keyword.size(), keyword) != 0 || line.size() == keyword.size() ||
        (line[keyword.size()] != ' ' && line[keyword.size()] != '\t')) {
        return std::nullopt;
    }
    std::vector<std::string> words;
    std::size_t start = keyword.size();
    for (;;) {
        start = line.find_first_not_of(" \t", start);
        if (start == std::string::npos || line[start] == '#' || line[start] == ';') {
            return words;
        }
        const std::size_t end = line.find_first_of(" \t", start);
        words.push_back(line.substr(start, end - start));
        if (end == std::string::npos) {
            return words;
        }
        start = end;
    }
}

std::optional<std::string> ServerOf(const std::string& line) {
    const auto words = KeywordLine(line, kServerKeyword);
    if (!words || words->empty()) {
        return std::nullopt;
    }
    return NormalAddress(words->front());
}

std::optional<std::vector<std::string>> DomainsOf(const std::string& line) {
    if (auto words = KeywordLine(line, kSearchKeyword)) {
        return words;
    }
    return KeywordLine(line, kDomainKeyword);
}

Live::NameServiceDriver::ResolverConfig Parse(const TextLines& text) {
    Live::NameServiceDriver::ResolverConfig config;
    for (const std::string& line : text.lines) {
        if (auto server = ServerOf(line)) {
            config.servers.push_back(*server);
        } else if (auto domains = DomainsOf(line)) {
            config.domains = *domains;
        }
    }
    return config;
}

// The lines with the servers and domains of `wanted`: a server line stays while its server
// does, and new servers follow the last server line (or end the file); the line that set the
// domains is replaced, or, with no domains left, every search and domain line goes.
TextLines Rewrite(const TextLines& text, const Live::NameServiceDriver::ResolverConfig& current,
                  const Live::NameServiceDriver::ResolverConfig& wanted) {
    std::vector<std::string> remaining = wanted.servers;
    std::ptrdiff_t lastServer = -1;
    std::ptrdiff_t lastDomains = -1;
    for (std::size_t i = 0; i < text.lines.size(); ++i) {
        if (ServerOf(text.lines[i])) {
            lastServer = static_cast<std::ptrdiff_t>(i);
        } else if (DomainsOf(text.lines[i])) {
            lastDomains = static_cast<std::ptrdiff_t>(i);
        }
    }
    const bool domainsChanged = current.domains != wanted.domains;
    TextLines result;
    result.finalNewline = text.finalNewline;
    auto addServers = [&result, &remaining]() {
        for (const std::string& server : remaining) {
            result.lines.push_back(std::string(kServerKeyword) + " " + server);
        }
        remaining.clear();
    };
    auto addDomains = [&result, &wanted]() {
        std::string line = kSearchKeyword;
        for (const std::string& domain : wanted.domains) {
            line += " " + domain;
        }
        result.lines.push_back(line);
    };
    for (std::size_t i = 0; i < text.lines.size(); ++i) {
        const std::string& line = text.lines[i];
        const auto index = static_cast<std::ptrdiff_t>(i);
        if (auto server = ServerOf(line)) {
            const auto kept = std::find(remaining.begin(), remaining.end(), *server);
            if (kept != remaining.end()) {
                result.lines.push_back(line);
                remaining.erase(kept);
            }
        } else if (domainsChanged && DomainsOf(line)) {
            // Earlier lines have no effect while the last one stands; with no domains left,
            // every one goes.
            if (!wanted.domains.empty() && index == lastDomains) {
                addDomains();
            } else if (!wanted.domains.empty()) {
                result.lines.push_back(line);
            }
        } else {
            result.lines.push_back(line);
        }
        if (index == lastServer) {
            addServers();
        }
    }
    const bool appends =
        !remaining.empty() || (domainsChanged && lastDomains < 0 && !wanted.domains.empty());
    if (appends) {
        result.finalNewline = true;
    }
    addServers();
    if (domainsChanged && lastDomains < 0 && !wanted.domains.empty()) {
        addDomains();
    }
    return result;
}

// The file of the netstack, and the one its processes read while it has none of its own.
struct ResolverFiles {
    std::string own;
    std::string seen;
};

ResolverFiles FilesOf(const std::string& netstack) {
    if (netstack == kDefaultNetstack) {
        return {kResolverFile, kResolverFile};
    }
    // Only a netstack that exists has a file; the scope refuses the others in its words.
    { NetstackScope exists(netstack); }
    return {kNamespaceEtc + netstack + "/resolv.conf", kResolverFile};
}

std::string ReadResolverText(const ResolverFiles& files) {
    if (auto text = ReadTextFile(files.own)) {
        return *text;
    }
    return ReadTextFile(files.seen).value_or("");
}

std::string Ipv6SwitchPath(const char* scope) {
    return std::string(kIpv6Switches) + scope + "/disable_ipv6";
}

}  // namespace

TextLines SplitLines(const std::string& text) {
    TextLines result;
    result.finalNewline = text.empty() || text.back() == '\n';
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = text.find('\n', start);
        result.lines.push_back(text.substr(start, end - start));
        if (end == std::string::npos) {
            break;
        }
        start = end + 1;
    }
    return result;
}

std::string JoinLines(const TextLines& text) {
    std::string joined;
    for (std::size_t i = 0; i < text.lines.size(); ++i) {
        joined += text.lines[i];
        if (i + 1 < text.lines.size() || text.finalNewline) {
            joined += '\n';
        }
    }
    return joined;
}

std::string NormalAddress(const std::string& text) {
    char normal[INET6_ADDRSTRLEN];
    in6_addr address{};
    if (inet_pton(AF_INET, text.c_str(), &address) == 1) {
        return inet_ntop(AF_INET, &address, normal, sizeof normal);
    }
    if (inet_pton(AF_INET6, text.c_str(), &address) == 1) {
        return inet_ntop(AF_INET6, &address, normal, sizeof normal);
    }
    return text;
}

NameService::ResolverConfig NameService::ReadResolver(const std::string& netstack) {
    return Parse(SplitLines(ReadResolverText(FilesOf(netstack))));
}

NameService::ResolverConfig NameService::EditResolver(
    const std::string& netstack, const std::function<void(ResolverConfig&)>& change) {
    const ResolverFiles files = FilesOf(netstack);
    const TextLines text = SplitLines(ReadResolverText(files));
    const ResolverConfig current = Parse(text);
    ResolverConfig wanted = current;
    change(wanted);
    if (wanted.servers == current.servers && wanted.domains == current.domains) {
        return wanted;
    }
    if (files.own != files.seen) {
        MakeFolders(files.own.substr(0, files.own.rfind('/')), kFolderMode);
    }
    ReplaceTextFile(files.own, JoinLines(Rewrite(text, current, wanted)), kFileMode);
    return wanted;
}

// IPv6 is on while neither the setting of every link ("all") nor that of links yet to come
// ("default") turns it off. A kernel without IPv6 has neither.
bool NameService::Ipv6Enabled() {
    for (const char* scope : {"all", "default"}) {
        const auto value = ReadTextFile(Ipv6SwitchPath(scope));
        if (!value || value->empty() || value->front() != '0') {
            return false;
        }
    }
    return true;
}

// Takes effect at once, on every link and on those made later; like any sysctl setting it
// lasts until the next boot.
void NameService::SetIpv6Enabled(bool enabled) {
    for (const char* scope : {"default", "all"}) {
        const std::string path = Ipv6SwitchPath(scope);
        const int descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor < 0) {
            ThrowKernelError(errno, path);
        }
        const char value = enabled ? '0' : '1';
        const ssize_t written = write(descriptor, &value, 1);
        const int error = errno;
        close(descriptor);
        if (written != 1) {
            ThrowKernelError(error, path);
        }
    }
}

}  // namespace HostSim::Linux
