#include "hostsim/core/Profile.h"

#include <optional>

#include "hostctl/HostCtlException.h"

namespace HostSim {

using HostCtl::Lib::HostCtlException;

namespace {

constexpr const char* kDefaultProfile = "default";
constexpr const char* kEmptyProfile = "empty";

Json DefaultProfile() {
    Json profile = Json::object();
    for (const Subject* subject : Subjects()) {
        profile[subject->name] = Json::parse(subject->defaultSection);
    }
    return profile;
}

void CheckSections(const Json& profile) {
    if (!profile.is_object()) {
        throw HostCtlException("A profile must be a JSON object of sections");
    }
    for (const auto& [key, section] : profile.items()) {
        bool known = false;
        std::string names;
        for (const Subject* subject : Subjects()) {
            known = known || key == subject->name;
            names += names.empty() ? subject->name : std::string(", ") + subject->name;
        }
        if (!known) {
            throw HostCtlException("Unknown section \"" + key +
                                   "\" in the profile; the sections are " + names);
        }
    }
}

void EmptyTables(Database& database, const Subject& subject) {
    for (const char* table : subject.tables) {
        database.Execute(("DELETE FROM " + std::string(table)).c_str());
    }
}

void ImportSection(Database& database, const Subject& subject, const Json& profile,
                   const Scale& scale) {
    auto section = profile.find(subject.name);
    if (section == profile.end()) {
        return;
    }
    try {
        subject.importSection(database, *section, scale);
    } catch (const Json::exception& error) {
        throw HostCtlException("Section \"" + std::string(subject.name) +
                               "\" of the profile is not valid: " + error.what());
    }
}

// What the host was last made from.
struct Origin {
    std::string profile;  // a built-in profile's name, empty for the user's
    unsigned copies = 1;
    std::string document;  // the user's profile
};

std::optional<Origin> ReadOrigin(Database& database) {
    auto query = database.Query("SELECT profile, scale, document FROM host_origin");
    if (!query.Step()) {
        return std::nullopt;
    }
    return Origin{query.Text(0), static_cast<unsigned>(query.Int(1)), query.Text(2)};
}

}  // namespace

Json BuiltinProfile(const std::string& name) {
    if (name == kDefaultProfile) {
        return DefaultProfile();
    }
    if (name == kEmptyProfile) {
        return Json::object();
    }
    throw HostCtlException("There is no built-in profile named " + name);
}

void FillHost(Database& database, const Json& profile, unsigned copies, const std::string& origin) {
    CheckSections(profile);
    Scale scale(profile, copies);
    auto subjects = Subjects();
    for (auto subject = subjects.rbegin(); subject != subjects.rend(); ++subject) {
        EmptyTables(database, **subject);
    }
    for (const Subject* subject : subjects) {
        ImportSection(database, *subject, profile, scale);
    }
    database
        .Query(
            "INSERT OR REPLACE INTO host_origin (id, profile, scale, document) "
            "VALUES (1, ?1, ?2, ?3)")
        .Bind(1, origin)
        .Bind(2, copies)
        .BindOptional(3, origin.empty() ? profile.dump() : std::string())
        .Run();
}

void ReplaceHost(Database& database, const Json& profile, unsigned copies,
                 const std::string& origin) {
    WriteTransaction transaction(database);
    FillHost(database, profile, copies, origin);
    transaction.Commit();
}

void ResetHost(Database& database) {
    WriteTransaction transaction(database);
    Origin origin = ReadOrigin(database).value_or(Origin{kDefaultProfile, 1, ""});
    if (origin.profile.empty()) {
        FillHost(database, Json::parse(origin.document), origin.copies, "");
    } else {
        FillHost(database, BuiltinProfile(origin.profile), origin.copies, origin.profile);
    }
    transaction.Commit();
}

Json ExportHost(Database& database) {
    Json profile = Json::object();
    for (const Subject* subject : Subjects()) {
        profile[subject->name] = subject->exportSection(database);
    }
    return profile;
}

void FillNewSubject(Database& database, const Subject& subject) {
    auto origin = ReadOrigin(database);
    if (!origin || origin->profile != kDefaultProfile) {
        return;
    }
    Json profile = DefaultProfile();
    // The default data may name objects the older host lacks (NICs that came with this build);
    // the subject then starts empty rather than leave the host unusable.
    database.Execute("SAVEPOINT new_subject");
    try {
        ImportSection(database, subject, profile, Scale(profile, origin->copies));
        database.Execute("RELEASE new_subject");
    } catch (const HostCtlException&) {
        database.Execute("ROLLBACK TO new_subject");
        database.Execute("RELEASE new_subject");
    }
}

}  // namespace HostSim
