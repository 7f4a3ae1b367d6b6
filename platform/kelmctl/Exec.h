// Running programs of the host.
#pragma once

#include <string>

namespace KelmCtl::Util {

// Runs a command line of the host and returns its exit status, 0 for success. `background`:
// don't wait for it; `quiet`: its output is dropped; `inheritEnvironment`: it runs with the
// caller's environment.
int KelmCtl_Exec(const std::string& commandLine, bool background, bool quiet,
                 bool inheritEnvironment);
// The option that puts a child program into the kernel's resource pool with `memoryMb` MB.
std::string MakeChildRpKelmOption(int memoryMb);

}  // namespace KelmCtl::Util
