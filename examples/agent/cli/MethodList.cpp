#include "cli/MethodList.h"

#include <algorithm>
#include <sstream>
#include <string_view>
#include <utility>

#include "common/ParameterType.h"
#include "quillon/MetadataExport.h"
#include "quillon/MethodMetadata.h"

namespace quillon::agent {

namespace {

constexpr std::size_t kNameWidth = 20;
constexpr std::size_t kKindWidth = 26;
constexpr std::size_t kLineWidth = 100;
constexpr std::size_t kLeastWidth = 40;
constexpr std::size_t kLeastColumn = 25;  // of descriptions beside the names

std::string Padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size() + 1), ' ');
    return text;
}

void Join(std::string& list, const std::string& item) { list += (list.empty() ? "" : ", ") + item; }

/// "5.0 (Windows, Linux), no (Android)": every version with its platforms.
template <class Item>
std::string Versions(const Item& item) {
    std::vector<std::pair<std::string, std::string>> groups;
    item.VisitIntroduced([&groups](const char* platform, const char* version) {
        const auto isSame = [version](const auto& group) { return group.first == version; };
        auto group = std::find_if(groups.begin(), groups.end(), isSame);
        if (group == groups.end()) group = groups.insert(group, {version, ""});
        Join(group->second, platform);
    });
    std::string text;
    for (const auto& [version, platforms] : groups) Join(text, version + " (" + platforms + ")");
    return text;
}

std::string Default(const MethodParameter& parameter) {
    if (parameter.OptionalTable() != nullptr) return ", optional";
    Variant value;
    if (!parameter.GetOptionalValue(value)) return ", mandatory";
    const bool isText = value.TypeIs(typeid(std::string));
    return ", default " + (isText ? '"' + value.GetStringValue() + '"' : value.AsString());
}

/// Describes methods for people, in lines of a width.
class TextForm {
public:
    explicit TextForm(std::size_t width) : m_width(width) {}

    std::string operator()(const IMethodMetadataReader& method) const {
        const std::string example = method.Example();
        return std::string(method.MethodName()) + '\n' + Wrapped("  ", method.Description()) +
               Remarks("  ", method) + Flags(method) + Parameters(method) + Columns(method) +
               (example.empty() ? "" : "  Example:\n    " + example + '\n');
    }

private:
    /// Broken at blanks into lines that begin with the indent.
    std::string Wrapped(const std::string& indent, const std::string& text) const {
        std::istringstream words(text);
        std::string lines, line;
        for (std::string word; words >> word; line += ' ' + word) {
            if (line.empty() || indent.size() + line.size() + word.size() <= m_width) continue;
            lines += indent + line.substr(1) + '\n';
            line.clear();
        }
        return line.empty() ? lines : lines + indent + line.substr(1) + '\n';
    }

    /// Returns the remarks that methods, parameters and columns have alike, as wrapped lines.
    template <class Item>
    std::string Remarks(const std::string& indent, const Item& item) const {
        std::string text;
        const std::string versions = Versions(item);
        if (!versions.empty()) text += Wrapped(indent, "Introduced: " + versions);
        item.VisitDeprecated([&](const char* version, const char* reason) {
            text += Wrapped(indent, std::string("Deprecated since ") + version + ": " + reason);
        });
        item.VisitWarning(
            [&](const char* warning) { text += Wrapped(indent, std::string("Warning: ") + warning); });
        item.VisitNote([&](const char* note) { text += Wrapped(indent, std::string("Note: ") + note); });
        return text;
    }

    /// One parameter or column, followed by its remarks.
    template <class Item>
    std::string Line(const char* name, const std::string& kind, const Item& item) const {
        const std::string head = "    " + Padded(name, kNameWidth) + Padded(kind, kKindWidth);
        const std::string description = item.Description() == nullptr ? "" : item.Description();
        const bool isNarrow = m_width < head.size() + kLeastColumn;
        std::string text = Wrapped(isNarrow ? "      " : std::string(head.size(), ' '), description);
        if (isNarrow || text.empty()) {
            text.insert(0, head.substr(0, head.find_last_not_of(' ') + 1) + '\n');
        } else {
            text.replace(0, head.size(), head);
        }
        return text + Remarks("      ", item);
    }

    std::string Flags(const IMethodMetadataReader& method) const {
        std::string flags;
        method.VisitFlag([&flags](const char* flag) { Join(flags, flag); });
        return flags.empty() ? "" : Wrapped("  ", "Flags: " + flags);
    }

    std::string Parameters(const IMethodMetadataReader& method) const {
        std::string text;
        method.VisitParameter([&](const char* name, const MethodParameter& parameter) {
            text += Line(name, ParameterType(parameter) + Default(parameter), parameter);
        });
        if (method.HasAdditionalParameters())
            text += Wrapped("    ", method.AdditionalParametersDescription());
        return text.empty() ? "" : "  Parameters:\n" + text;
    }

    std::string Columns(const IMethodMetadataReader& method) const {
        std::string text;
        method.VisitColumn([&](const char* name, const MethodColumn& column) {
            text += Line(name, std::string(column.Type()) + (column.Alternative() ? ", alternative" : ""),
                         column);
        });
        if (method.HasAdditionalColumns()) text += Wrapped("    ", method.AdditionalColumnsDescription());
        return text.empty() ? "" : "  Columns:\n" + text;
    }

    std::size_t m_width;
};

/// Each documented method whose name begins so in a form, with `separator` between them.
template <class Form>
std::string Documented(const ModuleList& modules, const std::string& prefix, const char* separator,
                       const Form& form) {
    std::string text;
    for (const auto& module : modules) {
        for (const Method& method : module->GetMethods()) {
            if (method.metadata->IsUndocumented()) continue;
            if (!std::string_view(method.metadata->MethodName()).starts_with(prefix)) continue;
            if (!text.empty()) text += separator;
            text += form(*method.metadata);
        }
    }
    return text;
}

}  // namespace

std::string DescribeMethods(const ModuleList& modules, const std::string& prefix, ListFormat format,
                            std::size_t width) {
    const auto toJson = [](const IMethodMetadataReader& method) { return ToJson(method); };
    switch (format) {
        case ListFormat::Json:
            return '[' + Documented(modules, prefix, ",\n", toJson) + "]\n";
        case ListFormat::Markdown:
            return "# Methods of the reference agent\n\n" + Documented(modules, prefix, "\n", &ToMarkdown);
        case ListFormat::Text:
            break;
    }
    const TextForm form(width == 0 ? kLineWidth : std::clamp(width, kLeastWidth, kLineWidth));
    return Documented(modules, prefix, "\n", form);
}

}  // namespace quillon::agent
