// A netlink socket for requests and dumps, and the error that carries the kernel's own words.
#pragma once

#include <libmnl/libmnl.h>
#include <linux/netlink.h>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "hostctl/HostCtlException.h"

namespace HostSim::Linux {

// A refusal of the kernel: HostCtlException with its words, and the errno value behind them.
class KernelError : public HostCtl::Lib::HostCtlException {
public:
    KernelError(int error, const std::string& detail);
    int Error() const { return error_; }

private:
    int error_;
};

// The kernel's words for an errno value, and for its extended acknowledgement when it sent one:
// "Operation not supported", "Invalid argument: requested channel count exceeds maximum".
std::string KernelWords(int error, const std::string& detail = {});
// Throws KernelError with KernelWords(error).
[[noreturn]] void ThrowKernelError(int error, const std::string& detail = {});

// A message under construction: the header, then the family's fixed header, then attributes,
// put with libmnl's mnl_attr_put_* on Header().
class Message {
public:
    Message(std::uint16_t type, std::uint16_t flags);
    nlmsghdr* Header() { return header_; }
    // Room for the family's fixed header, zeroed.
    template <class T>
    T* PutExtra() {
        return static_cast<T*>(mnl_nlmsg_put_extra_header(header_, sizeof(T)));
    }

private:
    std::unique_ptr<char[]> buffer_;
    nlmsghdr* header_;
};

class NetlinkSocket {
public:
    // A socket of the protocol (NETLINK_ROUTE, NETLINK_GENERIC) in the process's network
    // namespace, asking for extended acknowledgements.
    explicit NetlinkSocket(int protocol);
    ~NetlinkSocket();
    NetlinkSocket(const NetlinkSocket&) = delete;
    NetlinkSocket& operator=(const NetlinkSocket&) = delete;

    // Sends the request and hands each message of the answer to `onReply`: every message of a
    // dump (NLM_F_DUMP), else the reply, if any, before the acknowledgement. A refusal throws
    // HostCtlException with the kernel's words.
    void Exchange(Message& request, const std::function<void(const nlmsghdr&)>& onReply = {});
    // Whether the kernel checks requests strictly and filters dumps by what they name
    // (NETLINK_GET_STRICT_CHK, Linux 4.20); an older kernel ignores it and dumps everything.
    void SetStrictChecks(bool on);

private:
    mnl_socket* socket_;
    unsigned port_;
    unsigned sequence_;
    std::unique_ptr<char[]> buffer_;
};

// The attributes of a message or of a nested attribute, by type; an absent one, or one of a
// type above what was asked for, is null. The table lives inline: a dump parses thousands.
class Attributes {
public:
    static constexpr unsigned kCapacity = 128;
    explicit Attributes(unsigned maximum)
        : maximum_(maximum < kCapacity ? maximum : kCapacity - 1) {}
    const nlattr* operator[](unsigned type) const {
        return type <= maximum_ ? table_[type] : nullptr;
    }
    void Put(const nlattr* attribute);

private:
    unsigned maximum_;
    std::array<const nlattr*, kCapacity> table_{};
};

// The attributes of a message after its fixed header of `extra` bytes, up to type `maximum`.
Attributes ParseAttributes(const nlmsghdr& message, std::size_t extra, unsigned maximum);
// The attributes inside a nested attribute (null: none).
Attributes ParseNested(const nlattr* nest, unsigned maximum);
// The attributes nested in `nest`, in their order: for a list of attributes of one type.
std::vector<const nlattr*> NestedList(const nlattr* nest);

}  // namespace HostSim::Linux
