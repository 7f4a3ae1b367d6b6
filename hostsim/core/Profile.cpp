#include "hostsim/core/Profile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>

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

// The "name" (or "id") of an entry of a profile; empty when it has none, or one that a message
// can't show.
std::string EntryName(const Json* value) {
    if (value != nullptr && value->is_object()) {
        for (const char* key : {"name", "id"}) {
            if (auto found = value->find(key); found != value->end() && found->is_string()) {
                const auto& name = found->get_ref<const std::string&>();
                return NameProblem(name).empty() ? name : std::string();
            }
        }
    }
    return {};
}

// A place in the profile as a reader finds it: "/vswitches/0/portGroups/1" is
// "vswitches[0].portGroups[1]", followed, `withNames`, by its own name, ("Lab"), or else the
// name of the entry it is in, (in "lanswitch0").
std::string DescribePlace(const Json& profile, const std::string& pointer, bool withNames = true) {
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
    if (!withNames) {
        return place;
    }
    if (std::string own = EntryName(value); !own.empty()) {
        return place + " (\"" + own + "\")";
    }
    return within.empty() ? place : place + " (in \"" + within + "\")";
}

[[noreturn]] void RefuseDepth(const std::string& source) {
    throw HostCtlException(source + " nests its values more than " +
                           std::to_string(kMaximumProfileDepth) +
                           " deep, deeper than any section of a profile");
}

// Every text a profile gives, at any depth of any section, member names included, is one the
// host stores and a table shows: valid UTF-8 without control characters. Every "name" is also
// the name of something the host stores, and the host's rule for names holds for it; whether a
// name may be left empty (a DVPort's may) is each subject's own rule. `pointer` is the place of
// `value`, "/vswitches/0/name"; the walk goes no deeper than kMaximumProfileDepth.
void CheckTexts(const Json& profile, const Json& value, const std::string& section,
                std::string& pointer, int depth) {
    if (depth > kMaximumProfileDepth) {
        RefuseDepth("The profile");
    }
    auto refuse = [&](const std::string& what, const std::string& problem) {
        throw HostCtlException("Section \"" + section + "\" of the profile is not valid: " + what +
                               " " + problem);
    };
    const std::size_t length = pointer.size();
    if (value.is_string()) {
        const auto& text = value.get_ref<const std::string&>();
        const bool isName = pointer.ends_with("/name");
        if (std::string problem = isName && !text.empty() ? NameProblem(text) : TextProblem(text);
            !problem.empty()) {
            if (isName) {
                pointer.resize(length - 5);
                refuse("the name of " + DescribePlace(profile, pointer, false), problem);
            }
            refuse(DescribePlace(profile, pointer, true), problem);
        }
    } else if (value.is_object()) {
        for (const auto& [key, member] : value.items()) {
            if (std::string problem = TextProblem(key); !problem.empty()) {
                refuse("a member name in " + DescribePlace(profile, pointer, true), problem);
            }
            pointer.append("/").append(key);
            CheckTexts(profile, member, section, pointer, depth + 1);
            pointer.resize(length);
        }
    } else if (value.is_array()) {
        for (std::size_t i = 0; i < value.size(); ++i) {
            pointer.append("/").append(std::to_string(i));
            CheckTexts(profile, value[i], section, pointer, depth + 1);
            pointer.resize(length);
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
        std::string pointer = "/" + key;
        CheckTexts(profile, section, key, pointer, 1);
    }
}

void EmptyTables(Database& database, const Subject& subject) {
    for (const char* table : subject.tables) {
        database.Execute(("DELETE FROM " + std::string(table)).c_str());
    }
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
    enum Column { kProfile, kScale, kDocument };
    auto query = database.Query("SELECT profile, scale, document FROM host_origin");
    if (!query.Step()) {
        return std::nullopt;
    }
    return Origin{query.Text(kProfile), static_cast<unsigned>(query.Int(kScale)),
                  query.Text(kDocument)};
}

}  // namespace

Json ParseProfile(std::string_view text, const std::string& source) {
    // One pass over the bytes before the parser builds anything: the brackets outside strings
    // give the depth. (The parser's own callbacks would do it too, but they cost a pass over an
    // array for each object that ends in it.)
    int depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inString) {
            i += c == '\\' ? 1 : 0;
            inString = c != '"';
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            if (++depth > kMaximumProfileDepth) {
                RefuseDepth(source);
            }
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    try {
        return Json::parse(text);
    } catch (const Json::exception& error) {
        // A syntax error, or a number no JSON number type holds (1e400).
        throw HostCtlException(source + " is not valid JSON: " + error.what());
    }
}

Json ReadProfileFile(const std::string& path) {
    const std::string source = "The profile " + path;
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    if (file < 0) {
        throw HostCtlException("Unable to read the profile " + path + ": " + std::strerror(errno));
    }
    struct stat status {};
    std::string refusal;
    std::string text;
    if (fstat(file, &status) != 0) {
        refusal = "Unable to read the profile " + path + ": " + std::strerror(errno);
    } else if (S_ISDIR(status.st_mode)) {
        refusal = source + " is a folder, not a file";
    } else {
        // Read to one byte past the bound, whatever the file says of its size: a pipe or a
        // device says nothing.
        for (;;) {
            const std::size_t had = text.size();
            const std::size_t room =
                std::min<std::size_t>(64 * 1024, kMaximumProfileBytes + 1 - had);
            text.resize(had + room);
            const ssize_t count = read(file, text.data() + had, room);
            text.resize(had + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count < 0) {
                refusal = "Unable to read the profile " + path + ": " + std::strerror(errno);
            } else if (text.size() > kMaximumProfileBytes) {
                refusal = source + " holds more than " + std::to_string(kMaximumProfileBytes) +
                          " bytes, the most a profile may hold";
            }
            if (count <= 0 || !refusal.empty()) {
                break;
            }
        }
    }
    close(file);
    if (!refusal.empty()) {
        throw HostCtlException(refusal);
    }
    return ParseProfile(text, source);
}

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
