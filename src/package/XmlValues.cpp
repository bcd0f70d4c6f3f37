#include "package/XmlValues.h"

#include "package/ValueType.h"

#include <array>
#include <bit>

namespace quillnest
{

namespace
{
double complexValue(std::uint32_t data)
{
    constexpr std::array factors{1.0 / 256, 1.0 / 32768, 1.0 / 8388608, 1.0 / 2147483648};
    return static_cast<std::int32_t>(data & 0xFFFFFF00) * factors[(data >> 4) & 3];
}
} // namespace

const BinaryXml::Attr *XmlValues::attribute(const BinaryXml::Node &node, const char *name)
{
    const auto found = node.attrs.find(name);
    return found == node.attrs.end() ? nullptr : &found->second;
}

std::optional<double> XmlValues::floatValue(const BinaryXml::Attr *attr)
{
    if (!attr)
        return std::nullopt;
    switch (attr->type) {
    case ValueType::real:
        return std::bit_cast<float>(attr->data);
    case ValueType::dimension:
    case ValueType::fraction:
        return complexValue(attr->data);
    case ValueType::decimal:
    case ValueType::hexadecimal:
        return static_cast<std::int32_t>(attr->data);
    default:
        return std::nullopt;
    }
}

double XmlValues::number(const BinaryXml::Node &node, const char *name, double missing)
{
    return floatValue(attribute(node, name)).value_or(missing);
}

std::uint32_t XmlValues::data(const BinaryXml::Node &node, const char *name)
{
    const auto *attr = attribute(node, name);
    return attr ? attr->data : 0;
}

} // namespace quillnest
