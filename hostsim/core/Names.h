// The host's rules for the texts it stores: every text (a name, a comment, a key, a driver's
// words) is UTF-8 without control characters, so that it reads the same in every format and
// on every terminal; a name is also one a table can show on one line.
#pragma once

#include <string>
#include <string_view>

namespace HostSim {

inline constexpr std::size_t kMaximumNameLength = 127;

// What the host refuses in any text it stores, as the end of a sentence about it ("is not
// valid UTF-8", "holds control characters": C0, DEL and C1); empty for a text it can store.
std::string TextProblem(std::string_view text);

// Throws HostCtlException, in the host's words with `what` naming the text ("hosts entry
// comment"), for a text TextProblem refuses.
void CheckStoredText(std::string_view text, const char* what);

// Throws HostCtlException, in the host's words with `what` naming the kind of object ("port
// group"), for a name that is empty, longer than 127 bytes, no stored text (TextProblem) or
// only blanks.
void CheckObjectName(const std::string& name, const char* what);

// What CheckObjectName refuses in a name that is given, as the end of a sentence about it
// ("holds control characters"); empty for a name the host can store. An empty name is left to
// each subject: some may be empty (a DVPort's).
std::string NameProblem(const std::string& name);

}  // namespace HostSim
