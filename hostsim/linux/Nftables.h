// The kernel's packet filter through libnftables: command batches in nft's own command
// language, listings read back as JSON; and the few facts of a table that the library's JSON
// leaves out, asked of nf_tables' netlink interface directly.
#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "hostsim/linux/Netlink.h"

struct nft_ctx;

namespace HostSim::Linux {

class Nftables {
public:
    Nftables();
    ~Nftables();
    Nftables(const Nftables&) = delete;
    Nftables& operator=(const Nftables&) = delete;

    // Runs `commands` as one batch, which the kernel applies whole or not at all. A refusal
    // throws HostCtlException with the words of the kernel or of the library.
    void Run(const std::string& commands);
    // Runs a listing command ("list table inet NAME") and returns the "nftables" array of its
    // JSON answer.
    nlohmann::json List(const std::string& command);

private:
    std::string Execute(const std::string& commands);

    nft_ctx* context_;
};

// A table as nf_tables' netlink interface gives it.
struct TableHead {
    std::uint64_t handle = 0;  // new for every table made, never given twice in a namespace
    std::uint32_t flags = 0;
};

// The table of that family (NFPROTO_*) and name, asked on a NETLINK_NETFILTER socket; empty
// when there is none.
std::optional<TableHead> ReadTableHead(NetlinkSocket& netfilter, std::uint8_t family,
                                       const std::string& name);
// The comments of the table's chains, by chain name, from one dump; chains without one are left
// out.
std::map<std::string, std::string> ReadChainComments(NetlinkSocket& netfilter, std::uint8_t family,
                                                     const std::string& name);

}  // namespace HostSim::Linux
