// Completing the names of the host's objects: which parameters name an object that exists, and
// the list command whose rows give those names. The shells' completion asks `autocli` for them
// through its completion entry:
//   autocli [--plugin-dir=DIR] __complete <command path> <--parameter or -p>
// which prints the names, one to a line, from the host the process works on (AUTOCLI_HOST).
#pragma once

#include <span>
#include <string_view>

namespace CommandHost {

// The completion entry: the word that follows the program's options.
inline constexpr std::string_view kCompleteWord = "__complete";

// Where the names for a parameter come from.
struct ObjectSource {
    std::string_view parameter;    // its long name: "nic-name"
    std::string_view listCommand;  // the command that lists the objects: "network nic list"
    std::string_view nameField;    // the field of each row that holds the name: "Name"
    // The command that takes the parameter to name a new object, which has no name to
    // complete yet; empty when there is none.
    std::string_view creator;
};

// Every parameter whose values name objects, with where the names come from.
std::span<const ObjectSource> ObjectSources();

// The source of names for parameter `parameter` (its long name) of the command at `path`
// ("network nic down"); null when it names no object of the host.
const ObjectSource* FindObjectSource(std::string_view path, std::string_view parameter);

}  // namespace CommandHost
