// The audit log: one JSON line per record in the state directory's audit.log. Each record is
// appended with one write under an exclusive lock, so records of concurrent processes never
// interleave, and it is in the file before the call returns.
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "audit/ZanvexAudit.h"
#include "hostsim/Control.h"

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

// Appends `line` whole, or not at all as far as other writers can tell.
bool AppendLine(const std::string& path, const std::string& line) {
    const int fd = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0640);
    if (fd < 0) {
        return false;
    }
    bool written = flock(fd, LOCK_EX) == 0;
    std::size_t done = 0;
    while (written && done < line.size()) {
        const ssize_t count = write(fd, line.data() + done, line.size() - done);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        written = count > 0;
        done += written ? static_cast<std::size_t>(count) : 0;
    }
    close(fd);  // also releases the lock
    return written;
}

// Makes the directory, private to its owner, when it is not there.
void MakePrivateDirectory(const std::filesystem::path& directory) {
    if (std::filesystem::is_directory(directory)) {
        return;
    }
    std::filesystem::create_directories(directory);
    std::filesystem::permissions(directory, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::replace);
}

}  // namespace

extern "C" int ZanvexAudit_LogList(const char* event, const char* user, const char* object,
                                   bool success, const ZanvexAuditItem* items) {
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
        // Only the state directory's own path is read: the live host, which has no store in
        // it, writes its records there too.
        const std::filesystem::path directory = HostSim::StateDirectory();
        MakePrivateDirectory(directory);
        const std::string line =
            record.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
        return AppendLine((directory / kAuditLogName).string(), line) ? 0 : -1;
    } catch (const std::exception&) {
        return -1;
    }
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
