// Times changes of the host made by many processes at once: each writer process makes its
// changes one after the other, and every change is timed from its call to its return, the wait
// for the store included.
//
// Usage: bench_writers WRITERS CHANGES [STATE-DIR]
//   Makes the default host in STATE-DIR (a fresh temporary one when not given), starts WRITERS
//   processes together, each bringing a NIC of the host down and up CHANGES times, and prints
//   the median, 99th percentile and longest time of a change, the failed changes with their
//   first message, and the wall time of the whole. For the slowest change it also gives the
//   changes that ended while it waited (the queue ahead of it) and the mean time those took.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "hostsim/Control.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "kelmctl/PnicImpl.h"

namespace {

using Clock = std::chrono::steady_clock;

double Microseconds(Clock::time_point time) {
    return std::chrono::duration<double, std::micro>(time.time_since_epoch()).count();
}

struct Change {
    double start;
    double end;
};

// What a writer reports through its pipe: for each change, when it started and ended (in
// microseconds of the system-wide monotonic clock), the end negative for a change that failed;
// and then the first failure's message.
void RunWriter(int writer, int changes, int startPipe, int reportPipe) {
    char go = 0;
    if (read(startPipe, &go, 1) != 1) {
        _exit(2);
    }
    const std::string nic = "hwnic" + std::to_string(writer % 9);
    std::vector<double> times;
    std::string failure;
    for (int change = 0; change < changes; ++change) {
        double start = Microseconds(Clock::now());
        bool failed = false;
        try {
            KelmCtl::Network::PnicImpl(nic).SetLinkState(change % 2 == 1);
        } catch (const std::exception& error) {
            failed = true;
            if (failure.empty()) {
                failure = error.what();
            }
        }
        double end = Microseconds(Clock::now());
        times.push_back(start);
        times.push_back(failed ? -end : end);
    }
    std::string report(reinterpret_cast<const char*>(times.data()), times.size() * sizeof(double));
    report += failure;
    for (std::size_t written = 0; written < report.size();) {
        ssize_t result = write(reportPipe, report.data() + written, report.size() - written);
        if (result <= 0) {
            _exit(2);
        }
        written += static_cast<std::size_t>(result);
    }
    _exit(0);
}

std::string ReadAll(int descriptor) {
    std::string text;
    char buffer[65536];
    for (ssize_t count; (count = read(descriptor, buffer, sizeof buffer)) > 0;) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    return text;
}

double Percentile(const std::vector<double>& sorted, double fraction) {
    return sorted[std::min(sorted.size() - 1, static_cast<std::size_t>(fraction * sorted.size()))];
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "Usage: bench_writers WRITERS CHANGES [STATE-DIR]\n");
        return 2;
    }
    const int writers = std::atoi(argv[1]);
    const int changes = std::atoi(argv[2]);
    std::string directory;
    if (argc > 3) {
        directory = argv[3];
    } else {
        char pattern[] = "/tmp/bench-writers-XXXXXX";
        directory = mkdtemp(pattern);
    }
    HostSim::UseStateDirectory(directory);
    KelmCtl::Network::NetworkInfoImpl info;

    int start[2];
    if (pipe(start) != 0) {
        return 1;
    }
    std::vector<int> reports;
    std::vector<pid_t> children;
    for (int writer = 0; writer < writers; ++writer) {
        int report[2];
        if (pipe(report) != 0) {
            return 1;
        }
        pid_t child = fork();
        if (child == 0) {
            close(start[1]);
            close(report[0]);
            RunWriter(writer, changes, start[0], report[1]);
        }
        close(report[1]);
        reports.push_back(report[0]);
        children.push_back(child);
    }
    close(start[0]);
    auto begin = Clock::now();
    std::string go(static_cast<std::size_t>(writers), 'g');
    if (write(start[1], go.data(), go.size()) != static_cast<ssize_t>(go.size())) {
        return 1;
    }
    std::vector<Change> changesMade;
    int failed = 0;
    std::string firstFailure;
    constexpr std::size_t kRecord = 2 * sizeof(double);
    for (int descriptor : reports) {
        std::string report = ReadAll(descriptor);
        close(descriptor);
        const std::size_t count =
            std::min(report.size() / kRecord, static_cast<std::size_t>(changes));
        for (std::size_t i = 0; i < count; ++i) {
            double record[2];
            std::copy_n(report.data() + i * kRecord, kRecord, reinterpret_cast<char*>(record));
            failed += record[1] < 0 ? 1 : 0;
            changesMade.push_back({record[0], std::abs(record[1])});
        }
        if (firstFailure.empty() && report.size() > count * kRecord) {
            firstFailure = report.substr(count * kRecord);
        }
    }
    for (pid_t child : children) {
        waitpid(child, nullptr, 0);
    }
    double wall = std::chrono::duration<double>(Clock::now() - begin).count();
    if (argc <= 3) {
        std::filesystem::remove_all(directory);
    }
    if (changesMade.empty()) {
        std::fprintf(stderr, "no writer reported\n");
        return 1;
    }
    std::vector<double> times;
    std::vector<double> ends;
    for (const Change& change : changesMade) {
        times.push_back(change.end - change.start);
        ends.push_back(change.end);
    }
    std::sort(ends.begin(), ends.end());
    const Change& slowest = *std::max_element(
        changesMade.begin(), changesMade.end(),
        [](const Change& a, const Change& b) { return a.end - a.start < b.end - b.start; });
    const auto ahead = std::lower_bound(ends.begin(), ends.end(), slowest.end) -
                       std::upper_bound(ends.begin(), ends.end(), slowest.start);
    std::sort(times.begin(), times.end());
    std::printf(
        "%d writers x %d changes: %zu changes timed, %d failed; p50 %.1f ms, p99 %.1f ms, "
        "max %.1f ms; wall %.2f s\n",
        writers, changes, times.size(), failed, Percentile(times, 0.5) / 1000,
        Percentile(times, 0.99) / 1000, times.back() / 1000, wall);
    std::printf(
        "slowest change: %ld changes ended while it waited, %.2f ms each\n",
        static_cast<long>(ahead),
        ahead > 0 ? (slowest.end - slowest.start) / 1000 / static_cast<double>(ahead) : 0.0);
    if (!firstFailure.empty()) {
        std::printf("first failure: %s\n", firstFailure.c_str());
    }
    return failed == 0 && static_cast<int>(times.size()) == writers * changes ? 0 : 1;
}
