// Netstacks as network namespaces: listing, reading their settings, making and removing them.
#include "hostsim/linux/Netstacks.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/if.h>
#include <linux/magic.h>
#include <linux/rtnetlink.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <sstream>

#include "hostctl/HostCtlException.h"
#include "hostsim/linux/Netstack.h"
#include "hostsim/linux/Sysctl.h"

namespace HostSim::Linux {

using HostCtl::Lib::HostCtlException;
using KelmCtl::Network::NetstackRecord;

namespace {

// tcp_ecn's values by their word.
constexpr const char* kEcnWords[] = {"disabled", "enabled", "echo-only"};

std::string PathOf(const std::string& key) {
    return std::string(kNamedNamespaces) + "/" + key;
}

// A key that can name a file of /run/netns.
bool IsNamespaceName(const std::string& key) {
    return !key.empty() && key.find('/') == std::string::npos && key != "." && key != "..";
}

std::string NoSuchNetstack(const std::string& key) {
    return "There is no netstack instance " + key;
}

// Whether a namespace is bound to the file: a stale name ip netns left behind is not.
bool IsBound(const std::string& path) {
    struct statfs filesystem {};
    return statfs(path.c_str(), &filesystem) == 0 &&
           static_cast<unsigned long>(filesystem.f_type) == NSFS_MAGIC;
}

std::string EcnWord(const std::string& value) {
    const int number = std::atoi(value.c_str());
    if (value.find_first_not_of("0123456789") == std::string::npos && number >= 0 &&
        number < static_cast<int>(std::size(kEcnWords))) {
        return kEcnWords[number];
    }
    return value;
}

// The record of a netstack, with the settings of its namespace when it is bound.
NetstackRecord ReadRecord(const std::string& key) {
    NetstackRecord record;
    record.key = key;
    record.name = key;
    record.up = key == kDefaultNetstack || IsBound(PathOf(key));
    if (!record.up) {
        return record;
    }
    NetstackScope scope(key);
    record.congestionControl = ReadNetSetting("ipv4/tcp_congestion_control").value_or("");
    record.ecn = EcnWord(ReadNetSetting("ipv4/tcp_ecn").value_or(""));
    record.ipv6 = ReadNetSetting("ipv6/conf/all/disable_ipv6").value_or("1") == "0";
    record.currentIpv6 = record.ipv6;
    return record;
}

// Makes /run/netns a mount point whose mounts propagate to every mount namespace, as ip netns
// does, so that a namespace bound here is seen from all of them.
void PrepareNamedNamespaces() {
    if (mkdir(kNamedNamespaces, 0755) != 0 && errno != EEXIST) {
        ThrowKernelError(errno, kNamedNamespaces);
    }
    if (mount("", kNamedNamespaces, "none", MS_SHARED | MS_REC, nullptr) == 0) {
        return;
    }
    if (errno != EINVAL ||
        mount(kNamedNamespaces, kNamedNamespaces, "none", MS_BIND | MS_REC, nullptr) != 0 ||
        mount("", kNamedNamespaces, "none", MS_SHARED | MS_REC, nullptr) != 0) {
        ThrowKernelError(errno, kNamedNamespaces);
    }
}

// Binds a new network namespace to the empty file `path`: the calling thread enters a new
// namespace, binds it, and returns to its own.
void BindNewNamespace(const std::string& path) {
    const int home = open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
    if (home < 0) {
        ThrowKernelError(errno, path);
    }
    if (unshare(CLONE_NEWNET) != 0) {
        const int error = errno;
        close(home);
        ThrowKernelError(error, path);
    }
    const int bound = mount("/proc/thread-self/ns/net", path.c_str(), "none", MS_BIND, nullptr);
    const int error = errno;
    // A thread left in the new namespace would act on the wrong links.
    if (setns(home, CLONE_NEWNET) != 0) {
        std::abort();
    }
    close(home);
    if (bound != 0) {
        ThrowKernelError(error, path);
    }
}

}  // namespace

std::vector<NetstackRecord> Netstacks::LoadAll() {
    std::vector<NetstackRecord> records;
    records.push_back(ReadRecord(kDefaultNetstack));
    std::vector<std::string> names;
    if (DIR* folder = opendir(kNamedNamespaces)) {
        while (const dirent* entry = readdir(folder)) {
            if (IsNamespaceName(entry->d_name)) {
                names.emplace_back(entry->d_name);
            }
        }
        closedir(folder);
    }
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) {
        records.push_back(ReadRecord(name));
    }
    return records;
}

std::optional<NetstackRecord> Netstacks::Load(const std::string& key) {
    if (key != kDefaultNetstack) {
        struct stat file {};
        if (!IsNamespaceName(key) || lstat(PathOf(key).c_str(), &file) != 0) {
            return std::nullopt;
        }
    }
    return ReadRecord(key);
}

void Netstacks::Add(const std::string& key) {
    if (key == kDefaultNetstack) {
        throw HostCtlException("Netstack instance " + key + " already exists");
    }
    if (!IsNamespaceName(key)) {
        throw HostCtlException("A netstack instance can't be named " + key);
    }
    PrepareNamedNamespaces();
    const std::string path = PathOf(key);
    const int file = open(path.c_str(), O_RDONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0);
    if (file < 0) {
        if (errno == EEXIST) {
            throw HostCtlException("Netstack instance " + key + " already exists");
        }
        ThrowKernelError(errno, path);
    }
    close(file);
    try {
        BindNewNamespace(path);
    } catch (const HostCtlException&) {
        unlink(path.c_str());
        throw;
    }
}

void Netstacks::RequireUnused(const std::string& key) {
    NetlinkSocket& socket = sockets_.Open(key);
    Message links(RTM_GETLINK, NLM_F_DUMP);
    links.PutExtra<ifinfomsg>()->ifi_family = AF_UNSPEC;
    mnl_attr_put_u32(links.Header(), IFLA_EXT_MASK, RTEXT_FILTER_SKIP_STATS);
    std::string user;
    socket.Exchange(links, [&user](const nlmsghdr& reply) {
        const auto* info = static_cast<const ifinfomsg*>(mnl_nlmsg_get_payload(&reply));
        const auto attributes = ParseAttributes(reply, sizeof(ifinfomsg), IFLA_IFNAME);
        if (user.empty() && (info->ifi_flags & IFF_LOOPBACK) == 0 &&
            attributes[IFLA_IFNAME] != nullptr) {
            user = mnl_attr_get_str(attributes[IFLA_IFNAME]);
        }
    });
    if (!user.empty()) {
        sockets_.CloseNamed();
        throw HostCtlException("Netstack instance " + key + " is in use by " + user);
    }
    Message routes(RTM_GETROUTE, NLM_F_DUMP);
    routes.PutExtra<rtmsg>()->rtm_family = AF_UNSPEC;
    std::string route;
    socket.Exchange(routes, [&route](const nlmsghdr& reply) {
        const auto* header = static_cast<const rtmsg*>(mnl_nlmsg_get_payload(&reply));
        const auto attributes = ParseAttributes(reply, sizeof(rtmsg), RTA_MAX);
        const std::uint32_t table = U32Or(attributes[RTA_TABLE], header->rtm_table);
        if (!route.empty() || table != RT_TABLE_MAIN || header->rtm_protocol == RTPROT_KERNEL) {
            return;
        }
        const int family = header->rtm_family;
        std::string network = AddressText(family, attributes[RTA_DST]);
        if (network.empty()) {
            network = family == AF_INET6 ? "::" : "0.0.0.0";
        }
        route = network + "/" + std::to_string(header->rtm_dst_len);
    });
    sockets_.CloseNamed();
    if (!route.empty()) {
        throw HostCtlException("Netstack instance " + key + " holds the route to " + route);
    }
}

void Netstacks::Remove(const std::string& key) {
    if (key == kDefaultNetstack) {
        throw HostCtlException("The default netstack instance " + key + " can't be removed");
    }
    const std::string path = PathOf(key);
    struct stat file {};
    if (!IsNamespaceName(key) || lstat(path.c_str(), &file) != 0) {
        throw HostCtlException(NoSuchNetstack(key));
    }
    if (IsBound(path)) {
        RequireUnused(key);
        if (umount2(path.c_str(), MNT_DETACH) != 0) {
            ThrowKernelError(errno, path);
        }
    }
    if (unlink(path.c_str()) != 0) {
        ThrowKernelError(errno, path);
    }
}

void Netstacks::SetCongestionControl(const std::string& key, const std::string& name) {
    NetstackScope scope(key);
    WriteNetSetting("ipv4/tcp_congestion_control", name);
}

void Netstacks::SetEcn(const std::string& key, const std::string& status) {
    const auto* word = std::find(std::begin(kEcnWords), std::end(kEcnWords), status);
    if (word == std::end(kEcnWords)) {
        throw HostCtlException("ECN status " + status +
                               " is not one of disabled, enabled and echo-only");
    }
    NetstackScope scope(key);
    WriteNetSetting("ipv4/tcp_ecn", std::to_string(word - std::begin(kEcnWords)));
}

std::vector<std::string> Netstacks::CongestionControlAlgorithms() {
    std::istringstream names(ReadNetSetting("ipv4/tcp_available_congestion_control").value_or(""));
    std::vector<std::string> algorithms;
    for (std::string name; names >> name;) {
        algorithms.push_back(name);
    }
    return algorithms;
}

}  // namespace HostSim::Linux
