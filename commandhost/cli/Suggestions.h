// "Did you mean": the closest of a set of names to a misspelt one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CommandHost {

// Edits (insertions, deletions, substitutions and swaps of neighbours) that turn `a` into `b`.
size_t EditDistance(std::string_view a, std::string_view b);

// The candidate closest to `word`, if it is close enough to be a likely misspelling; empty
// otherwise. A candidate that differs only in letter case comes first; ties go to the earlier
// candidate.
std::string ClosestName(std::string_view word, const std::vector<std::string>& candidates);

// " Did you mean '<closest>'?" with the quoted candidate given the prefix, or empty.
std::string DidYouMean(std::string_view word, const std::vector<std::string>& candidates,
                       std::string_view prefix = {});

}  // namespace CommandHost
