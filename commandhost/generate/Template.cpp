// Filling the templates of the generated files.
#include <stdexcept>

#include "commandhost/generate/Generators.h"

namespace Generate {

std::string FillTemplate(std::string_view text,
                         const std::vector<std::pair<std::string, std::string>>& values) {
    std::string out;
    std::vector<bool> used(values.size(), false);
    for (;;) {
        const size_t start = text.find('@');
        const size_t end = start == std::string_view::npos ? start : text.find('@', start + 1);
        if (end == std::string_view::npos) {
            out.append(text);
            break;
        }
        const std::string_view key = text.substr(start + 1, end - start - 1);
        size_t index = 0;
        while (index < values.size() && values[index].first != key) {
            ++index;
        }
        const bool isKey =
            !key.empty() && key.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ_0123456789") ==
                                std::string_view::npos;
        if (index == values.size() && isKey) {
            throw std::runtime_error("the template names @" + std::string(key) +
                                     "@, which has no value");
        }
        if (index == values.size()) {
            // An '@' of the text itself: keep it and look on after it.
            out.append(text.substr(0, start + 1));
            text.remove_prefix(start + 1);
            continue;
        }
        out.append(text.substr(0, start)).append(values[index].second);
        used[index] = true;
        text.remove_prefix(end + 1);
    }
    for (size_t index = 0; index < values.size(); ++index) {
        if (!used[index]) {
            throw std::runtime_error("the template has no @" + values[index].first + "@");
        }
    }
    return out;
}

std::string SingleQuoted(std::string_view text) {
    std::string out = "'";
    for (char c : text) {
        if (c == '\'') {
            out.append("'\\''");
        } else {
            out.push_back(c);
        }
    }
    return out + "'";
}

}  // namespace Generate
