#include "BusValue.h"

#include "FuzzInput.h"
#include "linux/gobject/GObjectPointer.h"

#include <vector>

namespace kelo::fuzz {

namespace {

/// The bus passes nothing on that is nested more deeply.
constexpr int deepest = 32;

class Reader {
public:
    Reader(std::string_view text, const std::map<char, std::string>& names)
        : left(text), names(names) {}

    GVariant* tuple(char end, int depth) {
        std::vector<GVariant*> children;
        while (!isAt(end))
            if (GVariant* const child = value(depth))
                children.push_back(child);
        return g_variant_new_tuple(children.data(), children.size());
    }

private:
    /// Also at the end of the text. Takes the letter.
    bool isAt(char end) {
        if (left.empty())
            return true;
        const bool found = left.front() == end;
        if (found)
            left.remove_prefix(1);
        return found;
    }

    std::string token() {
        const auto end = std::min(left.find_first_of(" (){}<>[]"), left.size());
        std::string text;
        for (std::size_t at = 0; at < end; ++at) {
            const auto name =
                at + 1 < end && left[at] == '$' ? names.find(left[at + 1]) : names.end();
            text += name == names.end() ? std::string(1, left[at]) : name->second;
            at += name == names.end() ? 0 : 1;
        }
        left.remove_prefix(end);
        const gobject::GText valid(g_utf8_make_valid(text.c_str(), -1));
        return valid.get();
    }

    GVariant* dictionary(int depth) {
        GVariantBuilder entries;
        g_variant_builder_init(&entries, G_VARIANT_TYPE_VARDICT);
        while (!isAt('}')) {
            const std::string key = token();
            while (left.starts_with(' '))
                left.remove_prefix(1);
            GVariant* const member = value(depth);
            if (member)
                g_variant_builder_add(&entries, "{sv}", key.c_str(), member);
        }
        return g_variant_builder_end(&entries);
    }

    GVariant* list() {
        GVariantBuilder texts;
        g_variant_builder_init(&texts, G_VARIANT_TYPE_STRING_ARRAY);
        while (!isAt(']')) {
            const std::string text = token();
            if (!text.empty())
                g_variant_builder_add(&texts, "s", text.c_str());
            else if (!left.empty() && left.front() != ']')
                left.remove_prefix(1);
        }
        return g_variant_builder_end(&texts);
    }

    /// Null for a letter that begins no value. Always takes one, if there is any.
    GVariant* value(int depth) {
        if (left.empty())
            return nullptr;
        const char kind = left.front();
        if (kind == '}' || kind == '>' || kind == ')' || depth >= deepest) {
            left.remove_prefix(1);
            return nullptr;
        }
        left.remove_prefix(1);
        switch (kind) {
        case '(':
            return tuple(')', depth + 1);
        case '{':
            return dictionary(depth + 1);
        case '[':
            return list();
        case '<': {
            GVariant* const inside = tuple('>', depth + 1);
            return g_variant_new_variant(inside);
        }
        case 's':
            return g_variant_new_string(token().c_str());
        case 'o': {
            const std::string path = token();
            return g_variant_is_object_path(path.c_str()) ? g_variant_new_object_path(path.c_str())
                                                          : g_variant_new_string(path.c_str());
        }
        default:
            return number(kind);
        }
    }

    GVariant* number(char kind) {
        constexpr std::string_view kinds = "uitxybd";
        if (kinds.find(kind) == std::string_view::npos)
            return nullptr;
        const std::string digits = token();
        const auto whole = g_ascii_strtoll(digits.c_str(), nullptr, 10);
        switch (kind) {
        case 'u':
            return g_variant_new_uint32(static_cast<guint32>(whole));
        case 'i':
            return g_variant_new_int32(static_cast<gint32>(whole));
        case 't':
            return g_variant_new_uint64(static_cast<guint64>(whole));
        case 'x':
            return g_variant_new_int64(whole);
        case 'y':
            return g_variant_new_byte(static_cast<guint8>(whole));
        case 'b':
            return g_variant_new_boolean(whole != 0);
        default:
            return g_variant_new_double(static_cast<double>(whole));
        }
    }

    std::string_view left;
    const std::map<char, std::string>& names;
};

} // namespace

gobject::GVariantPointer busValue(std::string_view text, const std::map<char, std::string>& names) {
    return gobject::GVariantPointer(g_variant_ref_sink(Reader(text, names).tuple('\0', 0)));
}

} // namespace kelo::fuzz
