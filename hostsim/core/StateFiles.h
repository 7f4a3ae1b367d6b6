// The files of the state directory, which hold what is the user's alone: the directory is made
// private whatever the umask, a directory that other users can write is not trusted with a
// change, and no file in it is opened through a symbolic link.
#pragma once

#include <string>

namespace HostSim {

// Makes `directory`, and each folder above it that is missing, with mode 0700. Throws
// HostCtlException naming the folder that can't be made.
void MakePrivateDirectory(const std::string& directory);

// Throws HostCtlException naming `directory` when users other than its owner can write it:
// they could put files of their own in the place of the host's.
void CheckDirectoryIsPrivate(const std::string& directory);

// Opens a file of the state directory with `flags` (O_CREAT makes it with mode 0600), never
// through a symbolic link, and closed on exec: a descriptor, or -1 with errno set.
int OpenStateFile(const std::string& path, int flags);

}  // namespace HostSim
