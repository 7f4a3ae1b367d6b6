// The audit log: one JSON line per record in the state directory's audit.log. Each record is
// appended with one write under an exclusive lock, so records of concurrent processes never
// interleave, and it is in the file before the call returns. A record that can't be written
// leaves the change it reports standing, and says so on stderr.
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <nlohmann/json.hpp>
#include <string>

#include "audit/ZanvexAudit.h"
#include "hostsim/Control.h"
#include "hostsim/core/StateFiles.h"

namespace {

constexpr char kAuditLogName[] = "audit.log";
constexpr char kClientVariable[] = "SSH_CLIENT";
constexpr char kOperationIdVariable[] = "HOSTSIM_OPID";

// "2026-11-23T01:05:52.123Z".
std::string UtcTimestamp() {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() %
        1000;
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[32];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(text + length, sizeof text - length, ".%03dZ", static_cast<int>(milliseconds));
    return text;
}

// Appends `line` whole, or not at all as far as other writers can tell: an empty string, or
// why it could not be written.
std::string AppendLine(const std::string& path, const std::string& line) {
    const int fd = HostSim::OpenStateFile(path, O_WRONLY | O_APPEND | O_CREAT);
    if (fd < 0) {
        return std::strerror(errno);
    }
    std::string failure;
    if (flock(fd, LOCK_EX) != 0) {
        failure = std::strerror(errno);
    }
    std::size_t done = 0;
    while (failure.empty() && done < line.size()) {
        const ssize_t count = write(fd, line.data() + done, line.size() - done);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            failure = count < 0 ? std::strerror(errno) : "nothing could be written";
        } else {
            done += static_cast<std::size_t>(count);
        }
    }
    close(fd);  // also releases the lock
    return failure;
}

// One line on stderr for a record that is lost, written with one write(2) beside what the
// program prints.
void ReportLostRecord(const char* event, const std::string& path, const std::string& reason) {
    const std::string line = std::string(program_invocation_short_name) + ": the audit record of " +
                             (event != nullptr ? event : "") + " could not be written to " + path +
                             ": " + reason + "\n";
    static_cast<void>(write(STDERR_FILENO, line.data(), line.size()));
}

}  // namespace

extern "C" int ZanvexAudit_LogList(const char* event, const char* user, const char* object,
                                   bool success, const ZanvexAuditItem* items) {
    const std::string directory = HostSim::StateDirectory();
    const std::string path = directory + "/" + kAuditLogName;
    std::string failure;
    try {
        nlohmann::ordered_json record;
        record["event"] = event != nullptr ? event : "";
        record["user"] = user != nullptr ? user : "";
        record["object"] = object != nullptr ? object : "";
        record["outcome"] = success;
        auto& itemList = record["items"] = nlohmann::ordered_json::array();
        for (const ZanvexAuditItem* item = items; item != nullptr && item->key != nullptr; ++item) {
            itemList.push_back({{"key", item->key}, {"value", item->value ? item->value : ""}});
        }
        record["time"] = UtcTimestamp();
        HostSim::MakePrivateDirectory(directory);
        const std::string line =
            record.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
        failure = AppendLine(path, line);
    } catch (const std::exception& error) {
        failure = error.what();
    }
    if (failure.empty()) {
        return 0;
    }
    ReportLostRecord(event, path, failure);
    return -1;
}

namespace KelmCtl::Util::EmitAudit::Details {

const char* GetAuditUser() {
    static const std::string user = [] {
        std::string buffer(16384, '\0');
        passwd entry{};
        passwd* found = nullptr;
        const uid_t uid = geteuid();
        if (getpwuid_r(uid, &entry, buffer.data(), buffer.size(), &found) == 0 && found) {
            return std::string(found->pw_name);
        }
        return std::to_string(uid);
    }();
    return user.c_str();
}

// The environment is read on each call, so that a long-lived process sees the request it serves.
const char* GetAuditIP() {
    thread_local std::string address;
    const char* client = std::getenv(kClientVariable);
    address = client != nullptr ? client : "";
    address.resize(std::min(address.size(), address.find(' ')));
    return address.c_str();
}

const char* GetAuditOpId() {
    thread_local std::string operationId;
    const char* value = std::getenv(kOperationIdVariable);
    operationId = value != nullptr ? value : "";
    return operationId.c_str();
}

}  // namespace KelmCtl::Util::EmitAudit::Details
