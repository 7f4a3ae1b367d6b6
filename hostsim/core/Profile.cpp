#include "hostsim/core/Profile.h"

#include <optional>
#include <string_view>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/Names.h"

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

// Every "name" a profile gives is the name of something the host stores and a table shows:
// the host's rule for names holds for all of them, in every subject's section. Whether a name
// may be left empty (a DVPort's may) is each subject's own rule.
void CheckNames(const Json& value, const std::string& section, const std::string& place) {
    if (value.is_object()) {
        for (const auto& [key, member] : value.items()) {
            if (key == "name" && member.is_string() &&
                !member.get_ref<const std::string&>().empty()) {
                if (std::string problem = NameProblem(member.get<std::string>());
                    !problem.empty()) {
                    throw HostCtlException("Section \"" + section +
                                           "\" of the profile is not valid: the name of " + place +
                                           " " + problem);
                }
            }
            CheckNames(member, section, place + "." + key);
        }
    } else if (value.is_array()) {
        for (std::size_t i = 0; i < value.size(); ++i) {
            CheckNames(value[i], section, place + "[" + std::to_string(i) + "]");
        }
    }
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
        CheckNames(section, key, key);
    }
}

void EmptyTables(Database& database, const Subject& subject) {
    for (const char* table : subject.tables) {
        database.Execute(("DELETE FROM " + std::string(table)).c_str());
    }
}

// The "name" (or "id") of an entry of a profile; empty when it has none.
std::string EntryName(const Json* value) {
    if (value != nullptr && value->is_object()) {
        for (const char* key : {"name", "id"}) {
            if (auto found = value->find(key); found != value->end() && found->is_string()) {
                return found->get<std::string>();
            }
        }
    }
    return {};
}

// A place in the profile as a reader finds it: "/vswitches/0/portGroups/1" is
// "vswitches[0].portGroups[1]", followed by its own name, ("Lab"), or else the name of the
// entry it is in, (in "lanswitch0").
std::string DescribePlace(const Json& profile, const std::string& pointer) {
    std::string place;
    std::string within;
    const Json* value = &profile;
    std::size_t start = 1;
    while (start <= pointer.size() && value != nullptr) {
        if (std::string name = EntryName(value); !name.empty()) {
            within = name;
        }
        std::size_t end = pointer.find('/', start);
        std::string token =
            pointer.substr(start, end == std::string::npos ? std::string::npos : end - start);
        start = end == std::string::npos ? pointer.size() + 1 : end + 1;
        if (value->is_array() && !token.empty() &&
            token.find_first_not_of("0123456789") == std::string::npos) {
            place += "[" + token + "]";
            std::size_t index = std::stoul(token);
            value = index < value->size() ? &(*value)[index] : nullptr;
        } else if (value->is_object()) {
            place += (place.empty() ? "" : ".") + token;
            auto member = value->find(token);
            value = member != value->end() ? &*member : nullptr;
        } else {
            value = nullptr;
        }
    }
    if (std::string own = EntryName(value); !own.empty()) {
        return place + " (\"" + own + "\")";
    }
    return within.empty() ? place : place + " (in \"" + within + "\")";
}

// A JSON error of a subject's import in the words of the profile: which entry, and what of
// it. The library's message carries the place as "(/nics/3) " after its own tag, when the
// import read the profile itself rather than a copy of a part of it.
std::string DescribeJsonError(const Json& profile, const std::string& section,
                              const Json::exception& error) {
    std::string text = error.what();
    if (std::size_t tag = text.find("] "); tag != std::string::npos) {
        text.erase(0, tag + 2);
    }
    std::string place;
    if (text.starts_with("(/") && text.find(") ") != std::string::npos) {
        std::size_t close = text.find(") ");
        // A place outside the section is within a copy the import made, and can't be found.
        std::string pointer = text.substr(1, close - 1);
        if (pointer == "/" + section || pointer.starts_with("/" + section + "/")) {
            place = DescribePlace(profile, pointer);
        }
        text.erase(0, close + 2);
    }
    constexpr std::string_view kKeyPrefix = "key '";
    constexpr std::string_view kKeySuffix = "' not found";
    if (error.id == 403 && text.starts_with(kKeyPrefix) && text.ends_with(kKeySuffix)) {
        std::string field =
            text.substr(kKeyPrefix.size(), text.size() - kKeyPrefix.size() - kKeySuffix.size());
        return (place.empty() ? "an entry" : place) + " has no field \"" + field + "\"";
    }
    return place.empty() ? text : place + ": " + text;
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
        throw HostCtlException(
            "Section \"" + std::string(subject.name) +
            "\" of the profile is not valid: " + DescribeJsonError(profile, subject.name, error));
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
