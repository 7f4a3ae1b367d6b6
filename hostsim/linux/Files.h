// The host's own text files as a careful system tool reads and writes them.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace HostSim::Linux {

// The whole file; none when there is no such file. Other failures throw KernelError.
std::optional<std::string> ReadTextFile(const std::string& path);

// Replaces the file with `text`: a new file in the same folder (made without following a
// symbolic link, with the old file's mode and owner, else `mode`), synced, then renamed over
// the old one, so that a crash leaves one or the other whole. A symbolic link at `path` is not
// replaced: it belongs to whoever manages the file it points at.
void ReplaceTextFile(const std::string& path, const std::string& text, mode_t mode);

// Makes the folder, and the folders above it, that are missing.
void MakeFolders(const std::string& path, mode_t mode);

}  // namespace HostSim::Linux
