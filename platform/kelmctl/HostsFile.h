// The host's hosts file: the associations of addresses with host names that the user made.
#pragma once

#include <string>
#include <vector>

namespace KelmCtl::Network {

class HostsFileEntry {
public:
    HostsFileEntry(std::string ipAddress, std::string hostName, std::vector<std::string> aliases,
                   std::string comment);

    const std::string& GetIpAddress() const { return ipAddress_; }
    const std::string& GetHostName() const { return hostName_; }
    const std::vector<std::string>& GetAliases() const { return aliases_; }
    const std::string& GetComment() const { return comment_; }

private:
    std::string ipAddress_;
    std::string hostName_;
    std::vector<std::string> aliases_;
    std::string comment_;
};

class HostsFile {
public:
    HostsFile();

    // The user's entries, in the order of the file.
    std::vector<HostsFileEntry> GetEntriesFromConfig();
    // Appends an entry. Throws HostCtlException for an address that is not one, a name or
    // alias that is no host name, or an entry that the file has already.
    void AddEntryFromUser(const std::string& ipAddress, const std::string& hostName,
                          const std::vector<std::string>& aliases, const std::string& comment);
    // Removes the entry of that address and name.
    void RemoveEntryFromUser(const std::string& ipAddress, const std::string& hostName);
};

}  // namespace KelmCtl::Network
