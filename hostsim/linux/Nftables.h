// The kernel's packet filter through libnftables: command batches in nft's own command
// language, listings read back as JSON; and what the library's JSON leaves out (a table's
// handle alone, the comments of its chains), asked of nf_tables' netlink interface directly.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

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

// The handle of the table of that family (NFPROTO_*) and name, asked on a NETLINK_NETFILTER
// socket: new for every table made, never given twice in a namespace. Empty when there is none.
std::optional<std::uint64_t> ReadTableHandle(NetlinkSocket& netfilter, std::uint8_t family,
                                             const std::string& name);

struct ChainHead {
    std::string name;
    std::string comment;  // empty for none
};

// The chains of the table, in its order, from one dump.
std::vector<ChainHead> ReadChains(NetlinkSocket& netfilter, std::uint8_t family,
                                  const std::string& table);

}  // namespace HostSim::Linux
