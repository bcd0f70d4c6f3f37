#include "package/PackageDump.h"

#include <QProcess>

#include <gtest/gtest.h>

#include <sstream>
#include <string_view>

namespace quillnest::dump
{

namespace
{
/// Takes a line apart from its beginning.
class Line
{
public:
    explicit Line(std::string_view text) : m_rest(text) { }

    std::size_t skipSpaces()
    {
        const auto count = std::min(m_rest.find_first_not_of(' '), m_rest.size());
        m_rest.remove_prefix(count);
        return count;
    }

    bool skip(std::string_view expected)
    {
        if (!m_rest.starts_with(expected))
            return false;
        m_rest.remove_prefix(expected.size());
        return true;
    }

    /// What comes before one of these characters, or all that is left.
    std::string until(const char *characters)
    {
        const auto length = std::min(m_rest.find_first_of(characters), m_rest.size());
        const std::string result(m_rest.substr(0, length));
        m_rest.remove_prefix(length);
        return result;
    }

    std::optional<std::uint32_t> hexadecimal()
    {
        if (!skip("0x"))
            return std::nullopt;
        const auto digits = std::min(m_rest.find_first_not_of("0123456789abcdef"), m_rest.size());
        const std::string number(m_rest.substr(0, digits));
        m_rest.remove_prefix(digits);
        return number.empty() ? std::nullopt
                              : std::optional(static_cast<std::uint32_t>(std::stoul(number, nullptr, 16)));
    }

    /// A text between quotation marks. The tool writes these, backslashes and line ends with a backslash before them.
    std::optional<std::string> quoted()
    {
        if (!skip("\""))
            return std::nullopt;
        std::string text;
        while (!m_rest.empty()) {
            const char character = m_rest[0];
            m_rest.remove_prefix(1);
            if (character == '"')
                return text;
            if (character != '\\') {
                text += character;
                continue;
            }
            if (m_rest.empty())
                break;
            text += m_rest[0] == 'n' ? '\n' : m_rest[0];
            m_rest.remove_prefix(1);
        }
        return std::nullopt;
    }

    bool isEmpty() const { return m_rest.empty(); }

private:
    std::string_view m_rest;
};

/// "android:icon(0x01010002)=@0x01040082", or any other value.
std::optional<XmlAttribute> xmlAttribute(Line line)
{
    constexpr std::uint8_t reference = 1;
    constexpr std::uint8_t themeAttribute = 2;
    constexpr std::uint8_t string = 3;
    XmlAttribute attribute;
    attribute.name = line.until(":(=");
    if (line.skip(":"))
        attribute.name = line.until("(=");
    if (line.skip("(") && !(line.hexadecimal() && line.skip(")")))
        return std::nullopt;
    if (!line.skip("="))
        return std::nullopt;
    if (line.skip("@")) {
        attribute.type = reference;
        attribute.data = line.hexadecimal();
    } else if (line.skip("?")) {
        attribute.type = themeAttribute;
        attribute.data = line.hexadecimal();
    } else if (line.skip("(type ")) {
        attribute.type = static_cast<std::uint8_t>(line.hexadecimal().value_or(0));
        line.skip(")");
        attribute.data = line.hexadecimal();
    } else {
        attribute.type = string;
        attribute.text = line.quoted();
    }
    if (line.skip(" (Raw: ")) {
        attribute.raw = line.quoted();
        line.skip(")");
    }
    const bool isWhole = line.isEmpty() && (attribute.data || attribute.text);
    return isWhole ? std::optional(attribute) : std::nullopt;
}

/// The density that a configuration's name says, as the number of the table: "sw600dp-xhdpi-v13" is 320.
int densityOf(const std::string &configuration)
{
    static const std::map<std::string, int> names{{"ldpi", 120},    {"mdpi", 160},     {"tvdpi", 213},
                                                  {"hdpi", 240},    {"xhdpi", 320},    {"xxhdpi", 480},
                                                  {"xxxhdpi", 640}, {"anydpi", 65534}, {"nodpi", 65535}};
    std::istringstream words(configuration);
    for (std::string word; std::getline(words, word, '-');) {
        if (const auto known = names.find(word); known != names.end())
            return known->second;
        const auto digits = word.find_first_not_of("0123456789");
        if (digits != std::string::npos && digits > 0 && word.substr(digits) == "dpi")
            return std::stoi(word);
    }
    return 0;
}

/// "0x01080000 android:drawable/a: t=0x03 d=0x000006c4 (s=0x0008 r=0x00)", or "<bag>" in place of the value.
std::optional<std::pair<std::uint32_t, ResourceValue>> resourceLine(Line line)
{
    const auto id = line.hexadecimal();
    if (!id)
        return std::nullopt;
    line.until(" ");
    line.skip(" ");
    line.until(" ");
    ResourceValue value;
    if (line.skip(" <bag>")) {
        value.isBag = true;
        return std::pair(*id, value);
    }
    if (!line.skip(" t="))
        return std::nullopt;
    const auto type = line.hexadecimal();
    line.skip(" d=");
    const auto data = line.hexadecimal();
    if (!type || !data)
        return std::nullopt;
    value.type = static_cast<std::uint8_t>(*type);
    value.data = *data;
    return std::pair(*id, value);
}
} // namespace

std::string outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(-1)) << program.toStdString() << " can't be run";
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    return process.readAllStandardOutput().toStdString();
}

std::vector<std::vector<XmlElement>>
xmlTrees(const QString &package, const QStringList &files, std::vector<std::string> &unread)
{
    std::istringstream lines(outputOf(
        QStringLiteral("aapt"), QStringList{QStringLiteral("dump"), QStringLiteral("xmltree"), package} + files));
    std::vector<std::vector<XmlElement>> trees;
    for (std::string text; std::getline(lines, text);) {
        Line line(text);
        // Nothing says where a file begins, but only its first line is not indented.
        if (line.skipSpaces() == 0)
            trees.emplace_back();
        if (trees.empty()) {
            unread.push_back(text);
        } else if (line.skip("E: ")) {
            trees.back().push_back({line.until(" "), {}});
        } else if (line.skip("A: ")) {
            const auto attribute = xmlAttribute(line);
            if (attribute && !trees.back().empty())
                trees.back().back().attributes.push_back(*attribute);
            else
                unread.push_back(text);
        } else if (!line.skip("N: ") && !line.skip("C: ")) {
            unread.push_back(text);
        }
    }
    return trees;
}

std::map<std::uint32_t, std::vector<ResourceValue>>
resourceTable(const QString &package, std::vector<std::string> &unread)
{
    std::istringstream lines(outputOf(
        QStringLiteral("aapt"),
        {QStringLiteral("dump"), QStringLiteral("--values"), QStringLiteral("resources"), package}));
    std::map<std::uint32_t, std::vector<ResourceValue>> table;
    int density = 0;
    ResourceValue *latest = nullptr;
    for (std::string text; std::getline(lines, text);) {
        Line line(text);
        line.skipSpaces();
        if (line.skip("spec resource ")) {
            table[line.hexadecimal().value_or(0)];
        } else if (line.skip("config ")) {
            density = densityOf(line.until(":"));
        } else if (line.skip("resource ")) {
            auto read = resourceLine(line);
            latest = nullptr;
            if (!read) {
                unread.push_back(text);
                continue;
            }
            read->second.density = density;
            auto &values = table[read->first];
            values.push_back(read->second);
            latest = &values.back();
        } else if (line.skip("(string8) ") || line.skip("(string16) ")) {
            if (latest)
                latest->text = line.quoted();
            if (!latest || !latest->text || !line.isEmpty())
                unread.push_back(text);
        }
    }
    return table;
}

} // namespace quillnest::dump
