#include "updater/appcast/AppcastReader.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>

namespace kelo::updater {

namespace {

/// Namespace of the elements that an appcast adds to RSS.
constexpr std::string_view appcastNamespace = "http://www.andymatuschak.org/xml-namespaces/sparkle";
constexpr std::string_view xmlNamespace = "http://www.w3.org/XML/1998/namespace";
constexpr std::size_t longestVersion = 256;

std::string textOf(const XmlElement& item, std::string_view name,
                   std::string_view nameSpace = appcastNamespace) {
    const auto element = item.child(name, nameSpace);
    return element ? element->text() : std::string();
}

template <typename Number>
std::optional<Number> numberIn(std::string_view digits) {
    Number value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size())
        return std::nullopt;
    return value;
}

std::optional<Url> secureUrl(std::string_view text) {
    auto url = Url::parse(text);
    if (url && url->scheme() != "https")
        url.reset();
    return url;
}

std::optional<std::string> unlessEmpty(std::string text) {
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

bool isChannelName(std::string_view text) {
    return text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                  "0123456789._-") == std::string_view::npos;
}

std::optional<Enclosure> enclosureOf(const XmlElement& item) {
    const auto element = item.child("enclosure");
    if (!element)
        return std::nullopt;
    if (element->hasAttribute("deltaFrom", appcastNamespace))
        throw std::invalid_argument("its archive is a delta to one old version");
    const std::string address = element->attribute("url");
    const auto url = secureUrl(address);
    if (!url)
        throw std::invalid_argument("the address of its archive is not https: " + address);
    Enclosure enclosure{*url};
    enclosure.length = numberIn<std::uint64_t>(element->attribute("length"));
    enclosure.type = element->attribute("type");
    enclosure.signature = unlessEmpty(element->attribute("edSignature", appcastNamespace));
    enclosure.system = unlessEmpty(element->attribute("os", appcastNamespace));
    return enclosure;
}

// The version in a file name like "kelo_1.1.tar.zst"; empty if there is none.
std::string versionInFileName(const Url& url) {
    const std::string path = url.path();
    std::string_view name = path;
    name.remove_prefix(
        name.find_last_of('/') == std::string_view::npos ? 0 : name.find_last_of('/') + 1);
    const auto separator = name.find_last_of('_');
    if (separator == std::string_view::npos)
        return {};
    name.remove_prefix(separator + 1);
    name = name.substr(0, name.find_last_of('.'));
    if (name.ends_with(".tar"))
        name.remove_suffix(4);
    return std::string(name);
}

// Old feeds name the versions in attributes of the enclosure, which take precedence.
std::string versionOf(const XmlElement& item, std::string_view name) {
    const auto enclosure = item.child("enclosure");
    const std::string attribute =
        enclosure ? enclosure->attribute(name, appcastNamespace) : std::string();
    return attribute.empty() ? textOf(item, name) : attribute;
}

void checkVersion(const std::string& version) {
    const bool printable = std::none_of(version.begin(), version.end(),
                                        [](unsigned char c) { return c < 0x20 || c == 0x7f; });
    if (version.empty())
        throw std::invalid_argument("it has no version");
    if (!printable || version.size() > longestVersion)
        throw std::invalid_argument("its version is not valid");
}

// The notes without a language or in English, else the first ones.
std::optional<Url> notesLinkOf(const XmlElement& item) {
    std::optional<Url> first;
    for (const XmlElement& element : item.children()) {
        if (!element.is("releaseNotesLink", appcastNamespace))
            continue;
        auto url = secureUrl(element.text());
        const std::string language = element.attribute("lang", xmlNamespace);
        if (url && (language.empty() || language == "en" || language.starts_with("en-")))
            return url;
        if (!first)
            first = url;
    }
    return first;
}

NotesFormat formatOf(const XmlElement& description) {
    const std::string format = description.attribute("format", appcastNamespace);
    if (format == "plain-text")
        return NotesFormat::plainText;
    return format == "markdown" ? NotesFormat::markdown : NotesFormat::html;
}

std::optional<CriticalUpdate> criticalOf(const XmlElement& item) {
    const auto tags = item.child("tags", appcastNamespace);
    const auto tagged = tags ? tags->child("criticalUpdate", appcastNamespace) : std::nullopt;
    const auto element = item.child("criticalUpdate", appcastNamespace);
    if (!element)
        return tagged ? std::optional(CriticalUpdate()) : std::nullopt;
    return CriticalUpdate{unlessEmpty(element->attribute("version", appcastNamespace))};
}

std::optional<InformationalUpdate> informationalOf(const XmlElement& item) {
    const auto element = item.child("informationalUpdate", appcastNamespace);
    if (!element)
        return std::nullopt;
    InformationalUpdate update;
    for (const XmlElement& child : element->children()) {
        if (child.is("version", appcastNamespace))
            update.versions.push_back(child.text());
        else if (child.is("belowVersion", appcastNamespace))
            update.belowVersions.push_back(child.text());
    }
    return update;
}

std::vector<std::string> listIn(std::string_view text) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const auto end = std::min(text.find(','), text.size());
        if (const auto part = trimmed(text.substr(0, end)); !part.empty())
            parts.emplace_back(part);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

// The upper bound keeps sums of dates from overflowing.
std::optional<std::chrono::seconds> rolloutIntervalOf(const XmlElement& item) {
    constexpr std::chrono::seconds longest = std::chrono::hours(24 * 365);
    const auto value = numberIn<std::uint32_t>(textOf(item, "phasedRolloutInterval"));
    if (!value || *value == 0)
        return std::nullopt;
    return std::min(std::chrono::seconds(*value), longest);
}

void readRules(const XmlElement& element, AppcastItem& item) {
    item.minimumSystemVersion = textOf(element, "minimumSystemVersion");
    item.maximumSystemVersion = textOf(element, "maximumSystemVersion");
    item.hardwareRequirements = listIn(textOf(element, "hardwareRequirements"));
    item.minimumAutoupdateVersion = textOf(element, "minimumAutoupdateVersion");
    item.minimumUpdateVersion = textOf(element, "minimumUpdateVersion");
    item.ignoreSkippedUpgradesBelowVersion = textOf(element, "ignoreSkippedUpgradesBelowVersion");
    item.critical = criticalOf(element);
    item.informational = informationalOf(element);
    item.channel = textOf(element, "channel");
    if (!isChannelName(item.channel))
        throw std::invalid_argument("its channel name is not valid");
    item.phasedRolloutInterval = rolloutIntervalOf(element);
}

} // namespace

AppcastItem readAppcastItem(const XmlElement& element) {
    const auto enclosure = enclosureOf(element);
    std::string version = versionOf(element, "version");
    if (version.empty() && enclosure)
        version = versionInFileName(enclosure->url);
    checkVersion(version);

    AppcastItem item{version};
    item.shortVersion = versionOf(element, "shortVersionString");
    if (!item.shortVersion.empty())
        checkVersion(item.shortVersion);
    item.title = textOf(element, "title", {});
    item.link = secureUrl(textOf(element, "link", {}));
    item.published = parsePublicationDate(textOf(element, "pubDate", {}));
    if (const auto description = element.child("description")) {
        item.description = description->text();
        item.descriptionFormat = formatOf(*description);
    }
    item.releaseNotesLink = notesLinkOf(element);
    item.enclosure = enclosure;
    readRules(element, item);
    if (!item.enclosure && !item.link)
        throw std::invalid_argument("it has neither an archive nor a link");
    return item;
}

namespace {

using namespace std::chrono;

std::optional<int> number(std::string_view digits, std::size_t fewest, std::size_t most) {
    int value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    const bool whole = error == std::errc() && end == digits.data() + digits.size();
    if (!whole || digits.size() < fewest || digits.size() > most || digits.front() == '-')
        return std::nullopt;
    return value;
}

std::vector<std::string_view> split(std::string_view text, std::string_view separators) {
    std::vector<std::string_view> parts;
    while (true) {
        const auto end = text.find_first_of(separators);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return parts;
        text.remove_prefix(end + 1);
    }
}

std::vector<std::string_view> words(std::string_view text) {
    std::vector<std::string_view> found = split(text, blanks);
    std::erase(found, std::string_view());
    return found;
}

std::optional<year_month_day> date(std::string_view dayText, std::string_view monthText,
                                   std::string_view yearText) {
    static constexpr std::array<std::string_view, 12> months = {
        "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto dayNumber = number(dayText, 1, 2);
    const auto yearNumber = number(yearText, 4, 4);
    const auto found = std::find(months.begin(), months.end(), monthText);
    if (!dayNumber || !yearNumber || found == months.end())
        return std::nullopt;
    const year_month_day result(year(*yearNumber),
                                month(static_cast<unsigned>(found - months.begin()) + 1),
                                day(static_cast<unsigned>(*dayNumber)));
    return result.ok() ? std::optional(result) : std::nullopt;
}

std::optional<seconds> timeOfDay(std::string_view text) {
    const auto parts = split(text, ":");
    if (parts.size() < 2 || parts.size() > 3)
        return std::nullopt;
    const auto hour = number(parts[0], 1, 2);
    const auto minute = number(parts[1], 2, 2);
    const auto second = parts.size() == 3 ? number(parts[2], 2, 2) : 0;
    // 60 is a leap second.
    if (!hour || !minute || !second || *hour > 23 || *minute > 59 || *second > 60)
        return std::nullopt;
    return hours(*hour) + minutes(*minute) + seconds(*second);
}

std::optional<seconds> zoneOffset(std::string_view text) {
    if (text == "GMT" || text == "UT" || text == "UTC" || text == "Z")
        return seconds(0);
    if (text.size() != 5 || (text.front() != '+' && text.front() != '-'))
        return std::nullopt;
    const auto hour = number(text.substr(1, 2), 2, 2);
    const auto minute = number(text.substr(3, 2), 2, 2);
    if (!hour || !minute || *hour > 23 || *minute > 59)
        return std::nullopt;
    const seconds offset = hours(*hour) + minutes(*minute);
    return text.front() == '-' ? -offset : offset;
}

} // namespace

std::optional<sys_seconds> parsePublicationDate(std::string_view text) {
    std::vector<std::string_view> parts = words(text);
    if (!parts.empty() && parts.front().ends_with(','))
        parts.erase(parts.begin());
    if (parts.size() != 5)
        return std::nullopt;
    const auto calendarDate = date(parts[0], parts[1], parts[2]);
    const auto time = timeOfDay(parts[3]);
    const auto offset = zoneOffset(parts[4]);
    if (!calendarDate || !time || !offset)
        return std::nullopt;
    return sys_days(*calendarDate) + *time - *offset;
}

} // namespace kelo::updater
