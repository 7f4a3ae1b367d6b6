// The simulated host's source tree against its registered subjects: each subject has a folder
// of its own, named after it, with the same files named alike, and hostsim/ holds no folder that
// is neither a subject nor one of the host's shared parts.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "hostsim/core/Subject.h"

namespace {

namespace fs = std::filesystem;

const fs::path kSourceDir = HOSTSIM_SOURCE_DIR;

// The files every subject's folder holds, by the end of their names: the subject's prefix comes
// before it ("NicSettingsStore.h" in nicsettings/).
const std::vector<std::string> kRoleFiles{"Subject.cpp", "Store.h", "Store.cpp", "DefaultHost.cpp",
                                          "Record.h"};

// The folders of hostsim/ that are not subjects.
const std::set<std::string> kSharedFolders{"core", "audit", "values", "tool", "linux"};

// A role a subject has no file for, and the words in the opening comment of its Subject.cpp
// that say why.
struct MissingRole {
    std::string folder;
    std::string role;
    std::string reason;
};
const std::vector<MissingRole> kMissingRoles{
    {"ipsec", "Record.h", "It has no record file of its own"},
};

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string FileText(const fs::path& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// The subjects core/Registry.cpp registers, by the names of their definitions (SUBJECT(nic)
// for `nicSubject`), in its order.
std::vector<std::string> RegisteredNames() {
    std::istringstream registry(FileText(kSourceDir / "core" / "Registry.cpp"));
    const std::regex entry(R"(\s*SUBJECT\((\w+)\)\s*\\?)");
    std::vector<std::string> names;
    std::smatch match;
    for (std::string line; std::getline(registry, line);) {
        if (std::regex_match(line, match, entry)) {
            names.push_back(match[1]);
        }
    }
    return names;
}

// The file of `folder` whose name is the folder's, any case, followed by `role`; empty when
// there is none.
fs::path RoleFile(const std::string& folder, const std::string& role) {
    const std::string wanted = folder + Lower(role);
    for (const auto& entry : fs::directory_iterator(kSourceDir / folder)) {
        if (Lower(entry.path().filename().string()) == wanted) {
            return entry.path();
        }
    }
    return {};
}

bool IsMissingRole(const std::string& folder, const std::string& role) {
    return std::any_of(kMissingRoles.begin(), kMissingRoles.end(), [&](const MissingRole& missing) {
        return missing.folder == folder && missing.role == role;
    });
}

// The comment lines a file opens with.
std::string OpeningComment(const fs::path& path) {
    std::istringstream text(FileText(path));
    std::string comment;
    for (std::string line; std::getline(text, line) && line.starts_with("//");) {
        comment += line.substr(2) + "\n";
    }
    return comment;
}

TEST(SubjectLayout, TheRegistryIsReadWhole) {
    const std::vector<std::string> names = RegisteredNames();
    EXPECT_EQ(names.size(), HostSim::Subjects().size());
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), names.size());
}

TEST(SubjectLayout, EverySubjectHasItsFolderAndFiles) {
    for (const std::string& name : RegisteredNames()) {
        const std::string folder = Lower(name);
        SCOPED_TRACE(folder);
        ASSERT_TRUE(fs::is_directory(kSourceDir / folder)) << kSourceDir / folder;
        for (const std::string& role : kRoleFiles) {
            if (!IsMissingRole(folder, role)) {
                EXPECT_FALSE(RoleFile(folder, role).empty()) << "no ..." << role << " file";
            }
        }
        const fs::path definition = RoleFile(folder, "Subject.cpp");
        if (!definition.empty()) {
            EXPECT_NE(FileText(definition).find("const Subject " + name + "Subject = {"),
                      std::string::npos)
                << definition << " does not define " << name << "Subject";
        }
    }
}

TEST(SubjectLayout, EveryFolderIsASubjectOrASharedPart) {
    std::set<std::string> subjectFolders;
    for (const std::string& name : RegisteredNames()) {
        subjectFolders.insert(Lower(name));
    }
    for (const auto& entry : fs::directory_iterator(kSourceDir)) {
        if (entry.is_directory()) {
            const std::string folder = entry.path().filename().string();
            EXPECT_TRUE(subjectFolders.contains(folder) || kSharedFolders.contains(folder))
                << "hostsim/" << folder << " is neither a registered subject nor a shared part";
        }
    }
}

TEST(SubjectLayout, AMissingFileIsExplained) {
    for (const MissingRole& missing : kMissingRoles) {
        SCOPED_TRACE(missing.folder + " " + missing.role);
        EXPECT_TRUE(RoleFile(missing.folder, missing.role).empty());
        const fs::path definition = RoleFile(missing.folder, "Subject.cpp");
        ASSERT_FALSE(definition.empty());
        EXPECT_NE(OpeningComment(definition).find(missing.reason), std::string::npos);
    }
}

}  // namespace
