#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <QString>
#include <QStringList>

/// What the platform's own packaging tools say of a package, taken from the text that they print.
namespace quillnest::dump
{

/// What a program prints; a failed expectation if it fails.
std::string outputOf(const QString &program, const QStringList &arguments);

struct XmlAttribute {
    std::string name;
    std::uint8_t type = 0;
    /// Absent for a text, of which the tool prints the text itself.
    std::optional<std::uint32_t> data;
    std::optional<std::string> text;
    std::optional<std::string> raw;
};

struct XmlElement {
    std::string name;
    std::vector<XmlAttribute> attributes;
};

/// The start tags of several compiled XML files of one package, one list for each file. `unread` gets the lines that
/// were not understood.
std::vector<std::vector<XmlElement>>
xmlTrees(const QString &package, const QStringList &files, std::vector<std::string> &unread);

struct ResourceValue {
    int density = 0;
    bool isBag = false;
    std::uint8_t type = 0;
    std::uint32_t data = 0;
    std::optional<std::string> text;
};

/// Every resource id of a package's table, with its values in the table's order; without any where it has none.
std::map<std::uint32_t, std::vector<ResourceValue>>
resourceTable(const QString &package, std::vector<std::string> &unread);

} // namespace quillnest::dump
