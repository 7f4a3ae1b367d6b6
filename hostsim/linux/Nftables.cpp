#include "hostsim/linux/Nftables.h"

#include <dlfcn.h>
#include <endian.h>
#include <linux/netfilter/nf_tables.h>
#include <linux/netfilter/nfnetlink.h>
#include <nftables/libnftables.h>

#include <cerrno>
#include <cstring>
#include <type_traits>

#include "hostctl/HostCtlException.h"

namespace HostSim::Linux {

using HostCtl::Lib::HostCtlException;

namespace {

// libnftables, opened when the firewall first asks for it: with the five libraries it brings, it
// costs a process about 0.8 ms to map and bind, which no other command should pay.
struct NftablesLibrary {
    decltype(&nft_ctx_new) contextNew;
    decltype(&nft_ctx_free) contextFree;
    decltype(&nft_ctx_buffer_output) bufferOutput;
    decltype(&nft_ctx_buffer_error) bufferError;
    decltype(&nft_ctx_get_output_buffer) outputBuffer;
    decltype(&nft_ctx_get_error_buffer) errorBuffer;
    decltype(&nft_ctx_output_set_flags) setOutputFlags;
    decltype(&nft_run_cmd_from_buffer) runCommands;
};

// Throws HostCtlException naming the library's loader's words when it can't be opened.
const NftablesLibrary& Library() {
    static const NftablesLibrary library = [] {
        void* handle = dlopen("libnftables.so.1", RTLD_NOW | RTLD_LOCAL);
        if (handle == nullptr) {
            throw HostCtlException("The nftables library can't be loaded: " +
                                   std::string(dlerror()));
        }
        const auto find = [handle](auto& function, const char* name) {
            function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(
                dlsym(handle, name));
            if (function == nullptr) {
                throw HostCtlException("The nftables library has no " + std::string(name));
            }
        };
        NftablesLibrary found{};
        find(found.contextNew, "nft_ctx_new");
        find(found.contextFree, "nft_ctx_free");
        find(found.bufferOutput, "nft_ctx_buffer_output");
        find(found.bufferError, "nft_ctx_buffer_error");
        find(found.outputBuffer, "nft_ctx_get_output_buffer");
        find(found.errorBuffer, "nft_ctx_get_error_buffer");
        find(found.setOutputFlags, "nft_ctx_output_set_flags");
        find(found.runCommands, "nft_run_cmd_from_buffer");
        return found;
    }();
    return library;
}

// What the library says of a refusal: the words after "Error: " on its first error line, less
// the library's own lead-in where the kernel refused ("Could not process rule: File exists").
std::string RefusalWords(const std::string& report) {
    constexpr char kMarker[] = "Error: ";
    constexpr char kLeadIn[] = "Could not process rule: ";
    const auto marker = report.find(kMarker);
    if (marker == std::string::npos) {
        const auto end = report.find('\n');
        return report.substr(0, end);
    }
    const auto start = marker + std::strlen(kMarker);
    std::string words = report.substr(start, report.find('\n', start) - start);
    if (words.rfind(kLeadIn, 0) == 0) {
        words.erase(0, std::strlen(kLeadIn));
    }
    return words;
}

Message NetfilterRequest(std::uint8_t command, std::uint16_t flags, std::uint8_t family) {
    Message request(static_cast<std::uint16_t>((NFNL_SUBSYS_NFTABLES << 8) | command), flags);
    auto* header = request.PutExtra<nfgenmsg>();
    header->nfgen_family = family;
    header->version = NFNETLINK_V0;
    return request;
}

std::string Text(const nlattr* attribute) {
    return attribute != nullptr ? mnl_attr_get_str(attribute) : std::string();
}

// The comment among a chain's user data: a run of (type, length, value) entries, the comment
// of type 0 with its terminating zero.
std::string CommentOfUserData(const nlattr* userData) {
    constexpr unsigned char kCommentType = 0;
    if (userData == nullptr) {
        return {};
    }
    const auto* bytes = static_cast<const unsigned char*>(mnl_attr_get_payload(userData));
    const std::size_t size = mnl_attr_get_payload_len(userData);
    for (std::size_t at = 0; at + 2 <= size;) {
        const unsigned char type = bytes[at];
        const std::size_t length = bytes[at + 1];
        if (at + 2 + length > size) {
            break;
        }
        if (type == kCommentType) {
            const char* value = reinterpret_cast<const char*>(bytes + at + 2);
            return std::string(value, strnlen(value, length));
        }
        at += 2 + length;
    }
    return {};
}

}  // namespace

Nftables::Nftables() : context_(Library().contextNew(NFT_CTX_DEFAULT)) {
    if (context_ == nullptr) {
        throw HostCtlException("The nftables library can't make a context: " +
                               std::string(std::strerror(errno)));
    }
    Library().bufferOutput(context_);
    Library().bufferError(context_);
}

Nftables::~Nftables() {
    Library().contextFree(context_);
}

std::string Nftables::Execute(const std::string& commands) {
    if (Library().runCommands(context_, commands.c_str()) != 0) {
        throw HostCtlException(RefusalWords(Library().errorBuffer(context_)));
    }
    return Library().outputBuffer(context_);
}

void Nftables::Run(const std::string& commands) {
    Library().setOutputFlags(context_, 0);
    Execute(commands);
}

nlohmann::json Nftables::List(const std::string& command) {
    Library().setOutputFlags(context_, NFT_CTX_OUTPUT_JSON | NFT_CTX_OUTPUT_HANDLE);
    nlohmann::json listing = nlohmann::json::parse(Execute(command), nullptr, false);
    if (listing.is_discarded() || !listing.contains("nftables")) {
        throw HostCtlException("The nftables library answered \"" + command +
                               "\" with no JSON listing");
    }
    return std::move(listing["nftables"]);
}

std::optional<std::uint64_t> ReadTableHandle(NetlinkSocket& netfilter, std::uint8_t family,
                                             const std::string& name) {
    Message request = NetfilterRequest(NFT_MSG_GETTABLE, 0, family);
    mnl_attr_put_strz(request.Header(), NFTA_TABLE_NAME, name.c_str());
    std::optional<std::uint64_t> handle;
    try {
        netfilter.Exchange(request, [&handle](const nlmsghdr& reply) {
            const auto attributes = ParseAttributes(reply, sizeof(nfgenmsg), NFTA_TABLE_MAX);
            handle = attributes[NFTA_TABLE_HANDLE] != nullptr
                         ? be64toh(mnl_attr_get_u64(attributes[NFTA_TABLE_HANDLE]))
                         : 0;
        });
    } catch (const KernelError& error) {
        if (error.Error() == ENOENT) {
            return std::nullopt;
        }
        throw;
    }
    return handle;
}

std::vector<ChainHead> ReadChains(NetlinkSocket& netfilter, std::uint8_t family,
                                  const std::string& table) {
    Message request = NetfilterRequest(NFT_MSG_GETCHAIN, NLM_F_DUMP, family);
    std::vector<ChainHead> chains;
    netfilter.Exchange(request, [&](const nlmsghdr& reply) {
        const auto attributes = ParseAttributes(reply, sizeof(nfgenmsg), NFTA_CHAIN_MAX);
        if (Text(attributes[NFTA_CHAIN_TABLE]) == table) {
            chains.push_back({Text(attributes[NFTA_CHAIN_NAME]),
                              CommentOfUserData(attributes[NFTA_CHAIN_USERDATA])});
        }
    });
    return chains;
}

}  // namespace HostSim::Linux
