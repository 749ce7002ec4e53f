#include "serve/RequestReader.h"

#include <cstddef>
#include <nlohmann/json.hpp>

#include "common/JsonNumber.h"
#include "common/ShownText.h"

namespace quillon::agent {

namespace {

using nlohmann::json;
using Kind = RequestValue::Kind;

/// Takes what the parser tells of a line. At depth 1 are the members of the request, at depth 2 those of its
/// objects; what is deeper is kept as text, or not at all.
class Handler {
public:
    using number_integer_t = json::number_integer_t;
    using number_unsigned_t = json::number_unsigned_t;
    using number_float_t = json::number_float_t;
    using string_t = std::string;
    using binary_t = json::binary_t;

    explicit Handler(RequestMembers& members) : m_members(members) {}

    bool null() { return Take({}, "null"); }
    bool boolean(bool value) {
        return Take({.kind = Kind::Boolean, .boolean = value}, value ? "true" : "false");
    }
    bool number_integer(number_integer_t value) {
        return Take({.kind = Kind::Integer, .integer = value}, std::to_string(value));
    }
    bool number_unsigned(number_unsigned_t value) {
        const auto integer = static_cast<long long>(value);
        const auto kind = integer < 0 ? Kind::TooLarge : Kind::Integer;
        return Take({.kind = kind, .integer = integer, .real = static_cast<double>(value)},
                    std::to_string(value));
    }
    bool number_float(number_float_t value, const std::string& literal) {
        const std::string number = JsonNumber(literal);
        return Take({.kind = Kind::Real, .real = ValueOfJsonNumber(number).value_or(value)}, number);
    }
    bool string(std::string& value) {
        return Take({.kind = Kind::Text, .text = value}, m_arrays > 0 ? JsonText(value) : std::string());
    }
    bool binary(binary_t&) { return false; }  // not in a text

    bool start_object(std::size_t) {
        if (m_arrays == 0 && m_depth > 0) Keep({.kind = Kind::Object});
        if (m_arrays == 0 && m_depth == 1) m_members.objects[m_names[0]].clear();
        Open('{');
        ++m_depth;
        m_isObject = m_isObject || m_depth == 1;
        return true;
    }
    bool end_object() { return Close('}'); }
    bool start_array(std::size_t) {
        Open('[');
        ++m_arrays;
        ++m_depth;
        return true;
    }
    bool end_array() {
        --m_arrays;
        Close(']');
        if (m_arrays == 0 && m_depth > 0) Keep({.kind = Kind::Array, .text = std::move(m_text)});
        if (m_arrays == 0) m_text.clear();
        return true;
    }
    bool key(std::string& name) {
        if (m_arrays == 0 && m_depth <= kKept) m_names[m_depth - 1] = name;
        if (m_arrays == 0) return true;
        Separate();
        m_text += JsonText(name) + ':';
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const json::exception& error) {
        const std::string_view text = error.what();  // begins with the error's name in brackets
        fault = ShownText("The line is not JSON: " + std::string(text.substr(text.find(' ') + 1)));
        return false;
    }

    bool IsObject() const { return m_isObject; }

    std::string fault;

private:
    static constexpr std::size_t kKept = 2;

    void Separate() {
        constexpr std::string_view kBeforeFirst = "[{:";
        if (!m_text.empty() && kBeforeFirst.find(m_text.back()) == std::string_view::npos) m_text += ',';
    }
    void Open(char bracket) {
        if (m_arrays == 0 && bracket == '{') return;
        Separate();
        m_text += bracket;
    }
    bool Close(char bracket) {
        --m_depth;
        if (!m_text.empty()) m_text += bracket;
        return true;
    }
    bool Take(RequestValue value, const std::string& text) {
        if (m_arrays > 0) {
            Separate();
            m_text += text;
        } else if (m_depth > 0) {
            Keep(std::move(value));
        }
        return true;
    }
    void Keep(RequestValue value) {
        if (m_depth == 1) {
            m_members.values[m_names[0]] = std::move(value);
        } else if (m_depth == 2) {
            m_members.objects[m_names[0]][m_names[1]] = std::move(value);
        }
    }

    RequestMembers& m_members;
    std::string m_names[kKept];  // of the members that are being read
    std::size_t m_depth = 0;
    std::size_t m_arrays = 0;  // among the depth
    std::string m_text;        // of the outermost array
    bool m_isObject = false;
};

}  // namespace

std::string RequestMembers::Read(std::string_view line) {
    Handler handler(*this);
    json::sax_parse(line, &handler);
    if (!handler.fault.empty()) return handler.fault;
    return handler.IsObject() ? "" : "The line must be a JSON object";
}

std::string JsonText(const std::string& text) {
    return json(text).dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace quillon::agent
