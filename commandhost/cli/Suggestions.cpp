#include "commandhost/cli/Suggestions.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace CommandHost {

size_t EditDistance(std::string_view a, std::string_view b) {
    // Optimal string alignment distance over three rolling rows.
    std::vector<size_t> before(b.size() + 1), previous(b.size() + 1), current(b.size() + 1);
    std::iota(previous.begin(), previous.end(), size_t{0});
    for (size_t i = 1; i <= a.size(); ++i) {
        current[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            size_t cost = a[i - 1] == b[j - 1] ? 0 : 1;
            current[j] = std::min({previous[j] + 1, current[j - 1] + 1, previous[j - 1] + cost});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                current[j] = std::min(current[j], before[j - 2] + 1);
            }
        }
        std::swap(before, previous);
        std::swap(previous, current);
    }
    return previous[b.size()];
}

std::string ClosestName(std::string_view word, const std::vector<std::string>& candidates) {
    // The name in other letter case, "JSON" for "json", is taken as meant first.
    auto sameLetters = [word](const std::string& candidate) {
        return candidate != word &&
               std::equal(word.begin(), word.end(), candidate.begin(), candidate.end(),
                          [](char a, char b) {
                              return std::tolower(static_cast<unsigned char>(a)) ==
                                     std::tolower(static_cast<unsigned char>(b));
                          });
    };
    if (auto same = std::find_if(candidates.begin(), candidates.end(), sameLetters);
        same != candidates.end()) {
        return *same;
    }
    // Short words allow one edit, longer ones up to a third of their length.
    const size_t allowed = std::max<size_t>(1, word.size() / 3);
    const std::string* best = nullptr;
    size_t bestDistance = allowed + 1;
    for (const std::string& candidate : candidates) {
        size_t distance = EditDistance(word, candidate);
        if (distance < bestDistance && distance > 0) {
            best = &candidate;
            bestDistance = distance;
        }
    }
    if (best == nullptr && word.size() >= 3) {
        // A unique start of a name, "stat" for "stats", is taken as meant too.
        for (const std::string& candidate : candidates) {
            if (candidate.starts_with(word)) {
                if (best != nullptr) {
                    return {};
                }
                best = &candidate;
            }
        }
    }
    return best != nullptr ? *best : std::string();
}

std::string DidYouMean(std::string_view word, const std::vector<std::string>& candidates,
                       std::string_view prefix) {
    std::string closest = ClosestName(word, candidates);
    if (closest.empty()) {
        return {};
    }
    std::string text = " Did you mean '";
    text.append(prefix).append(closest).append("'?");
    return text;
}

}  // namespace CommandHost
