// Diagnostics of the live host's NICs through the ethtool ioctl, which alone offers them:
// register dumps, EEPROM access, N-Way restart and the driver's self test.
#include <linux/ethtool.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "hostctl/HostCtlException.h"
#include "hostsim/linux/Nics.h"

namespace HostSim::Linux {

namespace {

// Room for an ioctl record followed by `extra` bytes of data, aligned for any of them.
template <class Head>
class IoctlBuffer {
public:
    explicit IoctlBuffer(std::size_t extra)
        : words_((sizeof(Head) + extra + sizeof(std::uint64_t) - 1) / sizeof(std::uint64_t)) {}
    Head* Record() { return reinterpret_cast<Head*>(words_.data()); }
    unsigned char* Data() { return reinterpret_cast<unsigned char*>(words_.data()) + sizeof(Head); }

private:
    std::vector<std::uint64_t> words_;
};

ethtool_drvinfo DriverInfo(const std::string& name) {
    ethtool_drvinfo info{};
    info.cmd = ETHTOOL_GDRVINFO;
    EthtoolIoctl(name, &info);
    return info;
}

// The number of strings of a string set the driver has; zero when it has none.
std::uint32_t StringCount(const std::string& name, std::uint32_t set) {
    IoctlBuffer<ethtool_sset_info> buffer(sizeof(std::uint32_t));
    buffer.Record()->cmd = ETHTOOL_GSSET_INFO;
    buffer.Record()->sset_mask = 1ull << set;
    EthtoolIoctl(name, buffer.Record());
    if (!(buffer.Record()->sset_mask & (1ull << set))) {
        return 0;
    }
    std::uint32_t count = 0;
    std::memcpy(&count, buffer.Data(), sizeof count);
    return count;
}

std::vector<std::string> Strings(const std::string& name, std::uint32_t set, std::uint32_t count) {
    IoctlBuffer<ethtool_gstrings> buffer(std::size_t{count} * ETH_GSTRING_LEN);
    buffer.Record()->cmd = ETHTOOL_GSTRINGS;
    buffer.Record()->string_set = set;
    buffer.Record()->len = count;
    EthtoolIoctl(name, buffer.Record());
    std::vector<std::string> strings;
    for (std::uint32_t i = 0; i < std::min(count, buffer.Record()->len); ++i) {
        const char* start = reinterpret_cast<const char*>(buffer.Data()) + i * ETH_GSTRING_LEN;
        std::string text(start, strnlen(start, ETH_GSTRING_LEN));
        text.erase(text.find_last_not_of(' ') + 1);
        strings.push_back(std::move(text));
    }
    return strings;
}

}  // namespace

// A dump whose length is no multiple of four ends in a word filled up with zero bytes.
void Nics::DumpRegisters(const std::string& name, std::vector<std::uint32_t>& words) {
    const std::uint32_t length = DriverInfo(name).regdump_len;
    IoctlBuffer<ethtool_regs> buffer(length);
    buffer.Record()->cmd = ETHTOOL_GREGS;
    buffer.Record()->len = length;
    EthtoolIoctl(name, buffer.Record());
    const std::uint32_t dumped = std::min(length, buffer.Record()->len);
    words.assign((dumped + sizeof(std::uint32_t) - 1) / sizeof(std::uint32_t), 0);
    std::memcpy(words.data(), buffer.Data(), dumped);
}

// A range past the EEPROM's end is cut there; one that starts past it asks for nothing, which
// the kernel refuses in its words.
void Nics::GetEeprom(const std::string& name, std::vector<unsigned char>& data,
                     std::uint32_t length, std::uint32_t offset) {
    const std::uint32_t size = DriverInfo(name).eedump_len;
    const std::uint32_t left = offset < size ? size - offset : 0;
    const std::uint32_t wanted = length == 0 ? left : std::min(length, left);
    IoctlBuffer<ethtool_eeprom> buffer(wanted);
    buffer.Record()->cmd = ETHTOOL_GEEPROM;
    buffer.Record()->offset = offset;
    buffer.Record()->len = wanted;
    EthtoolIoctl(name, buffer.Record());
    const std::uint32_t read = std::min(wanted, buffer.Record()->len);
    data.assign(buffer.Data(), buffer.Data() + read);
}

void Nics::SetEeprom(const std::string& name, std::uint32_t magic, std::uint32_t offset,
                     const std::vector<unsigned char>& bytes) {
    IoctlBuffer<ethtool_eeprom> buffer(bytes.size());
    buffer.Record()->cmd = ETHTOOL_SEEPROM;
    buffer.Record()->magic = magic;
    buffer.Record()->offset = offset;
    buffer.Record()->len = static_cast<std::uint32_t>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), buffer.Data());
    EthtoolIoctl(name, buffer.Record());
}

void Nics::GetDriverInfo(const std::string& name, HostCtl::Network::PnicDriverInfo& info) {
    ethtool_drvinfo driver{};
    try {
        driver = DriverInfo(name);
    } catch (const HostCtl::Lib::HostCtlException&) {
        return;
    }
    info.driver = driver.driver;
    info.version = driver.version;
    info.firmwareVersion = driver.fw_version;
    info.busInfo = driver.bus_info;
}

void Nics::RestartNegotiation(const std::string& name) {
    ethtool_value request{};
    request.cmd = ETHTOOL_NWAY_RST;
    EthtoolIoctl(name, &request);
}

// Each test's name and its result (0 passed, else the driver's code) make one line. The kernel
// writes as many results as the driver has tests, so a driver that names none runs none.
void Nics::RunSelfTest(const std::string& name, HostCtl::Network::PnicSelfTestResult& result,
                       bool online) {
    const std::uint32_t count = StringCount(name, ETH_SS_TEST);
    if (count == 0) {
        ThrowKernelError(EOPNOTSUPP);
    }
    const std::vector<std::string> tests = Strings(name, ETH_SS_TEST, count);
    IoctlBuffer<ethtool_test> buffer(std::size_t{count} * sizeof(std::uint64_t));
    buffer.Record()->cmd = ETHTOOL_TEST;
    buffer.Record()->flags = online ? 0 : ETH_TEST_FL_OFFLINE;
    buffer.Record()->len = count;
    EthtoolIoctl(name, buffer.Record());
    result.failed = (buffer.Record()->flags & ETH_TEST_FL_FAILED) ? 1 : 0;
    result.info.clear();
    for (std::uint32_t i = 0; i < std::min(count, buffer.Record()->len); ++i) {
        std::uint64_t value = 0;
        std::memcpy(&value, buffer.Data() + i * sizeof value, sizeof value);
        const std::string test = i < tests.size() ? tests[i] : std::string();
        result.info.push_back(test + ": " + std::to_string(value));
    }
}

}  // namespace HostSim::Linux
