// The json formatter: structs are objects with their fields in declared order, lists arrays.
// A byte that is no UTF-8 becomes U+FFFD, so that the document is valid JSON whatever a host
// returned.
#include <array>
#include <unordered_map>
#include <vector>

#include "commandhost/cli/Formatters.h"
#include "commandhost/cli/Text.h"

namespace CommandHost {

namespace {

constexpr size_t kJsonIndent = 2;

// ASCII a JSON string holds as it is; every character beyond ASCII it holds too.
constexpr TextEscaping kJsonEscaping = {
    .plain =
        [] {
            std::array<bool, 256> plain{};
            for (int c = 0x20; c < 0x80; ++c) {
                plain[c] = c != '"' && c != '\\';
            }
            return plain;
        }(),
    .escapeAscii =
        [](char c, std::string& out) {
            static constexpr char kHex[] = "0123456789abcdef";
            switch (c) {
                case '"':
                    out.append("\\\"");
                    break;
                case '\\':
                    out.append("\\\\");
                    break;
                case '\n':
                    out.append("\\n");
                    break;
                case '\r':
                    out.append("\\r");
                    break;
                case '\t':
                    out.append("\\t");
                    break;
                case '\b':
                    out.append("\\b");
                    break;
                case '\f':
                    out.append("\\f");
                    break;
                default:
                    out.append("\\u00");
                    out.push_back(kHex[(c >> 4) & 0xF]);
                    out.push_back(kHex[c & 0xF]);
            }
        },
    .carries = [](char32_t) { return true; },
};

void AppendString(std::string_view text, std::string& out) {
    out.push_back('"');
    AppendEscaped(text, kJsonEscaping, out);
    out.push_back('"');
}

class JsonWriter {
public:
    JsonWriter(size_t indent, std::string& out, const Spill* spill = nullptr)
        : indent_(indent), out_(out), spill_(spill) {}

    void Value(const MetaValue* value, size_t depth) {
        if (value == nullptr) {
            out_.append("null");
            return;
        }
        switch (value->GetType()) {
            case CppTools::MetaObj::MetaTypeString:
                AppendString(static_cast<const CppTools::MetaObj::MetaString*>(value)->GetValue(),
                             out_);
                break;
            case CppTools::MetaObj::MetaTypeStruct: {
                const auto& fields = static_cast<const MetaStruct*>(value)->GetFields();
                out_.push_back('{');
                for (size_t i = 0; i < fields.size(); ++i) {
                    const std::string& lead = Lead(depth + 1);
                    out_.append(lead, i > 0 ? 0 : 1);
                    out_.append(Key(fields[i].Name()));
                    Value(fields[i].Value(), depth + 1);
                }
                Close('}', fields.empty(), depth);
                break;
            }
            case CppTools::MetaObj::MetaTypeList: {
                const auto& elements = static_cast<const MetaList*>(value)->GetElements();
                out_.push_back('[');
                for (size_t i = 0; i < elements.size(); ++i) {
                    const std::string& lead = Lead(depth + 1);
                    const size_t skip = i > 0 ? 0 : 1;
                    out_.append(lead, skip, lead.size() - skip - 1);
                    const size_t start = out_.size();
                    Value(elements[i].get(), depth + 1);
                    if (spill_ != nullptr) {
                        if (out_.size() >= kSpillBytes) {
                            (*spill_)(out_);
                        }
                    } else if (i == 0) {
                        ReserveLike(out_.size() - start, elements.size() - 1);
                    }
                }
                Close(']', elements.empty(), depth);
                break;
            }
            default:
                out_.append(ScalarText(value));
        }
    }

private:
    // What comes before a member's key at `depth`: the comma after the member before (left out
    // for the first), the new line, the indentation and the key's opening quote. An element
    // takes the same without the quote. Made once for each depth.
    const std::string& Lead(size_t depth) {
        while (leads_.size() <= depth) {
            std::string lead(indent_ > 0 ? ",\n" : ",");
            lead.append(leads_.size() * indent_, ' ').push_back('"');
            leads_.push_back(std::move(lead));
        }
        return leads_[depth];
    }
    // A member's key after its opening quote: escaped, closed, with its colon. Field names are
    // interned, so the rows of a list find theirs by address, escaped once.
    const std::string& Key(const std::string& name) {
        auto [key, added] = keys_.try_emplace(&name);
        if (added) {
            AppendEscaped(name, kJsonEscaping, key->second);
            key->second.append(indent_ > 0 ? "\": " : "\":");
        }
        return key->second;
    }
    void Close(char bracket, bool empty, size_t depth) {
        if (!empty && indent_ > 0) {
            const std::string& lead = Lead(depth);
            out_.append(lead, 1, lead.size() - 2);
        }
        out_.push_back(bracket);
    }
    // A long list's text is reserved from the length of its first element, so that the text is
    // not copied again and again as it grows; the reserved pages are touched only as they are
    // written, so a reservation beyond what the other elements take costs nothing.
    void ReserveLike(size_t elementBytes, size_t elementsLeft) {
        const size_t wanted = out_.size() + (elementBytes + 2 * indent_ + 2) * elementsLeft * 2;
        if (wanted > out_.capacity()) {
            out_.reserve(wanted);
        }
    }

    // A text that spills is written in parts of about this size.
    static constexpr size_t kSpillBytes = 64 * 1024;

    size_t indent_;
    std::string& out_;
    const Spill* spill_;
    std::vector<std::string> leads_;
    std::unordered_map<const std::string*, std::string> keys_;
};

}  // namespace

void AppendJson(const MetaValue* value, size_t indent, std::string& out) {
    JsonWriter(indent, out).Value(value, 0);
}

void FormatJson(const MetaValue& root, const FormatContext& context, std::string& out) {
    JsonWriter(kJsonIndent, out, context.spill).Value(&root, 0);
    out.push_back('\n');
}

}  // namespace CommandHost
