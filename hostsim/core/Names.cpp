#include "hostsim/core/Names.h"

#include "hostctl/HostCtlException.h"

namespace HostSim {

using HostCtl::Lib::HostCtlException;

namespace {

constexpr const char* kNotUtf8 = "is not valid UTF-8";
constexpr const char* kControlCharacters = "holds control characters";

// The length of the UTF-8 sequence at the start of `text`, 0 when it is none: overlong forms,
// surrogates and code points above U+10FFFF are not UTF-8.
std::size_t SequenceLength(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    std::size_t length = lead < 0x80   ? 1
                         : lead < 0xC2 ? 0
                         : lead < 0xE0 ? 2
                         : lead < 0xF0 ? 3
                         : lead < 0xF5 ? 4
                                       : 0;
    if (length == 0 || length > text.size()) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) {
            return 0;
        }
    }
    const unsigned char second = length > 1 ? byte(1) : 0;
    if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
        (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F)) {
        return 0;
    }
    return length;
}

bool IsOnlyBlanks(const std::string& name) {
    return name.find_first_not_of(' ') == std::string::npos;
}

}  // namespace

std::string TextProblem(std::string_view text) {
    bool control = false;
    while (!text.empty()) {
        const std::size_t length = SequenceLength(text);
        if (length == 0) {
            return kNotUtf8;
        }
        const auto lead = static_cast<unsigned char>(text[0]);
        // C0 and DEL are single bytes; C1 (U+0080 to U+009F) is 0xC2 0x80 to 0xC2 0x9F.
        control = control || lead < 0x20 || lead == 0x7F ||
                  (lead == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0);
        text.remove_prefix(length);
    }
    return control ? kControlCharacters : "";
}

void CheckStoredText(std::string_view text, const char* what) {
    // The text is not repeated here: what is wrong with it would break the message too.
    if (std::string problem = TextProblem(text); problem == kNotUtf8) {
        throw HostCtlException(std::string("The ") + what + " must be valid UTF-8");
    } else if (!problem.empty()) {
        throw HostCtlException(std::string("The ") + what + " must not hold control characters");
    }
}

void CheckObjectName(const std::string& name, const char* what) {
    if (name.empty()) {
        throw HostCtlException(std::string("A ") + what + " name must not be empty");
    }
    const std::string problem = TextProblem(name);
    if (problem == kNotUtf8) {
        throw HostCtlException(std::string("A ") + what + " name must be valid UTF-8");
    }
    if (!problem.empty()) {
        throw HostCtlException(std::string("A ") + what + " name must not hold control characters");
    }
    if (name.size() > kMaximumNameLength) {
        throw HostCtlException(std::string("The ") + what + " name " + name + " is longer than " +
                               std::to_string(kMaximumNameLength) + " bytes");
    }
    if (IsOnlyBlanks(name)) {
        throw HostCtlException(std::string("A ") + what + " name must not be only blanks");
    }
}

std::string NameProblem(const std::string& name) {
    if (std::string problem = TextProblem(name); !problem.empty()) {
        return problem;
    }
    if (name.size() > kMaximumNameLength) {
        return "is longer than " + std::to_string(kMaximumNameLength) + " bytes";
    }
    if (IsOnlyBlanks(name)) {
        return "is only blanks";
    }
    return {};
}

}  // namespace HostSim
