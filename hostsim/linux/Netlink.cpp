#include "hostsim/linux/Netlink.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

namespace HostSim::Linux {

namespace {

// Large enough for any one message of a dump: a link with its statistics and virtual
// functions is a few kilobytes.
constexpr std::size_t kReceiveBufferSize = 64 * 1024;

// Calls `visit` for each attribute from `start` to `end`. libmnl's loop macros assign from a
// void pointer, which C++ does not take.
template <class Visit>
void ForEachAttribute(const void* start, const void* end, Visit visit) {
    const auto* limit = static_cast<const char*>(end);
    for (auto* attribute = static_cast<const nlattr*>(start);
         mnl_attr_ok(attribute, static_cast<int>(limit - reinterpret_cast<const char*>(attribute)));
         attribute = mnl_attr_next(attribute)) {
        visit(attribute);
    }
}

// The text of an extended acknowledgement, when the error message carries one.
std::string AcknowledgementText(const nlmsghdr& message) {
    if (!(message.nlmsg_flags & NLM_F_ACK_TLVS)) {
        return {};
    }
    const auto* error = static_cast<const nlmsgerr*>(mnl_nlmsg_get_payload(&message));
    std::size_t offset = sizeof(nlmsgerr);
    // Without NLM_F_CAPPED the error message quotes the whole request.
    if (!(message.nlmsg_flags & NLM_F_CAPPED)) {
        offset += error->msg.nlmsg_len - sizeof(nlmsghdr);
    }
    std::string text;
    ForEachAttribute(mnl_nlmsg_get_payload_offset(&message, offset),
                     mnl_nlmsg_get_payload_tail(&message), [&text](const nlattr* attribute) {
                         if (mnl_attr_get_type(attribute) == NLMSGERR_ATTR_MSG) {
                             text = mnl_attr_get_str(attribute);
                         }
                     });
    while (!text.empty() && (text.back() == '\n' || text.back() == '\0')) {
        text.pop_back();
    }
    return text;
}

}  // namespace

std::string KernelWords(int error, const std::string& detail) {
    std::string words = std::strerror(error);
    return detail.empty() ? words : words + ": " + detail;
}

KernelError::KernelError(int error, const std::string& detail)
    : HostCtlException(KernelWords(error, detail)), error_(error) {}

void ThrowKernelError(int error, const std::string& detail) {
    throw KernelError(error, detail);
}

Message::Message(std::uint16_t type, std::uint16_t flags)
    : buffer_(std::make_unique_for_overwrite<char[]>(MNL_SOCKET_BUFFER_SIZE)),
      header_(mnl_nlmsg_put_header(buffer_.get())) {
    header_->nlmsg_type = type;
    header_->nlmsg_flags = NLM_F_REQUEST | flags;
}

NetlinkSocket::NetlinkSocket(int protocol)
    : socket_(mnl_socket_open2(protocol, SOCK_CLOEXEC)),
      port_(0),
      sequence_(static_cast<unsigned>(std::time(nullptr))),
      buffer_(std::make_unique_for_overwrite<char[]>(kReceiveBufferSize)) {
    if (socket_ == nullptr) {
        ThrowKernelError(errno);
    }
    int on = 1;
    mnl_socket_setsockopt(socket_, NETLINK_EXT_ACK, &on, sizeof on);
    mnl_socket_setsockopt(socket_, NETLINK_CAP_ACK, &on, sizeof on);
    if (mnl_socket_bind(socket_, 0, MNL_SOCKET_AUTOPID) < 0) {
        const int error = errno;
        mnl_socket_close(socket_);
        ThrowKernelError(error);
    }
    port_ = mnl_socket_get_portid(socket_);
}

void NetlinkSocket::SetStrictChecks(bool on) {
    int value = on ? 1 : 0;
    mnl_socket_setsockopt(socket_, NETLINK_GET_STRICT_CHK, &value, sizeof value);
}

NetlinkSocket::~NetlinkSocket() {
    mnl_socket_close(socket_);
}

void NetlinkSocket::Exchange(Message& request,
                             const std::function<void(const nlmsghdr&)>& onReply) {
    nlmsghdr* header = request.Header();
    const bool dump = (header->nlmsg_flags & NLM_F_DUMP) == NLM_F_DUMP;
    if (!dump) {
        header->nlmsg_flags |= NLM_F_ACK;
    }
    header->nlmsg_seq = ++sequence_;
    if (mnl_socket_sendto(socket_, header, header->nlmsg_len) < 0) {
        ThrowKernelError(errno);
    }
    for (;;) {
        const ssize_t received = mnl_socket_recvfrom(socket_, buffer_.get(), kReceiveBufferSize);
        if (received < 0) {
            if (errno == EINTR) {
                continue;
            }
            ThrowKernelError(errno);
        }
        int left = static_cast<int>(received);
        for (auto* message = reinterpret_cast<const nlmsghdr*>(buffer_.get());
             mnl_nlmsg_ok(message, left); message = mnl_nlmsg_next(message, &left)) {
            if (!mnl_nlmsg_portid_ok(message, port_) || !mnl_nlmsg_seq_ok(message, sequence_)) {
                continue;
            }
            if (message->nlmsg_type == NLMSG_ERROR) {
                const auto* error = static_cast<const nlmsgerr*>(mnl_nlmsg_get_payload(message));
                if (error->error != 0) {
                    ThrowKernelError(-error->error, AcknowledgementText(*message));
                }
                return;
            }
            if (message->nlmsg_type == NLMSG_DONE) {
                const int status = *static_cast<const int*>(mnl_nlmsg_get_payload(message));
                if (status < 0) {
                    ThrowKernelError(-status);
                }
                return;
            }
            if (onReply) {
                onReply(*message);
            }
        }
    }
}

void Attributes::Put(const nlattr* attribute) {
    const unsigned type = mnl_attr_get_type(attribute);
    if (type <= maximum_) {
        table_[type] = attribute;
    }
}

Attributes ParseAttributes(const nlmsghdr& message, std::size_t extra, unsigned maximum) {
    Attributes attributes(maximum);
    ForEachAttribute(mnl_nlmsg_get_payload_offset(&message, extra),
                     mnl_nlmsg_get_payload_tail(&message),
                     [&attributes](const nlattr* attribute) { attributes.Put(attribute); });
    return attributes;
}

Attributes ParseNested(const nlattr* nest, unsigned maximum) {
    Attributes attributes(maximum);
    if (nest != nullptr) {
        ForEachAttribute(mnl_attr_get_payload(nest),
                         static_cast<const char*>(static_cast<const void*>(nest)) + nest->nla_len,
                         [&attributes](const nlattr* attribute) { attributes.Put(attribute); });
    }
    return attributes;
}

std::vector<const nlattr*> NestedList(const nlattr* nest) {
    std::vector<const nlattr*> attributes;
    if (nest == nullptr) {
        return attributes;
    }
    ForEachAttribute(mnl_attr_get_payload(nest),
                     static_cast<const char*>(static_cast<const void*>(nest)) + nest->nla_len,
                     [&attributes](const nlattr* attribute) { attributes.push_back(attribute); });
    return attributes;
}

}  // namespace HostSim::Linux
